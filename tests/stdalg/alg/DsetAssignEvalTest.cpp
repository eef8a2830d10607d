// The assignment evaluators against hand-worked counts, a long-double model, and scipy's scores of
// real tables (reinis, ksl) when they have been fetched.
#include "alg/DsetAssignEvalBDe.h"
#include "alg/DsetAssignEvalConsist.h"
#include "alg/DsetAssignEvalFact.h"
#include "alg/DsetAssignEvalMInfo.h"
#include "alg/DsetAssignEvalPConsist.h"
#include "alg/DsetAssignEvalPMInfo.h"

#include "TestSupport.h"
#include "options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

typedef std::vector<std::vector<int>> Rows; // [row][column], -1 missing

// Rows written as words of digits, one per row, '-' for a missing value: "00 12 -1".
Rows rows_of(const std::string& text) {
    Rows out;
    std::istringstream in(text);
    for (std::string w; in >> w;) {
        out.emplace_back();
        for (char c : w)
            out.back().push_back(c == '-' ? -1 : c - '0');
    }
    return out;
}

options make_options(int max_card = 3, int ess = 1, int logit = 0) {
    options opt;
    std::istringstream in("[Eval]\nLogit = " + std::to_string(logit) +
                          "\nEquivSampleSize = " + std::to_string(ess) +
                          "\nMaxCard = " + std::to_string(max_card) + "\nMaxKToCalc = 3\n");
    opt.read(in, false);
    return opt;
}

// A table with the row sets of every value of every column, and one assignment over it.
class Lattice {
public:
    Lattice(const Rows& rows, int max_parents)
        : m_rows(rows), m_space(2, max_parents + 1),
          m_assign(m_space, 3, max_parents + 1, static_cast<int>(rows.size()), false) {
        const int ncols = rows.empty() ? 0 : static_cast<int>(rows[0].size());
        m_sets.resize(ncols);
        m_value_sets.resize(ncols);
        for (int c = 0; c < ncols; ++c)
            for (int v = 0; v < 3; ++v) {
                m_sets[c].emplace_back(new ds_bitvec(static_cast<int>(rows.size())));
                for (std::size_t r = 0; r < rows.size(); ++r)
                    if (rows[r][c] == v)
                        m_sets[c][v]->set_ind(static_cast<int>(r));
                m_value_sets[c].push_back(m_sets[c][v].get());
            }
    }
    // Base in slot 0 and `parents` in slots 1.. in order; earlier parents are removed first.
    DsetAssign& set(int base, const std::vector<int>& parents) {
        if (m_assign.m_vars[0] != base)
            m_assign.insert_base_var(base, m_value_sets[base]);
        for (std::size_t i = 1; i < m_assign.m_vars.size(); ++i)
            if (m_assign.m_vars[i] != -1)
                m_assign.remove_i_var(static_cast<int>(i));
        for (int p : parents)
            m_assign.insert_var(p, m_value_sets[p]);
        return m_assign;
    }
    // The 3^k x 3 counts over rows with no missing value; the first parent is the lowest digit.
    Rows counts(int base, const std::vector<int>& parents) const {
        int size = 1;
        for (std::size_t i = 0; i < parents.size(); ++i)
            size *= 3;
        Rows out(size, std::vector<int>(3, 0));
        for (const std::vector<int>& row : m_rows) {
            int idx = 0, w = 1;
            bool ok = row[base] >= 0;
            for (int p : parents) {
                ok = ok && row[p] >= 0;
                idx += w * row[p];
                w *= 3;
            }
            if (ok)
                ++out[idx][row[base]];
        }
        return out;
    }

private:
    Rows m_rows;
    MultiDimIdSpace m_space;
    DsetAssign m_assign;
    std::vector<std::vector<std::unique_ptr<ds_bitvec>>> m_sets;
    std::vector<DsetValueSets> m_value_sets;
};

