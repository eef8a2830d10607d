// Fixtures of the bicluster and optimiser tests: synthetic expression tables with a planted module
// turned into a real graph and weight scheme, a weight scheme given by hand, and from-scratch sums.
#ifndef VESK_TESTS_BIC_BICSYNTH_H
#define VESK_TESTS_BIC_BICSYNTH_H

#include "ArrayVarEC.h"
#include "BicTestUtil.h"
#include "DynBiclust.h"
#include "ValSpaceProb.h"
#include "WgtSchemeGroupIndeg.h"
#include "ds/BitVecIter.h"
#include "plinear.h"

#include <cmath>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

// Three states, 0 down, 1 no change (the zero state), 2 up, as soft membership functions.
inline ValSpaceProb* synth_space() {
    static ValSpaceProb* vs = nullptr;
    if (!vs) {
        static sf_plinear<2> down, up;
        static sf_plinear<3> flat;
        down.init({-2.0f, -0.5f}, {1.0f, 0.0f});
        flat.init({-1.0f, 0.0f, 1.0f}, {0.0f, 1.0f, 0.0f});
        up.init({0.5f, 2.0f}, {0.0f, 1.0f});
        static options none;
        vs = new ValSpaceProb(none, "", true);
        vs->init({&down, &flat, &up}, -4.0f, 1.0f, 4.0f, 0.01f, 0);
    }
    return vs;
}

// Scopes: "G<o>" builds the graph (o = 1: both orientations on both sides), "W" the weights with
// ModelP given to the constructor, "Bins" the binning.
inline options& synth_options() {
    static options* o = nullptr;
    if (!o) {
        std::string t;
        for (int orient = 0; orient < 2; ++orient)
            t += "[G" + std::to_string(orient) +
                 "]\nLogit = 0\nEdgePThresh = 0.2\nEdgeNonZeroP = 0.3\nAllowConditionOrientation = " +
                 std::to_string(orient) + "\nAllowVarOrientation = " + std::to_string(orient) +
                 "\nExpCardinality = 2\nVarCardinality = 2\nFactors = { f 1\n1.0\n}\n"
                 "StateOfGroupPair = { i 12\n0 0 2\n0 1 0\n1 0 0\n1 1 2\n}\nBuildEdgesFromFile = 0\n";
        t += "[Bins]\nMaxGroupBins = 8\nMinGroupInterval = 2\n"
             "[W]\nBinningScope = Bins\nMinimumPU = 0.001\nLogit = 0\nLimitNegPosRatio = 0\n"
             "MinNegWeightRatio = 0.5\nUseSeriesFactor = 0\nUseExpWeight = 0\nMaxPatchPU = 0.9\n";
        o = &bic_options(t);
    }
    return *o;
}

// An optimiser scope; flags: CanDelInitExp, CanAddExp, CanDelExp, CanDelInitVar, Logit.
inline std::string greedy_text(const std::string& scope, const std::string& flags = "11110", float add = 1.0f,
                               float del = 1.0f) {
    std::ostringstream t;
    t << "[" << scope << "]\nCanDelInitExp = " << flags[0] << "\nCanAddExp = " << flags[1]
      << "\nCanDelExp = " << flags[2] << "\nCanDelInitVar = " << flags[3] << "\nLogit = " << flags[4]
      << "\nAddExpCostFactor = " << add << "\nDelExpCostFactor = " << del << "\n";
    return t.str();
}

// Genes shifted by `shift` in some conditions of a synthetic table.
struct Planting {
    std::vector<int> genes, conds;
    float shift;
};

