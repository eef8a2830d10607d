// Shared fixture of the property tests: three genes, two conditions, two annotation classes and one
// PSSM, from which layered graphs are built by hand-checkable rules.
#ifndef VESK_TESTS_BIC_PROPFIXTURE_H
#define VESK_TESTS_BIC_PROPFIXTURE_H

#include "ArrayVarEC.h"
#include "BicTestUtil.h"
#include "PropMatrix.h"
#include "PropVarLayers.h"
#include "PropWgtScheme.h"

#include <memory>
#include <random>

// States 0 (zero), 1 (up: probability min(v, 1) for v > 0) and 2 (down: min(-v, 1) for v < 0). A
// missing value would read as down with probability 1: only its own test keeps it from an edge.
class SignValSpace : public ValSpaceBase {
public:
    float get_val_state_prob(int s, float v) const override {
        if (s == 0)
            return v == 0.0f ? 1.0f : 0.0f;
        const float x = s == 1 ? v : -v;
        return x > 0.0f ? (x < 1.0f ? x : 1.0f) : 0.0f;
    }
    int get_state_of_val(float v) const override { return v > 0.0f ? 1 : v < 0.0f ? 2 : 0; }
};

inline options& prop_options() {
    static options& o = bic_options(
        "[Aco]\nEdgePThresh = 0.5\nEdgeNonZeroP = 0.5\nAllowCondOrientation = 1\nPropCardinality = 2\n"
        "Logit = 0\nStateOfGroupPair = { i 6\n0 0 1\n1 0 2\n}\nVarMaxGroupId = 1\n"
        "[Pssm]\nEdgePThresh = 1.0\n[PssmNeg]\nEdgePThresh = -0.5\n"
        "[Layers]\nLogit = 0\nVarCardinality = 2\nVarOrientation = 0\n"
        "[Bins]\nMaxGroupBins = 1\nMinGroupInterval = 100\n"
        "[Wgt]\nBinningScope = Bins\nMinimumPU = 0.01\nLogit = 0\nModelP = { f 3\n0.6 0.8 0.7\n}\n"
        "MaxPU = { f 3\n0.5 0.5 0.5\n}\nLimitNegPosRatio = 0\nMinNegWeightRatio = 0.9\nUseExpWeight = 0\n"
        "[WgtW]\nBinningScope = Bins\nMinimumPU = 0.01\nLogit = 0\nModelP = { f 3\n0.6 0.8 0.7\n}\n"
        "MaxPU = { f 3\n0.5 0.5 0.5\n}\nLimitNegPosRatio = 0\nMinNegWeightRatio = 0.9\nUseExpWeight = 1\n");
    return o;
}

// Values (gene by condition): g0 (0.7, -1), g1 (0.5, missing), g2 (0.9, 0). Classes {g0, g2}, {g1}.
// The PSSM: column 1 is A for sure, column 2 A 0.5, C 0.25, G 0.25; promoters g0 "GAAG" (a best
// site, affinity exactly 1), g1 "GACG" (affinity 0.5), g2 empty.
struct PropWorld {
    PropWorld() : universe(&vs), data(universe) {
        Quiet q;
        universe.init_idspace(3);
        data.m_E = 2;
        data.m_data.resize(3, 2, 0.0f);
        const float vals[3][2] = {{0.7f, -1.0f}, {0.5f, PropMatrix::kMissing}, {0.9f, 0.0f}};
        for (int v = 0; v < 3; ++v)
            for (int e = 0; e < 2; ++e)
                data.m_data(v, e) = vals[v][e];
        classes.m_class_bits.assign(2, ds_bitvec(3));
        classes.m_class_bits[0].set_ind(0);
        classes.m_class_bits[0].set_ind(2);
        classes.m_class_bits[1].set_ind(1);
        pssms.m_pssms.resize(1);
        pssms.m_pssms[0].resize(2);
        pssms.m_pssms[0].m_profile[0].reset({1.0f, 0.0f, 0.0f, 0.0f});
        pssms.m_pssms[0].m_profile[1].reset({0.5f, 0.25f, 0.25f, 0.0f});
        const char* seqs[3] = {"GAAG", "GACG", ""};
        proms.m_promoters.resize(3);
        for (int v = 0; v < 3; ++v) {
            proms.m_promoters[v].assign(seqs[v]);
            proms.m_promoters[v].m_gene_var_id = v;
            proms.m_promoters[v].m_is_empty = seqs[v][0] == 0;
        }
        aco.reset(new PropVarLayerACO(data, prop_options(), "Aco"));
        annot.reset(new PropVarLayerAnnot(classes, prop_options(), "Annot"));
        pssm.reset(new PropVarLayerPSSM(pssms, proms, prop_options(), "Pssm"));
    }
    // A graph of the given layer slots, built.
    std::unique_ptr<PropVarGraphLayers> build(const std::vector<PropVarLayerBase*>& layers) {
        Quiet q;
        std::unique_ptr<PropVarGraphLayers> g(new PropVarGraphLayers(universe, prop_options(), "Layers"));
        g->m_layers = layers;
        g->build_layers();
        return g;
    }
    SignValSpace vs;
    VarUniverse universe;
    StateDataSetReal data;
    VarClasses classes;
    PssmSet pssms;
    DnaSeqGenomePromoters<DnaSequence> proms;
    std::unique_ptr<PropVarLayerACO> aco;
    std::unique_ptr<PropVarLayerAnnot> annot;
    std::unique_ptr<PropVarLayerPSSM> pssm;
};

