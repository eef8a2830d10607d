// NeigHash and HashBiclust: hashed kernels of variable neighbourhoods as seeds of the greedy search.
#include "HashBiclust.h"

#include "HashSearchUtil.h"
#include "Random.h"
#include "UniformUrn.h"
#include "ds/BitVecIter.h"
#include "options.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <memory>

namespace {
int edge_count_of(const ExpVarGraphBase& g, int node) { return g.node_in_edges_num(node); }

void set_groups(ds_bitvec& bits, int groups, const std::vector<int>* list) {
    int size = groups;
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

int weighted_var_set_size(const WeightedVarSet& set) {
    if (set.m_made)
        return static_cast<int>(set.m_set.size());
    return set.m_node != -1 ? 1 : 0;
}

NeigHash::NeigHash(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts, const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_cur_var(-1), m_key_bits(graph.m_max_exp_node), m_max_hash_table_size(0),
      m_filter_exp_groups(false), m_filter_var_groups(false) {
    m_max_neig_size = opts.get_int(scope, "MaxNeigSize", true);
    m_min_hash_degree = opts.get_int(scope, "MinHashDegree", true);
    m_max_hash_degree = opts.get_int(scope, "MaxHashDegree", true);
    m_max_hash_size = opts.get_int(scope, "MaxHashSize", true);
    m_min_hash_size = opts.get_int(scope, "MinHashSize", true);
    m_max_hash_size_mb = opts.get_int(scope, "MaxHashSizeMB", true);
    m_random_exp_subset_size = opts.get_int(scope, "RandomExpSubsetSize", false);
    m_exp_ignored.assign(graph.m_max_exp_node, 0);
    m_var_ignored.assign(graph.m_node_count, 0);
    if (opts.get_int(scope, "ShouldRandomizeSubset", false) != 0)
        randomize_exp_subset();
}

void NeigHash::randomize_exp_subset() {
    std::vector<int> nodes;
    for (int e = 0; e < m_graph.m_max_exp_node; ++e) {
        m_exp_ignored[e] = 1;
        nodes.push_back(e);
    }
    UniformUrn urn(nodes);
    for (int k = 0; k < m_random_exp_subset_size && urn.left() > 0; ++k)
        m_exp_ignored[urn.draw()] = 0;
}

void NeigHash::ignore_non_class(const ExpClasses& classes, int cls) {
    for (int e = 0; e < m_graph.m_max_exp_node; ++e)
        m_exp_ignored[e] = classes.class_of(m_graph.node_exp(e)) == cls ? 0 : 1;
}

void NeigHash::set_var_filter(const ds_bitvec& vars) {
    std::fill(m_var_ignored.begin(), m_var_ignored.end(), 0);
    for (int v = m_graph.m_max_exp_node; v < m_graph.m_node_count; ++v) {
        const int var = m_graph.node_var(v);
        if (var < 0 || var >= vars.size() || !vars.get_ind(var))
            m_var_ignored[v] = 1;
    }
}

int NeigHash::hash(int start) {
    const int tot = m_graph.m_node_count;
    prepare_table();
    std::unique_ptr<GraphBaseEdgeIter> it(m_graph.new_edge_iter(0, GraphBaseEdgeIter::In));
    ds_bitvec key(m_key_bits);
    int stop = -1;
    for (int i = start; i < start + tot; ++i) {
        const int v = i % tot;
        if (!admits(v))
            continue;
        std::cerr << "hasing v " << v << "\n";
        // A walk past the first round of the node id space lowers the weights.
        gather_neighbourhood(v, *it, i > tot);
        m_cur_var = v;
        key.clear();
        m_used_exps.clear();
        hash_up_count(key, 0.0f, -1, 0);
        if (stop == -1 && m_table.size() >= m_max_hash_table_size)
            stop = v;
    }
    std::cerr << "finish hashing iter at " << stop << "\n";
    return stop;
}

void NeigHash::prepare_table() {
    const int tot = m_graph.m_node_count;
    std::cerr << "will clear\n";
    m_table.clear();
    std::cerr << "will resize cur wgt\nsize = " << m_cur_wgt.size() << "\nto = " << tot << "\n";
    m_cur_wgt.resize(tot, 0.0f);
    m_key_bits = m_graph.m_max_exp_node;
    std::cerr << "will set var size\n";
    m_cur_neig.set_size(m_key_bits);
    m_used_exps.set_size(m_graph.m_exp_num);
    if (static_cast<int>(m_exp_ignored.size()) < m_key_bits)
        m_exp_ignored.resize(m_key_bits, 0);
    if (static_cast<int>(m_var_ignored.size()) < tot)
        m_var_ignored.resize(tot, 0);
    // 32-bit unsigned arithmetic throughout: an entry is reckoned at its key's bytes plus 72.
    const unsigned int bytes = static_cast<unsigned int>(m_max_hash_size_mb) * 1000000u;
    m_max_hash_table_size = bytes / static_cast<unsigned int>(m_key_bits / 8 + 72);
    std::cerr << "m_max_hash_table_size = " << m_max_hash_table_size << "\n";
}

bool NeigHash::admits(int v) const {
    if (m_var_ignored[v] != 0 || !m_graph.node_use(v) || m_graph.is_exp_node(v))
        return false;
    if (m_filter_var_groups) {
        const int g = m_graph.node_group(v);
        if (g >= m_active_var_groups.size() || !m_active_var_groups.get_ind(g))
            return false;
    }
    const int degree = edge_count_of(m_graph, v);
    return degree >= m_min_hash_degree && degree <= m_max_hash_degree;
}

void NeigHash::gather_neighbourhood(int v, GraphBaseEdgeIter& it, bool lowered) {
    m_cur_neig.clear();
    m_neig_heap.reset(0);
    for (it.restart(v, GraphBaseEdgeIter::In); !it.at_end(); ++it) {
        const int c = it.other();
        if (m_filter_exp_groups) {
            const int g = m_graph.node_group(c);
            if (g >= m_active_exp_groups.size() || !m_active_exp_groups.get_ind(g))
                continue;
        }
        float w = m_wgt.get_edge_weight(it.edge());
        if (!(w > 0.0f) || m_exp_ignored[c] != 0)
            continue;
        const double u = Random::bits() / 4294967295.0;
        double thin_key;
        if (lowered) {
            w -= 3.4028234e+35f;
            // The log of a lowered weight has no value: such a neighbourhood is thinned at random.
            thin_key = u;
        } else {
            thin_key = static_cast<double>(logf(w)) * u;
        }
        m_cur_wgt[c] = w;
        m_cur_neig.set_ind(c);
        m_neig_heap.insert(c, thin_key);
    }
    while (m_cur_neig.on_bits() > m_max_neig_size)
        m_cur_neig.clr_ind(m_neig_heap.extract_min());
}

void NeigHash::record(const ds_bitvec& key, float wgt) {
    WeightedVarSet* entry = hash_table_entry(m_table, key, m_max_hash_table_size, wgt);
    if (!entry)
        return;
    entry->m_weight += wgt;
    entry->add_var(m_cur_var);
}

void NeigHash::hash_up_count(ds_bitvec& key, float wgt, int last, int depth) {
    if (depth >= m_min_hash_size)
        record(key, wgt);
    if (depth >= m_max_hash_size)
        return;
    for (ds_bitvec_iter it(m_cur_neig, last + 1); it; ++it) {
        const int i = it;
        const int c = m_graph.node_exp(i);
        if (m_used_exps.get_ind(c))
            continue;
        key.set_ind(i);
        m_used_exps.set_ind(c);
        hash_up_count(key, wgt + m_cur_wgt[i], i, depth + 1);
        key.clr_ind(i);
        m_used_exps.clr_ind(c);
    }
}

void NeigHash::hash_count(ds_bitvec& key, float wgt, int last, int depth) {
    if (depth <= m_max_hash_size)
        record(key, wgt);
    if (depth <= m_min_hash_size)
        return;
    std::vector<int> bits;
    for (ds_bitvec_iter it(key, last + 1); it; ++it)
        bits.push_back(it);
    for (int i : bits) {
        key.clr_ind(i);
        hash_count(key, wgt - m_cur_wgt[i], i, depth - 1);
        key.set_ind(i);
    }
}

void NeigHash::calc_binary_inter(std::ostream& out) const {
    const int n = m_graph.m_max_exp_node;
    std::vector<ds_bitvec> neig(n, ds_bitvec(m_graph.m_node_count));
    std::unique_ptr<GraphBaseEdgeIter> it(m_graph.new_edge_iter(0, GraphBaseEdgeIter::Out));
    for (int e = 0; e < n; ++e)
        for (it->restart(e); !it->at_end(); ++*it)
            neig[e].set_ind(it->other());
    ds_bitvec both;
    for (int a = 0; a < n; ++a)
        for (int b = a + 1; b < n; ++b) {
            both.copy(neig[a]).andeq(neig[b]);
            for (int c = b + 1; c < n; ++c)
                out << a << "\t" << b << "\t" << c << "\t" << both.on_bits_and(neig[c]) << "\n";
        }
}

void NeigHash::calc_binary_inter() const { calc_binary_inter(std::cerr); }

HashBiclust::HashBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, BicGreedyOpt& opt, options& opts,
                         const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_neig(graph, wgt, opts, scope), m_opt(opt) {
    read_common(opts, scope);
    set_groups(m_neig.m_active_exp_groups, graph.m_max_exp_group,
               opts.get_ints(scope, "ActiveExpGroup", true));
    set_groups(m_neig.m_active_var_groups, graph.m_max_var_group,
               opts.get_ints(scope, "ActiveVarGroup", true));
    m_neig.m_filter_exp_groups = true;
    m_neig.m_filter_var_groups = true;
    go(opts, scope);
}

HashBiclust::HashBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, BicGreedyOpt& opt,
                         const ds_bitvec& vars, options& opts, const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_neig(graph, wgt, opts, scope), m_opt(opt) {
    read_common(opts, scope);
    m_neig.set_var_filter(vars);
}

HashBiclust::HashBiclust(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, BicGreedyOpt& opt,
                         const ExpClasses& classes, int cls, options& opts, const std::string& scope)
    : m_graph(graph), m_wgt(wgt), m_neig(graph, wgt, opts, scope), m_opt(opt) {
    read_common(opts, scope);
    m_should_random_hash_conds = opts.get_int(scope, "ShouldRandomHashConds", false) != 0;
    m_neig.ignore_non_class(classes, cls);
}

HashBiclust::~HashBiclust() {}

void HashBiclust::read_common(options& opts, const std::string& scope) {
    m_focus_all_exp = opts.get_int(scope, "FocusallExp", true) != 0;
    m_focus_all_var = opts.get_int(scope, "FocusallVar", true) != 0;
    m_desired_iter_num = opts.get_int(scope, "DesiredIterNum", true);
    m_max_grow_bics = opts.get_int(scope, "MaxGrowBics", true);
    m_min_var_set_size = opts.get_int(scope, "MinVarSetSize", true);
    m_should_greedy = opts.get_int(scope, "ShouldGreedy", true) != 0;
    m_debug = opts.get_int(scope, "Logit", false) != 0;
    m_should_random_hash_conds = false;
    m_cand_count = 0;
    m_min_wgt = -1.0f;
}

void HashBiclust::release_cand(int id) {
    if (id < 0)
        return;
    if (--m_cand_refs[id] == 0)
        m_cands[id].reset();
}

void HashBiclust::go(options& opts, const std::string& scope) {
    const int n_best = opts.get_int(scope, "NBestEach", true);
    const int tot = m_graph.m_node_count;
    m_cand_count = 0;
    m_n_bests.assign(tot, NBestMonotone<ExpVarBiclust*>(n_best));
    m_cands.clear();
    m_cand_refs.clear();
    if (m_should_random_hash_conds)
        m_neig.randomize_exp_subset();
    std::cerr << "tot_nodes " << tot << " des it " << m_desired_iter_num << "\n";
    const float target = static_cast<float>(tot) / static_cast<float>(m_desired_iter_num);
    int start = 0;
    int stop;
    do {
        stop = m_neig.hash(start);
        // A fraction of the nodes against a number of nodes per pass: nearly every pass that fills
        // the table makes the subsets smaller.
        if (stop != -1 && static_cast<float>(stop - start) / static_cast<float>(tot) < target) {
            std::cerr << "decr max hashed\n";
            --m_neig.m_max_hash_size;
            if (m_neig.m_max_hash_size < m_neig.m_min_hash_size)
                --m_neig.m_min_hash_size;
        }
        gen_n_bests();
        start = stop;
    } while (stop != -1);
    m_grown.set_size(m_cand_count);
    m_grown.clear();
    grow_biclusts();
}

void HashBiclust::offer(int node, ExpVarBiclust* cand, float w, bool& changed) {
    NBestScoredVal<ExpVarBiclust*> dropped;
    const bool in = m_n_bests[node].attempt_insert(m_cand_count, cand, w, &dropped);
    if (in) {
        if (static_cast<int>(m_cand_refs.size()) <= m_cand_count)
            m_cand_refs.resize(m_cand_count + 1, 0);
        ++m_cand_refs[m_cand_count];
    }
    release_cand(dropped.m_id);
    changed |= in;
    if (changed) {
        if (m_focus_heap.is_used(node))
            m_focus_heap.change(node, m_n_bests[node].m_worst_best);
        else
            m_focus_heap.insert(node, m_n_bests[node].m_worst_best);
    }
}

void HashBiclust::gen_n_bests() {
    m_min_wgt = -1.0f;
    std::unique_ptr<ExpVarBiclust> cand(new ExpVarBiclust(m_graph, m_wgt));
    m_focus_heap.reset(0);
    for (int n = 0; n < m_graph.m_node_count; ++n) {
        const bool exp = m_graph.is_exp_node(n);
        if ((exp && m_focus_all_exp) || (!exp && m_focus_all_var))
            m_focus_heap.insert(n, 0.0f);
    }
    for (NeigHash::Table::iterator e = m_neig.m_table.begin(); e != m_neig.m_table.end(); ++e) {
        const float w = e->second.m_weight;
        if (w < m_min_wgt)
            continue;
        if (weighted_var_set_size(e->second) <= m_min_var_set_size)
            continue;
        const std::set<int>& vars = e->second.get_set();
        cand->init(w, vars, e->first);
        bool changed = false;
        if (m_focus_all_exp)
            for (ds_bitvec_iter c(e->first); c; ++c) {
                offer(c, cand.get(), w, changed);
                if (changed && m_debug)
                    std::cerr << "made it, exp node " << static_cast<int>(c) << " wgt " << w << "\n";
            }
        if (m_focus_all_var)
            for (int v : vars) {
                offer(v, cand.get(), w, changed);
                if (changed && m_debug)
                    std::cerr << "made it, var node " << v << " wgt " << w << "\n";
            }
        if (changed) {
            if (static_cast<int>(m_cands.size()) <= m_cand_count)
                m_cands.resize(m_cand_count + 1);
            if (static_cast<int>(m_cand_refs.size()) <= m_cand_count)
                m_cand_refs.resize(m_cand_count + 1, 0);
            if (m_cand_refs[m_cand_count] > 0)
                m_cands[m_cand_count] = std::move(cand);
            ++m_cand_count;
            cand.reset(new ExpVarBiclust(m_graph, m_wgt));
            m_min_wgt = static_cast<float>(m_focus_heap.min_node()->m_value);
        }
    }
}

void HashBiclust::grow_biclusts() {
    for (int node = 0; node < static_cast<int>(m_n_bests.size()); ++node) {
        NBestMonotone<ExpVarBiclust*>& nb = m_n_bests[node];
        if (nb.size() == 0)
            continue;
        if (m_debug)
            std::cerr << "got best for " << node << "\nsize is " << nb.size() << "\n";
        while (nb.size() > m_max_grow_bics) {
            const int id = nb.m_vals[static_cast<int>(nb.m_heap.min_node()->m_id)].m_id;
            nb.del_worst_best();
            release_cand(id);
        }
        const int limit = std::min(m_max_grow_bics, nb.size());
        for (int k = 0; k < limit; ++k) {
            const NBestScoredVal<ExpVarBiclust*> rec = nb.extract_worst_best();
            if (m_debug)
                std::cerr << "try growing for node " << node << " with id " << rec.m_id << " socre "
                          << rec.m_score << "\n";
            if (!m_grown.get_ind(rec.m_id)) {
                ExpVarBiclust& bic = *rec.m_val;
                if (m_should_greedy)
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
            release_cand(rec.m_id);
        }
    }
}

void HashBiclust::reduce_bic_set(float max_overlap) {
    const ExpVarGraphBase& g = m_graph;
    reduce_overlapping_bics(
        m_bics, g, g.m_exp_num, [&g](int node) { return g.node_exp(node); }, max_overlap);
}