// A conditions x genes table of standard normal noise; the genes of each planting are shifted by its
// shift in its conditions, in turn; then, if `missing` is above 0, each cell in turn is made missing
// with that chance. The graph, the measurement classes and a WgtSchemeGroupIndeg with ModelP
// `model_p` are built on it.
struct Synth {
    Synth(int conds, int genes, const std::vector<int>& pconds, const std::vector<int>& pgenes, float shift,
          unsigned seed, bool orient, float model_p = 0.8f)
        : Synth(conds, genes, {{pgenes, pconds, shift}}, seed, orient, model_p) {}
    Synth(int conds, int genes, const std::vector<Planting>& planted, unsigned seed, bool orient,
          float model_p = 0.8f, float missing = 0.0f)
        : universe(synth_space()), data(universe) {
        Quiet q;
        universe.init_idspace(genes);
        data.set_max_eid(conds, 0.0f);
        std::mt19937 rng(seed);
        std::normal_distribution<float> noise(0.0f, 1.0f);
        for (int v = 0; v < genes; ++v)
            for (int e = 0; e < conds; ++e)
                data.m_data(v, e) = noise(rng);
        for (const Planting& p : planted)
            for (int v : p.genes)
                for (int e : p.conds)
                    data.m_data(v, e) += p.shift;
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        for (int v = 0; missing > 0.0f && v < genes; ++v)
            for (int e = 0; e < conds; ++e)
                if (unit(rng) < missing)
                    data.m_data(v, e) = -3.4028235e+38f;
        graph.reset(new ExpVarGraphACO(universe, data, synth_options(), orient ? "G1" : "G0", true));
        ec.reset(new ArrayVarEC(data));
        wgt.reset(new WgtSchemeGroupIndeg(*graph, *ec, synth_options(), "W", model_p, true));
    }
    int exp_node(int group, int cond) const { return graph->m_exp_group_nodes(group, cond); }
    int var_node(int group, int gene) const { return graph->m_var_group_nodes(group, gene); }

    VarUniverse universe;
    StateDataSetReal data;
    std::unique_ptr<ExpVarGraphACO> graph;
    std::unique_ptr<ArrayVarEC> ec;
    std::unique_ptr<WgtSchemeGroupIndeg> wgt;
};

// Weights given by hand on a hand-built graph: a bin per variable node, edge and non-edge weights by
// (bin, condition node), a weight per edge; an edge's cnc is its weight minus the non-edge weight of
// its pair, as in the real scheme.
class HandWgt : public WgtSchemeBase {
public:
    HandWgt(const ExpVarGraphBase& g, std::vector<int> node_bin, int bins) : m_g(g) {
        m_bins.m_bin_num = bins;
        m_bins.m_var_node_bin = std::move(node_bin);
        m_edge.assign(bins, std::vector<float>(g.m_max_exp_node, 0.0f));
        m_non_edge = m_edge;
        m_edge_w.assign(g.m_edge_count, 0.0f);
        m_var_w.assign(g.m_node_count, 0.0f);
    }
    float get_edge_weight(int edge) const override { return m_edge_w[edge]; }
    float get_edge_cnc(int edge) const override {
        return m_edge_w[edge] - m_non_edge[get_var_node_bin(m_g.edge_dest(edge))][m_g.edge_source(edge)];
    }
    float get_edge_exp_weight(int e, int bin) const override { return m_edge[bin][e]; }
    float get_non_edge_exp_weight(int e, int bin) const override { return m_non_edge[bin][e]; }
    float get_edge_exp_cnc(int e, int bin) const override { return m_edge[bin][e] - m_non_edge[bin][e]; }
    const VarNodesBinsBase& get_var_nodes_bins() const override { return m_bins; }
    int get_var_node_bin(int node) const override { return m_bins.m_var_node_bin[node]; }
    float get_var_node_weight(int node) const override { return m_var_w[node]; }

    const ExpVarGraphBase& m_g;
    VarNodesBinsBase m_bins;
    std::vector<std::vector<float>> m_edge, m_non_edge; // [bin][condition node]
    std::vector<float> m_edge_w;                        // by edge
    std::vector<float> m_var_w;                         // by node
};

