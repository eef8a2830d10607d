// Bins and weight schemes on a hand-built two-bin graph, against the tables of the independent script
// data/bic/wgt_reference.py (data/bic/README.md says how they were made).
#include "ArrayVarEC.h"
#include "BicTestUtil.h"
#include "WgtSchemeGroupIndeg.h"

#include <cmath>
#include <fstream>
#include <map>
#include <memory>

namespace {

// Conditions 0-3: series 0 0 1 0, weights 1 0.5 2 1.5, classes 0 1 none 1; condition 3 is on array
// type 1, which lacks variables 4-5 (measurement class 1; variables 0-3 are class 0). Condition
// nodes 0-3 are conditions 0-3 in group 0, nodes 4-6 conditions 0-2 in group 1; variable nodes
// 7-12 are variables 0-5 in variable group 1.
struct WGraph {
    WGraph() : d(6, nullptr, "", "") {
        Quiet q;
        std::istringstream key("0 e0 x 0 1.0 0\n1 e1 x 0 0.5 0\n2 e2 x 1 2.0 0\n3 e3 x 0 1.5 1\n"), cells(""),
            arrk("0 A\n1 B\n"), arrd("0 0\n0 1\n0 2\n0 3\n0 4\n0 5\n1 0\n1 1\n1 2\n1 3\n"),
            ckey("0 in\n1 out\n"), cassoc("0 0 0\n0 1 1\n0 1 3\n");
        d.data.read_multi(key, cells, arrk, arrd, 0.0f);
        ec.reset(new ArrayVarEC(d.data));
        classes.reset(new ExpClasses(ckey, cassoc, 4));
        q.done();
        g.reset(hand_graph(d, {0, 0, 0, 0, 1, 1, 1}, {1, 1, 1, 1, 1, 1},
                           edges_of("0-7 0-8 0-9:0.5 0-11 1-7 1-10 2-7 2-8 2-11:0.8 2-12 3-8:0.6 3-10 4-9 "
                                    "4-10 5-11 5-12 6-12:0.5")));
        g->m_group_pair_state(0, 1) = 2;
        g->m_group_pair_state(1, 1) = 1;
    }
    BicData d;
    std::unique_ptr<ArrayVarEC> ec;
    std::unique_ptr<ExpClasses> classes;
    std::unique_ptr<ExpVarGraphACO> g;
};

// Scheme scopes differ in LimitNegPosRatio (read as a float flag), UseSeriesFactor, UseExpWeight.
options& wgt_options() {
    static options* o = nullptr;
    if (!o) {
        std::string t =
            "[B1]\nMaxGroupBins = 1\nMinGroupInterval = 100\n[B3]\nMaxGroupBins = 3\nMinGroupInterval = 1\n";
        for (const char* s : {"plain 0 0 0 0.01", "limit 0.5 0 0 0.01", "factors 1 1 1 0.01", "hs 1 1 1 0.01",
                              "nopu 0 0 0 0"}) {
            std::istringstream in(s);
            std::string name, limit, series, expw, pu;
            in >> name >> limit >> series >> expw >> pu;
            t += "[" + name + "]\nBinningScope = B1\nMinimumPU = " + pu +
                 "\nLogit = 0\nLimitNegPosRatio = " + limit +
                 "\nMinNegWeightRatio = 0.9\nUseSeriesFactor = " + series + "\nUseExpWeight = " + expw +
                 "\nMaxPatchPU = 0.45\nNonClassPFactor = 1.5\n";
        }
        o = &bic_options(t);
    }
    return *o;
}

// Lines of wgt_expected.txt by their leading words ("plain cell 0 3", "hs edge 5", "B3 bin 2").
const std::map<std::string, std::vector<std::string>>& ref() {
    static std::map<std::string, std::vector<std::string>> out;
    if (out.empty()) {
        std::ifstream in((source_dir() + "/data/bic/wgt_expected.txt").c_str());
        std::string line;
        while (std::getline(in, line)) {
            std::istringstream ss(line);
            std::vector<std::string> w;
            for (std::string t; ss >> t;)
                w.push_back(t);
            const size_t head = w[1] == "cell" ? 4 : 3;
            std::string key = w[0];
            for (size_t i = 1; i < head; ++i)
                key += " " + w[i];
            out[key].assign(w.begin() + head, w.end());
        }
    }
    return out;
}

// The reference rounds log by way of double precision: allow an ulp or two.
void expect_close(float got, const std::string& key, size_t i) {
    ASSERT_EQ(ref().count(key), 1u) << key;
    const double w = std::stod(ref().at(key).at(i));
    EXPECT_NEAR(got, w, 1e-6 + 4e-7 * std::fabs(w)) << key << " [" << i << "]";
}

void expect_tables(const WgtSchemeGroupIndeg& s, const std::string& cfg) {
    ASSERT_EQ(s.m_bins.m_bin_num, 2);
    for (int b = 0; b < 2; ++b)
        for (int e = 0; e < 7; ++e) {
            const std::string key = cfg + " cell " + std::to_string(b) + " " + std::to_string(e);
            expect_close(s.get_edge_exp_weight(e, b), key, 0);
            expect_close(s.get_non_edge_exp_weight(e, b), key, 1);
            expect_close(s.get_edge_exp_cnc(e, b), key, 2);
        }
    for (int id = 0; id < 17; ++id) {
        expect_close(s.get_edge_weight(id), cfg + " edge " + std::to_string(id), 0);
        expect_close(s.get_edge_cnc(id), cfg + " edge " + std::to_string(id), 1);
    }
}

} // namespace

