// LDTable and LDTableDispatch: sizing, filling, reading and writing of the tables.
#include "LDTable.h"

#include "LocalLogic.h"
#include "callback.h"
#include "error.h"

#include <cmath>
#include <iostream>
#include <list>

static constexpr char kSrc[] = "LDTable";

LDTable::LDTable(const BNet<int>& net, const BNState<int>& state, int rvid)
    : LocalDist<int>(net, state, rvid), m_inputs_id_factor{}, m_num_inp(0) {
    init_table();
}

void LDTable::reinit() { init_table(); }

void LDTable::init_table() {
    const std::list<int>& parents = m_net.get_parents(m_rvid);
    const int n = static_cast<int>(parents.size());
    if (n >= 10)
        VESK_FATAL(kSrc, "Cannot init LDTable with more than 10 parents, exiting on attempt to add "
                             << n << " parents to rvid " << m_rvid);
    int size = m_out_card;
    int i = 0;
    for (int p : parents) {
        m_inputs_id_factor[i++] = size;
        size *= m_net.get_rvar_card(p);
    }
    m_inputs_id_factor[i] = size;
    std::cerr << "ini ld table at " << m_rvid << " size " << size << std::endl;
    m_val_table.resize(size, logf(1.0f / static_cast<float>(m_out_card)));
    m_num_inp = n;
}

int LDTable::parent_index(const BNState<int>& state) const {
    int ndx = 0;
    int i = 0;
    for (int p : m_net.get_parents(m_rvid))
        ndx += state[p] * m_inputs_id_factor[i++];
    return ndx;
}

void LDTable::set_func(const BNState<int>& state, std::vector<float>& probs) {
    if (static_cast<int>(probs.size()) != m_out_card)
        VESK_FATAL(kSrc, "Tried to set table func with prob vector of size "
                             << probs.size() << " where rvid " << m_rvid << " card is " << m_out_card);
    const int base = parent_index(state);
    for (int y = 0; y < m_out_card; ++y)
        m_val_table[base + y] = probs[y];
}

void LDTable::set_table(const std::vector<float>& values) {
    if (values.size() != m_val_table.size())
        VESK_FATAL(kSrc, "Tried to set table of size " << values.size() << " where rvid " << m_rvid
                                                       << " table size is " << m_val_table.size());
    m_val_table = values;
}

void LDTable::write(std::ostream& os) const {
    // Nine significant digits: a float read back is the float written.
    const std::streamsize old = os.precision(9);
    for (float v : m_val_table)
        os << " " << v;
    os.precision(old);
}

void LDTable::read(std::istream& is) {
    const int size = get_tab_size();
    for (int i = 0; i < size; ++i) {
        float v = 0.0f;
        if (!(is >> v)) {
            std::cerr << "parse error reading logic table, i = " << i << " max_i " << size << std::endl;
            return;
        }
        m_val_table[i] = v;
    }
}

void LDTable::cache_from_hnode(const LocalLogicHNode& node, float noise, BNState<int>& scratch) {
    const std::list<int>& pl = m_net.get_parents(m_rvid);
    const std::vector<int> parents(pl.begin(), pl.end());
    m_num_inp = static_cast<int>(parents.size());
    const float hit = log_one_minus(noise);
    const float miss = logf(noise / static_cast<float>(m_out_card - 1));
    cache_dive(node, parents, 0, 0, scratch, hit, miss);
}

void LDTable::cache_dive(const LocalLogicHNode& node, const std::vector<int>& parents, int depth, int base,
                         BNState<int>& scratch, float hit, float miss) {
    if (depth == static_cast<int>(parents.size())) {
        const int a = node.eval(scratch);
        for (int y = 0; y < m_out_card; ++y)
            m_val_table[base + y] = y == a ? hit : miss;
        return;
    }
    const int p = parents[depth];
    for (int v = 0; v < m_net.get_rvar_card(p); ++v) {
        scratch.set_rv_state(p, v);
        cache_dive(node, parents, depth + 1, base, scratch, hit, miss);
        base += m_inputs_id_factor[depth];
    }
}

