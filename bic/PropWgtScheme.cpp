// PropWgtSchemeGroupIndeg: per-layer model probabilities, the weight tables and the positive genes.
#include "PropWgtScheme.h"

#include "error.h"
#include "options.h"

#include <cmath>
#include <iostream>

static constexpr char kSrc[] = "PropWgtSchemeGroupIndeg";

PropWgtSchemeGroupIndeg::PropWgtSchemeGroupIndeg(const PropVarGraphLayers& graph, const ArrayVarEC& ec,
                                                 options& opts, const std::string& scope, bool do_init)
    : WgtSchemeGroupIndeg(graph, ec, opts, scope, 0.0f, false), m_layers(graph) {
    if (do_init)
        reinit(opts, scope);
}

float PropWgtSchemeGroupIndeg::get_p_weight(float p_u, bool is_edge, int layer, int prop_id) const {
    const float p = p_u > m_max_pu[layer] ? m_max_pu[layer] : p_u;
    float pos, neg;
    log_ratios(m_model_ps[layer], p, prop_id, pos, neg);
    if (m_use_exp_weight) {
        const float f = m_layers.m_layers[layer]->get_prop_weight(prop_id);
        pos *= f;
        neg *= f;
    }
    return is_edge ? pos : neg;
}

void PropWgtSchemeGroupIndeg::reinit(options& opts, const std::string& scope) {
    m_model_ps = *opts.get_floats(scope, "ModelP", true);
    m_limit_neg_pos = opts.get_float(scope, "LimitNegPosRatio", true) != 0.0f;
    m_min_neg_ratio = opts.get_float(scope, "MinNegWeightRatio", true);
    m_use_exp_weight = opts.get_int(scope, "UseExpWeight", true) != 0;
    m_max_pu = *opts.get_floats(scope, "MaxPU", true);
    m_use_series_factor = false;
    const size_t layers = m_layers.m_layers.size();
    if (m_model_ps.size() < layers || m_max_pu.size() < layers)
        VESK_FATAL(kSrc, "ModelP and MaxPU need a value for each of the " << layers << " layers");
    std::cerr << "v size " << m_layers.m_var_num << std::endl;
    const PropVarGraphLayers& g = m_layers;
    if (m_debug)
        std::cerr << "max prop node " << g.m_max_prop_node << std::endl;
    fill_tables(
        [this, &g](float p_u, bool is_edge, int exp_node) {
            return get_p_weight(p_u, is_edge, g.node_layer(exp_node), g.node_prop(exp_node));
        },
        [this, &g](int bin, int prop_node) {
            return g.node_layer(prop_node) != 0 ||
                   m_ec.ec_exps(m_bins.m_bin_ec[bin]).get_ind(g.node_prop(prop_node));
        },
        [&g](int bin, int node, int d, int bin_d, int E, float p_u, float w1, float w0) {
            std::cerr << "WSIndeg node " << node << " bin " << bin << " E = " << E << " p_u " << p_u
                      << " bin_d " << bin_d << " d = " << d << " prop_id = " << g.node_prop(node) << " layer "
                      << g.node_layer(node) << " wgt = " << w1 << " no wgt = " << w0 << std::endl;
        });

    // Positive genes: the variables whose edge from the node adds over a non-edge.
    m_pos_genes.assign(g.m_max_prop_node, ds_bitvec(g.m_var_num));
    for (int p = 0; p < g.m_max_prop_node; ++p) {
        if (!g.node_use(p))
            continue;
        for (int e = g.web().root_head(0, p); e != -1; e = g.web().next_node(0, e))
            if (m_edge_cnc[e] > 0.0f)
                m_pos_genes[p].set_ind(g.node_var(g.edge_dest(e)));
    }
}
