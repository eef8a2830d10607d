// Profile HMMs: one chain of match, insert and delete states (ProfileHMM), k chains in parallel
// (KProfileHMM), and the multiple alignment read off a profile's Viterbi paths.
#ifndef VESK_HMM_PROFILEHMM_H
#define VESK_HMM_PROFILEHMM_H

#include "HMM.h"
#include "SeqAlign.h"
#include "SymbolSequence.h"

#include <ostream>
#include <vector>

// A chain of L match columns. Table positions run 0 (Start, which stands in for the match of
// position 0) to L+1 (the finish state, in the match slot); m_state_pos counts from 0 (a match
// state of table position k+1 has m_state_pos k, an insert of table position k has k).
class ProfileHMM : public HMM {
public:
    enum StateType { Start = 0, Fin = 1, M = 2, I = 3, D = 4 };
    // The print text of a type ("Start", "Fin  ", "M    ", "I    ", "D    ", else "Error").
    static const char* type_text(int type);

    // A length below 1 leaves the model with the start state only and m_length 0.
    ProfileHMM(int alphabet, int length);

    // Rebuilds the topology for L columns: 3L+3 states, every edge with probability 0.
    void update_length(int length);
    // Sets both stored copies of the edge between two table positions; fatal for p above 1 or a
    // missing edge.
    void set_transition_p(int from_pos, StateType from_type, int to_pos, StateType to_type, float p);
    // Fatal for p above 1.
    void set_emission(int pos, StateType type, int symbol, float p);
    // The state id at a table position, -1 where there is none.
    int state_at(int pos, int type) const;
    // Sets both copies of the edge between two state ids; false if there is no such edge.
    bool set_edge_p(int from, int to, float p);

    void print(std::ostream& out) const override;

    int m_length;
    std::vector<StateType> m_state_type;
    std::vector<int> m_state_pos;
    std::vector<std::vector<int>> m_pos_state;

private:
    int add_typed_state(StateType type, int pos);
};

// Copies of a profile in parallel between one start state (0) and one finish state (the highest
// id). State 0 and the finish state belong to copy -1.
class KProfileHMM : public HMM {
public:
    KProfileHMM(int alphabet, int num_copies, int length);

    // Back to state 0, the finish state and no copies.
    void reset();
    // reset() and `copies` copies of an empty profile of `length` columns.
    void update_copy_length(int copies, int length);
    // Adds a copy of `src` and returns its copy id (the lowest free one). The start edges are
    // rescaled: p/k into the new copy, (k-1)p/(kS) into the older ones, with k the copies in use
    // and S the old start mass.
    int add_prof_hmm(const ProfileHMM& src);
    void del_prof_hmm(int copy);
    // Fills `out` (already of the copy's length) from the copy, its start edges renormalised to 1.
    void get_prof_hmm(int copy, ProfileHMM& out);
    int num_copy_ids() const { return static_cast<int>(m_used_copies.size()); }
    bool copy_used(int copy) const { return copy >= 0 && copy < num_copy_ids() && m_used_copies[copy]; }

    void print(std::ostream& out) const override;

    std::vector<int> m_state_type;
    std::vector<int> m_state_pos;
    std::vector<int> m_state_copy;
    // The in-edges of the finish state (source and probability), kept while it is rebuilt.
    std::vector<HMMAdjacency> m_fin_entries;
    std::vector<bool> m_used_copies;
    int m_num_used;

private:
    void set_state_info(int id, int type, int pos, int copy);
};

// Turns Viterbi paths through a profile into a multiple alignment: a block of insert columns before
// each match column and after the last, as wide as the longest insert there; match residues in their
// column, inserted ones packed from the left of their block.
class ProfileHMMMultiAlign {
public:
    explicit ProfileHMMMultiAlign(const ProfileHMM& prof) : m_prof(prof) {}
    void align(const SymbolSequenceSet& seqs, std::vector<bool>& use, SeqMultiAlign& msa);

    const ProfileHMM& m_prof;
};

#endif
