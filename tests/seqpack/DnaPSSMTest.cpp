// DnaPSSM: scans and counting against the float32 model of data/seqpack, and hand cases of the column
// arithmetic, the consensus thresholds, the table form and the fatal width test.
#include "DnaPSSM.h"
#include "PssmSet.h"
#include "Random.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {
float from_bits(std::uint32_t b) {
    float f;
    std::memcpy(&f, &b, sizeof f);
    return f;
}
std::uint32_t to_bits(float f) {
    std::uint32_t b;
    std::memcpy(&b, &f, sizeof b);
    return b;
}

// Reads a line of a tag and its integers.
template <class T> std::vector<T> tagged(std::istream& in, const std::string& tag) {
    std::string line;
    std::getline(in, line);
    std::istringstream ls(line);
    std::string got;
    ls >> got;
    EXPECT_EQ(got, tag);
    std::vector<T> out;
    T v;
    while (ls >> v)
        out.push_back(v);
    return out;
}
std::vector<float> tagged_floats(std::istream& in, const std::string& tag) {
    std::vector<float> out;
    for (std::uint32_t b : tagged<std::uint32_t>(in, tag))
        out.push_back(from_bits(b));
    return out;
}
} // namespace

// The cases hold the scan's edges: sequences as long as or shorter than the PSSM, N, NUL padding, both
// strands and tied sites.
TEST(DnaPSSMTest, ScansAndCountsAgreeWithFloat32Model) {
    std::ifstream in(source_dir() + "/data/seqpack/pssm_cases.txt");
    ASSERT_TRUE(in) << "data/seqpack/pssm_cases.txt";
    int ncase;
    in >> ncase;
    in.ignore(1);
    int ties_seen = 0;
    for (int c = 0; c < ncase; ++c) {
        SCOPED_TRACE("case " + std::to_string(c));
        const std::vector<int> head = tagged<int>(in, "case"); // width, length, range, bidirect
        ASSERT_EQ(head.size(), 5u);
        const int w = head[0], n = head[1];
        DnaPSSM pssm;
        pssm.resize(w);
        for (int i = 0; i < w; ++i) {
            std::vector<float> l = tagged_floats(in, "L");
            ASSERT_EQ(l.size(), 4u);
            std::copy(l.begin(), l.end(), pssm.m_profile[i].m_log);
        }
        pssm.m_min_range = head[2];
        pssm.m_max_range = head[3];
        pssm.m_bidirect = head[4] != 0;
        std::string seq;
        std::getline(in, seq);
        seq = seq == "S -" ? "" : seq.substr(2);
        std::replace(seq.begin(), seq.end(), '.', '\0');
        ASSERT_EQ(static_cast<int>(seq.size()), n);

        std::vector<long long> m = tagged<long long>(in, "M");
        float best = 0.0f;
        int dir = 0;
        const int at = pssm.max_like_match(seq, best, dir);
        EXPECT_EQ(at, m[0]);
        EXPECT_EQ(to_bits(best), static_cast<std::uint32_t>(m[1])) << best << " vs " << from_bits(m[1]);
        EXPECT_EQ(dir, m[2]);

        std::vector<float> ll = tagged_floats(in, "U0");
        std::vector<float> diff(n, 0.0f);
        std::vector<signed char> dirs(n, 0);
        pssm.update_like_vec(seq, ll, diff, dirs);
        std::vector<float> ll_want = tagged_floats(in, "U"), diff_want = tagged_floats(in, "D");
        std::vector<int> dirs_want = tagged<int>(in, "R");
        for (int s = 0; s < n; ++s) {
            EXPECT_EQ(to_bits(ll[s]), to_bits(ll_want[s])) << "start " << s;
            EXPECT_EQ(to_bits(diff[s]), to_bits(diff_want[s])) << "start " << s;
            EXPECT_EQ(dirs[s], dirs_want[s]) << "start " << s;
        }

        std::vector<float> prob = tagged_floats(in, "P");
        for (int i = 0; i < w; ++i)
            std::copy(prob.begin() + 4 * i, prob.begin() + 4 * i + 4, pssm.m_profile[i].m_prob);
        std::vector<float> wt = tagged_floats(in, "W");
        const float thresh = wt[0];
        wt.erase(wt.begin());
        std::vector<int> sd = tagged<int>(in, "Q");
        std::vector<signed char> sdirs(sd.begin(), sd.end());
        pssm.count_weighted(seq, wt, sdirs, thresh);
        std::vector<float> counted = tagged_floats(in, "C");
        for (int i = 0; i < w; ++i)
            for (int b = 0; b < 4; ++b)
                EXPECT_EQ(to_bits(pssm.m_profile[i].m_prob[b]), to_bits(counted[4 * i + b])) << i << "," << b;

        std::vector<float> likes = tagged_floats(in, "K");
        ASSERT_EQ(static_cast<int>(likes.size()), n >= w ? 2 * (n - w + 1) : 0);
        for (int s = 0; s + w <= n; ++s) {
            float f, r;
            pssm.calc_like(seq.substr(s, w), f);
            pssm.calc_like_rc(seq.substr(s, w), r);
            EXPECT_EQ(to_bits(f), to_bits(likes[2 * s])) << "start " << s;
            EXPECT_EQ(to_bits(r), to_bits(likes[2 * s + 1])) << "start " << s;
            float g;
            pssm.calc_like(seq.cbegin() + s, g);
            EXPECT_EQ(to_bits(g), to_bits(f));
        }
        // A best site that another start also reaches shows the tie rule at work.
        for (int s = 0;
             w > 0 && m[1] != static_cast<long long>(to_bits(DnaPSSM::kLogZero)) && head[4] && s < n; ++s)
            ties_seen += s != at && dirs[s] != 0 && to_bits(ll[s]) == to_bits(best);
    }
    EXPECT_GT(ties_seen, 10) << "the cases should hold tied sites";
}

