// ExpVarGraphBase: nodes, groups, edges with their degree tables, the two randomisations and the
// statistics block.
#include "ExpVarGraphBase.h"

#include "DistribWgtSet.h"
#include "Random.h"
#include "options.h"

#include <iostream>

namespace {
// Initial reservation of the web's lists; they grow as needed.
constexpr int kWebReserve = 64;
} // namespace

ExpVarGraphBase::ExpVarGraphBase(VarUniverse& universe, StateDataSetBase& dataset, options& opts,
                                 const std::string& scope)
    : GraphWeb(kWebReserve, false), m_universe(universe), m_val_space(universe.m_val_space),
      m_dataset(dataset), m_max_exp_group(0), m_max_var_group(0), m_var_bits(universe.size()),
      m_exp_num(dataset.m_E), m_max_exp_node(0), m_var_num(universe.size()), m_max_var_node(0),
      m_exp_group_nodes(1, dataset.m_E, -1), m_var_group_nodes(1, universe.size(), -1), m_is_exp_node(0),
      m_max_var_degree(0.0f), m_node_count(0), m_edge_count(0), m_debug(false) {
    if (scope != "Default")
        m_debug = opts.get_int(scope, "Logit", true) != 0;
}

ExpVarGraphBase::~ExpVarGraphBase() {}

void ExpVarGraphBase::allocate_max_exp_group(int num) {
    if (num < 0)
        num = 0;
    m_max_exp_group = num;
    m_node_exp_group_degree.resize(m_node_exp_group_degree.rows(), num, 0.0f);
    m_exp_group_nodes.resize(num, m_exp_group_nodes.cols(), -1);
    m_group_pair_state.resize(num, m_max_var_group, 0);
    m_group_pair_edges.resize(num, m_max_var_group, 0.0f);
}

void ExpVarGraphBase::allocate_max_var_group(int num) {
    if (num < 0)
        num = 0;
    m_max_var_group = num;
    m_node_var_group_degree.resize(m_node_var_group_degree.rows(), num, 0.0f);
    m_var_group_nodes.resize(num, m_var_group_nodes.cols(), -1);
    m_max_group_degree.resize(num, 0.0f);
    m_group_pair_state.resize(m_max_exp_group, num, 0);
    m_group_pair_edges.resize(m_max_exp_group, num, 0.0f);
}

int ExpVarGraphBase::new_node(int group, int exp_id, int var_id, bool is_exp) {
    const int node = m_node_count++;
    m_node_exp.resize(m_node_count, 0);
    m_node_var.resize(m_node_count, 0);
    m_node_group.resize(m_node_count, 0);
    m_node_exp[node] = exp_id;
    m_node_var[node] = var_id;
    m_node_group[node] = group;
    m_is_exp_node.set_size(m_node_count);
    if (is_exp)
        m_is_exp_node.set_ind(node);
    else
        m_is_exp_node.clr_ind(node);
    insert_node(node);
    m_node_degree.resize(m_node_count, 0.0f);
    m_node_exp_group_degree.resize_rows(m_node_count, 0.0f);
    m_node_var_group_degree.resize_rows(m_node_count, 0.0f);
    return node;
}

int ExpVarGraphBase::add_exp_node_to_group(int group, int exp_id) {
    if (group >= m_max_exp_group)
        allocate_max_exp_group(group + 1);
    const int node = add_group_node(m_exp_group_nodes, group, exp_id, true);
    m_max_exp_node = m_node_count;
    return node;
}

int ExpVarGraphBase::add_var_node_to_group(int group, int var_id) {
    if (group >= m_max_var_group)
        allocate_max_var_group(group + 1);
    const int node = add_group_node(m_var_group_nodes, group, var_id, false);
    m_max_var_node = m_node_count;
    if (var_id < m_var_bits.size())
        m_var_bits.set_ind(var_id);
    return node;
}

int ExpVarGraphBase::add_group_node(Matrix<int>& group_nodes, int group, int id, bool is_exp) {
    if (id >= group_nodes.cols())
        group_nodes.resize(group_nodes.rows(), id + 1, -1);
    const int node = new_node(group, is_exp ? id : 0, is_exp ? 0 : id, is_exp);
    group_nodes(group, id) = node;
    return node;
}