// Long-double models of the scores over the non-empty rows of a count matrix.
long double model_bdeu(const Rows& counts, long double ess, int parents) {
    const long double a = ess / std::pow(3.0L, parents), a3 = a / 3;
    long double s = 0;
    for (const std::vector<int>& row : counts) {
        const long double n = row[0] + row[1] + row[2];
        if (n == 0)
            continue;
        s += std::lgamma(a) - std::lgamma(n + a);
        for (int c : row)
            s += std::lgamma(c + a3) - std::lgamma(a3);
    }
    return s;
}

long double model_minfo(const Rows& counts) {
    long double N = 0;
    std::vector<long double> col(3, 0);
    for (const std::vector<int>& row : counts)
        for (int k = 0; k < 3; ++k) {
            col[k] += row[k];
            N += row[k];
        }
    long double h = 0;
    for (const std::vector<int>& row : counts) {
        const long double r = row[0] + row[1] + row[2];
        for (int k = 0; k < 3; ++k)
            if (row[k])
                h += row[k] / N * std::log(row[k] * N / (r * col[k]));
    }
    return h;
}

Rows random_rows(std::mt19937& rng, int n, int ncols, int missing_per_100) {
    Rows rows(n, std::vector<int>(ncols));
    for (std::vector<int>& row : rows)
        for (int c = 0; c < ncols; ++c) {
            // Column c leans on column c - 1 so that scores are not all near independence.
            const int v = (c > 0 && rng() % 3 == 0) ? std::max(row[c - 1], 0) : static_cast<int>(rng() % 3);
            row[c] = static_cast<int>(rng() % 100) < missing_per_100 ? -1 : v;
        }
    return rows;
}

TEST(DsetAssignEval, RandomTablesAgainstLongDoubleModels) {
    const std::uint32_t seed = test_seed(1716);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    options opt = make_options(3, 4);
    DsetAssignEvalBDe bde(opt, "Eval");
    DsetAssignEvalMInfo mi(opt, "Eval");
    DsetAssignEvalConsist con(opt, "Eval");
    const std::vector<std::vector<int>> parent_sets = {{}, {1}, {2}, {3}, {1, 2}, {3, 1}, {2, 3, 1}};
    for (int round = 0; round < 20; ++round) {
        const Rows rows = random_rows(rng, 50 + static_cast<int>(rng() % 300), 4, 0);
        Lattice lat(rows, 3);
        for (const std::vector<int>& ps : parent_sets) {
            SCOPED_TRACE("round " + std::to_string(round) + " parents " + std::to_string(ps.size()));
            DsetAssign& a = lat.set(0, ps);
            const Rows counts = lat.counts(0, ps);
            const int k = static_cast<int>(ps.size());
            DsetAssignIter it(a);
            const float b = bde.eval(it);
            EXPECT_TRUE(near_rel(b, model_bdeu(counts, 4, k), 1e-5, 0));
            // The matrix form counts empty rows too: each adds 0 up to float rounding.
            EXPECT_TRUE(near_rel(bde.eval(counts, k), b, 1e-5, 0));
            EXPECT_TRUE(near_rel(mi.eval(it), model_minfo(counts), 1e-5, 2e-6));
            EXPECT_TRUE(near_rel(mi.eval(counts, k), model_minfo(counts), 1e-5, 2e-6));
            long double best = 0;
            for (const std::vector<int>& row : counts)
                best += std::max(row[0], std::max(row[1], row[2]));
            EXPECT_EQ(con.eval(it), static_cast<float>(best));
            EXPECT_EQ(con.eval(counts, k), static_cast<float>(best));
        }
    }
}

