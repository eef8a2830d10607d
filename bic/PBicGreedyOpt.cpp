// PBicGreedyOpt: the greedy walk over single-node moves of a property bicluster, step by step.
#include "PBicGreedyOpt.h"

#include "BicGreedyOpt.h"
#include "PropVarLayers.h"
#include "ds/BitVecIter.h"
#include "error.h"
#include "options.h"

#include <algorithm>
#include <iostream>

static constexpr char kSrc[] = "PBicGreedyOpt";

namespace {
constexpr float kOutOfRanking = 3.4028235e+38f;
} // namespace

PBicGreedyOpt::PBicGreedyOpt(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, options& opts,
                             const std::string& scope, const BinRelGraphLayers* br_graph,
                             BinRelWgtSchemeBase* br_wgt)
    : PBicGreedyOpt(graph, wgt, static_cast<const ds_bitvec*>(nullptr), opts, scope, br_graph, br_wgt) {}

PBicGreedyOpt::PBicGreedyOpt(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, const ds_bitvec* vars,
                             options& opts, const std::string& scope, const BinRelGraphLayers* br_graph,
                             BinRelWgtSchemeBase* br_wgt)
    : m_graph(graph), m_wgt(wgt), m_bic(graph, wgt, br_graph, br_wgt), m_check_score(true),
      m_edge_iter(graph.new_edge_iter(0, GraphBaseEdgeIter::Out)), m_verify_gain(false), m_prop_modif_on(1),
      m_gene_modif_on(1), m_key_shift(100000.0f), m_ranked_score(0.0f), m_pssm_prune_factor(0.0f), m_moves(0),
      m_drops(0) {
    m_can_del_init_prop = opts.get_int(scope, "CanDelInitProp", true) != 0;
    m_can_add_prop = opts.get_int(scope, "CanAddProp", true) != 0;
    m_can_del_prop = opts.get_int(scope, "CanDelProp", true) != 0;
    m_can_del_init_var = opts.get_int(scope, "CanDelInitVar", true) != 0;
    m_debug = opts.get_int(scope, "Logit", true) != 0;
    m_pssm_prune_factor = opts.get_float(scope, "PSSMPruneFactor", false);
    const std::vector<int>* ranked = opts.get_ints(scope, "IsPropRankedLayer", false);
    m_ranked_layer.assign(layers_num(), 0);
    if (ranked)
        for (size_t l = 0; l < ranked->size() && l < m_ranked_layer.size(); ++l)
            m_ranked_layer[l] = (*ranked)[l] != 0 ? 1 : 0;
    // The property sub-heap exists from the start, so that blocking can shift its weight at once.
    m_heap.set_subheap_wgt(prop_heap(), 0.0f);
    init_observ(opts, scope, vars);
}

PBicGreedyOpt::~PBicGreedyOpt() {}

void PBicGreedyOpt::init_observ(options& opts, const std::string& scope, const ds_bitvec* vars) {
    if (m_bic.m_br_graph)
        m_br_cost.reset(
            new BinRelGlobNodeCost(m_bic, opts, opts.get_str(scope, "BinRelGlobCostScope", true)));
    const int nodes = m_graph.m_node_count;
    const int B = bins_num();
    m_prop_obs.resize(nodes);
    m_var_obs.resize(nodes);
    m_bin_obs.resize(B);
    m_ranked_own.clear();
    m_ranked_own.resize(nodes);
    m_ranked_obs.clear();
    m_ranked_in.clear();
    const float add_factor = opts.get_float(scope, "AddPropCostFactor", true);
    const float del_factor = opts.get_float(scope, "DelPropCostFactor", true);

    bool any_ranked = false;
    for (size_t l = 0; l < m_ranked_layer.size(); ++l) {
        m_bic.set_ranked_layer(static_cast<int>(l), m_ranked_layer[l] != 0);
        any_ranked = any_ranked || m_ranked_layer[l];
    }
    RankedObsParams params;
    if (any_ranked) {
        params = RankedObsParams(opts, "RankedObs");
        m_hg_table.reset(new BinomFuncTable(m_graph.m_var_num + 2, 64));
    }
    std::vector<float> values;
    for (int p = 0; p < m_graph.m_max_prop_node; ++p) {
        if (!m_graph.node_use(p))
            continue;
        if (m_bic.is_ranked_layer(m_graph.node_layer(p))) {
            generate_pssm_affins(p, values);
            m_ranked_own[p].reset(new PBicChangeRankedObs);
            m_ranked_own[p]->attach(m_bic, m_heap, p, prop_heap(), values, params, *m_hg_table, &m_ranked_in);
            m_ranked_obs.push_back(m_ranked_own[p].get());
        } else {
            m_prop_obs[p].attach(m_bic, m_heap, p, prop_heap(), add_factor, del_factor);
        }
    }
    for (int v = m_graph.m_max_prop_node; v < nodes; ++v) {
        if (!m_graph.node_use(v) || (vars && !vars->get_ind(m_graph.node_var(v))))
            continue;
        const int b = m_wgt.get_var_node_bin(v);
        m_var_obs[v].attach(m_bic, m_heap, v, 2 * b, 2 * b + 1, 0.0f, m_br_cost.get(),
                            any_ranked ? &m_ranked_in : nullptr);
    }
    for (int b = 0; b < B; ++b)
        m_bin_obs[b].attach(m_bic, m_heap, b, 2 * b, 2 * b + 1);
    m_edge_iter.reset(m_graph.new_edge_iter(0, GraphBaseEdgeIter::Out));
}