void LDTable::cache_consist_from_hnode(const LocalLogicHNode& node, int out_rvid, float noise,
                                       BNState<int>& scratch) {
    const std::list<int>& pl = m_net.get_parents(m_rvid);
    if (pl.empty() || pl.front() != out_rvid)
        VESK_FATAL(kSrc,
                   "First paretn max equal out rvid when init consist from hnode, m_rvid was " << m_rvid);
    // Depths index the full parent list; the first parent is walked at the leaves.
    const std::vector<int> parents(pl.begin(), pl.end());
    m_num_inp = static_cast<int>(parents.size());
    const float hit = log_one_minus(noise);
    const float miss = logf(noise / static_cast<float>(m_out_card - 1));
    cache_consist_dive(node, out_rvid, parents, 1, 0, scratch, hit, miss);
}

void LDTable::cache_consist_dive(const LocalLogicHNode& node, int out_rvid, const std::vector<int>& parents,
                                 int depth, int base, BNState<int>& scratch, float hit, float miss) {
    if (depth == static_cast<int>(parents.size())) {
        const int a = node.eval(scratch);
        for (int x = 0; x < m_net.get_rvar_card(out_rvid); ++x) {
            const float agree = x == a ? hit : miss;
            m_val_table[base + 2 * x + 1] = agree;
            m_val_table[base + 2 * x] = log_one_minus_exp(agree);
        }
        return;
    }
    const int p = parents[depth];
    for (int v = 0; v < m_net.get_rvar_card(p); ++v) {
        scratch.set_rv_state(p, v);
        cache_consist_dive(node, out_rvid, parents, depth + 1, base, scratch, hit, miss);
        base += m_inputs_id_factor[depth];
    }
}

void LDTable::init_to_consistency_table(const LDTable& source) {
    m_num_inp = source.m_num_inp + 1;
    m_inputs_id_factor[0] = 2;
    // The source keeps its total size after its last stride; carried over while it fits.
    for (int i = 0; i <= source.m_num_inp && i + 1 < 10; ++i)
        m_inputs_id_factor[i + 1] = 2 * source.m_inputs_id_factor[i];
    m_val_table.resize(2 * source.m_val_table.size());
    for (std::size_t k = 0; k < source.m_val_table.size(); ++k) {
        const float v = source.m_val_table[k];
        m_val_table[2 * k] = log_one_minus_exp(v);
        m_val_table[2 * k + 1] = v;
    }
}

LDTableDispatch::LDTableDispatch(const BNet<int>& net, const BNStateDispatch<int>& state, int rvid)
    : LDTable(net, state, rvid), m_dispatch(state.get_dispatch()), m_cur_ndx(0) {
    // The base constructor has sized the table; what is left of reinit is the subscription.
    std::cerr << "call reinit for rvid " << m_rvid << std::endl;
    subscribe_all();
}

LDTableDispatch::~LDTableDispatch() {
    for (const std::pair<int, int>& s : m_subs_ids)
        m_dispatch.unsubscribe(s.first, s.second);
}

void LDTableDispatch::reinit() {
    std::cerr << "call reinit for rvid " << m_rvid << std::endl;
    LDTable::reinit();
    subscribe_all();
}

void LDTableDispatch::subscribe_all() {
    int i = 0;
    for (int p : m_net.get_parents(m_rvid)) {
        const int slot = m_dispatch.subscribe(p, m_inputs_id_factor[i++],
                                              makeFunctor(*this, &LDTableDispatch::on_change_state));
        m_subs_ids.push_back(std::make_pair(p, slot));
    }
    const int slot = m_dispatch.subscribe(m_rvid, 1, makeFunctor(*this, &LDTableDispatch::on_change_state));
    m_subs_ids.push_back(std::make_pair(m_rvid, slot));
}

void LDTableDispatch::clear() {
    LDTable::clear();
    m_cur_ndx = 0;
}
