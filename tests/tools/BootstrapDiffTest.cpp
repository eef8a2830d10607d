// The fast bootstrap against the reference path: same kept values, same state, same reports.
#include "Annot.h"
#include "Bootstrap.h"
#include "ClassMembers.h"
#include "Random.h"
#include "VarClasses.h"
#include "VeskRun.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>

namespace {

struct Case {
    int n_vars = 0;
    std::vector<int> chip_ids;
    VarClasses classes;
    std::vector<std::vector<int>> sets;
    int passes = 0;
};

// A random case: tiny universes (fewer than 32 genes) as often as larger ones, chip genes listed
// twice, set members off the chip, repeated members, empty sets, duplicate memberships.
Case make_case(std::mt19937& rng) {
    Case c;
    auto pick = [&rng](int n) { return n > 0 ? static_cast<int>(rng() % n) : 0; };
    c.n_vars = (rng() % 2) ? 1 + pick(31) : 32 + pick(rng() % 4 ? 200 : 3000);
    ds_bitvec mask(c.n_vars);
    const int chip_lines = pick(c.n_vars + 3);
    for (int i = 0; i < chip_lines; ++i) {
        const int g = pick(c.n_vars);
        mask.set_ind(g);
        c.chip_ids.push_back(g);
    }
    const int n_classes = 1 + pick(40);
    std::ostringstream keys, assoc;
    for (int k = 0; k < n_classes; ++k) {
        if (pick(8) == 0)
            continue; // a hole
        keys << k << "\tK" << k << "\tclass " << k << "\t0\n";
        const int size = pick(std::min(c.n_vars, 60) + 1);
        const int base = pick(c.n_vars);
        for (int i = 0; i < size; ++i) {
            // Clustered members so that classes overlap and sets find them.
            const int g = pick(3) ? (base + pick(20)) % c.n_vars : pick(c.n_vars);
            assoc << k << " " << g << "\n";
            if (pick(10) == 0)
                assoc << k << " " << g << "\n";
        }
    }
    std::istringstream kin(keys.str()), ain(assoc.str());
    quiet([&] { c.classes.read(kin, ain, c.n_vars, &mask); });
    c.sets.resize(pick(8));
    for (auto& s : c.sets) {
        if (pick(5) == 0)
            continue; // empty set
        const int size = 1 + pick(25);
        const int base = pick(c.n_vars);
        for (int i = 0; i < size; ++i)
            s.push_back(pick(2) ? (base + pick(15)) % c.n_vars : pick(c.n_vars));
    }
    const int pass_choices[] = {0, 1, 2, 5, 17, 63, 64, 65, 130};
    c.passes = pass_choices[pick(9)];
    g_min_cls_size = pick(4);
    g_max_cls_size = pick(3) ? 1000 : pick(30);
    g_min_inter = pick(4);
    g_univ_size = mask.on_bits();
    return c;
}

bool same_bits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

} // namespace

TEST(BootstrapDiff, FastEqualsReferenceOnRandomCases) {
    const std::uint32_t seed = test_seed(2024);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    const float ceiling = static_cast<float>(std::log(0.1));
    int with_kept = 0;
    for (int rep = 0; rep < 300; ++rep) {
        Case c = make_case(rng);
        const int rseed = static_cast<int>(rng() % 100000);
        BootstrapState ref_state, fast_state, again;
        for (BootstrapState* st : {&ref_state, &fast_state, &again})
            bootstrap_init(*st, static_cast<int>(c.chip_ids.size()), c.n_vars);
        std::vector<float> ref_kept, fast_kept;
        Random::reset(rseed);
        const std::string ref_err = quiet([&] {
            bootstrap_reference(c.classes, c.sets, c.chip_ids, c.n_vars, c.passes, ceiling, ref_state,
                                ref_kept);
        });
        const int threads = 1 + rep % 3;
        Random::reset(rseed);
        ClassMembers members;
        members.assign(c.classes);
        const std::string fast_err = quiet([&] {
            bootstrap_fast(members, c.sets, c.chip_ids, c.n_vars, c.passes, ceiling, fast_state, fast_kept,
                           threads);
        });

        ASSERT_TRUE(same_bits(ref_kept, fast_kept))
            << "case " << rep << " n_vars " << c.n_vars << " passes " << c.passes << " threads " << threads;
        ASSERT_EQ(ref_state.image, fast_state.image) << "case " << rep;
        ASSERT_EQ(ref_state.slots, fast_state.slots) << "case " << rep;
        ASSERT_EQ(ref_err, fast_err) << "case " << rep;
        // The fast path drew exactly the values of the passes' shuffles, no more.
        const std::uint32_t next_after_fast = Random::bits();
        Random::reset(rseed);
        for (int p = 0; p < c.passes; ++p)
            bootstrap_shuffle(again, c.chip_ids);
        ASSERT_EQ(next_after_fast, Random::bits()) << "case " << rep;
        with_kept += !ref_kept.empty();
    }
    // The cases must exercise the kept list, not only empty passes.
    EXPECT_GT(with_kept, 60);
}

