// LDTable and LDTableDispatch: a node's conditional log-probabilities as a dense table.
#ifndef VESK_EBN_LDTABLE_H
#define VESK_EBN_LDTABLE_H

#include "BNState.h"
#include "BNet.h"
#include "EventDispatch2Param.h"
#include "LocalDist.h"

#include <istream>
#include <list>
#include <ostream>
#include <utility>
#include <vector>

class LocalLogicHNode;

// The output value is the fastest index: the entry for parent values x_1..x_n and output y stands
// at y + sum x_i * m_inputs_id_factor[i-1], with factor 0 the output card and each next factor
// the previous one times the previous parent's card. Parents in the order of Net::get_parents;
// at most 9 of them.
class LDTable : public LocalDist<int> {
public:
    LDTable(const BNet<int>& net, const BNState<int>& state, int rvid);

    int get_tab_size() const { return static_cast<int>(m_val_table.size()); }
    int get_num_inp() const { return m_num_inp; }
    int get_input_factor(int i) const { return m_inputs_id_factor[i]; }
    const std::vector<float>& get_table() const { return m_val_table; }

    // Sizes the table to the parents; new entries are log(1/card), held entries stay.
    void reinit() override;
    float logp() const override { return m_val_table[table_index()]; }
    // " <value>" per entry in table order, to 9 significant digits, no line end.
    void write(std::ostream& os) const override;
    virtual void clear() { m_val_table.clear(); }
    // Copies `probs` (out-card log values) to the entries of the parent configuration in `state`.
    virtual void set_func(const BNState<int>& state, std::vector<float>& probs);
    // Reads one float per entry; a parse failure is reported and the entries read so far stay.
    virtual void read(std::istream& is);

    // Copies a whole table of log values; the size must match.
    void set_table(const std::vector<float>& values);

    // The table index of the state's current values.
    int table_index() const { return parent_index(m_state) + m_state[m_rvid]; }

    // Noisy copy of a logic node: for each parent configuration, set in `scratch` through its
    // virtual set_rv_state, the node's value gets log(1 - noise) and every other value
    // log(noise / (card - 1)). `scratch` is left at the last configuration.
    void cache_from_hnode(const LocalLogicHNode& node, float noise, BNState<int>& scratch);
    // The same for a binary consistency node whose first parent is `out_rvid`: value 1 (agrees)
    // of out_rvid = x gets log(1 - noise) where x is the logic's value and log(noise / (c - 1))
    // elsewhere, c being this node's own card; value 0 gets the complement. Fatal when the first
    // parent is not `out_rvid`.
    void cache_consist_from_hnode(const LocalLogicHNode& node, int out_rvid, float noise,
                                  BNState<int>& scratch);
    // Makes this the table of a binary consistency node whose first parent is the output of
    // `source`, followed by the source's parents: entry v of the source becomes the pair
    // (log(1 - exp(v)), v).
    void init_to_consistency_table(const LDTable& source);

protected:
    int parent_index(const BNState<int>& state) const;
    void init_table();
    void cache_dive(const LocalLogicHNode& node, const std::vector<int>& parents, int depth, int base,
                    BNState<int>& scratch, float hit, float miss);
    void cache_consist_dive(const LocalLogicHNode& node, int out_rvid, const std::vector<int>& parents,
                            int depth, int base, BNState<int>& scratch, float hit, float miss);

    int m_inputs_id_factor[10];
    int m_num_inp;
    std::vector<float> m_val_table;
};

// An LDTable that keeps the index of the current state up to date from the state's change
// events, so that logp is one array read. Must be built while the state is all zeros, and every
// change must go through BNStateDispatch<int>::set_rv_state.
class LDTableDispatch : public LDTable {
public:
    LDTableDispatch(const BNet<int>& net, const BNStateDispatch<int>& state, int rvid);
    ~LDTableDispatch() override;

    // Subscribes again: to be done only by the constructor.
    void reinit() override;
    float logp() const override { return m_val_table[m_cur_ndx]; }
    void clear() override;
    int get_cur_ndx() const { return m_cur_ndx; }

    void on_change_state(int factor, int old_value, int new_value) {
        m_cur_ndx += (new_value - old_value) * factor;
    }

private:
    void subscribe_all();

    const EventDispatch2Param<int, int, int>& m_dispatch;
    int m_cur_ndx;
    std::vector<std::pair<int, int>> m_subs_ids;
};

#endif
