// prop_cover_bench: times the layered property graph with its weights and the greedy set cover on
// synthetic data, and the cover against a plain greedy that recomputes every gain at every step.
// Then the property greedy optimiser grows the candidates on the same graph, beside a plain greedy
// walk that recomputes every node's margin at every step, and once more with the PSSM layer ranked.
//
//   prop_cover_bench [genes conditions promoter_length pssms classes candidates [pssmk pssmd]]
//   (defaults 6000 300 1000 205 500 1000; with pssmk and pssmd, the PSSMs are read from those count
//   tables, e.g. the JASPAR set that bench/data/fetch_seqpack.sh derives, instead of drawn at random)
#include "ArrayVarEC.h"
#include "BicSetCoverGreedy.h"
#include "PBicGreedyOpt.h"
#include "PropVarLayers.h"
#include "PropWgtScheme.h"
#include "Random.h"
#include "ds/BitVecIter.h"
#include "options.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Up (state 2) with probability min(v / 3, 1) for v > 0, down (0) likewise, zero state 1.
class LinearValSpace : public ValSpaceBase {
public:
    int get_zero_state() const override { return 1; }
    float get_val_state_prob(int s, float v) const override {
        const float up = v > 0.0f ? std::min(v / 3.0f, 1.0f) : 0.0f,
                    down = v < 0.0f ? std::min(-v / 3.0f, 1.0f) : 0.0f;
        return s == 2 ? up : s == 0 ? down : 1.0f - up - down;
    }
    int get_state_of_val(float v) const override { return v > 1.0f ? 2 : v < -1.0f ? 0 : 1; }
};

