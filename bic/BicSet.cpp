// BicSet: reading the bicluster tables back against the graph, and replacing biclusters.
#include "BicSet.h"

#include "DnaSeqPattern.h"
#include "error.h"
#include "idbound.h"

#include <fstream>
#include <iostream>

static constexpr char kSrc[] = "BicSet";

BicSet::BicSet(const ExpVarGraphBase& graph, WgtSchemeBase& wgt) : m_graph(graph), m_wgt(wgt) {}

void BicSet::grow_to(int count) {
    if (count <= size())
        return;
    m_bics.resize(count, ExpVarBiclust(m_graph, m_wgt));
    if (static_cast<int>(m_scores.size()) < count)
        m_scores.resize(count, 0.0f);
    if (static_cast<int>(m_patterns.size()) < count) {
        m_patterns.resize(count, "none");
        m_pat_from.resize(count, -1);
        m_pat_to.resize(count, -1);
    }
}

bool open_bic_files(const std::string& bick, const std::string& bicd, std::ifstream& k, std::ifstream& d) {
    k.open(bick);
    if (!k) {
        std::cerr << "Cannot open bick file " << bick << std::endl;
        return false;
    }
    d.open(bicd);
    if (!d) {
        std::cerr << "Cannot open bicd file " << bicd << std::endl;
        return false;
    }
    return true;
}

bool BicSet::read(const std::string& bick, const std::string& bicd) {
    std::ifstream k, d;
    if (!open_bic_files(bick, bicd, k, d))
        return false;
    read(k, d);
    return true;
}

void BicSet::read(std::istream& bick, std::istream& bicd) {
    int count = 0;
    int id;
    float score;
    // A negative id ends the table as a token that doesn't parse would.
    int row = 0;
    while (bick >> id >> score && id >= 0) {
        if (!input_id_ok(id))
            VESK_FATAL(kSrc, "Bad bicluster id " << id << " in bick row " << row + 1);
        ++row;
        if (id + 1 > count)
            count = id + 1;
        if (static_cast<int>(m_scores.size()) < count)
            m_scores.resize(count, 0.0f);
        m_scores[id] = score;
    }
    m_active.set_size(count);
    m_active.set(true);
    m_bics.assign(count, ExpVarBiclust(m_graph, m_wgt));
    m_patterns.assign(count, "none");
    m_pat_from.assign(count, -1);
    m_pat_to.assign(count, -1);
    m_scores.resize(count, 0.0f);

    int kind, element, group;
    float margin;
    while (bicd >> id >> kind >> element >> group >> margin) {
        // Ids outside the bick range and variables without a node in their group don't occur in a
        // table written against this graph; they are passed over rather than trusted.
        if (id < 0 || id >= count)
            continue;
        if (kind == 1) {
            if (group < 0 || group >= m_graph.m_var_group_nodes.rows() || element < 0 ||
                element >= m_graph.m_var_group_nodes.cols())
                continue;
            const int node = m_graph.m_var_group_nodes(group, element);
            if (node >= 0)
                m_bics[id].add_var_node(node);
        } else {
            int node = -1;
            if (group >= 0 && group < m_graph.m_exp_group_nodes.rows() && element >= 0 &&
                element < m_graph.m_exp_group_nodes.cols())
                node = m_graph.m_exp_group_nodes(group, element);
            if (node < 0)
                VESK_FATAL(kSrc, "Cant match exp node " << element << " " << group);
            m_bics[id].add_exp_node(node);
        }
    }
}

bool BicSet::read_bicm(const std::string& bicm) {
    std::ifstream in(bicm);
    if (!in) {
        std::cerr << "Cannot open bicm file " << bicm << std::endl;
        return false;
    }
    read_bicm(in);
    return true;
}

void BicSet::read_bicm(std::istream& bicm) {
    m_patterns.assign(m_bics.size(), "none");
    m_pat_from.assign(m_bics.size(), -1);
    m_pat_to.assign(m_bics.size(), -1);
    int id, from, to;
    std::string pattern;
    DnaSeqPattern parsed;
    int row = 0;
    while (bicm >> id && id >= 0 && bicm >> pattern >> from >> to) {
        if (!input_id_ok(id))
            VESK_FATAL(kSrc, "Bad bicluster id " << id << " in bicm row " << row + 1);
        ++row;
        if (id >= static_cast<int>(m_patterns.size())) {
            m_patterns.resize(static_cast<std::size_t>(id) + 1, "none");
            m_pat_from.resize(static_cast<std::size_t>(id) + 1, -1);
            m_pat_to.resize(static_cast<std::size_t>(id) + 1, -1);
        }
        parsed.init_str(pattern);
        m_patterns[static_cast<std::size_t>(id)] = parsed.get_str();
        m_pat_from[static_cast<std::size_t>(id)] = from;
        m_pat_to[static_cast<std::size_t>(id)] = to;
    }
}

void BicSet::replace_bic(int id, const std::vector<int>& exps, const std::vector<int>& exp_groups,
                         const ds_bitvec& vars, int var_group, const std::string& pattern, int from, int to) {
    std::cerr << "will replace " << id << "\n";
    if (id >= size()) {
        grow_to(id + 1);
        m_active.set_size(id + 1);
    }
    m_active.set_ind(id);
    ExpVarBiclust& bic = m_bics[id];
    bic.reset();
    for (size_t i = 0; i < exps.size(); ++i) {
        const int group = exp_groups[i];
        int node = -1;
        if (group >= 0 && group < m_graph.m_exp_group_nodes.rows() && exps[i] >= 0 &&
            exps[i] < m_graph.m_exp_group_nodes.cols())
            node = m_graph.m_exp_group_nodes(group, exps[i]);
        if (node < 0)
            VESK_FATAL(kSrc, "Cant match exp node " << exps[i] << " " << group);
        bic.add_exp_node(node);
    }
    if (var_group >= 0 && var_group < m_graph.m_var_group_nodes.rows())
        for (int v = 0; v < vars.size() && v < m_graph.m_var_group_nodes.cols(); ++v)
            if (vars.get_ind(v) && m_graph.m_var_group_nodes(var_group, v) >= 0)
                bic.add_var_node(m_graph.m_var_group_nodes(var_group, v));
    m_patterns[id] = pattern;
    m_pat_from[id] = from;
    m_pat_to[id] = to;
}
