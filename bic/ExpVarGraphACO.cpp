// ExpVarGraphACO and ExpVarGraphClassify: groups, nodes and edges from a data set or an edge table.
#include "ExpVarGraphACO.h"

#include "error.h"
#include "options.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iostream>
#include <limits>

static constexpr char kSrc[] = "ExpVarGraphACO";

namespace {
constexpr int kWebReserve = 64;
} // namespace

ExpVarGraphACO::ExpVarGraphACO(VarUniverse& universe, StateDataSetBase& dataset, options& opts,
                               const std::string& scope, bool build)
    : GraphWeb(kWebReserve, false), ExpVarGraphBase(universe, dataset, opts, scope),
      // Under "Default" nothing is read: no probability is strictly above an infinite threshold,
      // so no edge is made from data.
      m_edge_p_thresh(std::numeric_limits<float>::infinity()), m_edge_non_zero_p(0.0f) {
    if (scope != "Default") {
        m_edge_p_thresh = opts.get_float(scope, "EdgePThresh", true);
        m_edge_non_zero_p = opts.get_float(scope, "EdgeNonZeroP", true);
    }
    if (build) {
        const bool both_exp = opts.get_int(scope, "AllowConditionOrientation", true) != 0;
        const bool both_var = opts.get_int(scope, "AllowVarOrientation", true) != 0;
        build_graph(opts, scope, both_exp, both_var, [this](int level, float factor, int sign) {
            ExpVarGraphACO::add_exp_group(level, factor, sign);
        });
    }
}

void ExpVarGraphACO::init(options& opts, const std::string& scope, bool both_exp_orientations,
                          bool both_var_orientations) {
    build_graph(opts, scope, both_exp_orientations, both_var_orientations,
                [this](int level, float factor, int sign) { add_exp_group(level, factor, sign); });
}

void ExpVarGraphACO::build_graph(options& opts, const std::string& scope, bool both_exp_orientations,
                                 bool both_var_orientations, const ExpGroupMaker& exp_group) {
    // 1. Sizes from the universe and the data set as they are now.
    if (m_universe.m_val_space)
        m_val_space = m_universe.m_val_space;
    m_var_bits.set_size(m_universe.size());
    m_exp_num = m_dataset.m_E;
    m_var_num = m_universe.size();
    m_exp_group_nodes.resize(1, m_exp_num, -1);
    m_var_group_nodes.resize(1, m_var_num, -1);

    std::cerr << "max_eid " << m_exp_num << " max_vid " << m_var_num << std::endl;
    std::cerr << "EVACO will construct ACO graph" << std::endl;

    // 3-4. Cardinalities and groups.
    const int exp_card = opts.get_int(scope, "ExpCardinality", true);
    const int var_card = opts.get_int(scope, "VarCardinality", true);
    const std::vector<float>& factors = *opts.get_floats(scope, "Factors", true);
    const int levels = std::max(exp_card, var_card) - 1;
    if (levels > static_cast<int>(factors.size()))
        VESK_FATAL(kSrc, "Factors has " << factors.size() << " values for " << levels << " levels");

    std::cerr << "will alloc max exp group " << exp_card << std::endl;
    allocate_max_exp_group(2 * exp_card - 2);
    std::cerr << "will alloc max var group " << var_card << std::endl;
    allocate_max_var_group(2 * var_card - 2);
    if (m_debug) {
        std::cerr << "max e group " << m_max_exp_group << std::endl;
        std::cerr << "max v group " << m_max_var_group << std::endl;
    }

    // 5-7. Factors and nodes: all condition nodes before the first variable node.
    m_exp_group_factor.assign(m_max_exp_group, 0.0f);
    m_var_group_factor.assign(m_max_var_group, 0.0f);
    for (int i = 0; i <= exp_card - 2; ++i) {
        exp_group(i, factors[i], 1);
        if (both_exp_orientations)
            exp_group(i, factors[i], -1);
    }
    for (int i = 0; i <= var_card - 2; ++i) {
        add_var_group(i, factors[i], 1);
        if (both_var_orientations)
            add_var_group(i, factors[i], -1);
    }

    // 8. States of the group pairs; pairs left out keep state 0.
    const std::vector<int>& triples = *opts.get_ints(scope, "StateOfGroupPair", true);
    for (size_t t = 0; t + 2 < triples.size(); t += 3) {
        const int eg = triples[t], vg = triples[t + 1], st = triples[t + 2];
        std::cerr << "egrp " << eg << " vgrp " << vg << " " << st << std::endl;
        if (eg < 0 || eg >= m_max_exp_group || vg < 0 || vg >= m_max_var_group) {
            std::cerr << "group pair out of range, ignored" << std::endl;
            continue;
        }
        m_group_pair_state(eg, vg) = st;
    }

    // 9-10. Edges from the table when asked for and readable, else from the data.
    bool from_file = false;
    if (opts.get_int(scope, "BuildEdgesFromFile", true) == 1) {
        const std::string path = opts.get_str(scope, "EdgesTable", true);
        std::ifstream in(path.c_str());
        if (in.good()) {
            build_edges_from_table(in);
            from_file = true;
        }
    }
    if (!from_file) {
        for (int i = 0; i <= var_card - 2; ++i) {
            add_var_edges(i, 1);
            add_var_edges(i, -1);
        }
    }

    // 11.
    std::cerr << "Max Exp Node " << m_max_exp_node << std::endl;
    print_stats(std::cerr);
    if (m_debug && m_max_exp_node > 0) {
        std::cerr << "Condition 0 adjs :";
        for (int e = web().root_head(0, 0); e != -1; e = web().next_node(0, e))
            std::cerr << " " << edge_dest(e);
        std::cerr << std::endl;
    }
}

