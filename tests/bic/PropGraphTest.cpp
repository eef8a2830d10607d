// PropMatrix readers and normalisations, layered graph builds checked by hand, and the per-layer
// weights against their closed forms.
#include "PropFixture.h"

#include <cmath>
#include <set>
#include <sstream>
#include <tuple>

namespace {

typedef std::tuple<int, int, float, float> EdgeRow; // source, destination, weight, value

std::set<EdgeRow> edge_rows(const PropVarGraphBase& g) {
    std::set<EdgeRow> out;
    for (int e = 0; e < g.edges_id_space_size(); ++e)
        if (g.edge_use(e))
            out.insert(EdgeRow(g.edge_source(e), g.edge_dest(e), g.m_edge_weight[e], g.m_edge_value[e]));
    return out;
}

struct MatrixCase {
    const char* params; // key=value pairs after the file
    std::vector<std::vector<float>> rows;
};

} // namespace

TEST(PropMatrix, ReadTxtMatchesNamesAndNormalises) {
    TempDir dir;
    const std::string file =
        dir.write("t.txt", "name\tp0\tp1\nGene0\t1\t3\nGene1\t2\t-1\nabc\t4\t\nzzz\t5\t5\n");
    const float M = PropMatrix::kMissing;
    const float nan = NAN;
    // Expected values: numpy, (a - a.mean()) / a.std() on the present values of each row or gene.
    const MatrixCase cases[] = {
        {"", {{1, 2, 4}, {3, -1, M}}},
        {"normalize_cond=1", {{-1.06904497f, -0.26726124f, 1.33630621f}, {1, -1, M}}},
        {"normalize_gene=1", {{-1, 1, nan}, {1, -1, M}}},
        {"substract_cond=0", {{0, 0, 0}, {2, -3, M}}},
        {"subtract_cond=1", {{-2, 3, -M}, {0, 0, 0}}}, // missing values take part as numbers
    };
    for (const MatrixCase& c : cases) {
        SCOPED_TRACE(c.params);
        VarUniverse u;
        u.init_idspace(3);
        u.m_name_to_id["abcm"] = 2; // matched only with "m" appended
        PropMatrix m(u);
        std::map<std::string, std::string> params{{"file", file}};
        std::string kv = c.params;
        if (!kv.empty())
            params[kv.substr(0, kv.find('='))] = kv.substr(kv.find('=') + 1);
        Quiet q;
        m.read("txt", params);
        const std::string err = q.done();
        EXPECT_NE(err.find("cannot match props for var zzz"), std::string::npos);
        EXPECT_NE(err.find("match count = 3"), std::string::npos);
        ASSERT_EQ(m.prop_num(), 2);
        EXPECT_EQ(m.m_names[1], "p1");
        for (int p = 0; p < 2; ++p)
            for (int v = 0; v < 3; ++v) {
                const float want = c.rows[p][v];
                if (std::isnan(want))
                    EXPECT_TRUE(std::isnan(m.m_values[p][v])) << p << " " << v;
                else
                    EXPECT_NEAR(m.m_values[p][v], want, 1e-6f * std::max(1.0f, std::fabs(want)))
                        << p << " " << v;
            }
    }
}

TEST(PropMatrix, TabGxpGeoAndMissingFile) {
    TempDir dir;
    dir.write("expk.txt", "0 a\n2 c\n");
    dir.write("expr.txt", "1 0 5.5\n2 2 -1\n");
    const std::string gxp =
        dir.write("g.gxp", "junk\n<TSCRawData>\nid\tx\nGene2\t7\n</TSCRawData>\nGene0\t9\n");
    VarUniverse u;
    u.init_idspace(3);
    PropMatrix m(u);
    std::map<std::string, std::string> tab{{"file", dir.path()}, {"default_val", "0.25"}};
    std::map<std::string, std::string> gx{{"file", gxp}}, none;
    Quiet q;
    m.read("geo", tab);
    EXPECT_EQ(m.prop_num(), 0);
    m.read("txt", none);
    m.read("tab", tab);
    m.read("gxp", gx);
    const std::string err = q.done();
    EXPECT_NE(err.find("missing options: file, giving up on these props"), std::string::npos);
    EXPECT_NE(err.find("max_pid is 3"), std::string::npos);
    EXPECT_NE(err.find("done read, match 1 nomatch 0"), std::string::npos);
    ASSERT_EQ(m.prop_num(), 4);
    const std::vector<std::vector<float>> want = {{0.25f, 5.5f, 0.25f},
                                                  {0.25f, 0.25f, 0.25f},
                                                  {0.25f, 0.25f, -1.0f},
                                                  {PropMatrix::kMissing, PropMatrix::kMissing, 7}};
    for (int p = 0; p < 4; ++p)
        EXPECT_EQ(m.m_values[p], want[p]) << p;
    std::ostringstream out;
    m.dump_expk(out);
    EXPECT_EQ(out.str(), "0\ta\n1\t\n2\tc\n3\tx\n");
}

