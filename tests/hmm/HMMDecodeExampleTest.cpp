// Runs examples/hmm_decode on the bundled casino data and checks its tables against the
// double-precision model of tests/hmm/hmm_ref.py (data/hmm/casino_example.txt).
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

namespace {

std::vector<std::vector<std::string>> read_rows(const std::string& path) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> cols;
        std::istringstream ls(line);
        std::string c;
        while (std::getline(ls, c, '\t'))
            cols.push_back(c);
        rows.push_back(cols);
    }
    return rows;
}

// The lines of data/hmm/casino_example.txt that start with `key`, split at blanks, key dropped.
std::vector<std::vector<std::string>> expected(const std::string& key) {
    std::ifstream in(source_dir() + "/data/hmm/casino_example.txt");
    std::vector<std::vector<std::string>> out;
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        std::string w;
        ls >> w;
        if (w != key)
            continue;
        std::vector<std::string> cols;
        while (ls >> w)
            cols.push_back(w);
        out.push_back(cols);
    }
    return out;
}

void near_rel(const std::string& want, const std::string& got, const std::string& what) {
    const double w = std::stod(want);
    EXPECT_NEAR(w, std::stod(got), 1e-5 * std::max(1.0, std::fabs(w))) << what;
}

std::string run(const TempDir& dir, const std::string& extra) {
    const std::string d = source_dir() + "/data/examples/";
    const std::string opt =
        dir.write("run.opt", "[Model]\nAlphabet = digits\nAlphabetSize = 6\nStates = 3\n"
                             "[Tables]\nTransitions = " +
                                 d + "hmm_casino_trans.tab\nEmissions = " + d +
                                 "hmm_casino_emit.tab\nSequences = " + d +
                                 "hmm_casino_rolls.fa\nOutDecode = " + dir.path() + "/decode.tsv\n" + extra);
    const std::string cmd =
        std::string(HMM_DECODE_BIN) + " " + opt + " > " + dir.path() + "/stdout 2> /dev/null";
    EXPECT_EQ(0, std::system(cmd.c_str()));
    return read_file(dir.path() + "/stdout");
}

TEST(HMMDecodeExample, DecodesTheBundledRolls) {
    TempDir dir;
    run(dir, "");
    const auto rows = read_rows(dir.path() + "/decode.tsv");
    const auto want = expected("decode");
    ASSERT_EQ(3u, rows.size());
    ASSERT_EQ(2u, want.size());
    EXPECT_EQ((std::vector<std::string>{"name", "length", "viterbi", "forward", "backward", "path"}),
              rows[0]);
    const char* names[] = {"classic", "second"};
    const char* lengths[] = {"18", "6"};
    for (int r = 0; r < 2; ++r) {
        ASSERT_EQ(6u, rows[r + 1].size());
        EXPECT_EQ(names[r], rows[r + 1][0]);
        EXPECT_EQ(lengths[r], rows[r + 1][1]);
        near_rel(want[r][0], rows[r + 1][2], "viterbi");
        near_rel(want[r][1], rows[r + 1][3], "forward");
        near_rel(want[r][1], rows[r + 1][4], "backward");
        EXPECT_EQ(want[r][2], rows[r + 1][5]);
    }
}

TEST(HMMDecodeExample, TrainsThenDecodes) {
    TempDir dir;
    const std::string out =
        run(dir, "[Train]\nEps = 1e30\nLogit = 0\n[Decode]\nBackward = 0\n[Tables]\n"
                 "OutTransitions = " +
                     dir.path() + "/trans.tab\nOutEmissions = " + dir.path() + "/emit.tab\n");
    ASSERT_EQ(0u, out.find("EM LL "));
    near_rel(expected("emll")[0][0], out.substr(6, out.find('\n') - 6), "EM LL");

    // Edges in input order, then the two emission rows.
    const auto trans = read_rows(dir.path() + "/trans.tab");
    const auto emit = read_rows(dir.path() + "/emit.tab");
    std::ifstream model(source_dir() + "/data/hmm/casino_example.txt");
    std::vector<std::vector<std::string>> want;
    std::string line;
    while (std::getline(model, line)) {
        if (line.empty() || !std::isdigit(static_cast<unsigned char>(line[0])))
            continue;
        std::istringstream ls(line);
        std::vector<std::string> cols;
        std::string w;
        while (ls >> w)
            cols.push_back(w);
        want.push_back(cols);
    }
    ASSERT_EQ(10u, want.size());
    ASSERT_EQ(8u, trans.size());
    ASSERT_EQ(2u, emit.size());
    for (std::size_t e = 0; e < 8; ++e) {
        ASSERT_EQ(3u, trans[e].size());
        EXPECT_EQ(want[e][0], trans[e][0]);
        EXPECT_EQ(want[e][1], trans[e][1]);
        EXPECT_NEAR(std::stod(want[e][2]), std::stod(trans[e][2]), 1e-5) << "edge " << e;
    }
    for (std::size_t s = 0; s < 2; ++s) {
        ASSERT_EQ(7u, emit[s].size());
        EXPECT_EQ(want[8 + s][0], emit[s][0]);
        for (int b = 1; b <= 6; ++b)
            EXPECT_NEAR(std::stod(want[8 + s][b]), std::stod(emit[s][b]), 1e-5) << "state " << s + 1;
    }

    const auto rows = read_rows(dir.path() + "/decode.tsv");
    const auto dec = expected("trained");
    ASSERT_EQ(3u, rows.size());
    for (int r = 0; r < 2; ++r) {
        near_rel(dec[r][0], rows[r + 1][2], "viterbi");
        near_rel(dec[r][1], rows[r + 1][3], "forward");
        EXPECT_EQ("NA", rows[r + 1][4]);
        EXPECT_EQ(dec[r][2], rows[r + 1][5]);
    }
}

} // namespace
