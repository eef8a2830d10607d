// The tabu search on the dense pattern: the neighbourhood it walks, the moves it can make, the tabu
// ring with period 1, a repeated run, and the global best against the start.
#include "BicMotifTaboo.h"
#include "MotifWorld.h"

#include <regex>

namespace {
struct TabooRun {
    MotifWorld w;
    TempDir dir;
    AssocPatternHashDense assoc;
    std::unique_ptr<BicMotifTaboo> taboo;

    explicit TabooRun(int period) : assoc(w.dense, w.index, w.all, 6) {
        assoc.m_trace = false;
        // Chance tables: mean 0, range 10, threshold 0 at every size.
        std::ostringstream tab;
        for (int c = 0; c < MotifWorld::kConds; ++c)
            for (int n = 0; n <= 8; ++n)
                tab << c << " " << n << " 0 10 0\n";
        const std::string path = dir.write("score.tab", tab.str());
        options& o = bic_options(
            "[Tables]\nscore_tab = " + path + "\nglob_score_tab = " + dir.path() +
            "/none.tab\n[Iter]\nMaxGap = 2\nRangeStep = 20\nMaxRange = 60\n[Score]\nNumOfScoreConds = 3\n"
            "VarGroup = 0\nAssessMaxVars = 8\nCacheCondScores = 0\nLogit = 0\n[Taboo]\nPatIterScope = Iter\n"
            "MinNumberOfGenes = 2\nScoreScope = Score\nTabooMaxTime = 5\nTabooPeriod = " +
            std::to_string(period) + "\nVerifyScore = 1\nVerifyAssoc = 0\nLogit = 0\nEpsilon = 0.001\n");
        Dna8MerPattern p;
        p.init_str("GACTC");
        assoc.match(p);
        taboo.reset(new BicMotifTaboo(*w.s.graph, *w.s.wgt, assoc, o, "Taboo"));
    }
};

TEST(BicMotifTaboo, NeighbourhoodMovesRepeatAndGlobalBest) {
    TabooRun r(2);
    BicMotifTaboo& t = *r.taboo;
    EXPECT_FLOAT_EQ(t.m_score.m_max2(11, 8), 10.0f);
    t.init();
    const float start = t.m_best_score;
    const ds_bitvec genes = r.assoc.get_genes();
    t.local_search();
    // A at the front after gaps 0 and 1, the same at the back, and the window ends 60, 40, 20.
    EXPECT_EQ(t.m_neighbours, 2 * 2 + 3);
    EXPECT_EQ(r.assoc.get_pattern().get_str(), "GACTC");
    EXPECT_EQ(r.assoc.get_genes(), genes);

    t.optimize();
    EXPECT_GE(t.m_best_score, start);
    // Only A and wildcards at the ends: '#' in front (the front position accepts all), '*' or A behind.
    const std::regex shape("#*GACTC[*A]*");
    EXPECT_TRUE(std::regex_match(r.assoc.get_pattern().get_str(), shape)) << r.assoc.get_pattern().get_str();
    EXPECT_TRUE(std::regex_match(t.m_best_pattern.get_str(), shape)) << t.m_best_pattern.get_str();
    EXPECT_GE(t.m_best_genes.on_bits(), 2);

    TabooRun again(2);
    again.taboo->optimize();
    EXPECT_EQ(again.taboo->m_best_pattern.get_str(), t.m_best_pattern.get_str());
    EXPECT_EQ(again.taboo->m_best_pattern.m_to_range, t.m_best_pattern.m_to_range);
    EXPECT_EQ(again.taboo->m_best_score, t.m_best_score);
    EXPECT_EQ(again.assoc.get_pattern().get_str(), r.assoc.get_pattern().get_str());
}

TEST(BicMotifTaboo, PeriodOneExpiresTheWindowTabooNextRound) {
    TabooRun r(1);
    BicMotifTaboo& t = *r.taboo;
    t.init();
    t.m_move.init_range(0, 40);
    t.update_taboo();
    EXPECT_EQ(r.assoc.get_pattern().m_to_range, 40);
    EXPECT_FALSE(t.m_iter.m_range_iter_flag);
    ASSERT_EQ(t.m_ring.size(), 1u);
    EXPECT_EQ(t.m_ring[0].m_type, 4);
    ++t.m_clock;
    // No window moves while the feature lives: four gap moves only.
    t.local_search();
    EXPECT_EQ(t.m_neighbours, 4);
    // The next round's move is a gap move: the window feature expires.
    t.m_move.init_gap_back(1, DnaSeqDegChar(1));
    t.update_taboo();
    EXPECT_TRUE(t.m_iter.m_range_iter_flag);
    EXPECT_EQ(r.assoc.get_pattern().get_str(), "GACTC*A");
    EXPECT_EQ(t.m_avoid.length(), 7);
    EXPECT_EQ(t.m_force.length(), 7);
    // The window is kept: mode 3 now moves its start up (0, 20), mode 4 its end down (60, 40, 20).
    t.local_search();
    EXPECT_EQ(t.m_neighbours, 4 + 2 + 3);
}

} // namespace
