// SmallPropSet, PNeigHash and PHashBiclust: hashed property kernels of variable neighbourhoods as seeds
// of a local optimiser; and PropVarBiclust::init_prop_set_clique, which makes a kernel a bicluster.
#include "PHashBiclust.h"

#include "HashSearchUtil.h"
#include "PropPairCorr.h"
#include "Random.h"
#include "UniformUrn.h"
#include "ds/BitVecIter.h"
#include "error.h"
#include "options.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

static constexpr char kSrc[] = "PHashBiclust";

static_assert(sizeof(SmallPropSet) == 12, "a property key is six 16-bit nodes");

void SmallPropSet::clear() {
    for (std::uint16_t& n : m_nodes)
        n = kUnused;
}

void SmallPropSet::add(int node) {
    if (node < 0 || node >= kUnused)
        VESK_FATAL(kSrc, "Prop node " << node << " does not fit a small prop set");
    if (contains(node))
        return;
    if (m_nodes[kSlots - 1] != kUnused)
        VESK_FATAL(kSrc, "Small prop set is full, cannot add prop node " << node);
    int i = kSlots - 1;
    // Shift the larger nodes up by one; unused slots sort last.
    while (i > 0 && m_nodes[i - 1] > node) {
        m_nodes[i] = m_nodes[i - 1];
        --i;
    }
    m_nodes[i] = static_cast<std::uint16_t>(node);
}

void SmallPropSet::del(int node) {
    for (int i = 0; i < kSlots; ++i)
        if (m_nodes[i] == node && node != kUnused) {
            for (int j = i; j + 1 < kSlots; ++j)
                m_nodes[j] = m_nodes[j + 1];
            m_nodes[kSlots - 1] = kUnused;
            return;
        }
}

bool SmallPropSet::contains(int node) const {
    for (std::uint16_t n : m_nodes)
        if (n == node && n != kUnused)
            return true;
    return false;
}

int SmallPropSet::size() const {
    int n = 0;
    while (n < kSlots && m_nodes[n] != kUnused)
        ++n;
    return n;
}

bool SmallPropSet::operator==(const SmallPropSet& o) const {
    return std::memcmp(m_nodes, o.m_nodes, sizeof(m_nodes)) == 0;
}

std::size_t SmallPropSet::hash() const {
    std::uint64_t lo = 0, hi = 0;
    for (int i = 0; i < 4; ++i)
        lo |= static_cast<std::uint64_t>(m_nodes[i]) << (16 * i);
    hi = static_cast<std::uint64_t>(m_nodes[4]) | static_cast<std::uint64_t>(m_nodes[5]) << 16;
    std::uint64_t h = lo * 0x9e3779b97f4a7c15ull;
    h ^= (h >> 29) ^ (hi * 0xff51afd7ed558ccdull);
    h *= 0xc4ceb9fe1a85ec53ull;
    return static_cast<std::size_t>(h ^ (h >> 32));
}

namespace {
// The variable nodes adjacent to every property of `key`, ascending: the sorted neighbour lists of
// the properties, intersected.
void clique_vars(const PropVarGraphBase& graph, const SmallPropSet& key, std::vector<int>& vars) {
    vars.clear();
    const int n = key.size();
    if (n == 0)
        return;
    std::unique_ptr<GraphBaseEdgeIter> it(graph.new_edge_iter(key[0], GraphBaseEdgeIter::Out));
    for (; !it->at_end(); ++*it)
        vars.push_back(it->other());
    std::sort(vars.begin(), vars.end());
    std::vector<int> next, both;
    for (int i = 1; i < n && !vars.empty(); ++i) {
        next.clear();
        for (it->restart(key[i]); !it->at_end(); ++*it)
            next.push_back(it->other());
        std::sort(next.begin(), next.end());
        both.clear();
        std::set_intersection(vars.begin(), vars.end(), next.begin(), next.end(), std::back_inserter(both));
        vars.swap(both);
    }
    vars.erase(std::unique(vars.begin(), vars.end()), vars.end());
}
} // namespace

void PropVarBiclust::init_prop_set_clique(const SmallPropSet& key, float wgt) {
    reset();
    std::vector<int> vars;
    clique_vars(m_pgraph, key, vars);
    // Variables first: the properties then add the edges inside as they join.
    for (int v : vars)
        add_var_node(v);
    for (int i = 0; i < key.size(); ++i)
        add_prop_node(key[i]);
    (void)wgt;
}

unsigned int PNeigHash::table_limit(int max_hash_size_mb) {
    // 62500 entries a unit, the product taken modulo 2^26 in 32-bit unsigned arithmetic first.
    const unsigned int units = static_cast<unsigned int>(max_hash_size_mb) * 15625u;
    return (units & ((1u << 26) - 1u)) * 4u;
}

