// PssmSet: the key and data tables, id shifting, scores and bicluster ids, log-odds rows, fatal texts.
#include "PssmSet.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>

TEST(PssmSetTest, ReadsKeysCountsAndShiftsIds) {
    PssmSet set;
    std::istringstream k1("0 ACG -100 -10 1\n"), d1("0 0 1 1 1 1\n0 1 3 0 0 1\n");
    set.read(k1, d1, 500, 0, 0.0f, false);
    ASSERT_EQ(set.size(), 1);
    EXPECT_EQ(set.m_pssms[0].m_min_range, 400);
    EXPECT_EQ(set.m_pssms[0].m_max_range, 490);
    EXPECT_TRUE(set.m_pssms[0].m_bidirect);
    EXPECT_EQ(set.m_consensus[0], "ACG");
    EXPECT_EQ(set.m_bic_ids[0], 0);
    ASSERT_EQ(set.m_pssms[0].width(), 2);
    EXPECT_FLOAT_EQ(set.m_pssms[0].m_profile[1].m_prob[0], 0.75f);

    // Second read with scores: ids 0 and 1 land at 1 and 2, data ids likewise.
    std::istringstream k2("0 7 TTT 0 5 2.5 0\n1 9 GGG 1 6 3.5 1\n"),
        d2("0 0 0 0 0 4\n1 0 4 0 0 0\n1 1 0 4 0 0\n");
    set.read(k2, d2, 0, 1, 1.0f, false);
    ASSERT_EQ(set.size(), 3);
    EXPECT_EQ(set.m_bic_ids[1], 7);
    EXPECT_EQ(set.m_bic_ids[2], 9);
    EXPECT_EQ(set.m_consensus[2], "GGG");
    EXPECT_FALSE(set.m_pssms[1].m_bidirect);
    EXPECT_EQ(set.m_pssms[2].m_min_range, 1);
    EXPECT_EQ(set.m_pssms[1].width(), 1);
    EXPECT_EQ(set.m_pssms[2].width(), 2);
    // prior 1 on counts (0, 0, 0, 4): 1/8, 1/8, 1/8, 5/8.
    EXPECT_FLOAT_EQ(set.m_pssms[1].m_profile[0].m_prob[3], 0.625f);
    EXPECT_FLOAT_EQ(set.m_pssms[1].m_profile[0].m_log[0], std::log(0.125f));
    EXPECT_EQ(set.m_pssms[0].width(), 2); // untouched by the second read
}

TEST(PssmSetTest, LogOddsRowsAndRepeatedPositions) {
    PssmSet set;
    std::istringstream k("0 AC 0 10 0\n"), d("0 0 -1 -2 -3 -4\n0 1 0 0 0 0\n0 2 1 1 1 1\n0 1 -5 -6 -7 -8\n");
    set.read(k, d, 0, 0, 0.025f, true);
    const DnaPSSM& p = set.m_pssms[0];
    // The row at position 1 again cuts column 2 and overwrites column 1.
    ASSERT_EQ(p.width(), 2);
    EXPECT_EQ(p.m_profile[0].m_log[1], -2.0f);
    EXPECT_EQ(p.m_profile[0].m_prob[1], 0.0f);
    EXPECT_EQ(p.m_profile[1].m_log[3], -8.0f);
    EXPECT_DOUBLE_EQ(p.get_max_ll(), -1.0 + -5.0);
    std::ostringstream k2, d2;
    set.write(k2, d2);
    EXPECT_TRUE(k2.str().empty() && d2.str().empty());
}

