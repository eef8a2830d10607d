// The expression-and-sequence database: every expression road loading the whole database, the
// scope rule, the avoid table, a matrix after an empty universe, the key table's parser, and the
// fatal texts of the loaders.
#include "ExpSeqDB.h"
#include "BicTestUtil.h"
#include "TestSupport.h"

#include <fstream>
#include <sstream>

namespace {

const std::string kDir = "data/bic/hub/";

std::string road(const std::string& name) {
    return read_file(source_dir() + "/" + kDir + "road_" + name + ".opt");
}

// `text` with the value of `key` (the first line "key = ...") replaced.
std::string with_key(std::string text, const std::string& key, const std::string& value) {
    const size_t at = text.find("\n" + key + " = ");
    const size_t end = text.find('\n', at + 1);
    return text.replace(at + 1, end - at - 1, key + " = " + value);
}

// The cells of the plain table: variable, condition, value.
std::vector<std::vector<float>> plain_cells() {
    std::vector<std::vector<float>> cells(24, std::vector<float>(6, 0.0f));
    std::ifstream in(source_dir() + "/" + kDir + "expr.txt");
    int g, c;
    float x;
    while (in >> g >> c >> x)
        cells[g][c] = x;
    return cells;
}

struct Loaded {
    options& opts;
    ExpSeqDB db;
    std::string err;
    Loaded(const std::string& text, bool skip = false) : opts(bic_options(text)), db(opts, "DB", skip) {}
};

} // namespace