int ExpVarGraphBase::add_edge(int exp_node, int var_node, int state, float weight) {
    const int eg = m_node_group[exp_node];
    const int vg = m_node_group[var_node];
    m_node_exp_group_degree(var_node, eg) += weight;
    m_node_var_group_degree(exp_node, vg) += weight;
    m_group_pair_edges(eg, vg) += weight;

    const int id = m_edge_count++;
    m_edge_state.resize(m_edge_count, 0);
    m_edge_weight.resize(m_edge_count, 0.0f);
    m_edge_state[id] = state;
    insert_edge(exp_node, var_node, id);
    m_edge_weight[id] = weight;

    m_node_degree[exp_node] += weight;
    m_node_degree[var_node] += weight;
    const float d = m_node_degree[var_node];
    if (d > m_max_var_degree)
        m_max_var_degree = d;
    if (d > m_max_group_degree[vg])
        m_max_group_degree[vg] = d;
    return id;
}

namespace {

// Sampling cells of one side: cell node * groups + g for each node in [from, to) and group g of the
// other side, holding the truncated weighted degree still to place (`left`) and the sampling weight
// (the same, or the floor for an empty cell). Returns the sum of the degrees.
long long fill_cells(const Matrix<float>& degree, int from, int to, int groups, std::vector<float>& weight,
                     std::vector<int>& left) {
    long long total = 0;
    for (int n = from; n < to; ++n)
        for (int g = 0; g < groups; ++g) {
            const int d = static_cast<int>(degree(n, g));
            total += d;
            const size_t c = static_cast<size_t>(n) * groups + g;
            left[c] = d;
            if (d != 0)
                weight[c] = static_cast<float>(d);
        }
    return total;
}

// One line per cell with a degree left: "<side> n grp g <what> d".
void report_left(const char* side, const char* what, const std::vector<int>& left, int from, int to,
                 int groups) {
    for (int n = from; n < to; ++n)
        for (int g = 0; g < groups; ++g) {
            const int d = left[static_cast<size_t>(n) * groups + g];
            if (d > 0)
                std::cerr << side << " " << n << " grp " << g << " " << what << " " << d << std::endl;
        }
}

} // namespace

void ExpVarGraphBase::randomize_all() {
    const int gv = m_max_var_group;
    const int ge = m_max_exp_group;
    // Condition cells by variable group; variable cells by condition group over the whole node id
    // space (the condition nodes' part stays at the floor).
    RandomCells exp(static_cast<size_t>(m_max_exp_node) * gv);
    RandomCells var(static_cast<size_t>(m_node_count) * ge);
    const long long total = fill_cells(m_node_var_group_degree, 0, m_max_exp_node, gv, exp.weight, exp.left);
    fill_cells(m_node_exp_group_degree, m_max_exp_node, m_node_count, ge, var.weight, var.left);

    std::cerr << "will remove  all edges " << std::endl;
    DistribWgtSet exp_dist(exp.weight);
    DistribWgtSet var_dist(var.weight);
    const int id_space = edges_id_space_size();
    for (int e = 0; e < id_space; ++e)
        if (edge_use(e))
            remove_edge(e);

    const int count = place_random_edges(total, exp, exp_dist, var, var_dist);

    std::cerr << "terminated, remaining degrees :" << std::endl;
    report_left("exp", "exp_grp_d", exp.left, 0, m_max_exp_node, gv);
    report_left("var", "var_grp_d", var.left, m_max_exp_node, m_node_count, ge);
    std::cerr << "final edges, " << count << " E = " << total << std::endl;
}

int ExpVarGraphBase::place_random_edges(long long total, RandomCells& exp, DistribWgtSet& exp_dist,
                                        RandomCells& var, DistribWgtSet& var_dist) {
    const int gv = m_max_var_group;
    const int ge = m_max_exp_group;
    std::vector<float>& exp_w = exp.weight;
    std::vector<float>& var_w = var.weight;
    int count = 0;
    int misses = 0;
    int zeros = 0;
    while (count < total) {
        if (misses > 10000) {
            std::cerr << "Miss consect breaking, e_count" << count << std::endl;
            break;
        }
        const int ci = exp_dist.sample();
        const int vi = var_dist.sample();
        // A sampler left with no positive weight counts as a draw of an empty cell.
        const float cw = ci < 0 ? 0.0f : exp_w[ci];
        if (cw < 1.0f) {
            if (ci >= 0)
                exp_w[ci] = 0.0f;
            if (zeros > 1000)
                break;
            std::cerr << "sampled zero " << cw << std::endl;
            ++zeros;
            continue;
        }
        const float vw = vi < 0 ? 0.0f : var_w[vi];
        if (vw < 1.0f) {
            // The condition cell with the same index is the one cleared.
            if (vi >= 0 && static_cast<size_t>(vi) < exp_w.size())
                exp_w[vi] = 0.0f;
            if (zeros > 1000)
                break;
            std::cerr << "sampled zero " << vw << std::endl;
            ++zeros;
            continue;
        }
        zeros = 0;
        const int exp_node = ci / gv;
        const int exp_cell_vgroup = ci % gv;
        const int var_node = vi / ge;
        const int var_cell_egroup = vi % ge;
        if (m_node_group[exp_node] != var_cell_egroup || m_node_group[var_node] != exp_cell_vgroup) {
            ++misses;
            continue;
        }
        if (get_edge(exp_node, var_node) != -1) {
            std::cerr << "edge exists" << std::endl;
            ++misses;
            continue;
        }
        if (count >= m_edge_count) {
            // More edges than the graph had ids: the new ids carry state 0 and weight 0.
            m_edge_count = count + 1;
            m_edge_state.resize(m_edge_count, 0);
            m_edge_weight.resize(m_edge_count, 0.0f);
        }
        insert_edge(exp_node, var_node, count);
        misses = 0;
        if (count % 1000 == 0)
            std::cerr << "e_count " << count << std::endl;
        exp.take(ci, exp_dist);
        var.take(vi, var_dist);
        ++count;
    }
    return count;
}