// Rows of (base, parent): the parent's value 2 appears only with a missing base value, which makes
// a combination with rows but no counts.
TEST(DsetAssignEval, EmptyCellsBDeAndConsist) {
    const Rows with = rows_of("00 00 10 21 21 01 -2");
    const Rows without(with.begin(), with.end() - 1);
    options opt = make_options();
    DsetAssignEvalBDe bde(opt, "Eval");
    Lattice lw(with, 1), lo(without, 1);
    DsetAssignIter iw(lw.set(0, {1})), io(lo.set(0, {1}));
    EXPECT_EQ(bde.eval(iw), bde.eval(io));
    const long double a = 1.0L / 3, a3 = a / 3;
    // By hand: cells (2, 1, 0) and (1, 0, 2), each against the prior a = 1/3 over three values.
    const long double want = 2 * std::lgamma(a) - 2 * std::lgamma(3 + a) + std::lgamma(2 + a3) +
                             2 * std::lgamma(1 + a3) + std::lgamma(2 + a3) + 2 * std::lgamma(a3) -
                             6 * std::lgamma(a3);
    EXPECT_TRUE(near_rel(bde.eval(iw), want, 1e-6, 0));
    Rows m = rows_of("210 102");
    const float two_rows = bde.eval(m, 1);
    m.push_back({0, 0, 0});
    EXPECT_TRUE(near_rel(bde.eval(m, 1), two_rows, 1e-6, 0));
    // n below 0: the prior is ESS times 3^-n.
    const long double big = 3, big3 = 1;
    const long double want_neg = 2 * std::lgamma(big) - 2 * std::lgamma(3 + big) + 2 * std::lgamma(2 + big3) +
                                 2 * std::lgamma(1 + big3) + 2 * std::lgamma(big3) - 6 * std::lgamma(big3);
    EXPECT_TRUE(near_rel(bde.eval(rows_of("210 102"), -1), want_neg, 1e-6, 0));

    DsetAssignEvalConsist con(opt, "Eval");
    EXPECT_EQ(con.eval(iw), 4.0f);
    EXPECT_EQ(con.eval(Rows{}, 0), 0.0f);
    // Counts are floats: 2^24 + 1 rounds back to 2^24.
    EXPECT_EQ(con.eval(Rows{{16777216, 0, 0}, {0, 1, 0}}, 1), 16777216.0f);
}

TEST(DsetAssignEval, MInfoAndPMInfoSpecialCases) {
    options opt = make_options();
    DsetAssignEvalMInfo mi(opt, "Eval");
    DsetAssignEvalPMInfo pmi(opt, "Eval");
    // The base in one value: no information, exactly.
    Lattice one(rows_of("10 12 11 10"), 1);
    DsetAssignIter it1(one.set(0, {1}));
    EXPECT_EQ(mi.eval(it1), 0.0f);

    // No parents: the information is rounding noise below 0.0001, and no probability is computed
    // (a chi-square of 0 degrees of freedom would complain on the error stream).
    Lattice lat(rows_of("00 10 21 01 11 10"), 1);
    DsetAssignIter it0(lat.set(0, {}));
    float p = 1;
    EXPECT_EQ(quiet([&] { p = pmi.eval(it0); }), "");
    EXPECT_EQ(p, 0.0f);

    // Two cells: 2 degrees of freedom, where the chi-square law is 1 - exp(-x/2) with x = 2 E h.
    DsetAssignIter it(lat.set(0, {1}));
    const Rows counts = rows_of("120 111");
    const long double h = model_minfo(counts);
    EXPECT_TRUE(near_rel(mi.eval(it), h, 1e-5, 0));
    EXPECT_TRUE(near_rel(pmi.eval(it), 1 - std::exp(-6 * h), 1e-5, 0));
    // Matrix: (rows - 1)(cols - 1) = 2 degrees of freedom again.
    EXPECT_TRUE(near_rel(pmi.eval(counts, 1), 1 - std::exp(-6 * h), 1e-5, 0));

    // A single non-empty row: 1 when one column holds every row, else 0; independence
    // (h below 0.0001) gives 0.
    const struct {
        Rows m;
        float want;
    } matrices[] = {
        {{{0, 5, 0}}, 1.0f},
        {{{0, 0, 0}, {0, 0, 4}, {0, 0, 0}}, 1.0f},
        {{{2, 3, 0}, {0, 0, 0}}, 0.0f},
        {{{3, 3, 3}, {1, 1, 1}}, 0.0f},
    };
    for (const auto& c : matrices)
        EXPECT_EQ(pmi.eval(c.m, 1), c.want);
}