PNeigHash::PNeigHash(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt, options& opts,
                     const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_cur_var(-1), m_max_hash_table_size(0), m_filter_prop_groups(false),
      m_filter_var_groups(false) {
    m_min_hash_degree = opts.get_int(scope, "MinHashDegree", true);
    m_max_hash_degree = opts.get_int(scope, "MaxHashDegree", true);
    m_max_hash_size = opts.get_int(scope, "MaxHashSize", true);
    m_min_hash_size = opts.get_int(scope, "MinHashSize", true);
    m_max_hash_size_mb = opts.get_int(scope, "MaxHashSizeMB", true);
    m_top_val_non_forced = opts.get_int(scope, "TopValNonForcedNeigToSamp", true);
    m_random_exp_subset_size = opts.get_int(scope, "RandomExpSubsetSize", false);
    m_prop_ignored.assign(graph.m_max_prop_node, 0);
    m_var_ignored.assign(graph.m_node_count, 0);
    m_forced_groups.set_size(std::max(1, graph.m_max_prop_group));
    m_forced_groups.clear();
    number_properties();
}

void PNeigHash::number_properties() {
    std::map<std::pair<int, int>, int> slots;
    m_prop_slot.assign(m_graph.m_max_prop_node, 0);
    for (int p = 0; p < m_graph.m_max_prop_node; ++p) {
        const std::pair<int, int> id(m_graph.node_layer(p), m_graph.node_prop(p));
        std::map<std::pair<int, int>, int>::iterator it = slots.find(id);
        if (it == slots.end())
            it = slots.emplace(id, static_cast<int>(slots.size())).first;
        m_prop_slot[p] = it->second;
    }
    m_used_props.set_size(std::max<int>(1, static_cast<int>(slots.size())));
    m_used_props.clear();
}

void PNeigHash::randomize_prop_subset() {
    std::vector<int> nodes;
    for (int p = 0; p < m_graph.m_max_prop_node; ++p) {
        m_prop_ignored[p] = 1;
        nodes.push_back(p);
    }
    UniformUrn urn(nodes);
    for (int k = 0; k < m_random_exp_subset_size && urn.left() > 0; ++k)
        m_prop_ignored[urn.draw()] = 0;
}

void PNeigHash::set_prop_filter(const ds_bitvec& props) {
    for (int p = 0; p < m_graph.m_max_prop_node; ++p)
        m_prop_ignored[p] = p < props.size() && props.get_ind(p) ? 0 : 1;
}

void PNeigHash::set_var_filter(const ds_bitvec& vars) {
    std::fill(m_var_ignored.begin(), m_var_ignored.end(), 0);
    for (int v = m_graph.m_max_prop_node; v < m_graph.m_node_count; ++v) {
        const int var = m_graph.node_var(v);
        if (var < 0 || var >= vars.size() || !vars.get_ind(var))
            m_var_ignored[v] = 1;
    }
}

void PNeigHash::prepare_table() {
    const int tot = m_graph.m_node_count;
    std::cerr << "will clear\n";
    m_table.clear();
    std::cerr << "will resize cur wgt\nsize = " << m_cur_wgt.size() << "\nto = " << tot << "\n";
    m_cur_wgt.resize(tot, 0.0f);
    std::cerr << "will set var size\n";
    if (static_cast<int>(m_prop_ignored.size()) < m_graph.m_max_prop_node)
        m_prop_ignored.resize(m_graph.m_max_prop_node, 0);
    if (static_cast<int>(m_var_ignored.size()) < tot)
        m_var_ignored.resize(tot, 0);
    if (static_cast<int>(m_prop_slot.size()) != m_graph.m_max_prop_node)
        number_properties();
    m_max_hash_table_size = table_limit(m_max_hash_size_mb);
    std::cerr << "m_max_hash_table_size = " << m_max_hash_table_size << "\n";
}

bool PNeigHash::admits(int v) const {
    if (m_var_ignored[v] != 0 || !m_graph.node_use(v) || m_graph.is_prop_node(v))
        return false;
    if (m_filter_var_groups) {
        const int g = m_graph.node_group(v);
        if (g >= m_active_var_groups.size() || !m_active_var_groups.get_ind(g))
            return false;
    }
    const int degree = m_graph.node_in_edges_num(v);
    return degree >= m_min_hash_degree && degree <= m_max_hash_degree;
}

void PNeigHash::gather_neighbourhood(int v) {
    m_cur_forced.clear();
    m_non_forced_best.init(m_top_val_non_forced);
    std::unique_ptr<GraphBaseEdgeIter> it(m_graph.new_edge_iter(v, GraphBaseEdgeIter::In));
    for (; !it->at_end(); ++*it) {
        const int p = it->other();
        const int g = m_graph.node_group(p);
        if (m_filter_prop_groups && (g >= m_active_prop_groups.size() || !m_active_prop_groups.get_ind(g)))
            continue;
        const int e = it->edge();
        const float w = m_wgt.get_edge_weight(e);
        if (!(w > 0.0f) || m_prop_ignored[p] != 0)
            continue;
        m_cur_wgt[p] = w;
        if (g < m_forced_groups.size() && m_forced_groups.get_ind(g)) {
            m_cur_forced.push_back(p);
        } else {
            const float value =
                e < static_cast<int>(m_graph.m_edge_value.size()) ? m_graph.m_edge_value[e] : w;
            m_non_forced_best.attempt_insert(p, p, value);
        }
    }
    std::sort(m_cur_forced.begin(), m_cur_forced.end());
    std::vector<int> kept;
    for (int s = 0; s < m_non_forced_best.size(); ++s)
        kept.push_back(m_non_forced_best.m_vals[s].m_val);
    std::sort(kept.begin(), kept.end());
    m_cur_list = m_cur_forced;
    m_cur_list.insert(m_cur_list.end(), kept.begin(), kept.end());
}

int PNeigHash::hash(int start) {
    const int tot = m_graph.m_node_count;
    prepare_table();
    const int cap = std::min(m_max_hash_size, static_cast<int>(SmallPropSet::kSlots));
    int stop = -1;
    for (int v = std::max(0, start); v < tot; ++v) {
        if (!admits(v))
            continue;
        gather_neighbourhood(v);
        const int forced = static_cast<int>(m_cur_forced.size());
        std::cerr << "hasing v " << m_graph.node_var(v) << " forced " << forced << "\n";
        if (forced > cap)
            continue;
        m_cur_var = v;
        SmallPropSet key;
        m_used_props.clear();
        float wgt = 0.0f;
        for (int p : m_cur_forced) {
            key.add(p);
            m_used_props.set_ind(m_prop_slot[p]);
            wgt += m_cur_wgt[p];
        }
        hash_up_count(key, wgt, m_cur_list.cbegin() + forced, forced);
        if (stop == -1 && m_table.size() >= m_max_hash_table_size)
            stop = v;
    }
    std::cerr << "finish hashing iter at " << stop << "\n";
    return stop;
}

void PNeigHash::hash_up_count(SmallPropSet& key, float wgt, std::vector<int>::const_iterator next,
                              int depth) {
    if (depth >= m_min_hash_size)
        if (float* entry = hash_table_entry(m_table, key, m_max_hash_table_size, wgt))
            *entry += wgt;
    if (depth >= std::min(m_max_hash_size, static_cast<int>(SmallPropSet::kSlots)))
        return;
    for (std::vector<int>::const_iterator it = next; it != m_cur_list.cend(); ++it) {
        const int p = *it;
        const int slot = m_prop_slot[p];
        if (m_used_props.get_ind(slot))
            continue;
        key.add(p);
        m_used_props.set_ind(slot);
        hash_up_count(key, wgt + m_cur_wgt[p], it + 1, depth + 1);
        key.del(p);
        m_used_props.clr_ind(slot);
    }
}

namespace {
void set_groups(ds_bitvec& bits, int groups, const std::vector<int>* list) {
    int size = std::max(1, groups);
    if (list)
        for (int g : *list)
            size = std::max(size, g + 1);
    bits.set_size(size);
    bits.clear();
    if (list)
        for (int g : *list)
            if (g >= 0)
                bits.set_ind(g);
}
} // namespace

PHashBiclust::PHashBiclust(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, PBicLocalOpt& opt,
                           options& opts, const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_neig(graph, wgt, opts, scope), m_opt(opt) {
    read_common(opts, scope);
    set_groups(m_neig.m_active_prop_groups, graph.m_max_prop_group,
               opts.get_ints(scope, "ActivePropGroup", true));
    set_groups(m_neig.m_active_var_groups, graph.m_max_var_group,
               opts.get_ints(scope, "ActiveVarGroup", true));
    m_neig.m_filter_prop_groups = true;
    m_neig.m_filter_var_groups = true;
    go(opts, scope);
}

PHashBiclust::PHashBiclust(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, PBicLocalOpt& opt,
                           const ds_bitvec& vars, options& opts, const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_neig(graph, wgt, opts, scope), m_opt(opt) {
    read_common(opts, scope);
    if (const std::vector<int>* groups = opts.get_ints(scope, "ActivePropGroup", false)) {
        set_groups(m_neig.m_active_prop_groups, graph.m_max_prop_group, groups);
        m_neig.m_filter_prop_groups = true;
    }
    if (const std::vector<int>* groups = opts.get_ints(scope, "ActiveVarGroup", false)) {
        set_groups(m_neig.m_active_var_groups, graph.m_max_var_group, groups);
        m_neig.m_filter_var_groups = true;
    }
    m_neig.set_var_filter(vars);
}

PHashBiclust::~PHashBiclust() {}

void PHashBiclust::read_common(options& opts, const std::string& scope) {
    m_focus_all_prop = opts.get_int(scope, "FocusallProp", true) != 0;
    m_focus_all_var = opts.get_int(scope, "FocusallVar", true) != 0;
    m_desired_iter_num = std::max(1, opts.get_int(scope, "DesiredIterNum", false));
    m_max_grow_bics = opts.get_int(scope, "MaxGrowBics", true);
    m_min_var_set_size = opts.get_int(scope, "MinVarSetSize", true);
    m_should_local = opts.get_int(scope, "ShouldLocal", true) != 0;
    m_should_rand_conds = opts.get_int(scope, "ShouldRandConds", false) != 0;
    m_hash_cand_tot_p = opts.get_float(scope, "HashCandTotPThresh", false);
    m_hash_cand_loc_tot_p = opts.get_float(scope, "HashCandLocTotPThresh", false);
    m_debug = opts.get_int(scope, "Logit", false) != 0;
    m_cand_count = 0;
    m_min_wgt = -1.0f;
    ds_bitvec forced;
    const std::vector<int>* groups = opts.get_ints(scope, "ForcePropGroup", false);
    set_groups(forced, m_graph.m_max_prop_group, groups);
    if (groups)
        for (int g : *groups)
            std::cerr << "will force grp " << g << "\n";
    m_neig.set_forced_groups(forced);
}

void PHashBiclust::go(options& opts, const std::string& scope) {
    const int n_best = opts.get_int(scope, "NBestEach", true);
    const int tot = m_graph.m_node_count;
    m_cand_count = 0;
    m_n_bests.assign(tot, NBestMonotone<BicPtr>(n_best));
    if (m_should_rand_conds)
        m_neig.randomize_prop_subset();
    std::cerr << "tot_nodes " << tot << " des it " << m_desired_iter_num << "\n";
    const float target = static_cast<float>(tot) / static_cast<float>(m_desired_iter_num);
    int start = 0;
    int stop;
    do {
        stop = m_neig.hash(start);
        // A fraction of the nodes against a number of nodes per pass, compared just so.
        if (stop != -1 && static_cast<float>(stop - start) / static_cast<float>(tot) < target) {
            std::cerr << "decr max hashed\n";
            --m_neig.m_max_hash_size;
            if (m_neig.m_max_hash_size < m_neig.m_min_hash_size)
                --m_neig.m_min_hash_size;
        }
        gen_n_bests();
        // A pass that filled at its first variable starts the next one after it, so every pass
        // moves on.
        start = stop == start ? stop + 1 : stop;
    } while (stop != -1);
    m_grown.set_size(std::max(1, m_cand_count));
    m_grown.clear();
    grow_biclusts();
}

void PHashBiclust::offer(int node, const BicPtr& cand, float w, bool& changed) {
    changed |= m_n_bests[node].attempt_insert(m_cand_count, cand, w);
    if (changed) {
        if (m_focus_heap.is_used(node))
            m_focus_heap.change(node, m_n_bests[node].m_worst_best);
        else
            m_focus_heap.insert(node, m_n_bests[node].m_worst_best);
    }
}

void PHashBiclust::gen_n_bests() {
    m_min_wgt = -1.0f;
    BicPtr cand(new PropVarBiclust(m_graph, m_wgt, nullptr, nullptr));
    std::vector<int> vars;
    m_focus_heap.reset(0);
    for (int n = 0; n < m_graph.m_node_count; ++n) {
        const bool prop = m_graph.is_prop_node(n);
        if ((prop && m_focus_all_prop) || (!prop && m_focus_all_var))
            m_focus_heap.insert(n, 0.0f);
    }
    for (PNeigHash::Table::const_iterator e = m_neig.m_table.begin(); e != m_neig.m_table.end(); ++e) {
        const float w = e->second;
        if (w < m_min_wgt)
            continue;
        // Without variable focus, a key no property store of its own would take makes no candidate:
        // the clique isn't worth building.
        if (!m_focus_all_var) {
            bool may_enter = false;
            for (int i = 0; m_focus_all_prop && i < e->first.size() && !may_enter; ++i) {
                const NBestMonotone<BicPtr>& nb = m_n_bests[e->first[i]];
                may_enter = nb.m_n > 0 && !(w < nb.m_worst_best);
            }
            if (!may_enter)
                continue;
        }
        // The kernel's size first, so that a small one costs no bicluster.
        clique_vars(m_graph, e->first, vars);
        if (static_cast<int>(vars.size()) <= m_min_var_set_size)
            continue;
        cand->init_prop_set_clique(e->first, w);
        bool changed = false;
        if (m_focus_all_prop)
            for (int i = 0; i < e->first.size(); ++i) {
                offer(e->first[i], cand, w, changed);
                if (changed && m_debug)
                    std::cerr << "made it, prop node " << e->first[i] << " wgt " << w << "\n";
            }
        if (m_focus_all_var)
            for (ds_bitvec_iter v(cand->m_vars); v; ++v) {
                offer(v, cand, w, changed);
                if (changed && m_debug)
                    std::cerr << "made it, var node " << static_cast<int>(v) << " wgt " << w << "\n";
            }
        if (changed) {
            ++m_cand_count;
            cand.reset(new PropVarBiclust(m_graph, m_wgt, nullptr, nullptr));
            m_min_wgt = static_cast<float>(m_focus_heap.min_node()->m_value);
        }
    }
    std::cerr << "nb count = " << m_cand_count << "\n";
}

void PHashBiclust::grow_biclusts() {
    for (int node = 0; node < static_cast<int>(m_n_bests.size()); ++node) {
        NBestMonotone<BicPtr>& nb = m_n_bests[node];
        if (nb.size() == 0)
            continue;
        if (m_debug)
            std::cerr << "got best for " << node << "\nsize is " << nb.size() << "\n";
        while (nb.size() > m_max_grow_bics)
            nb.del_worst_best();
        const int limit = std::min(m_max_grow_bics, nb.size());
        for (int k = 0; k < limit; ++k) {
            const NBestScoredVal<BicPtr> rec = nb.extract_worst_best();
            if (m_debug)
                std::cerr << "try growing for node " << node << " with id " << rec.m_id << " socre "
                          << rec.m_score << "\n";
            if (m_grown.get_ind(rec.m_id))
                continue;
            PropVarBiclust& bic = *rec.m_val;
            if (m_should_local)
                m_opt.grow(bic);
            std::cerr << "finish growing, current score is " << bic.m_score << " bic is :\n";
            if (m_debug)
                bic.print(std::cerr);
            m_grown.set_ind(rec.m_id);
            if (m_bic_hash.find(bic) == m_bic_hash.end()) {
                m_bics.push_back(bic);
                m_bic_hash.emplace(bic, 1);
            } else {
                std::cerr << "HASHBIC bic exists in hash\n";
            }
        }
    }
}

void PHashBiclust::reduce_bic_set(float max_overlap) {
    const std::vector<int>& slot = m_neig.m_prop_slot;
    reduce_overlapping_bics(
        m_bics, m_graph, m_neig.m_used_props.size(), [&slot](int node) { return slot[node]; }, max_overlap);
}

void PHashBiclust::gen_prop_filter() {
    int max_exp_grp = -1;
    for (int g = 0; g < m_graph.m_max_prop_group; ++g)
        if (m_graph.group_layer(g) == 0)
            max_exp_grp = g;
    std::cerr << "max exp grp is " << max_exp_grp << "\nbase loc grp " << max_exp_grp + 1 << "\n";
    const int n = m_graph.m_max_prop_node;
    std::cerr << "total pnodes to samp " << n << "\n";
    ds_bitvec take(std::max(1, n));
    take.clear();
    for (int p = 0; p < n; ++p) {
        const double u = Random::bits() / 4294967295.0;
        const float bar = m_graph.node_layer(p) == 0 ? m_hash_cand_tot_p : m_hash_cand_loc_tot_p;
        if (u < bar) {
            take.set_ind(p);
            std::cerr << "mark node " << p << "\n";
        }
    }
    m_neig.set_prop_filter(take);
}

void PHashBiclust::prepare_prop_corr_filter(PropPairCorr& corr, float max_corr) {
    const int n = m_graph.m_max_prop_node;
    std::vector<int>& ignored = m_neig.m_prop_ignored;
    for (int a = 0; a < n; ++a) {
        if (ignored[a] != 0)
            continue;
        for (int b = a + 1; b < n; ++b)
            if (ignored[b] == 0 && std::fabs(corr.get_corr(a, b)) > max_corr)
                ignored[b] = 1;
    }
}
