// prop_hash_bench: times the property hash search (ISA growth) on a synthetic layered graph with
// planted modules and reports how well the results recover them; writes the expression matrix, the
// planted modules and the results for bench/prop_hash_bench.py, which runs scikit-learn beside it.
//
//   prop_hash_bench <out dir> [genes conditions pssms classes modules promoter_length]
//   (defaults 6000 300 200 500 10 500)
#include "ArrayVarEC.h"
#include "ISASeedOpti.h"
#include "PHashBiclust.h"
#include "PropVarLayers.h"
#include "PropWgtScheme.h"
#include "Random.h"
#include "ds/BitVecIter.h"
#include "options.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <sstream>

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

// Processor time of the process so far, user and system: the honest figure on a loaded machine.
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

double jaccard(const std::set<int>& a, const std::set<int>& b) {
    int inter = 0;
    for (int x : a)
        inter += b.count(x) ? 1 : 0;
    const int uni = static_cast<int>(a.size() + b.size()) - inter;
    return uni > 0 ? static_cast<double>(inter) / uni : 0.0;
}

struct Module {
    std::set<int> genes, conds;
    std::vector<int> pssms;
    int cls;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr
            << "usage: prop_hash_bench <out dir> [genes conditions pssms classes modules promoter_length]\n";
        return 2;
    }
    const std::string out_dir = argv[1];
    int genes = 6000, conds = 300, npssm = 200, ncls = 500, nmod = 10, plen = 500;
    int* args[] = {&genes, &conds, &npssm, &ncls, &nmod, &plen};
    for (int i = 2; i < argc && i <= 7; ++i)
        *args[i - 2] = std::atoi(argv[i]);
    std::mt19937 rng(29);
    std::normal_distribution<float> gauss(0.0f, 1.0f);
    std::uniform_real_distribution<float> unif(0.0f, 1.0f);

    // Modules: 60 genes and 15 conditions each, disjoint; two PSSMs with a site in 80% of the
    // module's promoters; one class holding the module's genes and 20 others.
    std::vector<int> gene_order(genes), cond_order(conds);
    for (int i = 0; i < genes; ++i)
        gene_order[i] = i;
    for (int i = 0; i < conds; ++i)
        cond_order[i] = i;
    std::shuffle(gene_order.begin(), gene_order.end(), rng);
    std::shuffle(cond_order.begin(), cond_order.end(), rng);
    std::vector<Module> mods(nmod);
    for (int m = 0; m < nmod; ++m) {
        for (int k = 0; k < 60; ++k)
            mods[m].genes.insert(gene_order[m * 60 + k]);
        for (int k = 0; k < 15; ++k)
            mods[m].conds.insert(cond_order[m * 15 + k]);
        mods[m].pssms = {2 * m, 2 * m + 1};
        mods[m].cls = m;
    }

    LinearValSpace vs;
    VarUniverse universe(&vs);
    universe.init_idspace(genes);
    StateDataSetReal data(universe);
    data.m_E = conds;
    data.m_data.resize(genes, conds, 0.0f);
    for (int v = 0; v < genes; ++v)
        for (int e = 0; e < conds; ++e)
            data.m_data(v, e) = gauss(rng);
    for (const Module& m : mods)
        for (int v : m.genes)
            for (int e : m.conds)
                data.m_data(v, e) += 3.0f;

    PssmSet pssms;
    pssms.m_pssms.resize(npssm);
    pssms.m_consensus.assign(npssm, "");
    for (int p = 0; p < npssm; ++p) {
        DnaPSSM& pssm = pssms.m_pssms[p];
        pssm.resize(8 + rng() % 8);
        for (DnaProbVec& col : pssm.m_profile) {
            // One letter dominates each column.
            std::vector<float> pr(4, 0.05f);
            const int top = rng() % 4;
            pr[top] = 0.85f;
            col.reset(pr);
            pssms.m_consensus[p] += "ACGT"[top];
        }
    }
    DnaSeqGenomePromoters<DnaSequence> proms;
    proms.m_promoters.resize(genes);
    std::vector<std::string> seqs(genes);
    for (int v = 0; v < genes; ++v) {
        seqs[v].assign(plen, 'A');
        for (char& ch : seqs[v])
            ch = "ACGT"[rng() % 4];
    }
    for (const Module& m : mods)
        for (int v : m.genes)
            for (int p : m.pssms)
                if (p < npssm && unif(rng) < 0.8f) {
                    const std::string& c = pssms.m_consensus[p];
                    seqs[v].replace(rng() % (plen - c.size()), c.size(), c);
                }
    for (int v = 0; v < genes; ++v) {
        proms.m_promoters[v].assign(seqs[v]);
        proms.m_promoters[v].m_gene_var_id = v;
        proms.m_promoters[v].m_is_empty = false;
    }
    VarClasses classes;
    classes.m_class_bits.assign(ncls, ds_bitvec(genes));
    classes.m_class_names.assign(ncls, "c");
    for (int c = 0; c < ncls; ++c) {
        if (c < nmod) {
            for (int v : mods[c].genes)
                classes.m_class_bits[c].set_ind(v);
            for (int k = 0; k < 20; ++k)
                classes.m_class_bits[c].set_ind(rng() % genes);
        } else {
            for (int k = 10 + rng() % 190; k > 0; --k)
                classes.m_class_bits[c].set_ind(rng() % genes);
        }
    }

    std::istringstream text(
        "[Aco]\nEdgePThresh = 0.5\nEdgeNonZeroP = 0.3\nAllowCondOrientation = 1\n"
        "PropCardinality = 2\nLogit = 0\nStateOfGroupPair = { i 6\n0 0 2\n1 0 0\n}\n"
        "VarMaxGroupId = 1\n[Pssm]\nEdgePThresh = 0.5\n[Layers]\nLogit = 0\nVarCardinality = 2\n"
        "VarOrientation = 0\n[Bins]\nMaxGroupBins = 8\nMinGroupInterval = 2\n[Wgt]\n"
        "BinningScope = Bins\nMinimumPU = 0.001\nLogit = 0\nModelP = { f 3\n0.8 0.5 0.5\n}\n"
        "MaxPU = { f 3\n0.45 0.45 0.45\n}\nLimitNegPosRatio = 0\nMinNegWeightRatio = 0.5\n"
        "UseExpWeight = 0\n"
        "[ISA]\nTG = 2.0\nPropSetInterToConverg = 0.0\nInitTCFactor = 0.8\nMinTC = 2.0\nInitTGFactor = 0.8\n"
        "MinTG = 2.0\nStableIterToStop = 2\nMaxIters = 20\nMinNumProps = 3\nLogit = 0\n"
        "[Hash]\nMinHashDegree = 5\nMaxHashDegree = 400\nMaxHashSize = 4\nMinHashSize = 3\nMaxHashSizeMB = "
        "16\n"
        "TopValNonForcedNeigToSamp = 10\nFocusallProp = 1\nFocusallVar = 0\nDesiredIterNum = 1\n"
        "MaxGrowBics = 2\nMinVarSetSize = 10\nNBestEach = 3\nShouldLocal = 1\nLogit = 0\n"
        "ActivePropGroup = { i 4\n0 1 2 3\n}\nActiveVarGroup = { i 1\n0\n}\nForcePropGroup = { i 1\n2\n}\n");
    options opts;
    opts.read(text, false);
    std::cerr.setstate(std::ios::failbit); // the builders' and the search's progress lines
    Random::reset(5);
    const auto t0 = std::chrono::steady_clock::now();
    const double c0 = cpu_secs();
    PropVarLayerACO aco(data, opts, "Aco");
    PropVarLayerPSSM pl(pssms, proms, opts, "Pssm");
    PropVarLayerAnnot al(classes, opts, "Annot");
    PropVarGraphLayers g(universe, opts, "Layers");
    g.m_layers = {&aco, &pl, &al};
    g.build_layers();
    ArrayVarEC ec(data);
    PropWgtSchemeGroupIndeg wgt(g, ec, opts, "Wgt", true);
    const double t_graph = secs(t0);
    std::cout << "graph " << g.m_max_prop_node << " property nodes, " << g.edges_num()
              << " edges, with weights: " << t_graph << " s wall, " << cpu_secs() - c0 << " s cpu; peak "
              << peak_kb() / 1024 << " MiB" << std::endl;

    const auto t1 = std::chrono::steady_clock::now();
    const double c1 = cpu_secs();
    ISASeedOpti isa(g, wgt, opts, "ISA");
    PHashBiclust search(g, wgt, isa, opts, "Hash");
    const size_t grown = search.m_bics.size();
    search.reduce_bic_set(0.3f);
    const double t_search = secs(t1);
    std::cout << "hash search: " << search.m_cand_count << " candidates, " << grown << " distinct grown, "
              << search.m_bics.size() << " kept: " << t_search << " s wall, " << cpu_secs() - c1
              << " s cpu; peak " << peak_kb() / 1024 << " MiB" << std::endl;

    // Results as gene ids and expression condition ids (both orientations count).
    std::vector<std::set<int>> res_genes, res_conds;
    for (const PropVarBiclust& b : search.m_bics) {
        if (b.m_vars.on_bits() == 0)
            continue;
        std::set<int> gs, cs;
        for (ds_bitvec_iter v(b.m_vars); v; ++v)
            gs.insert(g.node_var(v));
        for (ds_bitvec_iter p(b.m_exps); p; ++p)
            if (g.node_layer(p) == 0)
                cs.insert(g.node_prop(p));
        res_genes.push_back(gs);
        res_conds.push_back(cs);
    }
    double recovery = 0.0, relevance = 0.0;
    for (const Module& m : mods) {
        double best = 0.0;
        for (const std::set<int>& r : res_genes)
            best = std::max(best, jaccard(m.genes, r));
        recovery += best / nmod;
    }
    for (const std::set<int>& r : res_genes) {
        double best = 0.0;
        for (const Module& m : mods)
            best = std::max(best, jaccard(m.genes, r));
        relevance += res_genes.empty() ? 0.0 : best / res_genes.size();
    }
    std::cout << "genes Jaccard: recovery " << recovery << ", relevance " << relevance << " over "
              << res_genes.size() << " results" << std::endl;

    std::ofstream expr(out_dir + "/expr.tsv"), truth(out_dir + "/truth.tsv"), ours(out_dir + "/ours.tsv");
    for (int v = 0; v < genes; ++v)
        for (int e = 0; e < conds; ++e)
            expr << data.m_data(v, e) << (e + 1 < conds ? "\t" : "\n");
    auto line = [](std::ofstream& out, const std::set<int>& gs, const std::set<int>& cs) {
        const char* sep = "";
        for (int x : gs) {
            out << sep << x;
            sep = ",";
        }
        out << "\t";
        sep = "";
        for (int x : cs) {
            out << sep << x;
            sep = ",";
        }
        out << "\n";
    };
    for (const Module& m : mods)
        line(truth, m.genes, m.conds);
    for (size_t i = 0; i < res_genes.size(); ++i)
        line(ours, res_genes[i], res_conds[i]);
    return expr && truth && ours ? 0 : 1;
}