TEST(PropVarGraphLayers, HandBuilds) {
    PropWorld w;
    // Three layers: conditions in two orientations (groups 0, 1), classes (2), the PSSM (3).
    auto g3 = w.build({w.aco.get(), w.annot.get(), w.pssm.get()});
    EXPECT_EQ(g3->m_max_prop_node, 7);
    EXPECT_EQ(g3->m_node_count, 10);
    EXPECT_EQ(g3->m_group_layer, (std::vector<int>{0, 0, 1, 2}));
    const int groups[7] = {0, 0, 1, 1, 2, 2, 3}, props[7] = {0, 1, 0, 1, 0, 1, 0};
    for (int n = 0; n < 7; ++n) {
        EXPECT_TRUE(g3->is_prop_node(n));
        EXPECT_EQ(g3->node_group(n), groups[n]);
        EXPECT_EQ(g3->node_prop(n), props[n]);
    }
    for (int v = 0; v < 3; ++v)
        EXPECT_EQ(g3->m_var_group_nodes(0, v), 7 + v);
    // g1's 0.5 is not strictly above the threshold, its missing value makes no edge, g2's 0 is
    // zero; the PSSM hits g0 at exactly the threshold and g1 at 0.5.
    const std::set<EdgeRow> want3 = {{0, 7, 0.7f, 0.7f}, {3, 7, 1.0f, -1.0f}, {0, 9, 0.9f, 0.9f},
                                     {4, 7, 1, 1},       {4, 9, 1, 1},        {5, 8, 1, 1},
                                     {6, 7, 1, 1}};
    EXPECT_EQ(edge_rows(*g3), want3);
    EXPECT_FLOAT_EQ(w.pssm->affinity(0, "GACG"), 0.5f);

    // A null slot between: the classes keep layer number 2 and follow the conditions' groups.
    auto g2 = w.build({w.aco.get(), nullptr, w.annot.get()});
    EXPECT_EQ(g2->m_group_layer, (std::vector<int>{0, 0, 2}));
    EXPECT_EQ(g2->m_max_prop_node, 6);
    const std::set<EdgeRow> want2 = {{0, 6, 0.7f, 0.7f}, {3, 6, 1.0f, -1.0f}, {0, 8, 0.9f, 0.9f},
                                     {4, 6, 1, 1},       {4, 8, 1, 1},        {5, 7, 1, 1}};
    EXPECT_EQ(edge_rows(*g2), want2);

    // A negative threshold: the PSSM node is made, without edges.
    PropVarLayerPSSM neg(w.pssms, w.proms, prop_options(), "PssmNeg");
    auto gn = w.build({&neg});
    EXPECT_EQ(gn->m_max_prop_node, 1);
    EXPECT_EQ(gn->edges_num(), 0);
}

TEST(PropVarGraphBase, RangedRandomizeKeepsDegreesAndRanges) {
    PropWorld w;
    auto g = w.build({w.aco.get(), w.annot.get(), w.pssm.get()});
    std::vector<float> deg(g->m_node_count);
    for (int n = 0; n < g->m_node_count; ++n)
        deg[n] = g->m_node_degree[n];
    const std::vector<int> out0 = {g->node_out_edges_num(4), g->node_out_edges_num(5),
                                   g->node_out_edges_num(6)};
    g->randomize(20, {0.95f});
    // Only the weight-1 edges (4 ->, 5 ->, 6 ->, 3 ->) can rotate among themselves; the 0.7 and 0.9
    // ones are alone in their range and stay.
    EXPECT_NE(g->get_edge(0, 7), -1);
    EXPECT_NE(g->get_edge(0, 9), -1);
    EXPECT_EQ(out0, (std::vector<int>{g->node_out_edges_num(4), g->node_out_edges_num(5),
                                      g->node_out_edges_num(6)}));
    for (int v = 7; v < 10; ++v) {
        float sum = 0.0f;
        for (int p = 0; p < 7; ++p)
            if (g->get_edge(p, v) != -1)
                sum += g->m_edge_weight[g->get_edge(p, v)];
        EXPECT_FLOAT_EQ(sum, deg[v]) << v;
    }
}

namespace {
struct WeightedAnnot : PropVarLayerAnnot {
    using PropVarLayerAnnot::PropVarLayerAnnot;
    float get_prop_weight(int prop_id) const override { return 2.0f + prop_id; }
};
} // namespace