void PBicGreedyOpt::generate_pssm_affins(int node, std::vector<float>& out) {
    out.assign(m_graph.m_var_num, kOutOfRanking);
    const int l = m_graph.node_layer(node);
    const PropVarLayerBase* obj =
        l < static_cast<int>(m_graph.m_layers.size()) ? m_graph.m_layers[l] : nullptr;
    const PropVarLayerPSSM* layer = dynamic_cast<const PropVarLayerPSSM*>(obj);
    if (!layer) {
        for (m_edge_iter->restart(node, GraphBaseEdgeIter::Out); !m_edge_iter->at_end(); ++*m_edge_iter) {
            const int v = m_graph.node_var(m_edge_iter->other());
            const float value = -m_graph.m_edge_value[m_edge_iter->edge()];
            if (v >= 0 && v < static_cast<int>(out.size()) && value < out[v])
                out[v] = value;
        }
        return;
    }
    const int pssm = m_graph.node_prop(node);
    std::cerr << "gen pssm affins for " << node << " got pssm " << pssm << std::endl;
    const DnaPSSM& matrix = layer->m_pssms.m_pssms[pssm];
    const double max_ll = matrix.get_max_ll();
    for (int i = 0; i < layer->m_promoters.id_space_size(); ++i) {
        const DnaSeqPromoter<DnaSequence>& prom = layer->m_promoters.get_promoter(i);
        const int v = prom.get_gene_var_id();
        if (prom.is_empty() || prom.empty() || v < 0 || v >= static_cast<int>(out.size()))
            continue;
        float best = 0.0f;
        int dir = 0;
        matrix.max_like_match(prom, best, dir);
        const float value = static_cast<float>(max_ll - static_cast<double>(best));
        if (m_pssm_prune_factor > 0.0f && value > m_pssm_prune_factor)
            continue;
        out[v] = value;
    }
    std::cerr << "thresh for pssm is " << m_pssm_prune_factor << std::endl;
}

int PBicGreedyOpt::layers_num() const {
    int n = static_cast<int>(m_graph.m_layers.size());
    for (int l : m_graph.m_group_layer)
        n = std::max(n, l + 1);
    return n;
}

float PBicGreedyOpt::get_cur_score() const { return m_bic.m_score; }

float PBicGreedyOpt::prop_gain(int node) const {
    if (m_ranked_own[node])
        return m_ranked_own[node]->m_gain;
    return m_prop_obs[node].attached() ? m_prop_obs[node].m_gain : 0.0f;
}

float PBicGreedyOpt::get_var_node_score(int node) const {
    return m_bin_obs[m_wgt.get_var_node_bin(node)].m_gain + m_var_obs[node].m_gain;
}

bool PBicGreedyOpt::prop_in_use(int node) const {
    return m_used_props[m_graph.node_layer(node)].get_ind(m_graph.node_prop(node));
}

void PBicGreedyOpt::mark_prop(int node, bool used) {
    ds_bitvec& ids = m_used_props[m_graph.node_layer(node)];
    if (used)
        ids.set_ind(m_graph.node_prop(node));
    else
        ids.clr_ind(m_graph.node_prop(node));
}

void PBicGreedyOpt::grow(PropVarBiclust& bic) { grow(bic, true); }