void ExpVarGraphACO::add_exp_group(int level, float factor, int sign) {
    if (2 * level + 1 >= static_cast<int>(m_exp_group_factor.size()))
        m_exp_group_factor.resize(2 * level + 2, 0.0f);
    m_exp_group_factor[2 * level] = factor;
    m_exp_group_factor[2 * level + 1] = -factor;
    const int group = sign == 1 ? 2 * level : 2 * level + 1;
    for (int e = 0; e < m_exp_num; ++e)
        add_exp_node_to_group(group, e);
}

void ExpVarGraphACO::add_var_group(int level, float factor, int sign) {
    const int group = sign == 1 ? 2 * level : 2 * level + 1;
    if (group >= static_cast<int>(m_var_group_factor.size()))
        m_var_group_factor.resize(group + 1, 0.0f);
    for (int v = 0; v < m_var_num; ++v) {
        add_var_node_to_group(group, v);
        m_var_group_factor[group] = sign == 1 ? factor : -factor;
    }
}

void ExpVarGraphACO::add_var_edges(int level, int sign) {
    const int vgrp = sign == 1 ? 2 * level : 2 * level + 1;
    if (vgrp >= m_max_var_group)
        return;
    if (!m_val_space)
        VESK_FATAL(kSrc, "No value space in the universe: cannot make edges from data");
    const int zero = m_val_space->get_zero_state();
    const float zero_limit = 1.0f - m_edge_non_zero_p;
    for (int v = 0; v < m_var_group_nodes.cols(); ++v) {
        const int var_node = m_var_group_nodes(vgrp, v);
        if (var_node == -1)
            continue;
        for (int e = 0; e < m_exp_num; ++e) {
            const float val = m_dataset.get_var_s_state(e, v);
            if (m_val_space->get_val_state_prob(zero, val) > zero_limit) {
                if (m_debug)
                    std::cerr << "EVACO is zero " << e << " " << v << std::endl;
                continue;
            }
            for (int g = 0; g < m_max_exp_group; ++g) {
                const int exp_node = m_exp_group_nodes(g, e);
                if (exp_node == -1)
                    continue;
                const int st = m_group_pair_state(g, vgrp);
                if (st == zero)
                    continue;
                const float p = m_val_space->get_val_state_prob(st, val);
                if (p > m_edge_p_thresh)
                    add_edge(exp_node, var_node, st, p);
            }
        }
    }
}

void ExpVarGraphACO::setup_group_state_map() {
    for (int eg = 0; eg < m_max_exp_group; ++eg)
        for (int vg = 0; vg < m_max_var_group; ++vg) {
            const float f = m_exp_group_factor[eg] * m_var_group_factor[vg];
            m_group_pair_state(eg, vg) = m_val_space->get_state_of_val(f);
            std::cerr << "EGACO relation " << eg << " " << vg << " " << m_group_pair_state(eg, vg)
                      << std::endl;
        }
}

void ExpVarGraphACO::write_table(std::ostream& out) const {
    char buf[64];
    for (int id = 0; id < m_edge_count; ++id) {
        const std::to_chars_result r = std::to_chars(buf, buf + sizeof buf, m_edge_weight[id]);
        out << id << '\t' << edge_source(id) << '\t' << edge_dest(id) << '\t' << std::string(buf, r.ptr)
            << '\n';
    }
}

void ExpVarGraphACO::build_edges_from_table(std::istream& in) {
    std::cerr << "will read" << std::endl;
    int id, src, dst;
    float w;
    while (in >> id >> src >> dst >> w) {
        if (src == -1 && dst == -1)
            continue;
        if (src < 0 || src >= m_node_count || !is_exp_node(src) || dst < 0 || dst >= m_node_count ||
            is_exp_node(dst))
            VESK_FATAL(kSrc, "Bad edge " << id << " from node " << src << " to node " << dst);
        add_edge(src, dst, 0, w);
    }
}

ExpVarGraphClassify::ExpVarGraphClassify(VarUniverse& universe, StateDataSetBase& dataset,
                                         const ExpClasses& classes, int cls, options& opts,
                                         const std::string& scope)
    : GraphWeb(kWebReserve, false), ExpVarGraphACO(universe, dataset, opts, scope, false), m_classes(classes),
      m_class(cls) {
    build_graph(opts, scope, true, true, [this](int level, float factor, int sign) {
        ExpVarGraphClassify::add_exp_group(level, factor, sign);
    });
}

void ExpVarGraphClassify::add_exp_group(int level, float factor, int sign) {
    if (2 * level + 1 >= static_cast<int>(m_exp_group_factor.size()))
        m_exp_group_factor.resize(2 * level + 2, 0.0f);
    m_exp_group_factor[2 * level] = factor;
    m_exp_group_factor[2 * level + 1] = -factor;
    for (int e = 0; e < m_exp_num; ++e) {
        const int c = m_classes.class_of(e);
        if (sign == 1) {
            if (c == m_class || c == -1)
                add_exp_node_to_group(2 * level, e);
        } else if (c != m_class) {
            add_exp_node_to_group(2 * level + 1, e);
        }
    }
}
