// The profilers with a fixed seed: a family profile that passes verify, globins and kinase domains
// told apart by two copies, the renewal rule of RandomCopyFactor, empty classes.
#include "HMMProfiler.h"
#include "HMMTestUtil.h"
#include "LogSpace.h"
#include "Random.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <numeric>
#include <sstream>

namespace {

struct ProfOpts {
    options opts;
    std::unique_ptr<SymbSubstMat> mat;
    explicit ProfOpts(const std::string& profile_keys) {
        std::ifstream in(source_dir() + "/data/hmm/blosum62_codes.opt");
        opts.read(in, false);
        std::istringstream keys("[Profile]\nLogit = 0\nEMLogit = 0\n" + profile_keys);
        opts.read(keys, false);
        mat.reset(new SymbSubstMat(opts, "Subst"));
    }
};

// Short protein-coded sequences: a family around ACDEF and one around WYKLM.
ProteinSequenceSet two_families() {
    ProteinSequenceSet s;
    for (const char* t : {"ACDEF", "ACDEF", "ACEF", "WYKLM", "WYKKLM", "WYKLM"}) {
        ProteinSequence p;
        for (const char* c = t; *c; ++c)
            p.push_back(ProteinSequence::encode_aa(*c));
        s.push_back(p);
        s.m_names.push_back(t);
    }
    return s;
}

TEST(FamHMMProfiler, TwelveGlobinsGiveAVerifiedProfile) {
    ProteinSequenceSet seqs;
    if (!read_scratch("globins45.fa", seqs, 12))
        GTEST_SKIP() << "run bench/hmm_fetch_profiles.sh first";
    ProfOpts s("");
    Random::reset(7);
    QuietCerr quiet;
    FamHMMProfiler fam(seqs, s.opts, "Profile", *s.mat, -4, 3, 1.0f, 1.0f);
    fam.profile();
    EXPECT_GT(fam.m_best_profile.m_length, 100);
    EXPECT_GT(fam.m_best_ll, kLogZero);
    EXPECT_EQ("", verify_report(fam.m_best_profile));
}

TEST(SubFamHMMProfiler, SeparatesGlobinsFromKinases) {
    ProteinSequenceSet seqs;
    if (!read_scratch("globins45.fa", seqs, 8) || !read_scratch("pkinase.fa", seqs, 8))
        GTEST_SKIP() << "run bench/hmm_fetch_profiles.sh first";
    ProfOpts s("TargetNumOfClasses = 2\nEMEpsilon = 1\nRandomCopyFactor = 0.3\nCoolingFactor = 1\n");
    Random::reset(11);
    QuietCerr quiet;
    // MaxIter 2: a single pass already separates them as well as three passes do.
    SubFamHMMProfiler sub(seqs, s.opts, "Profile", *s.mat, -8, 2, 1.0f);
    sub.profile();
    int agree = 0;
    for (int i = 0; i < 16; ++i)
        agree += sub.m_class_of_seq[i] == sub.m_class_of_seq[0] ? (i < 8) : (i >= 8);
    EXPECT_GE(agree, 15) << "of 16";
}

// Counts the renewal traces of each pass.
int renewals(const std::string& log) {
    int n = 0;
    for (std::size_t p = log.find("SubFamP perturbing copy"); p != std::string::npos;
         p = log.find("SubFamP perturbing copy", p + 1))
        ++n;
    return n;
}

// Seven copies for six sequences: some class stays empty.
TEST(SubFamHMMProfiler, RenewalRuleAndEmptyClass) {
    for (float factor : {0.0f, 1.0f}) {
        std::ostringstream keys;
        keys << "TargetNumOfClasses = 7\nEMEpsilon = 1\nRandomCopyFactor = " << factor
             << "\nCoolingFactor = 1\n";
        ProfOpts s(keys.str());
        ProteinSequenceSet seqs = two_families();
        Random::reset(3);
        QuietCerr quiet;
        SubFamHMMProfiler sub(seqs, s.opts, "Profile", *s.mat, -4, 5, 1.0f);
        sub.profile();
        // Four passes: factor 0 renews the worst copy only, factor 1 all seven (u is below 1).
        EXPECT_EQ(factor == 0.0f ? 4 : 28, renewals(quiet.text())) << factor;
        EXPECT_EQ(6, std::accumulate(sub.m_class_count.begin(), sub.m_class_count.end(), 0));
        std::ostringstream dump;
        sub.dump_m_align(dump);
        EXPECT_NE(std::string::npos, dump.str().find("EMPTY CLASS"));
        // Equal priors: the lowest copy id is the worst.
        sub.force_start_prior();
        EXPECT_EQ(0, sub.find_worst_class());
    }
}

} // namespace