void PBicGreedyOpt::grow(PropVarBiclust& bic, bool init) {
    if (init)
        init_grow(bic);
    int node;
    bool is_del;
    float gain;
    while (get_next_opti_cand(node, is_del, gain)) {
        apply_oper(node, is_del);
        ++m_moves;
    }
    // The ranked score goes over the properties of layer 1.
    m_ranked_score = 0.0f;
    for (const PBicChangeRankedObs* r : m_ranked_obs)
        if (m_bic.m_exps.get_ind(r->m_node) && m_graph.node_layer(r->m_node) == 1)
            m_ranked_score += r->m_gain;
    m_bic.m_ranked_score = m_ranked_score;
    bic.PropVarBiclust::operator=(m_bic);
    std::cerr << "done greedy weight = " << m_bic.m_score << " br score " << m_bic.m_br_score
              << " ranked score " << m_ranked_score << " p size " << m_bic.m_exps.on_bits() << " v size "
              << m_bic.m_vars.on_bits() << std::endl;
}

void PBicGreedyOpt::init_grow(PropVarBiclust& bic) {
    if (m_debug) {
        std::cerr << "will greedy bic:" << std::endl;
        bic.print(std::cerr);
    }
    m_moves = 0;
    m_drops = 0;
    m_init_props = bic.m_exps;
    m_init_vars = bic.m_vars;
    const int ids = m_graph.m_prop_group_nodes.cols();
    m_used_props.assign(layers_num(), ds_bitvec(ids));
    for (ds_bitvec_iter p(m_init_props); p; ++p)
        mark_prop(p, true);
    m_used_vars.set_size(std::max(m_graph.m_var_num, m_graph.m_var_group_nodes.cols()));
    m_used_vars.clear();
    keep_one_node_per_var(m_graph, bic, m_used_vars);
    m_init_props = bic.m_exps;
    m_init_vars = bic.m_vars;
    m_heap.reset(-1);
    m_bic.set_to_bic(bic);
}

bool PBicGreedyOpt::refuse(const char* why) {
    if (m_debug && why)
        std::cerr << why << std::endl;
    ++m_drops;
    return false;
}

bool PBicGreedyOpt::get_next_opti_cand(int& node, bool& is_del, float& gain) {
    get_cur_score();
    for (;;) {
        if (m_debug && !m_bic.verify())
            VESK_FATAL(kSrc, "ERROR");
        float key = 3.4e+37f;
        node = m_heap.extract_min(key);
        if (m_gene_modif_on == 0)
            key += m_key_shift;
        gain = -key;
        if (node == -1 || gain <= 0.00001f) {
            std::cerr << "neg score " << gain << std::endl;
            return false;
        }
        const bool prop = m_graph.is_prop_node(node);
        const bool in = prop ? m_bic.m_exps.get_ind(node) : m_bic.m_vars.get_ind(node);
        if (m_debug)
            std::cerr << "greedy node " << node << " gain " << gain << (in ? " del" : " add") << std::endl;
        if (move_allowed(node, in)) {
            is_del = in;
            return true;
        }
    }
}

bool PBicGreedyOpt::move_allowed(int node, bool in) {
    if (!m_graph.is_prop_node(node)) {
        if (m_used_vars.get_ind(m_graph.node_var(node)) && !in)
            return refuse(" var used");
        if (!m_can_del_init_prop && m_check_score && var_will_turn_foc_prop_bad(node, in))
            return refuse(" will turn bad");
        if (in && !m_can_del_init_var && m_init_vars.get_ind(node))
            VESK_FATAL(kSrc, "Trying to delete freezed init var node " << node);
        return true;
    }
    if (prop_in_use(node) && !in)
        return refuse(" prop used");
    if (in && !m_can_del_prop)
        return refuse(" shouln't del prop");
    if (!in && !m_can_add_prop)
        return refuse(" shouln't add prop");
    if (!m_can_del_init_var && prop_will_turn_foc_var_bad(node, in))
        return refuse(" will turn bad");
    if (in && !m_can_del_init_prop && m_init_props.get_ind(node)) {
        if (m_check_score)
            VESK_FATAL(kSrc, "Trying to delete freezed init prop node " << node);
        return refuse(nullptr);
    }
    return true;
}

void PBicGreedyOpt::apply_oper(int node, bool is_del) {
    if (m_graph.is_prop_node(node)) {
        if (is_del)
            m_bic.del_prop_node(node);
        else
            m_bic.add_prop_node(node);
        mark_prop(node, !is_del);
        return;
    }
    const int v = m_graph.node_var(node);
    if (is_del) {
        m_bic.del_var_node(node);
        m_used_vars.clr_ind(v);
    } else {
        m_bic.add_var_node(node);
        m_used_vars.set_ind(v);
    }
}