// Weights read from tables: each variable node is its own bin; an edge weighs the edge entry of its
// pair, its gain is the edge entry less the non-edge one.
class TableWgt : public PropWgtSchemeBase {
public:
    explicit TableWgt(const PropVarGraphBase& g)
        : m_g(g), m_edge(g.m_max_prop_node, g.m_node_count - g.m_max_prop_node, 0.0f),
          m_non(g.m_max_prop_node, g.m_node_count - g.m_max_prop_node, 0.0f), m_pos(g.m_max_prop_node) {
        m_bins.m_bin_num = g.m_node_count - g.m_max_prop_node;
        m_bins.m_var_node_bin.assign(g.m_node_count, 0);
        for (int n = g.m_max_prop_node; n < g.m_node_count; ++n)
            m_bins.m_var_node_bin[n] = n - g.m_max_prop_node;
    }
    float get_edge_weight(int e) const override { return get_edge_prop_weight(m_g.edge_source(e), bin(e)); }
    float get_edge_cnc(int e) const override {
        return get_edge_prop_weight(m_g.edge_source(e), bin(e)) -
               get_non_edge_prop_weight(m_g.edge_source(e), bin(e));
    }
    float get_edge_exp_weight(int p, int b) const override { return m_edge(p, b); }
    float get_non_edge_exp_weight(int p, int b) const override { return m_non(p, b); }
    float get_edge_exp_cnc(int p, int b) const override { return m_edge(p, b) - m_non(p, b); }
    float get_edge_prop_weight(int p, int b) const override { return m_edge(p, b); }
    float get_non_edge_prop_weight(int p, int b) const override { return m_non(p, b); }
    float get_edge_prop_cnc(int p, int b) const override { return m_edge(p, b) - m_non(p, b); }
    const ds_bitvec& get_pos_genes(int p) const override { return m_pos[p]; }
    const VarNodesBinsBase& get_var_nodes_bins() const override { return m_bins; }
    int get_var_node_bin(int node) const override { return m_bins.m_var_node_bin[node]; }

    int bin(int e) const { return m_bins.m_var_node_bin[m_g.edge_dest(e)]; }
    const PropVarGraphBase& m_g;
    Matrix<float> m_edge, m_non;
    std::vector<ds_bitvec> m_pos;
    VarNodesBinsBase m_bins;
};

// `props` properties in `groups` groups of layer 0 (group g is level g / 2 of orientation g % 2),
// `vars` variables in one group, each pair an edge with probability `density`; random weights,
// edges mostly in favour.
struct RandomPropGraph {
    RandomPropGraph(int props, int groups, int vars, double density, std::uint32_t seed) : universe(nullptr) {
        Quiet q;
        universe.init_idspace(vars);
        g.reset(new PropVarGraphLayers(universe, bic_options(""), "Default"));
        g->allocate_max_prop_group(groups, props);
        for (int grp = 0; grp < groups; ++grp)
            for (int p = 0; p < props; ++p)
                g->add_prop_node_to_group(grp, p);
        for (int v = 0; v < vars; ++v)
            g->add_var_node_to_group(0, v);
        std::mt19937 rng(seed);
        std::uniform_real_distribution<float> u(0.0f, 1.0f);
        for (int p = 0; p < g->m_max_prop_node; ++p)
            for (int v = g->m_max_prop_node; v < g->m_node_count; ++v)
                if (u(rng) < density)
                    g->add_edge(p, v, 1.0f, 1.0f);
        wgt.reset(new TableWgt(*g));
        for (int p = 0; p < g->m_max_prop_node; ++p)
            for (int b = 0; b < vars; ++b) {
                wgt->m_edge(p, b) = 0.5f + 2.0f * u(rng);
                wgt->m_non(p, b) = -0.3f - u(rng);
            }
    }
    VarUniverse universe;
    std::unique_ptr<PropVarGraphLayers> g;
    std::unique_ptr<TableWgt> wgt;
};

#endif