TEST(ExpSeqDB, EveryExpressionRoadLoadsTheWholeDatabase) {
    const auto cells = plain_cells();
    for (const std::string name : {"key", "txt", "plain", "array"}) {
        SCOPED_TRACE(name);
        testing::internal::CaptureStderr();
        Loaded l(road(name));
        ExpSeqDB& db = l.db;
        ASSERT_EQ(db.m_universe.size(), 24);
        EXPECT_EQ(db.m_ok_vars.on_bits(), 22);
        EXPECT_FALSE(db.m_ok_vars.get_ind(3));
        EXPECT_FALSE(db.m_ok_vars.get_ind(5));

        db.init_expression();
        ASSERT_EQ(db.m_expset.m_E, 6);
        for (int g = 0; g < 24; ++g)
            for (int c = 0; c < 6; ++c)
                ASSERT_FLOAT_EQ(db.m_expset.m_data(g, c), cells[g][c]) << g << " " << c;
        ASSERT_TRUE(db.m_array_ec);
        // Array 1 measures genes 0-11 only: they form a class of their own.
        EXPECT_EQ(db.m_array_ec->ec_of_var(0) != db.m_array_ec->ec_of_var(20), name == "array");

        db.init_sequence(true);
        ASSERT_EQ(db.m_genome.id_space_size(), 24);
        EXPECT_TRUE(db.m_genome.get_promoter(23).is_empty());
        EXPECT_EQ(db.m_genome.get_promoter(0).substr(20, 7), "GATTGCC");
        EXPECT_FALSE(db.m_dense_genome.get_promoter(0).is_empty());
        EXPECT_EQ(db.m_dense_genome.get_promoter(0).m_length, 60);

        db.init_pssms();
        ASSERT_EQ(db.m_pssms->size(), 2);
        EXPECT_EQ(db.m_pssms->m_pssms[0].get_consensus(), "GATTGCC");
        EXPECT_EQ(db.m_pssms->m_pssms[1].m_min_range, 0);
        EXPECT_EQ(db.m_pssms->m_pssms[1].m_max_range, 50);
        EXPECT_TRUE(db.m_pssms->m_pssms[1].m_bidirect);

        // Class members outside m_ok_vars (genes 3 and 5) are left out.
        db.init_gene_classes();
        ASSERT_EQ(db.m_classes->class_count(), 2);
        EXPECT_EQ(db.m_classes->m_class_bits[0].on_bits(), 6);
        EXPECT_EQ(db.m_classes->m_class_names[1], "other");

        // AllowVarOrientation is 0, yet both variable orientations are built.
        db.init_graph();
        EXPECT_GT(db.m_graph.m_max_exp_node, 0);
        EXPECT_EQ(db.m_graph.m_max_exp_group, 2);
        EXPECT_NE(db.m_graph.m_var_group_nodes(1, 0), -1);
        ASSERT_TRUE(db.m_wgt);

        db.init_location();
        db.init_phenotype();
        EXPECT_EQ(db.m_loca_set.m_E, 2);
        EXPECT_FLOAT_EQ(db.m_loca_set.m_data(4, 1), cells[4][1] + 0.5f);
        EXPECT_FLOAT_EQ(db.m_pheno_set.m_data(4, 1), -cells[4][1]);

        // UseLocaLayer is 2: slot 3 stays empty.
        db.init_lgraph(name == "txt" ? 1 : 0);
        ASSERT_EQ(db.m_lgraph.m_layers.size(), 5u);
        const char* kinds[] = {"ACO", "PSSM", "Annot", nullptr, "ACO"};
        for (int layer = 0; layer < 5; ++layer) {
            if (!kinds[layer]) {
                EXPECT_EQ(db.m_lgraph.m_layers[layer], nullptr);
                continue;
            }
            ASSERT_NE(db.m_lgraph.m_layers[layer], nullptr) << layer;
            EXPECT_STREQ(db.m_lgraph.m_layers[layer]->get_type_name(), kinds[layer]);
            EXPECT_LT(db.m_lgraph.m_layers[layer]->m_first_group, db.m_lgraph.m_layers[layer]->m_end_group);
        }
        ASSERT_TRUE(db.m_lwgt);

        if (name == "key") {
            db.init_pbicset();
            ASSERT_EQ(db.m_pbic_set->size(), 1);
            EXPECT_EQ(db.m_pbic_set->m_bics[0].m_vars.on_bits(), 4);
            EXPECT_EQ(db.m_pbic_set->m_bics[0].m_exps.on_bits(), 3);
        } else {
            db.init_bicset();
            ASSERT_EQ(db.m_bic_set->size(), 2);
            EXPECT_EQ(db.m_bic_set->m_patterns[0], "GATTGCC");
            EXPECT_EQ(db.m_bic_set->m_patterns[1], "none");
            EXPECT_EQ(db.m_bic_set->m_bics[0].m_exps.on_bits(), 3);
            EXPECT_EQ(db.m_bic_set->m_bics[0].m_vars.on_bits(), 8);
            EXPECT_FLOAT_EQ(db.m_bic_set->m_scores[0], 5.5f);
        }

        db.init_br_graph(0);
        EXPECT_EQ(db.m_br_graph->m_layer_names, (std::vector<std::string>{"ppi", "genetic"}));
        EXPECT_NE(db.m_br_graph->get_relation(1, 0), -1);
        ASSERT_TRUE(db.m_br_wgt);

        const int nodes = db.m_graph.m_max_exp_node;
        db.release_expression();
        EXPECT_EQ(db.m_expset.m_data.rows(), 0);
        EXPECT_EQ(db.m_graph.m_max_exp_node, nodes);

        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_NE(err.find("univ inited"), std::string::npos);
        // The value space is fitted to the data on the plain road only.
        EXPECT_EQ(err.find("AutoDisc") != std::string::npos, name == "plain") << err;
        if (name == "key") {
            // The key table's trailing tab after the last value keeps the pair.
            EXPECT_NE(err.find("nm first_data_col is 1\n"), std::string::npos);
            EXPECT_NE(err.find("will read, file is data/bic/hub/wide.txt\n"), std::string::npos);
        }
        EXPECT_NE(err.find("DB max exp node of graph is "), std::string::npos);
    }
}

