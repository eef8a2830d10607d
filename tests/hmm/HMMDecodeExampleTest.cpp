// Runs examples/hmm_decode on the bundled casino data and compares its outputs with the files that
// tests/hmm/hmm_ref.py computed in double precision (data/hmm/example_*): words equal, numbers
// within 1e-5 relative.
#include "HMMTestUtil.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(HMMDecodeExample, DecodesThenTrainsAndDecodes) {
    for (bool train : {false, true}) {
        TempDir dir;
        const std::string d = source_dir() + "/data/examples/hmm_casino_", out = dir.path() + "/";
        const std::string extra = train ? "[Train]\nEps = 1e30\nLogit = 0\n[Decode]\nBackward = 0\n[Tables]\n"
                                          "OutTransitions = " +
                                              out + "trans.tab\nOutEmissions = " + out + "emit.tab\n"
                                        : "";
        const std::string opt = dir.write(
            "run.opt", "[Model]\nAlphabet = digits\nAlphabetSize = 6\nStates = 3\n[Tables]\nTransitions = " +
                           d + "trans.tab\nEmissions = " + d + "emit.tab\nSequences = " + d +
                           "rolls.fa\nOutDecode = " + out + "decode.tsv\n" + extra);
        const std::string cmd = std::string(HMM_DECODE_BIN) + " " + opt + " > " + out + "stdout 2> /dev/null";
        ASSERT_EQ(0, std::system(cmd.c_str()));
        const std::vector<std::pair<const char*, const char*>> files =
            train
                ? std::vector<std::pair<const char*, const char*>>{{"example_train_stdout.txt", "stdout"},
                                                                   {"example_train_trans.tab", "trans.tab"},
                                                                   {"example_train_emit.tab", "emit.tab"},
                                                                   {"example_train_decode.tsv", "decode.tsv"}}
                : std::vector<std::pair<const char*, const char*>>{{"example_decode.tsv", "decode.tsv"}};
        for (const auto& f : files) {
            SCOPED_TRACE(f.first);
            expect_same_words(read_file(source_dir() + "/data/hmm/" + f.first), read_file(out + f.second),
                              1e-5);
        }
        // The columns are tab-separated.
        if (!train) {
            EXPECT_EQ(0u,
                      read_file(out + "decode.tsv").find("name\tlength\tviterbi\tforward\tbackward\tpath\n"));
        }
    }
}

} // namespace