TEST(DnaPSSMTest, ColumnArithmeticByHand) {
    DnaProbVec v;
    const float counts[4] = {2.0f, 0.0f, 1.0f, 1.0f},
                logs[4] = {0.0f, std::log(2.0f), std::log(3.0f), std::log(2.0f)};
    std::copy(counts, counts + 4, v.m_prob);
    v.normalize();
    EXPECT_FLOAT_EQ(v.m_prob[0], 0.5f);
    EXPECT_EQ(v.m_log[1], -3.4028235e+36f); // normalize's floor
    EXPECT_FLOAT_EQ(v.m_log[2], std::log(0.25f));
    EXPECT_NEAR(v.get_entropy(), 0.5 * std::log(2.0) + 0.5 * std::log(4.0), 1e-6);
    EXPECT_FLOAT_EQ(v.get_max_log_prob(), std::log(0.5f));
    v.reset({0.0f, 0.5f, 0.25f, 0.25f});
    EXPECT_EQ(v.m_log[0], -3.4028235e+38f); // reset's floor differs
    std::ostringstream os;
    os << v;
    EXPECT_EQ(os.str(), "0\t0.5\t0.25\t0.25\n");

    // log space: logs of 1, 2, 3, 2 normalise to 1/8, 2/8, 3/8, 2/8.
    std::copy(logs, logs + 4, v.m_log);
    v.normalize_log();
    EXPECT_NEAR(v.m_prob[0], 0.125f, 1e-6);
    EXPECT_NEAR(v.m_prob[2], 0.375f, 1e-6);
    EXPECT_NEAR(v.m_log[1], std::log(0.25f), 1e-6);
}

TEST(DnaPSSMTest, ProfileOperationsByHandAndUnequalWidths) {
    DnaPSSM p, q;
    p.resize(2);
    q.resize(2);
    p.reset_prior({1.0f, 0.0f, 0.0f, 0.0f});
    // p's column 0 is all A; q's columns uniform: product of (1 * .25) and (1 * .25) = 1/16.
    EXPECT_FLOAT_EQ(p.dot_product(q), 0.0625f);
    EXPECT_FLOAT_EQ(p.log_dot_product(q), std::log(0.0625f));
    EXPECT_NEAR(p.get_max_ll(), 0.0, 1e-12);
    EXPECT_NEAR(q.get_max_ll(), 2 * std::log(0.25), 1e-6);

    // count: forward adds to each column's letter; the other strand adds complements from column 0.
    p.reset_prior({0.0f, 0.0f, 0.0f, 0.0f});
    const std::string s = "AG";
    p.count(s.begin(), 1.5f, 1);
    p.count(s.begin(), 1.0f, -1);
    EXPECT_EQ(p.m_profile[0].m_prob[0], 1.5f); // A
    EXPECT_EQ(p.m_profile[0].m_prob[3], 1.0f); // complement of A in column 0
    EXPECT_EQ(p.m_profile[1].m_prob[2], 1.5f); // G
    EXPECT_EQ(p.m_profile[1].m_prob[1], 1.0f); // complement of G in column 1

    // Shuffling keeps the columns as a multiset.
    DnaPSSM r;
    r.resize(5);
    for (int i = 0; i < 5; ++i)
        r.m_profile[i].m_prob[0] = static_cast<float>(i);
    Random::reset(77);
    r.permut_randomize();
    std::vector<float> firsts;
    for (const DnaProbVec& col : r.m_profile)
        firsts.push_back(col.m_prob[0]);
    std::sort(firsts.begin(), firsts.end());
    EXPECT_EQ(firsts, (std::vector<float>{0, 1, 2, 3, 4}));

    std::ostringstream dbg;
    q.resize(1);
    dbg << q;
    EXPECT_EQ(dbg.str(), "0.25\t0.25\t0.25\t0.25\n-1.38629\t-1.38629\t-1.38629\t-1.38629\n");
    EXPECT_DEATH(
        p.dot_product(r),
        R"(DnaPSSM\([0-9]+\): dot product support equal sized profiles, extend the code if you ment something else)");
}