TEST(PssmSetDeathTest, FatalTexts) {
    auto read = [](const char* key, const char* data) {
        PssmSet set;
        std::istringstream k(key), d(data);
        set.read(k, d, 0, 0, 0.0f, false);
    };
    EXPECT_DEATH(read("0 A 0 1 0\n", "1 0 1 1 1 1\n"),
                 R"(PssmSet\([0-9]+\): Read data on pssm id 1 but max id is 1)");
    EXPECT_DEATH(read("0 A 0 1 0\n1 C 0 1 0\n", "0 0 1 1 1 1\n5 0 1 1 1 1\n"),
                 R"(PssmSet\([0-9]+\): Read data on pssm id 5 but max id is 2)");
    // Ids and positions that would size the tables beyond memory, or overflow on `id + 1`.
    const struct {
        const char *key, *data, *message;
    } bounds[] = {
        {"0 A 0 1 0\n2147483647 C 0 1 0\n", "", "Bad pssm id 2147483647 in key row 2"},
        {"4194304 A 0 1 0\n", "", "Bad pssm id 4194304 in key row 1"},
        {"0 A 0 1 0\n", "0 2147483647 1 1 1 1\n", "Bad pssm position 2147483647 in data row 1"},
        {"0 A 0 1 0\n", "0 0 1 1 1 1\n0 100000000 1 1 1 1\n", "Bad pssm position 100000000 in data row 2"},
        {"0 A 0 1 0\n", "-2147483648 0 1 1 1 1\n", "Read data on pssm id -2147483648 but max id is 1"},
    };
    for (const auto& b : bounds)
        EXPECT_DEATH(read(b.key, b.data), std::string(R"(PssmSet\([0-9]+\): )") + b.message) << b.message;
    PssmSet set;
    EXPECT_DEATH(set.read("/nonexistent/a.pssmk", "/nonexistent/b.pssmd", 0, 0, 0.0f, false),
                 R"(PssmSet\([0-9]+\): cannot open pssm files /nonexistent/a\.pssmk /nonexistent/b\.pssmd)");
}

// Real data (bench/data/fetch_seqpack.sh): the 205 JASPAR vertebrate PFMs of Debian's PWMEnrich, as
// converted to pssmk/pssmd, against the original file read here. Skips when the files are absent.
TEST(PssmSetRealTest, JasparVertebrates) {
    const std::string dir = source_dir() + "/bench/data/out/seqpack/";
    const std::string pfm =
        source_dir() +
        "/bench/data/scratch/seqpack/root/usr/lib/R/site-library/PWMEnrich/extdata/pfm_vertebrates.txt";
    std::ifstream orig(pfm), key(dir + "jaspar.pssmk"), data(dir + "jaspar.pssmd");
    if (!orig || !key || !data)
        GTEST_SKIP() << "no JASPAR tables: run bench/data/fetch_seqpack.sh";
    PssmSet set;
    quiet([&] { set.read(key, data, 0, 0, 0.0f, false); });
    ASSERT_EQ(set.size(), 205);
    // The original: a '>' line, then rows A, C, G, T of counts by column.
    std::vector<std::vector<std::vector<float>>> mats;
    for (std::string line; std::getline(orig, line);) {
        if (!line.empty() && line[0] == '>')
            mats.emplace_back();
        else if (!line.empty()) {
            std::istringstream ls(line);
            mats.back().emplace_back(std::istream_iterator<float>(ls), std::istream_iterator<float>());
        }
    }
    ASSERT_EQ(mats.size(), 205u);
    for (int id = 0; id < 205; ++id) {
        const DnaPSSM& p = set.m_pssms[id];
        const std::vector<std::vector<float>>& rows = mats[id];
        ASSERT_EQ(p.width(), static_cast<int>(rows[0].size())) << id;
        for (int c = 0; c < p.width(); ++c) {
            const float sum = rows[0][c] + rows[1][c] + rows[2][c] + rows[3][c];
            for (int b = 0; b < 4; ++b)
                EXPECT_NEAR(p.m_profile[c].m_prob[b], rows[b][c] / sum, 1e-6) << id << " " << c;
        }
    }
    EXPECT_EQ(set.m_consensus[0], "MA0004.1");
    EXPECT_EQ(set.m_pssms[0].get_consensus(), "CACGTG");
}