TEST(ExpSeqDB, ScopeDefaultsAvoidTableAndMatrixAfterAnEmptyUniverse) {
    std::string text = without_key(without_key(road("plain"), "ValSpaceScope"), "GraphScope");
    text = with_key(text, "avoid_vars", "/nonexistent/avoid.tab");
    {
        Quiet q;
        Loaded l(text);
        const std::string err = q.done();
        // An avoid table that can't be opened is reported and leaves every variable allowed.
        EXPECT_NE(err.find("scpope is DB\n"), std::string::npos);
        EXPECT_EQ(l.db.m_ok_vars.on_bits(), 24);
    }
    Quiet q;
    Loaded l(road("plain"), true);
    EXPECT_EQ(l.db.m_universe.size(), 0);
    std::istringstream mat("3 2\nr0 1 2\nr1 3 5\nr2 5 8\n");
    l.db.full_init_from_matrix(mat, true, false, false);
    ASSERT_EQ(l.db.m_universe.size(), 3);
    ASSERT_EQ(l.db.m_expset.m_E, 2);
    // Each condition standardised: means 3 and 5, standard deviations 1.633 and 2.449.
    EXPECT_NEAR(l.db.m_expset.m_data(0, 0), (1 - 3) / 1.6329932, 1e-4);
    EXPECT_NEAR(l.db.m_expset.m_data(2, 1), (8 - 5) / 2.4494897, 1e-4);
    EXPECT_TRUE(l.db.m_array_ec);
    EXPECT_EQ(l.db.m_ok_vars.on_bits(), 3);
    EXPECT_NE(q.done().find("AutoDisc"), std::string::npos);

    std::istringstream bad("rows cols\n");
    EXPECT_EXIT(l.db.full_init_from_matrix(bad, false, false, false), testing::ExitedWithCode(1),
                "RENFIL: Cant parse matrix header line");
}

TEST(ExpSeqDBDeathTest, LoaderFatalTexts) {
    const std::string plain = road("plain"), array = road("array");
    struct Case {
        std::string text;
        void (*step)(ExpSeqDB&);
        const char* message;
    };
    auto none = [](ExpSeqDB&) {};
    const Case cases[] = {
        {with_key(plain, "varob", "/nonexistent/varob"), none, "cannot open varob table /nonexistent/varob"},
        {with_key(plain, "expr", "/nonexistent/expr"), [](ExpSeqDB& db) { db.init_expression(); },
         "cannot open expd table /nonexistent/expr"},
        {with_key(plain, "expk", "/nonexistent/expk"), [](ExpSeqDB& db) { db.init_expression(); },
         "cannot open expk_tab table /nonexistent/expk"},
        {with_key(array, "arrk", "/nonexistent/arrk"), [](ExpSeqDB& db) { db.init_expression(); },
         "cannot open arrk_tab table /nonexistent/arrk"},
        {with_key(array, "arrd", "/nonexistent/arrd"), [](ExpSeqDB& db) { db.init_expression(); },
         "cannot open arrd_tab table /nonexistent/arrd"},
        {with_key(plain, "locar", "/nonexistent/locar"), [](ExpSeqDB& db) { db.init_location(); },
         "cannot open expd table /nonexistent/locar"},
        {with_key(plain, "phenok", "/nonexistent/phenok"), [](ExpSeqDB& db) { db.init_phenotype(); },
         "cannot open expk_tab table /nonexistent/phenok"},
        {plain, [](ExpSeqDB& db) { db.read_prop_key("/nonexistent/gekey"); },
         "cannot open gekey file /nonexistent/gekey"},
        {plain, [](ExpSeqDB& db) { db.read_prop_key(source_dir() + "/data/bic/hub/lone.key"); },
         "no params at property key table line 2"},
        {plain, [](ExpSeqDB& db) { db.init_avoid_vars("/nonexistent/avoid"); },
         "cannot open avoid vars table /nonexistent/avoid"},
        {plain, [](ExpSeqDB& db) { db.init_graph(); }, "Cannot call init_Graph before init_expression"},
        {with_key(plain, "layer_key", "/nonexistent/key"), [](ExpSeqDB& db) { db.init_br_graph(0); },
         "cannot open bin relation layer key table /nonexistent/key"},
        {with_key(plain, "br_rels", "/nonexistent/rels"), [](ExpSeqDB& db) { db.init_br_graph(0); },
         "cannot open bin relation table /nonexistent/rels"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        options& opts = bic_options(c.text);
        EXPECT_DEATH(
            {
                ExpSeqDB db(opts, "DB", false);
                c.step(db);
            },
            std::string(R"(ExpSeqDB\([0-9]+\): )") + c.message);
    }
}
