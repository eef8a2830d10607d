// PropVarLayerACO, PropVarLayerAnnot and PropVarLayerPSSM: nodes and edges of each kind of property.
#include "PropVarLayers.h"

#include "PropMatrix.h"
#include "ValSpaceBase.h"
#include "options.h"

#include <cmath>
#include <iostream>

PropVarLayerACO::PropVarLayerACO(StateDataSetBase& dataset, options& opts, const std::string& scope)
    : m_dataset(dataset), m_edge_p_thresh(opts.get_float(scope, "EdgePThresh", true)),
      m_edge_non_zero_p(opts.get_float(scope, "EdgeNonZeroP", true)),
      m_allow_orientation(opts.get_int(scope, "AllowCondOrientation", true) != 0),
      m_prop_cardinality(opts.get_int(scope, "PropCardinality", true)),
      m_debug(opts.get_int(scope, "Logit", true) != 0) {
    const int levels = m_prop_cardinality - 1;
    const int groups = m_allow_orientation ? 2 * levels : levels;
    const int var_groups = opts.get_int(scope, "VarMaxGroupId", true);
    m_group_state.resize(groups > 0 ? groups : 0, var_groups > 0 ? var_groups : 0, 0);
    const std::vector<int>& triples = *opts.get_ints(scope, "StateOfGroupPair", true);
    for (size_t t = 0; t + 2 < triples.size(); t += 3) {
        const int g = triples[t], vg = triples[t + 1];
        if (g < 0 || g >= m_group_state.rows() || vg < 0 || vg >= m_group_state.cols()) {
            std::cerr << "group pair out of range, ignored" << std::endl;
            continue;
        }
        m_group_state(g, vg) = triples[t + 2];
    }
}

void PropVarLayerACO::add_exp_group(PropVarGraphLayers& graph, int group) {
    for (int e = 0; e < m_dataset.m_E; ++e)
        graph.add_prop_node_to_group(group, e);
}

void PropVarLayerACO::build_layer_nodes(PropVarGraphLayers& graph, int layer) {
    std::cerr << "EVACO will construct ACO graph" << std::endl;
    const int levels = m_prop_cardinality - 1;
    m_first_group = graph.m_max_prop_group;
    m_end_group = m_first_group + (m_allow_orientation ? 2 * levels : levels);
    graph.allocate_max_prop_group(m_end_group, m_dataset.m_E);
    for (int g = m_first_group; g < m_end_group; ++g)
        graph.m_group_layer[g] = layer;
    for (int level = 0; level < levels; ++level) {
        const int group = m_first_group + (m_allow_orientation ? 2 * level : level);
        add_exp_group(graph, group);
        if (m_allow_orientation)
            add_exp_group(graph, group + 1);
    }
}

void PropVarLayerACO::build_layer_edges(PropVarGraphLayers& graph, int /*layer*/) {
    std::cerr << "EVACO add edges" << std::endl;
    for (int vg = 0; vg < graph.m_max_var_group; ++vg)
        add_var_edges(graph, vg);
}

void PropVarLayerACO::add_var_edges(PropVarGraphLayers& graph, int vg) {
    const ValSpaceBase& vs = *graph.m_val_space;
    const int zero = vs.get_zero_state();
    const int var_ids = graph.m_var_group_nodes.cols();
    for (int v = 0; v < var_ids && v < m_dataset.num_vars(); ++v) {
        const int var_node = graph.m_var_group_nodes(vg, v);
        if (var_node < 0)
            continue;
        for (int e = 0; e < m_dataset.m_E; ++e) {
            const float val = m_dataset.get_var_s_state(e, v);
            if (val == PropMatrix::kMissing)
                continue;
            if (vs.get_val_state_prob(zero, val) > 1.0f - m_edge_non_zero_p) {
                if (m_debug)
                    std::cerr << "EVACO is zero" << std::endl;
                continue;
            }
            for (int g = m_first_group; g < m_end_group; ++g) {
                const int prop_node = graph.m_prop_group_nodes(g, e);
                if (prop_node < 0 || vg >= m_group_state.cols())
                    continue;
                const int st = m_group_state(g - m_first_group, vg);
                if (st == zero)
                    continue;
                const float p = vs.get_val_state_prob(st, val);
                if (p > m_edge_p_thresh)
                    graph.add_edge(prop_node, var_node, p, val);
            }
        }
    }
}

PropVarLayerAnnot::PropVarLayerAnnot(const VarClasses& classes, options&, const std::string&)
    : m_classes(classes) {}

void PropVarLayerAnnot::build_layer_nodes(PropVarGraphLayers& graph, int layer) {
    add_single_group_layer(*this, graph, layer, m_classes.class_count());
}

void PropVarLayerAnnot::build_layer_edges(PropVarGraphLayers& graph, int /*layer*/) {
    for (int c = 0; c < m_classes.class_count(); ++c) {
        const int prop_node = graph.m_prop_group_nodes(m_first_group, c);
        const ds_bitvec& members = m_classes.m_class_bits[c];
        for (int vg = 0; vg < graph.m_max_var_group; ++vg)
            for (int v = 0; v < members.size() && v < graph.m_var_group_nodes.cols(); ++v)
                if (members.get_ind(v) && graph.m_var_group_nodes(vg, v) >= 0)
                    graph.add_edge(prop_node, graph.m_var_group_nodes(vg, v), 1.0f, 1.0f);
    }
}

PropVarLayerPSSM::PropVarLayerPSSM(const PssmSet& pssms, const DnaSeqGenomePromoters<DnaSequence>& promoters,
                                   options& opts, const std::string& scope)
    : m_pssms(pssms), m_promoters(promoters), m_edge_p_thresh(opts.get_float(scope, "EdgePThresh", true)) {}

void PropVarLayerPSSM::build_layer_nodes(PropVarGraphLayers& graph, int layer) {
    add_single_group_layer(*this, graph, layer, m_pssms.size());
}

float PropVarLayerPSSM::affinity(int p, const std::string& seq) const {
    float best = 0.0f;
    int dir = 0;
    m_pssms.m_pssms[p].max_like_match(seq, best, dir);
    return static_cast<float>(std::exp(static_cast<double>(best) - m_pssms.m_pssms[p].get_max_ll()));
}

void PropVarLayerPSSM::build_layer_edges(PropVarGraphLayers& graph, int /*layer*/) {
    if (m_edge_p_thresh < 0.0f)
        return;
    for (int p = 0; p < m_pssms.size(); ++p) {
        const int prop_node = graph.m_prop_group_nodes(m_first_group, p);
        for (int i = 0; i < m_promoters.id_space_size(); ++i) {
            const DnaSeqPromoter<DnaSequence>& prom = m_promoters.get_promoter(i);
            const int v = prom.get_gene_var_id();
            if (prom.is_empty() || prom.empty() || v < 0 || v >= graph.m_var_group_nodes.cols())
                continue;
            const float a = affinity(p, prom);
            if (a < m_edge_p_thresh)
                continue;
            for (int vg = 0; vg < graph.m_max_var_group; ++vg)
                if (graph.m_var_group_nodes(vg, v) >= 0)
                    graph.add_edge(prop_node, graph.m_var_group_nodes(vg, v), 1.0f, a);
        }
    }
}
