// Runs examples/hmm_decode on the bundled casino data and compares its outputs with the files that
// tests/hmm/hmm_ref.py computed in double precision (data/hmm/example_*): words equal, numbers
// within 1e-5 relative.
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

namespace {

void expect_same_table(const std::string& want_file, const std::string& got_file) {
    SCOPED_TRACE(want_file);
    std::istringstream want(read_file(source_dir() + "/data/hmm/" + want_file)), got(read_file(got_file));
    std::string w, g;
    int words = 0;
    while (want >> w) {
        ASSERT_TRUE(static_cast<bool>(got >> g)) << "output ends before " << w;
        char* end = nullptr;
        const double wv = std::strtod(w.c_str(), &end);
        if (*end == '\0' && w.find(',') == std::string::npos)
            EXPECT_NEAR(wv, std::stod(g), 1e-5 * std::max(1.0, std::fabs(wv))) << "word " << words;
        else
            EXPECT_EQ(w, g) << "word " << words;
        ++words;
    }
    EXPECT_FALSE(static_cast<bool>(got >> g)) << "extra output " << g;
}

void run(const TempDir& dir, const std::string& extra) {
    const std::string d = source_dir() + "/data/examples/hmm_casino_";
    const std::string opt = dir.write(
        "run.opt", "[Model]\nAlphabet = digits\nAlphabetSize = 6\nStates = 3\n[Tables]\nTransitions = " + d +
                       "trans.tab\nEmissions = " + d + "emit.tab\nSequences = " + d +
                       "rolls.fa\nOutDecode = " + dir.path() + "/decode.tsv\n" + extra);
    const std::string cmd =
        std::string(HMM_DECODE_BIN) + " " + opt + " > " + dir.path() + "/stdout 2> /dev/null";
    ASSERT_EQ(0, std::system(cmd.c_str()));
}

TEST(HMMDecodeExample, DecodesTheBundledRolls) {
    TempDir dir;
    run(dir, "");
    expect_same_table("example_decode.tsv", dir.path() + "/decode.tsv");
    // The columns are tab-separated.
    EXPECT_EQ(0u,
              read_file(dir.path() + "/decode.tsv").find("name\tlength\tviterbi\tforward\tbackward\tpath\n"));
}

TEST(HMMDecodeExample, TrainsThenDecodes) {
    TempDir dir;
    run(dir, "[Train]\nEps = 1e30\nLogit = 0\n[Decode]\nBackward = 0\n[Tables]\nOutTransitions = " +
                 dir.path() + "/trans.tab\nOutEmissions = " + dir.path() + "/emit.tab\n");
    expect_same_table("example_train_stdout.txt", dir.path() + "/stdout");
    expect_same_table("example_train_trans.tab", dir.path() + "/trans.tab");
    expect_same_table("example_train_emit.tab", dir.path() + "/emit.tab");
    expect_same_table("example_train_decode.tsv", dir.path() + "/decode.tsv");
}

} // namespace