void ExpVarGraphBase::RandomCells::take(int cell, DistribWgtSet& dist) {
    --left[cell];
    weight[cell] -= 1.0f;
    if (left[cell] < 1) {
        weight[cell] = kCellFloor;
        dist.init_weights(weight);
    }
}

int ExpVarGraphBase::draw_edge_index(int E) {
    const float u = static_cast<float>(Random::bits() / 4294967295.0);
    return static_cast<int>((E - 0.5) * u);
}

bool ExpVarGraphBase::rotatable(int e1, int e2, int e3) const {
    return get_edge(edge_source(e1), edge_dest(e2)) == -1 && get_edge(edge_source(e2), edge_dest(e3)) == -1 &&
           get_edge(edge_source(e3), edge_dest(e1)) == -1;
}

void ExpVarGraphBase::rotate3(int e1, int e2, int e3) {
    const int a1 = edge_source(e1), b1 = edge_dest(e1);
    const int a2 = edge_source(e2), b2 = edge_dest(e2);
    const int a3 = edge_source(e3), b3 = edge_dest(e3);
    remove_edge(e1);
    remove_edge(e2);
    remove_edge(e3);
    insert_edge(a1, b2, e1);
    insert_edge(a2, b3, e2);
    insert_edge(a3, b1, e3);
}

void ExpVarGraphBase::randomize(int times) {
    const int E = edges_id_space_size();
    const long long steps = static_cast<long long>(E) * times;
    for (long long step = 0; step < steps; ++step) {
        // An id without an edge (left by randomize_all) is drawn again.
        int e1 = draw_edge_index(E);
        while (!edge_use(e1))
            e1 = draw_edge_index(E);
        int e2, e3;
        for (;;) {
            e2 = draw_edge_index(E);
            e3 = draw_edge_index(E);
            if (e1 == e2 || e1 == e3 || e2 == e3 || !edge_use(e2) || !edge_use(e3))
                continue;
            if (rotatable(e1, e2, e3))
                break;
        }
        const int a1 = edge_source(e1), b1 = edge_dest(e1);
        const int a2 = edge_source(e2), a3 = edge_source(e3), b3 = edge_dest(e3);
        rotate3(e1, e2, e3);
        // The first key keeps the old destination of e1.
        m_rewired_edges[std::make_pair(a1, b1)] = e1;
        m_rewired_edges[std::make_pair(a2, b3)] = e2;
        m_rewired_edges[std::make_pair(a3, b1)] = e3;
    }
    std::cerr << "changed " << 0 << " times" << std::endl;
}

void ExpVarGraphBase::print_stats(std::ostream& out) const {
    out << "Bipartite Condition-Genes graph statistics :" << std::endl;
    out << "Number of conditions " << m_exp_num << std::endl;
    out << "Var universe size " << m_var_num << std::endl;
    out << "Number of condition groups " << m_max_exp_group << std::endl;
    out << "Number of vars groups " << m_max_var_group << std::endl;
    out << "Total number of nodes " << nodes_num() << std::endl;
    out << "Total number of edges " << edges_num() << std::endl;
    for (int eg = 0; eg < m_max_exp_group; ++eg)
        for (int vg = 0; vg < m_max_var_group; ++vg)
            out << "egrp " << eg << " vgrp " << vg << " E " << m_group_pair_edges(eg, vg) << std::endl;
}