// Pair weights from scratch: edge ids in a dense (condition node, node) table, and the weight of a
// pair as the score defines it (the edge's weight, else the non-edge weight of its bin).
struct PairTable {
    PairTable(const ExpVarGraphBase& g, const WgtSchemeBase& w) : m_g(g), m_w(w) {
        m_edge.assign(static_cast<size_t>(g.m_max_exp_node) * g.m_node_count, -1);
        for (int id = 0; id < g.m_edge_count; ++id)
            if (g.edge_use(id))
                m_edge[static_cast<size_t>(g.edge_source(id)) * g.m_node_count + g.edge_dest(id)] = id;
    }
    int edge(int e, int v) const { return m_edge[static_cast<size_t>(e) * m_g.m_node_count + v]; }
    double pair(int e, int v) const {
        const int id = edge(e, v);
        return id != -1 ? m_w.get_edge_weight(id) : m_w.get_non_edge_exp_weight(e, m_w.get_var_node_bin(v));
    }
    // Margins over the given members of the other side; `mag` gets the sum of magnitudes.
    double exp_margin(const std::vector<int>& vars, int e, double* mag = nullptr) const {
        return sum(
            vars, [&](int v) { return pair(e, v); }, mag);
    }
    double var_margin(const std::vector<int>& exps, int v, double* mag = nullptr) const {
        return sum(
            exps, [&](int e) { return pair(e, v); }, mag);
    }
    template <class F> static double sum(const std::vector<int>& xs, F f, double* mag) {
        double s = 0, m = 0;
        for (int x : xs) {
            s += f(x);
            m += std::fabs(f(x));
        }
        if (mag)
            *mag = m;
        return s;
    }
    double score(const ExpVarBiclust& b, double* mag = nullptr) const {
        const std::vector<int> exps = members(b.m_exps), vars = members(b.m_vars);
        double s = 0, m = 0;
        for (int v : vars) {
            double mv = 0;
            s += var_margin(exps, v, &mv) + m_w.get_var_node_weight(v);
            m += mv + std::fabs(m_w.get_var_node_weight(v));
        }
        if (mag)
            *mag = m;
        return s;
    }
    static std::vector<int> members(const ds_bitvec& set) {
        std::vector<int> out;
        for (ds_bitvec_iter it(set); it; ++it)
            out.push_back(it);
        return out;
    }

    const ExpVarGraphBase& m_g;
    const WgtSchemeBase& m_w;
    std::vector<int> m_edge;
};

// A bicluster of the given condition and variable nodes.
inline ExpVarBiclust make_bic(const ExpVarGraphBase& g, WgtSchemeBase& w, const std::vector<int>& exps,
                              const std::vector<int>& vars) {
    ExpVarBiclust b(g, w);
    for (int e : exps)
        b.add_exp_node(e);
    for (int v : vars)
        b.add_var_node(v);
    return b;
}

// A hand graph of `genes` genes and conditions c0, c1, ... of `conds`: the graph's edges weigh 1, the
// scheme's edges the given weights; nodes in the given bins (all in bin 0 if none are given).
struct HandFix {
    HandFix(int genes, int conds, const std::vector<int>& exp_groups, const std::vector<int>& var_groups,
            const Edges& edges, int max_var_group, std::vector<int> bins = {}, int bin_num = 1)
        : d(genes, nullptr, cond_key(conds), "") {
        Edges unit;
        for (const auto& e : edges)
            unit.emplace_back(std::get<0>(e), std::get<1>(e), 1.0f);
        g.reset(hand_graph(d, exp_groups, var_groups, unit, max_var_group));
        bins.resize(g->m_node_count, 0);
        w.reset(new HandWgt(*g, bins, bin_num));
        for (size_t i = 0; i < edges.size(); ++i)
            w->m_edge_w[i] = std::get<2>(edges[i]);
    }
    ExpVarBiclust bic(const std::vector<int>& exps, const std::vector<int>& vars) const {
        return make_bic(*g, *w, exps, vars);
    }
    BicData d;
    std::unique_ptr<ExpVarGraphACO> g;
    std::unique_ptr<HandWgt> w;
};

// One bin, every non-edge weighing `non_edge`.
struct OneBin : HandFix {
    OneBin(const std::vector<int>& exp_groups, const std::vector<int>& var_groups, const Edges& edges,
           float non_edge, int genes, int conds, int max_var_group)
        : HandFix(genes, conds, exp_groups, var_groups, edges, max_var_group) {
        w->m_non_edge[0].assign(w->m_non_edge[0].size(), non_edge);
    }
};

#endif