double secs(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// User plus system CPU seconds of the process: the machine may be loaded by other work.
double cpu_secs() {
    rusage u;
    getrusage(RUSAGE_SELF, &u);
    return u.ru_utime.tv_sec + u.ru_stime.tv_sec + 1e-6 * (u.ru_utime.tv_usec + u.ru_stime.tv_usec);
}

long peak_kb() {
    rusage u;
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

// The plain greedy: counts from the active set and every gain recomputed at each step.
int plain_cover(const BicSetCoverGreedy& c, const PBicSet& set, std::vector<bool>& active) {
    const int nb = set.size(), nf = static_cast<int>(c.m_focus_props.size());
    const int nn = c.m_graph.m_node_count;
    active.assign(nb, false);
    int steps = 0;
    std::vector<int> count(static_cast<size_t>(nf) * nn);
    for (; steps < nb; ++steps) {
        std::fill(count.begin(), count.end(), 0);
        for (int b = 0; b < nb; ++b)
            if (active[b])
                for (ds_bitvec_iter v(set.m_bics[b].m_vars); v; ++v)
                    for (int p : c.m_bic_props[b])
                        ++count[static_cast<size_t>(p) * nn + v];
        int best = -1;
        double bg = 1.0;
        for (int b = 0; b < nb; ++b) {
            double g = 0.0;
            for (ds_bitvec_iter v(set.m_bics[b].m_vars); v; ++v)
                for (int p : c.m_bic_props[b]) {
                    if (!c.m_prop_bics[p].get_ind(b))
                        continue;
                    const int n = count[static_cast<size_t>(p) * nn + v];
                    const bool edge = c.m_cover(p, v) & BicSetCoverGreedy::kEdgeBit;
                    const int bin = c.m_wgt.get_var_node_bin(v);
                    const double w = edge ? c.m_wgt.get_edge_prop_weight(c.m_focus_props[p], bin)
                                          : c.m_wgt.get_non_edge_prop_weight(c.m_focus_props[p], bin);
                    if (!active[b] && n == 0)
                        g += w;
                    if (active[b] && n == 1)
                        g -= w;
                }
            if (g > bg) {
                bg = g;
                best = b;
            }
        }
        if (best < 0)
            break;
        active[best] = !active[best];
    }
    return steps;
}

// The plain greedy walk: every node's margin recomputed from the graph at each step, the best move
// taken while it gains more than 0.00001; one property id and one variable id in one group only.
int plain_grow(const PropVarGraphLayers& g, PropVarBiclust& b) {
    std::vector<std::vector<bool>> used_prop(g.m_layers.size(),
                                             std::vector<bool>(g.m_prop_group_nodes.cols()));
    std::vector<bool> used_var(g.m_var_num);
    for (ds_bitvec_iter p(b.m_exps); p; ++p)
        used_prop[g.node_layer(p)][g.node_prop(p)] = true;
    for (ds_bitvec_iter v(b.m_vars); v; ++v)
        used_var[g.node_var(v)] = true;
    int steps = 0;
    for (;; ++steps) {
        int best = -1;
        float bg = 0.00001f;
        for (int p = 0; p < g.m_max_prop_node; ++p) {
            const bool in = b.m_exps.get_ind(p);
            if (!in && used_prop[g.node_layer(p)][g.node_prop(p)])
                continue;
            const float m = b.get_prop_margin(p);
            if ((in ? -m : m) > bg) {
                bg = in ? -m : m;
                best = p;
            }
        }
        for (int v = g.m_max_prop_node; v < g.m_node_count; ++v) {
            const bool in = b.m_vars.get_ind(v);
            if (!in && used_var[g.node_var(v)])
                continue;
            const float m = b.get_var_margin(v);
            if ((in ? -m : m) > bg) {
                bg = in ? -m : m;
                best = v;
            }
        }
        if (best < 0)
            return steps;
        if (g.is_prop_node(best)) {
            const bool in = b.m_exps.get_ind(best);
            in ? b.del_prop_node(best) : b.add_prop_node(best);
            used_prop[g.node_layer(best)][g.node_prop(best)] = !in;
        } else {
            const bool in = b.m_vars.get_ind(best);
            in ? b.del_var_node(best) : b.add_var_node(best);
            used_var[g.node_var(best)] = !in;
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    int genes = 6000, conds = 300, plen = 1000, npssm = 205, ncls = 500, ncand = 1000;
    int* args[] = {&genes, &conds, &plen, &npssm, &ncls, &ncand};
    for (int i = 1; i < argc && i <= 6; ++i)
        *args[i - 1] = std::atoi(argv[i]);
    std::mt19937 rng(17);
    std::normal_distribution<float> gauss(0.0f, 1.0f);
    std::uniform_real_distribution<float> unif(0.0f, 1.0f);

    LinearValSpace vs;
    VarUniverse universe(&vs);
    universe.init_idspace(genes);
    StateDataSetReal data(universe);
    data.m_E = conds;
    data.m_data.resize(genes, conds, 0.0f);
    for (int v = 0; v < genes; ++v)
        for (int e = 0; e < conds; ++e)
            data.m_data(v, e) = gauss(rng) + ((v % 50 == e % 50 && v < 2000) ? 3.0f : 0.0f);
    PssmSet pssms;
    if (argc > 8) {
        std::streambuf* err = std::cerr.rdbuf(nullptr);
        pssms.read(argv[7], argv[8], 0, 0, 0.025f, false);
        std::cerr.rdbuf(err);
        npssm = pssms.size();
        std::cout << "PSSMs read from " << argv[8] << ": " << npssm << std::endl;
    } else
        pssms.m_pssms.resize(npssm);
    for (DnaPSSM& p : pssms.m_pssms) {
        if (argc > 8)
            break;
        p.resize(8 + rng() % 8);
        for (DnaProbVec& col : p.m_profile) {
            std::vector<float> pr(4);
            for (float& x : pr)
                x = 0.05f + std::pow(unif(rng), 3.0f);
            float s = pr[0] + pr[1] + pr[2] + pr[3];
            for (float& x : pr)
                x /= s;
            col.reset(pr);
        }
    }
    if (argc <= 8)
        pssms.m_consensus.assign(npssm, "");
    DnaSeqGenomePromoters<DnaSequence> proms;
    proms.m_promoters.resize(genes);
    for (int v = 0; v < genes; ++v) {
        std::string s(plen, 'A');
        for (char& ch : s)
            ch = "ACGT"[rng() % 4];
        proms.m_promoters[v].assign(s);
        proms.m_promoters[v].m_gene_var_id = v;
        proms.m_promoters[v].m_is_empty = false;
    }
    VarClasses classes;
    classes.m_class_bits.assign(ncls, ds_bitvec(genes));
    classes.m_class_names.assign(ncls, "c");
    for (int c = 0; c < ncls; ++c)
        for (int k = 10 + rng() % 190; k > 0; --k)
            classes.m_class_bits[c].set_ind(rng() % genes);

    std::istringstream text(
        "[Aco]\nEdgePThresh = 0.5\nEdgeNonZeroP = 0.3\nAllowCondOrientation = 1\n"
        "PropCardinality = 2\nLogit = 0\nStateOfGroupPair = { i 6\n0 0 2\n1 0 0\n}\n"
        "VarMaxGroupId = 1\n[Pssm]\nEdgePThresh = 0.05\n[Layers]\nLogit = 0\nVarCardinality = 2\n"
        "VarOrientation = 0\n[Bins]\nMaxGroupBins = 8\nMinGroupInterval = 2\n[Wgt]\n"
        "BinningScope = Bins\nMinimumPU = 0.001\nLogit = 0\nModelP = { f 3\n0.8 0.5 0.5\n}\n"
        "MaxPU = { f 3\n0.45 0.45 0.45\n}\nLimitNegPosRatio = 0\nMinNegWeightRatio = 0.5\n"
        "UseExpWeight = 0\n");
    options opts;
    opts.read(text, false);
    std::cerr.setstate(std::ios::failbit); // the builders' progress lines
    const auto t0 = std::chrono::steady_clock::now();
    PropVarLayerACO aco(data, opts, "Aco");
    PropVarLayerPSSM pl(pssms, proms, opts, "Pssm");
    PropVarLayerAnnot al(classes, opts, "Annot");
    PropVarGraphLayers g(universe, opts, "Layers");
    g.m_layers = {&aco, &pl, &al};
    g.build_layers();
    const double t_graph = secs(t0);
    const auto t1 = std::chrono::steady_clock::now();
    ArrayVarEC ec(data);
    PropWgtSchemeGroupIndeg wgt(g, ec, opts, "Wgt", true);
    const double t_wgt = secs(t1);
    std::cout << "graph " << g.m_max_prop_node << " property nodes, " << g.edges_num()
              << " edges: " << t_graph << " s; weights " << t_wgt << " s; peak " << peak_kb() / 1024 << " MiB"
              << std::endl;

    PBicSet set(g, wgt);
    for (int i = 0; i < ncand; ++i) {
        // A property with part of its neighbours and a few random variables and properties.
        PropVarBiclust& b = set.m_bics[set.add_bic()];
        const int p0 = rng() % g.m_max_prop_node;
        b.add_prop_node(p0);
        for (int e = g.web().root_head(0, p0); e != -1; e = g.web().next_node(0, e))
            if (rng() % 3 != 0 && b.m_vars.on_bits() < 100)
                b.add_var_node(g.edge_dest(e));
        for (int k = 5 + rng() % 10; k > 0; --k) {
            const int node = g.m_var_group_nodes(0, rng() % genes);
            if (!b.m_vars.get_ind(node))
                b.add_var_node(node);
        }
        for (int k = rng() % 3; k > 0; --k) {
            const int p = rng() % g.m_max_prop_node;
            if (!b.m_exps.get_ind(p))
                b.add_prop_node(p);
        }
    }
    ds_bitvec focus(g.m_max_prop_node);
    focus.set(true);
    BicSetCoverGreedy cover(g, wgt, set, nullptr, 0.0f, false, false);
    const auto t2 = std::chrono::steady_clock::now();
    cover.optimize(focus);
    const double t_cover = secs(t2);
    std::vector<bool> active;
    const auto t3 = std::chrono::steady_clock::now();
    const int steps = plain_cover(cover, set, active);
    const double t_plain = secs(t3);
    int same = 0;
    for (int b = 0; b < set.size(); ++b)
        same += active[b] == cover.is_active(b);
    std::cout << "cover of " << ncand << " candidates: " << steps << " steps, " << t_cover << " s ("
              << steps / t_cover << " steps/s); recomputing model " << t_plain << " s (" << steps / t_plain
              << " steps/s), speed-up " << t_plain / t_cover << "; same selection " << same << "/"
              << set.size() << std::endl;

    // The property greedy optimiser on the first candidates as seeds.
    std::istringstream gtext(
        "[Greedy]\nCanDelInitProp = 1\nCanAddProp = 1\nCanDelProp = 1\nCanDelInitVar = 1\n"
        "Logit = 0\nAddPropCostFactor = 1\nDelPropCostFactor = 1\nPSSMPruneFactor = 0\n"
        "[Ranked]\nCanDelInitProp = 1\nCanAddProp = 1\nCanDelProp = 1\nCanDelInitVar = 1\n"
        "Logit = 0\nAddPropCostFactor = 1\nDelPropCostFactor = 1\nPSSMPruneFactor = 0\n"
        "IsPropRankedLayer = { i 3\n0 1 0\n}\n[RankedObs]\nAddPropFactor = 1\n"
        "DelPropFactor = 1\nNumOfAffinBins = 20\nThreshUpdateFactor = 0.2\n"
        "ScoreDerivUpdateFactor = 0.05\nLogit = 0\nMinNumOfGenes = 5\nMinLogPV = 5\n"
        "FirstBinMinSize = 30\n");
    opts.read(gtext, false);
    // The recomputing walk costs a pass over the graph per move: it runs on the first seeds only.
    const int ngrow = std::min(200, set.size()), nplain = std::min(3, set.size());
    for (const char* scope : {"Greedy", "Ranked"}) {
        const double t4 = cpu_secs();
        PBicGreedyOpt opt(g, wgt, opts, scope);
        const double t_init = cpu_secs() - t4;
        long moves = 0;
        std::vector<PropVarBiclust> grown;
        const double t5 = cpu_secs();
        for (int b = 0; b < ngrow; ++b) {
            grown.push_back(set.m_bics[b]);
            opt.grow(grown.back());
            moves += opt.m_moves;
        }
        const double t_grow = cpu_secs() - t5;
        std::cout << "greedy (" << scope << ") observers " << t_init << " CPU s; " << ngrow << " grows, "
                  << moves << " moves: " << t_grow << " CPU s (" << moves / t_grow << " moves/s); peak "
                  << peak_kb() / 1024 << " MiB" << std::endl;
        if (std::string(scope) != "Greedy")
            continue;
        long plain_steps = 0, heap_moves = 0;
        int same_grown = 0;
        const double t6 = cpu_secs();
        for (int b = 0; b < nplain; ++b) {
            PropVarBiclust p(set.m_bics[b]);
            plain_steps += plain_grow(g, p);
            same_grown += p == grown[b];
        }
        const double t_plain_grow = cpu_secs() - t6;
        const double t7 = cpu_secs();
        for (int b = 0; b < nplain; ++b) {
            PropVarBiclust h(set.m_bics[b]);
            opt.grow(h);
            heap_moves += opt.m_moves;
        }
        const double t_heap = cpu_secs() - t7;
        std::cout << "first " << nplain << " seeds: heap greedy " << heap_moves << " moves " << t_heap
                  << " CPU s; recomputing walk " << plain_steps << " moves " << t_plain_grow
                  << " CPU s, speed-up " << t_plain_grow / t_heap << " per grow; same result " << same_grown
                  << "/" << nplain << std::endl;
    }
    return 0;
}
