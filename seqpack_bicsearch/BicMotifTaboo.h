// BicMotifTaboo: a tabu search over degenerate patterns, each pattern's gene set scored as a
// bicluster by BicAssocPatScore.
#ifndef VESK_SEQPACK_BICSEARCH_BICMOTIFTABOO_H
#define VESK_SEQPACK_BICSEARCH_BICMOTIFTABOO_H

#include "AssocPatternHash.h"
#include "BicAssocPatScore.h"
#include "PatAssocLIDegGap.h"

#include <string>
#include <vector>

class options;

// Keys in the scope (all required): PatIterScope (scope of MaxGap, RangeStep, MaxRange),
// MinNumberOfGenes, ScoreScope (scope of BicAssocPatScore's keys), TabooMaxTime, TabooPeriod,
// VerifyScore, VerifyAssoc, Logit, Epsilon. Tables::score_tab is read into the score's chance
// tables and Tables::glob_score_tab only opened; an absent key or a file that can't be opened
// leaves the tables at 0.
//
// optimize() starts from the pattern held by the association object. Each round climbs to the best
// neighbour while that is better, keeps the global best, lets the oldest tabu feature expire and
// applies the least bad move of the last neighbourhood however bad it is. A position's base just
// added may not be removed and one just removed may not come back while its feature lives; a window
// move stops window moves for the feature's life.
class BicMotifTaboo {
public:
    struct TabooFeature {
        TabooFeature() : m_type(0), m_pos(0), m_chars(0), m_is_force(false) {}
        int m_type;
        int m_pos;
        DnaSeqDegChar m_chars;
        bool m_is_force;
    };

    BicMotifTaboo(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, AssocPatternHashDense& assoc,
                  options& opts, const std::string& scope);

    void optimize();
    // a + Epsilon < b, or both negative with b / a below 0.9.
    bool better(float a, float b) const;

    void init();
    void hill_climb();
    void local_search();
    void apply_step();
    void update_taboo();
    void update_glob_best();

    AssocPatternHashDense& m_assoc;
    PatAssocLIDegGap<Dna8MerPattern> m_iter;
    Dna8MerPattern m_avoid;
    Dna8MerPattern m_force;
    BicAssocPatScore m_score;

    float m_best_score;
    Dna8MerPattern m_best_pattern;
    std::vector<int> m_best_conds;
    std::vector<int> m_best_groups;
    ds_bitvec m_best_genes;

    float m_cur_score;
    float m_neig_score;
    PatternModification<Dna8MerPattern> m_move;
    std::vector<TabooFeature> m_ring;
    int m_clock;

    int m_min_genes;
    int m_max_time;
    int m_period;
    bool m_verify_score;
    bool m_verify_assoc;
    bool m_debug;
    float m_epsilon;
    int m_neighbours; // neighbours visited by the last local_search
};

#endif