TEST(VarNodesBinsGroupIndeg, BinsByKeyOrderWithMeanDegrees) {
    WGraph w;
    for (const std::string scope : {"B1", "B3"}) {
        Quiet q;
        VarNodesBinsGroupIndeg bins(*w.g, *w.ec, wgt_options(), scope);
        const std::string log = q.done();
        const int n = scope == "B1" ? 2 : 5;
        ASSERT_EQ(bins.m_bin_num, n) << scope;
        EXPECT_NE(log.find("VNBinGIndeg max bin = " + std::to_string(n) + "\n"), std::string::npos);
        EXPECT_EQ(std::vector<int>(bins.m_var_node_bin.begin(), bins.m_var_node_bin.begin() + 7),
                  std::vector<int>(7, 0));
        for (int b = 0; b < n; ++b) {
            const std::string key = scope + " bin " + std::to_string(b);
            const std::vector<std::string>& v = ref().at(key); // vg X ec Y indeg g0 g1 nodes ...
            EXPECT_EQ(bins.get_bin_var_group(b), std::stoi(v[1])) << key;
            EXPECT_EQ(bins.m_bin_ec[b], std::stoi(v[3])) << key;
            expect_close(bins.m_bin_group_indeg(b, 0), key, 5);
            expect_close(bins.m_bin_group_indeg(b, 1), key, 6);
            EXPECT_EQ(bins.m_bin_size[b], static_cast<int>(v.size()) - 8) << key;
            for (size_t i = 8; i < v.size(); ++i)
                EXPECT_EQ(bins.get_var_node_bin(std::stoi(v[i])), b) << key;
            // Condition nodes of group 0 meet variable group 1 in state 2, those of group 1 in state 1.
            for (int e = 0; e < 7; ++e)
                EXPECT_EQ(bins.m_bin_exp_state(b, e), e < 4 ? 2 : 1);
        }
    }
}

TEST(WgtSchemeGroupIndeg, ApproximateP) {
    // 1 - (8/10)(7/9)(6/8) = 8/15; 1 - (3/4)(2/3) = 1/2; a bin as large as E is always hit; d <= 0 never.
    EXPECT_NEAR(WgtSchemeGroupIndeg::approximate_p(3, 2, 10), 8.0L / 15.0L, 1e-18L);
    EXPECT_NEAR(WgtSchemeGroupIndeg::approximate_p(2, 1, 4), 0.5L, 1e-18L);
    EXPECT_EQ(WgtSchemeGroupIndeg::approximate_p(2, 5, 5) + WgtSchemeGroupIndeg::approximate_p(-2, 3, 10),
              1.0L);
}