TEST(DsetAssignEval, PConsistByHand) {
    options opt = make_options();
    DsetAssignEvalPConsist pc(opt, "Eval");
    EXPECT_EQ(pc.m_max_k, 3);
    const struct {
        const char* what;
        const char* rows; // (base, parent)
        double want;
    } cases[] = {
        // No errors: each cell of n rows has e = 1, the tail P(X >= n) = p0^n with p0 = 3/5.
        {"no errors", "00 00 00 11 11", -5 * std::log(0.6)},
        // Cells of 10 (7 + 3) and 4 rows, 3 errors: the quotients 9 : 3, 4 : 3, 2 : 3 send two
        // errors to the first cell and one to the second, e = (3, 2); p0 = 1/2.
        // P(X >= 8 | 10) = 56/1024, P(X >= 3 | 4) = 5/16.
        {"placed errors", "00 00 00 00 00 00 00 10 10 20 11 11 11 11",
         -std::log(56.0 / 1024) - std::log(5.0 / 16)},
        // Cells of two rows split 1 : 1: no quotient exceeds 1, the counts stay 1, P(X >= 2 | 2) = 1/4.
        {"nowhere to place", "00 10 01 21", -2 * std::log(0.25)},
        // The base never takes its first value: p0 = 0, every tail is exactly 0 and counts
        // -1000 (n - e): cells (0, 3, 1) with e = 2 and (0, 0, 2) with e = 1.
        {"zero tails", "10 10 10 20 21 21", 1000.0 * 2 + 1000.0 * 1},
    };
    for (const auto& c : cases) {
        Lattice lat(rows_of(c.rows), 1);
        DsetAssignIter it(lat.set(0, {1}));
        EXPECT_TRUE(near_rel(pc.eval(it), c.want, 1e-5, 0)) << c.what;
    }
}

TEST(DsetAssignEval, LogitTracesEachCell) {
    options opt = make_options(3, 1, 1);
    DsetAssignEvalBDe bde(opt, "Eval");
    Lattice lat(rows_of("00 11 21"), 1);
    DsetAssignIter it(lat.set(0, {1}));
    const std::string log = quiet([&] { bde.eval(it); });
    // Parent value 0 is id 4, value 1 id 8.
    EXPECT_NE(log.find("index 4 c1,2,3 1 0 0"), std::string::npos) << log;
    EXPECT_NE(log.find("index 8 c1,2,3 0 1 1"), std::string::npos) << log;
    EXPECT_NE(log.find("bde = "), std::string::npos) << log;
}

TEST(DsetAssignEval, FactoryNamesInTableOrder) {
    options opt = make_options();
    const auto& gen = dset_assign_eval_gen();
    const char* names[] = {"MInfo", "Consist", "PConsist", "BDe", "PMInfo"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_STREQ(gen.name(i), names[i]);
        EXPECT_EQ(gen.product(names[i], true), i);
    }
    // The other makers are seen through their classes' fatal texts.
    std::unique_ptr<DsetAssignEvalBase> e(gen.make("PMInfo", opt, "Eval"));
    EXPECT_NE(dynamic_cast<DsetAssignEvalPMInfo*>(e.get()), nullptr);
}