TEST(PropWgtSchemeGroupIndeg, WeightsByLayer) {
    PropWorld w;
    WeightedAnnot wannot(w.classes, prop_options(), "Annot");
    for (const bool use_w : {false, true}) {
        SCOPED_TRACE(use_w);
        auto g = w.build(
            {w.aco.get(), use_w ? static_cast<PropVarLayerBase*>(&wannot) : w.annot.get(), w.pssm.get()});
        Quiet q;
        ArrayVarEC ec(w.data);
        ec.m_ec_exps[0].clr_ind(1); // condition 1 unmeasured: its nodes (1, 3) weigh 0
        PropWgtSchemeGroupIndeg s(*g, ec, prop_options(), use_w ? "WgtW" : "Wgt", true);
        q.done();
        ASSERT_EQ(s.get_var_nodes_bins().m_bin_num, 1);
        // By hand: one bin; p_u is MinimumPU where a truncated count is 0, else 1 - prod (E-bin_d-i)/(E-i):
        // class 0 (d 2, bin_d 1, E 3) 2/3, limited to 0.5; class 1 (d 1) 1/3.
        const double p[7] = {0.01, 0.01, 0.01, 0.01, 0.5, 1.0 / 3, 0.01};
        const double model[7] = {0.6, 0.6, 0.6, 0.6, 0.8, 0.8, 0.7};
        const double f[7] = {1, 0, 1, 0, use_w ? 2.0 : 1.0, use_w ? 3.0 : 1.0, 1};
        for (int n = 0; n < 7; ++n) {
            const double w1 = f[n] * std::log(model[n] / p[n]),
                         w0 = f[n] * std::log((1 - model[n]) / (1 - p[n]));
            EXPECT_NEAR(s.get_edge_prop_weight(n, 0), w1, 1e-5) << n;
            EXPECT_NEAR(s.get_non_edge_prop_weight(n, 0), w0, 1e-5) << n;
            EXPECT_NEAR(s.get_edge_prop_cnc(n, 0), w1 - w0, 1e-5) << n;
        }
        const int e = g->get_edge(0, 7);
        EXPECT_NEAR(s.get_edge_weight(e), 0.7 * std::log(60.0) + 0.3 * std::log(0.4 / 0.99), 1e-5);
        EXPECT_NEAR(s.get_edge_cnc(e), 0.7 * (std::log(60.0) - std::log(0.4 / 0.99)), 1e-5);
        // Positive genes: edges with a positive gain; node 3's edge is unmeasured.
        const std::vector<std::vector<int>> pos = {{0, 2}, {}, {}, {}, {0, 2}, {1}, {0}};
        for (int n = 0; n < 7; ++n)
            for (int v = 0; v < 3; ++v)
                EXPECT_EQ(s.get_pos_genes(n).get_ind(v), std::count(pos[n].begin(), pos[n].end(), v) == 1)
                    << n << " " << v;
    }
}

TEST(PropWgtSchemeGroupIndeg, TracesEachPairWithItsLayer) {
    PropWorld w;
    auto g = w.build({w.aco.get(), w.annot.get(), w.pssm.get()});
    options& o = bic_options(
        "[Bins]\nMaxGroupBins = 1\nMinGroupInterval = 100\n"
        "[Wgt]\nBinningScope = Bins\nMinimumPU = 0.01\nLogit = 1\nModelP = { f 3\n0.6 0.8 0.7\n}\n"
        "MaxPU = { f 3\n0.5 0.5 0.5\n}\nLimitNegPosRatio = 0\nMinNegWeightRatio = 0.9\n"
        "UseExpWeight = 0\n");
    Quiet q;
    ArrayVarEC ec(w.data);
    PropWgtSchemeGroupIndeg s(*g, ec, o, "Wgt", true);
    const std::string log = q.done();
    // Class 0 (node 4): d 2, bin_d 1, E 3, p_u 2/3 before the MaxPU limit; log(0.8 / 0.5), log(0.2 / 0.5).
    std::ostringstream line;
    line << "WSIndeg node 4 bin 0 E = 3 p_u " << 2.0f / 3
         << " bin_d 1 d = 2 prop_id = 0 layer 1 wgt = " << std::log(0.8f / 0.5f)
         << " no wgt = " << std::log(0.2f / 0.5f) << "\n";
    EXPECT_NE(log.find(line.str()), std::string::npos) << log;
    EXPECT_NE(log.find("max prop node 7\n"), std::string::npos);
    EXPECT_LT(log.find("WSIndeg node 6 "), log.find("will init edges weights\n"));
}