namespace {

// The weight schemes, each built on the hand graph with the configurations the reference covers.
struct Plain {
    static std::vector<std::string> configs() { return {"plain", "limit", "factors"}; }
    static WgtSchemeGroupIndeg* make(WGraph& w, const std::string& cfg) {
        return new WgtSchemeGroupIndeg(*w.g, *w.ec, wgt_options(), cfg, 0.7f, true);
    }
};
struct HS {
    static std::vector<std::string> configs() { return {"hs"}; }
    static WgtSchemeGroupIndeg* make(WGraph& w, const std::string& cfg) {
        return new WgtSchemeGroupIndegHS(*w.g, *w.ec, *w.classes, 0, wgt_options(), cfg, 0.7f);
    }
};

template <class S> class WgtSchemeContract : public testing::Test {};
typedef testing::Types<Plain, HS> Schemes;
TYPED_TEST_SUITE(WgtSchemeContract, Schemes);

} // namespace

// Every table matches the reference, and each table agrees with the others: a cell's cnc is its
// edge weight minus its non-edge weight, and an edge of soft weight w weighs w * edge + (1 - w) *
// non-edge of its cell, of which it adds w * edge - w * non-edge.
TYPED_TEST(WgtSchemeContract, TablesMatchTheReferenceAndAgree) {
    WGraph w;
    for (const std::string& cfg : TypeParam::configs()) {
        SCOPED_TRACE(cfg);
        Quiet q;
        const std::unique_ptr<WgtSchemeGroupIndeg> s(TypeParam::make(w, cfg));
        q.done();
        expect_tables(*s, cfg);
        for (int b = 0; b < 2; ++b)
            for (int e = 0; e < 7; ++e)
                EXPECT_EQ(s->get_edge_exp_cnc(e, b),
                          s->get_edge_exp_weight(e, b) - s->get_non_edge_exp_weight(e, b));
        for (int id = 0; id < 17; ++id) {
            const int e = w.g->edge_source(id), b = s->get_var_node_bin(w.g->edge_dest(id));
            const float sw = w.g->m_edge_weight[id], w1 = s->get_edge_exp_weight(e, b),
                        w0 = s->get_non_edge_exp_weight(e, b);
            EXPECT_EQ(s->get_edge_weight(id), sw * w1 + (1.0f - sw) * w0) << id;
            EXPECT_EQ(s->get_edge_cnc(id), sw * w1 - sw * w0) << id;
        }
        // Condition nodes carry nothing of their own; variable nodes the reference's weight (HS) or 0.
        for (int n = 0; n < 13; ++n) {
            const std::string key = cfg + " varw " + std::to_string(n);
            if (ref().count(key))
                expect_close(s->get_var_node_weight(n), key, 0);
            else
                EXPECT_EQ(s->get_var_node_weight(n), 0.0f) << n;
        }
    }
}

TEST(WgtSchemeGroupIndeg, TablesWaitForReinit) {
    // Tables stay zero until reinit, which may change the model.
    WGraph w;
    Quiet q;
    WgtSchemeGroupIndeg s(*w.g, *w.ec, wgt_options(), "plain", 0.7f, false);
    q.done();
    EXPECT_EQ(s.m_edge_exp_weight.m_vals, std::vector<float>(14, 0.0f));
    EXPECT_EQ(s.m_edge_weight, std::vector<float>(17, 0.0f));
    s.reinit(wgt_options(), "plain", 0.5f);
    expect_tables(s, "model05");
    s.reinit(wgt_options(), "limit", 0.7f);
    expect_tables(s, "limit");
}

TEST(WgtSchemeDeath, BadWeights) {
    WGraph w;
    // MinimumPU 0 where a count truncates to 0: log(0) makes the edge weight infinite.
    EXPECT_DEATH(WgtSchemeGroupIndeg(*w.g, *w.ec, wgt_options(), "nopu", 0.7f, true),
                 R"(WgtSchemeGroupIndeg\([0-9]+\): Bad wgt inf)");
    // ModelP 1: log(1 - ModelP) makes the non-edge weight infinite.
    EXPECT_DEATH(WgtSchemeGroupIndeg(*w.g, *w.ec, wgt_options(), "plain", 1.0f, true),
                 R"(WgtSchemeGroupIndeg\([0-9]+\): Bad no wgt -inf)");
}