TEST(DnaPSSMTest, ConsensusAtThresholdCells) {
    struct Row {
        float a, c, g, t;
        char want;
    };
    // Packed values are round(p * 1000) * 4 + base index; a single letter needs more than 2400,
    // a pair at least 3400 for the top two.
    const Row rows[] = {
        {0.6f, 0.4f, 0.0f, 0.0f, 'M'},     // A 2400 is not above 2400; A+C = 4001
        {0.4f, 0.6f, 0.0f, 0.0f, 'C'},     // C 2401
        {0.0f, 0.4f, 0.6f, 0.0f, 'G'},     // G 2402
        {0.6f, 0.249f, 0.151f, 0.0f, '*'}, // 2400 + 997 = 3397
        {0.5f, 0.349f, 0.151f, 0.0f, '*'}, // 2000 + 1397 = 3397
        {0.151f, 0.0f, 0.5f, 0.349f, 'K'}, // 2002 + 1399 = 3401
        {0.425f, 0.425f, 0.15f, 0.0f, 'M'}, {0.5f, 0.0f, 0.35f, 0.15f, 'R'},
        {0.5f, 0.15f, 0.0f, 0.35f, 'W'},    {0.0f, 0.5f, 0.35f, 0.15f, 'S'},
        {0.0f, 0.35f, 0.15f, 0.5f, 'Y'},    {0.25f, 0.25f, 0.25f, 0.25f, '*'},
        {0.0f, 0.0f, 0.0f, 1.0f, 'T'},
    };
    DnaPSSM p;
    std::string want;
    for (const Row& r : rows) {
        p.m_profile.emplace_back();
        p.m_profile.back().reset({r.a, r.c, r.g, r.t});
        want.push_back(r.want);
    }
    EXPECT_EQ(p.get_consensus(), want);
}

TEST(DnaPSSMTest, WriteTabOfTwoJasparMatrices) {
    // JASPAR MA0004.1 (Arnt) and MA0006.1 (Ahr::Arnt) counts, rows A C G T by column.
    const std::string key = "0 CACGTG 0 100 1\n1 TGCGTG 0 100 0\n";
    const std::string data = "0 0 4 16 0 0\n0 1 19 0 1 0\n0 2 0 20 0 0\n0 3 0 0 20 0\n0 4 0 0 0 20\n"
                             "0 5 0 0 20 0\n"
                             "1 0 3 8 2 11\n1 1 0 0 23 1\n1 2 0 23 0 1\n1 3 0 0 23 1\n1 4 0 0 0 24\n"
                             "1 5 0 0 24 0\n";
    std::istringstream k(key), d(data);
    PssmSet set;
    set.read(k, d, 0, 0, 0.0f, false);
    std::ostringstream os;
    set.m_pssms[0].write_tab(os, 0);
    set.m_pssms[1].write_tab(os, 1);
    EXPECT_EQ(os.str(), "0\t0\t0.2\t0.8\t0\t0\n"
                        "0\t1\t0.95\t0\t0.05\t0\n"
                        "0\t2\t0\t1\t0\t0\n"
                        "0\t3\t0\t0\t1\t0\n"
                        "0\t4\t0\t0\t0\t1\n"
                        "0\t5\t0\t0\t1\t0\n"
                        "1\t0\t0.13\t0.33\t0.08\t0.46\n"
                        "1\t1\t0\t0\t0.96\t0.04\n"
                        "1\t2\t0\t0.96\t0\t0.04\n"
                        "1\t3\t0\t0\t0.96\t0.04\n"
                        "1\t4\t0\t0\t0\t1\n"
                        "1\t5\t0\t0\t1\t0\n");
    EXPECT_EQ(set.m_pssms[0].get_consensus(), "CACGTG");
    EXPECT_EQ(set.m_pssms[1].get_consensus(), "*GCGTG");
}