TEST(DsetAssignEvalDeath, FatalTexts) {
    Lattice lat(rows_of("00 1- 21 01 -0"), 1);
    options three = make_options(), four = make_options(4), none;
    const struct {
        const char* name;
        options* opt;
        bool matrix;
        const char* re;
    } cases[] = {
        {"BDe", &four, false,
         R"(alg/DsetAssignEvalBDe\([0-9]+\): Sorry, this code is optimized for cardinality == 3, can't run it with card == 4)"},
        {"MInfo", &three, false, R"(alg/DsetAssignEvalMInfo\([0-9]+\): Total sum = 3 while E is 5)"},
        {"PConsist", &three, true,
         R"(alg/DsetAssignEvalPConsist\([0-9]+\): Overload of assign eval pconsist NYI)"},
        {"Consist", &none, false, R"(option does not exists: Eval::Logit)"},
        {"Bde", &three, false, "Bde"},
    };
    for (const auto& c : cases)
        EXPECT_DEATH(
            {
                std::unique_ptr<DsetAssignEvalBase> e(dset_assign_eval_gen().make(c.name, *c.opt, "Eval"));
                DsetAssignIter it(lat.set(0, {1}));
                c.matrix ? e->eval(Rows{{1, 2, 3}}, 0) : e->eval(it);
            },
            c.re);
}

// Scores of every parent set up to three parents, from scipy (tests/stdalg/alg/assign_eval_ref.py),
// of tables derived by bench/fetch_assign_data.sh; skipped when they have not been fetched.
class RealTables : public ::testing::TestWithParam<const char*> {};

TEST_P(RealTables, MatchScipyScores) {
    const std::string dir = source_dir() + "/bench/data/scratch/assign/";
    std::ifstream table(dir + GetParam() + ".tab"), expected(dir + GetParam() + "_expected.tsv");
    if (!table || !expected)
        GTEST_SKIP() << "run bench/fetch_assign_data.sh to fetch " << GetParam();
    std::string line;
    std::getline(table, line);
    std::map<std::string, int> col;
    std::istringstream names(line);
    for (std::string n; names >> n;)
        col[n] = static_cast<int>(col.size());
    Rows rows;
    while (std::getline(table, line)) {
        std::istringstream in(line);
        const std::vector<int> row{std::istream_iterator<int>(in), std::istream_iterator<int>()};
        if (!row.empty())
            rows.push_back(row);
    }
    Lattice lat(rows, 3);
    options opt = make_options(3, 1);
    const auto& gen = dset_assign_eval_gen();
    std::map<std::string, std::unique_ptr<DsetAssignEvalBase>> ev;
    for (const char* t : {"MInfo", "Consist", "PConsist", "BDe", "PMInfo"})
        ev[t].reset(gen.make(t, opt, "Eval"));

    std::getline(expected, line);
    // Columns: the score from the iterator, then ("_m") from the count matrix.
    const std::string heads[] = {"MInfo", "MInfo_m", "Consist", "Consist_m", "PConsist",
                                 "BDe",   "BDe_m",   "PMInfo",  "PMInfo_m"};
    int sets = 0;
    while (std::getline(expected, line)) {
        std::istringstream in(line);
        std::string base, parents;
        std::getline(in, base, '\t');
        std::getline(in, parents, '\t');
        std::vector<int> ps;
        if (parents != "-") {
            std::istringstream pin(parents);
            std::string p;
            while (std::getline(pin, p, ','))
                ps.push_back(col.at(p));
        }
        DsetAssignIter it(lat.set(col.at(base), ps));
        const Rows counts = lat.counts(col.at(base), ps);
        const int k = static_cast<int>(ps.size());
        for (const std::string& h : heads) {
            DsetAssignEvalBase& e = *ev[h.substr(0, h.find('_'))];
            const float got = h.back() == 'm' ? e.eval(counts, k) : e.eval(it);
            std::string cell;
            std::getline(in, cell, '\t');
            const double want = std::stod(cell);
            // Information sums cancel: an absolute floor of a few float steps of the entropy.
            const double floor = (h[0] == 'M' || h[0] == 'P') ? 2e-6 : 0;
            EXPECT_TRUE(near_rel(got, want, 1e-5, floor)) << base << " | " << parents << " " << h;
        }
        ++sets;
    }
    EXPECT_GT(sets, 100);
}

INSTANTIATE_TEST_SUITE_P(Deal, RealTables, ::testing::Values("reinis", "ksl"));

} // namespace
