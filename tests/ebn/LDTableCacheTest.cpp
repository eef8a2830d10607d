// Tables cached from logic trees: random sum, min, max and table trees over 1-4 parents against
// an independent evaluation (data/ebn/make_logic_refs.py), entry by entry, for the noisy copy, the
// consistency pairs and the conversion of a table to its consistency form.
#include "LDTable.h"
#include "LocalLogic.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

namespace {

// Numeric lines by tag (cards: node 0 the child, 1..m its parents, m + 1 the consistency node;
// noise; root; the three tables) and the two logic streams.
struct LogicCase {
    std::map<std::string, std::vector<float>> num;
    std::string nodes, attrs;
};

std::vector<LogicCase> read_cases() {
    std::vector<LogicCase> out;
    std::ifstream in(source_dir() + "/data/ebn/logic_refs.txt");
    std::string line, tag;
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        ls >> tag;
        if (tag == "case")
            out.emplace_back();
        else if (tag == "lnode" || tag == "lattr")
            (tag == "lnode" ? out.back().nodes : out.back().attrs) += line.substr(6) + "\n";
        else
            for (float v = 0; ls >> v;)
                out.back().num[tag].push_back(v);
    }
    return out;
}

// The script works in float32 with numpy's log and exp: one unit in the last place apart from
// logf and expf, which log(1 - exp(v)) magnifies near v = 0.
void expect_table(const std::vector<float>& got, const std::vector<float>& want, double tol,
                  const char* what) {
    ASSERT_EQ(got.size(), want.size()) << what;
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], want[i], tol * std::max(1.0, std::fabs(static_cast<double>(want[i]))))
            << what << " entry " << i;
}

TEST(LDTableCache, RandomLogicTreesAgainstAnIndependentEvaluation) {
    const std::vector<LogicCase> cases = read_cases();
    ASSERT_EQ(cases.size(), 40u);
    for (std::size_t k = 0; k < cases.size(); ++k) {
        const LogicCase& c = cases[k];
        SCOPED_TRACE("case " + std::to_string(k));
        const std::vector<float>& cards = c.num.at("cards");
        const float noise = c.num.at("noise")[0];
        const int m = static_cast<int>(cards.size()) - 2;
        BNet<int> net;
        for (int v = 0; v < m + 2; ++v)
            net.add_rand_var(v, static_cast<int>(cards[v]));
        for (int p = 1; p <= m; ++p)
            net.insert_edge(p, 0, -1);
        for (int p = 0; p <= m; ++p)
            net.insert_edge(p, m + 1, -1);
        BNStateDispatch<int> st(net);
        net.set_state_ref(st);
        LocalLogicSet logic(net);
        std::istringstream ns(c.nodes), as(c.attrs);
        testing::internal::CaptureStderr();
        logic.read(ns, as);
        const LocalLogicHNode& root = *logic.get_node(static_cast<int>(c.num.at("root")[0]));

        // The scratch state is a dispatching one watched by a table on the child: the walk must
        // set values through the virtual set_rv_state for the watcher's index to follow.
        BNStateDispatch<int> scratch(net);
        LDTableDispatch watcher(net, scratch, 0);
        LDTable plain(net, st, 0), consist(net, st, m + 1), toconsist(net, st, m + 1);
        plain.cache_from_hnode(root, noise, scratch);
        consist.cache_consist_from_hnode(root, 0, noise, scratch);
        toconsist.init_to_consistency_table(plain);
        testing::internal::GetCapturedStderr();

        EXPECT_EQ(watcher.get_cur_ndx(), watcher.table_index());
        EXPECT_NE(watcher.get_cur_ndx(), 0);
        expect_table(plain.get_table(), c.num.at("plain"), 1e-6, "plain");
        expect_table(consist.get_table(), c.num.at("consist"), 5e-4, "consist");
        expect_table(toconsist.get_table(), c.num.at("toconsist"), 5e-4, "toconsist");
        EXPECT_EQ(toconsist.get_num_inp(), m + 1);
        for (int i = 0; i <= m; ++i)
            EXPECT_EQ(toconsist.get_input_factor(i), consist.get_input_factor(i)) << i;
    }
}

} // namespace