bool PBicGreedyOpt::var_will_turn_foc_prop_bad(int node, bool in) {
    ds_bitvec focus(m_init_props);
    m_edge_iter->restart(node, GraphBaseEdgeIter::In);
    if (edge_turns_focus_bad(*m_edge_iter, m_wgt, focus, in, [this](int c) { return prop_gain(c); }))
        return true;
    if (!in) {
        const int bin = m_wgt.get_var_node_bin(node);
        for (ds_bitvec_iter c(focus); c; ++c)
            if (prop_gain(c) + m_wgt.get_non_edge_prop_weight(c, bin) < 0.0f) {
                if (m_debug)
                    std::cerr << "will turn " << static_cast<int>(c) << " bad " << std::endl;
                return true;
            }
    }
    return false;
}

bool PBicGreedyOpt::prop_will_turn_foc_var_bad(int node, bool in) {
    ds_bitvec focus(m_init_vars);
    m_edge_iter->restart(node, GraphBaseEdgeIter::Out);
    const auto margin = [this](int v) {
        const int b = m_wgt.get_var_node_bin(v);
        return static_cast<float>(m_heap.value(2 * b + 1, v));
    };
    if (edge_turns_focus_bad(*m_edge_iter, m_wgt, focus, in, margin))
        return true;
    if (!in)
        for (ds_bitvec_iter v(focus); v; ++v)
            if (margin(v) + m_wgt.get_non_edge_prop_weight(node, m_wgt.get_var_node_bin(v)) < 0.0f) {
                if (m_debug)
                    std::cerr << "will turn " << static_cast<int>(v) << " bad!" << std::endl;
                return true;
            }
    return false;
}

void PBicGreedyOpt::complete_props() {
    const int layers = layers_num();
    const int ids = m_graph.m_prop_group_nodes.cols();
    if (static_cast<int>(m_used_props.size()) != layers)
        m_used_props.assign(layers, ds_bitvec(ids));
    m_best_prop_gain.assign(layers, std::vector<float>(ids, -3.4028235e+38f));
    m_best_prop_node.assign(layers, std::vector<int>(ids, -1));
    for (int p = 0; p < m_graph.m_max_prop_node; ++p) {
        if (!m_graph.node_use(p) || m_bic.m_exps.get_ind(p))
            continue;
        const int l = m_graph.node_layer(p), id = m_graph.node_prop(p);
        const float g = prop_gain(p);
        if (g > m_best_prop_gain[l][id]) {
            m_best_prop_gain[l][id] = g;
            m_best_prop_node[l][id] = p;
        }
    }
    for (int l = 0; l < layers; ++l)
        for (int id = 0; id < ids; ++id) {
            // A property stands in one group only: one already in use isn't added again.
            if (m_best_prop_gain[l][id] <= 0.0f || m_used_props[l].get_ind(id))
                continue;
            std::cerr << "PBGO comp prop " << l << " " << id << " node " << m_best_prop_node[l][id]
                      << " gain " << m_best_prop_gain[l][id] << std::endl;
            m_bic.add_prop_node(m_best_prop_node[l][id]);
            m_used_props[l].set_ind(id);
        }
}

void PBicGreedyOpt::block_prop_modif() {
    if (m_prop_modif_on != 1)
        return;
    m_heap.set_subheap_wgt(prop_heap(), m_heap.get_subheap_wgt(prop_heap()) + m_key_shift);
    m_prop_modif_on = 0;
}

void PBicGreedyOpt::allow_prop_modif() {
    if (m_prop_modif_on != 0)
        return;
    m_heap.set_subheap_wgt(prop_heap(), m_heap.get_subheap_wgt(prop_heap()) - m_key_shift);
    m_prop_modif_on = 1;
}

void PBicGreedyOpt::block_gene_modif() {
    if (m_gene_modif_on != 1)
        return;
    m_heap.set_subheap_wgt(prop_heap(), m_heap.get_subheap_wgt(prop_heap()) - m_key_shift);
    m_gene_modif_on = 0;
}

void PBicGreedyOpt::allow_gene_modif() {
    if (m_gene_modif_on != 0)
        return;
    m_heap.set_subheap_wgt(prop_heap(), m_heap.get_subheap_wgt(prop_heap()) + m_key_shift);
    m_gene_modif_on = 1;
}