// A member list longer than 16-bit overlap counters hold (members repeated) takes the 32-bit ones.
TEST(BootstrapDiff, LongMemberListsTakeWideCounters) {
    std::mt19937 rng(test_seed(5));
    Case c;
    do
        c = make_case(rng);
    while (c.n_vars < 100 || c.chip_ids.size() < 50);
    g_min_cls_size = 1;
    g_max_cls_size = 1000;
    g_min_inter = 1;
    c.sets.assign(2, std::vector<int>());
    for (int i = 0; i < 70000; ++i) // a tenth of the genes, each many times
        c.sets[0].push_back(static_cast<int>(rng() % (c.n_vars / 10)));
    c.sets[1] = {0, 1 % c.n_vars};
    c.passes = 70;
    const float ceiling = static_cast<float>(std::log(0.1));
    BootstrapState ref_state, fast_state;
    for (BootstrapState* st : {&ref_state, &fast_state})
        bootstrap_init(*st, static_cast<int>(c.chip_ids.size()), c.n_vars);
    ClassMembers members;
    members.assign(c.classes);
    std::vector<float> ref_kept, fast_kept;
    Random::reset(11);
    quiet([&] {
        bootstrap_reference(c.classes, c.sets, c.chip_ids, c.n_vars, c.passes, ceiling, ref_state, ref_kept);
    });
    Random::reset(11);
    quiet([&] {
        bootstrap_fast(members, c.sets, c.chip_ids, c.n_vars, c.passes, ceiling, fast_state, fast_kept, 2);
    });
    EXPECT_FALSE(ref_kept.empty());
    EXPECT_TRUE(same_bits(ref_kept, fast_kept));
    EXPECT_EQ(ref_state.image, fast_state.image);
}

namespace {

std::string run_tool(const std::string& opt, const std::string& report, bool reference, int threads,
                     std::string& err) {
    VeskRunSettings settings;
    settings.reference_bootstrap = reference;
    settings.threads = threads;
    std::string arg0 = "vesk", arg1 = opt;
    char* argv[] = {&arg0[0], &arg1[0], nullptr};
    err = quiet([&] { EXPECT_EQ(vesk_main(2, argv, settings), 0); });
    return read_file(report);
}

} // namespace

TEST(BootstrapDiff, WholeReportsAreByteIdentical) {
    const std::uint32_t seed = test_seed(99);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    int lines = 0;
    for (int rep = 0; rep < 60; ++rep) {
        TempDir dir;
        auto pick = [&rng](int n) { return n > 0 ? static_cast<int>(rng() % n) : 0; };
        const int n = 1 + pick(rep % 2 ? 30 : 400);
        std::ostringstream varob, chip, types, keys, assoc, sets;
        for (int g = 0; g < n; ++g)
            varob << g << " E" << g << " S" << g << "\n";
        for (int g = 0; g < n; ++g)
            if (pick(4))
                chip << (pick(2) ? "S" : "E") << g << "\n";
        chip << "S0\nNOPE\n";
        const int n_classes = 1 + pick(30);
        for (int k = 0; k < n_classes; ++k) {
            keys << k << "\tGO:" << k << "\tterm " << k << "\t1\n";
            if (pick(3))
                types << "GO:" << k << " " << (pick(2) ? "P" : "F") << "\n";
            const int base = pick(n), size = 1 + pick(std::min(n, 40));
            for (int i = 0; i < size; ++i)
                assoc << k << " " << (base + pick(12)) % n << "\n";
        }
        const int n_sets = 1 + pick(6);
        for (int s = 0; s < n_sets; ++s) {
            const int base = pick(n), size = 1 + pick(20);
            for (int i = 0; i < size; ++i)
                sets << "S" << (pick(4) ? (base + pick(10)) % n : pick(n)) << " " << s << "\n";
        }
        const std::string report = dir.path() + "/report";
        const int passes_choice[] = {0, 1, 3, 40, 70};
        std::ostringstream opt;
        opt << "[Random]\nSeed = " << pick(1000) << "\n[Tables]\nvarob = " << dir.write("v", varob.str())
            << "\nChipOrfs = " << dir.write("c", chip.str())
            << "\nGoTypeTab = " << dir.write("t", types.str())
            << "\ngoclskey = " << dir.write("k", keys.str()) << "\nclsassoc = " << dir.write("a", assoc.str())
            << "\nSetsOrfs = " << dir.write("s", sets.str()) << "\nAnnotReport = " << report
            << "\n[Vesk]\nBootstrapNum = " << passes_choice[pick(5)] << "\nMinClsSize = " << pick(3)
            << "\nMaxClsSize = " << 5 + pick(60) << "\nMinClsInter = " << pick(3)
            << "\nMaxPvToRep = " << (pick(2) ? "0.5" : "0.05")
            << "\nFilterRedPVThres = 0.05\nReportGeneList = " << pick(2) << "\n";
        const std::string opt_path = dir.write("run.opt", opt.str());
        std::string ref_err, fast_err;
        const std::string ref = run_tool(opt_path, report, true, 1, ref_err);
        const std::string fast = run_tool(opt_path, report, false, 1 + rep % 4, fast_err);
        ASSERT_EQ(ref, fast) << "case " << rep << "\n" << opt.str();
        ASSERT_EQ(ref_err, fast_err) << "case " << rep;
        lines += static_cast<int>(std::count(ref.begin(), ref.end(), '\n'));
    }
    EXPECT_GT(lines, 20); // the reports are not all empty
}
