// Whole-program runs of vesk: golden reports and error streams, option layering, bad input.
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <regex>
#include <string>

namespace {

struct VeskRun {
    int status;           // raw wait status
    std::string err, out; // the error stream and the standard output
    bool ok() const { return WIFEXITED(status) && WEXITSTATUS(status) == 0; }
    bool aborted() const { return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT; }
};

std::string expected(const std::string& rel) { return read_file(source_dir() + "/" + rel); }

struct VeskE2E : testing::Test {
    // Runs vesk from the repository root with the given option files.
    VeskRun run(const std::string& args, const std::string& env = "") {
        const std::string err = dir.path() + "/stderr", out = dir.path() + "/stdout";
        const std::string cmd = "cd '" + source_dir() + "' && exec env " + env + " '" + VESK_BIN_PATH + "' " +
                                args + " >'" + out + "' 2>'" + err + "'";
        VeskRun r;
        r.status = std::system(cmd.c_str());
        r.err = read_file(err);
        r.out = read_file(out);
        return r;
    }
    // Option file with the six tables of the bundled example and `extra` after them.
    std::string example(const std::string& extra, const std::string& name = "x.opt") {
        const std::string d = source_dir() + "/data/vesk/";
        return dir.write(name, "[Random]\nSeed = 105\n[Tables]\nvarob = " + d + "varob.tab\nChipOrfs = " + d +
                                   "chip.txt\nGoTypeTab = " + d + "gotype.tab\ngoclskey = " + d +
                                   "clskey.tab\nclsassoc = " + d + "clsassoc.tab\nSetsOrfs = " + d +
                                   "sets.tab\nAnnotReport = " + report +
                                   "\n[Vesk]\nBootstrapNum = 5\nMinClsSize = 3\nMaxClsSize = 30\n"
                                   "MinClsInter = 2\nMaxPvToRep = 0.2\nFilterRedPVThres = 0.01\n" +
                                   extra);
    }
    TempDir dir;
    const std::string report = dir.path() + "/report";
};

} // namespace

TEST_F(VeskE2E, GoldenReportsAndTraces) {
    const std::string over = dir.write("out.opt", "[Tables]\nAnnotReport = " + report + "\n");
    struct Case {
        const char *args, *expect_dir, *suffix;
        int reads_before; // "will read" lines ahead of the one of `over`
    } cases[] = {{"data/vesk/run.opt", "data/vesk/expected/", "", 1},
                 {"data/vesk/run.opt data/vesk/layer.opt", "data/vesk/expected/", ".layered", 2},
                 {"data/vesk/tiny/run.opt", "data/vesk/tiny/expected/", "", 1}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        VeskRun r = run(std::string(c.args) + " " + over);
        ASSERT_TRUE(r.ok()) << r.err;
        const std::string edir = c.expect_dir;
        EXPECT_EQ(read_file(report), expected(edir + "AnnotReport" + c.suffix));
        std::string want = expected(edir + "stderr" + c.suffix + ".txt");
        std::string::size_type at = 0;
        for (int i = 0; i < c.reads_before; ++i)
            at = want.find('\n', at) + 1;
        EXPECT_EQ(r.err, want.insert(at, "will read " + over + "\n"));
        EXPECT_EQ(r.out, "");
    }
    // The later option file changes the report.
    EXPECT_NE(expected("data/vesk/expected/AnnotReport.layered"), expected("data/vesk/expected/AnnotReport"));
}

TEST_F(VeskE2E, ReportVariants) {
    ASSERT_TRUE(run(example("")).ok());
    const std::string plain = read_file(report);
    EXPECT_FALSE(plain.empty());
    ASSERT_TRUE(run(example("ReportGeneList = 0\n")).ok());
    EXPECT_EQ(read_file(report), plain); // absent equals 0

    VeskRun r = run(example("BootstrapNum = 0\n"));
    ASSERT_TRUE(r.ok()) << r.err;
    EXPECT_NE(r.err.find("\ngot 0rand pvs\n"), std::string::npos) << r.err;
    const std::string rep = read_file(report);
    ASSERT_FALSE(rep.empty());
    // Column 4 is log10(1 / 0) on every line.
    for (std::string::size_type pos = 0; pos < rep.size(); pos = rep.find('\n', pos) + 1) {
        const std::string line = rep.substr(pos, rep.find('\n', pos) - pos);
        std::string::size_type t = 0;
        for (int c = 0; c < 3; ++c)
            t = line.find('\t', t) + 1;
        EXPECT_EQ(line.substr(t, line.find('\t', t) - t), "inf") << line;
    }

    // Missing class tables give an empty report; an unopenable report path is not an error.
    for (const char* table : {"goclskey = /nonexistent/k\n", "clsassoc = /nonexistent/d\n"}) {
        r = run(example(std::string("[Tables]\n") + table));
        ASSERT_TRUE(r.ok()) << r.err;
        const std::string which =
            table[0] == 'g' ? "annok file /nonexistent/k\n" : "annod file /nonexistent/d\n";
        EXPECT_NE(r.err.find("Cannot open " + which), std::string::npos) << r.err;
        EXPECT_EQ(r.err.find("max class id"), std::string::npos); // nothing was read
        EXPECT_EQ(read_file(report), "");
    }
    r = run(example("[Tables]\nAnnotReport = " + dir.path() + "/no/such/dir/report\n"));
    EXPECT_TRUE(r.ok()) << r.err;
    EXPECT_NE(r.err.find("rand pvs"), std::string::npos);
}

TEST_F(VeskE2E, FatalInputs) {
    const std::string assoc = dir.write("assoc.tab", "0 1\n99 2\n");
    struct Case {
        std::string extra, pattern; // pattern: a regex the error stream must contain
    } cases[] = {
        {"varob = /nonexistent/t\n", R"(vesk\([0-9]+\): cannot open varob table /nonexistent/t\n\n$)"},
        {"ChipOrfs = /nonexistent/t\n", R"(vesk\([0-9]+\): Cannot open chip orf file\n\n$)"},
        {"GoTypeTab = /nonexistent/t\n", R"(vesk\([0-9]+\): Cannot open go type file\n\n$)"},
        {"SetsOrfs = /nonexistent/t\n", R"(vesk\([0-9]+\): Cannot open sets orf file\n\n$)"},
        {"clsassoc = " + assoc + "\n", R"(Class 99 size 22\nvesk\([0-9]+\): Table id mismatch\n)"},
    };
    for (const Case& c : cases) {
        VeskRun r = run(example("[Tables]\n" + c.extra));
        EXPECT_TRUE(r.aborted()) << c.extra;
        EXPECT_TRUE(std::regex_search(r.err, std::regex(c.pattern))) << c.extra << r.err;
    }

    // DOS line ends: the seed converts despite its "\r"; the path keeps it and does not open.
    std::string crlf = read_file(example(""));
    for (std::string::size_type at = 0; (at = crlf.find('\n', at)) != std::string::npos; at += 2)
        crlf.insert(at, "\r");
    VeskRun r = run(dir.write("dos.opt", crlf));
    EXPECT_TRUE(r.aborted());
    EXPECT_NE(r.err.find("): cannot open varob table " + source_dir() + "/data/vesk/varob.tab\r\n\n"),
              std::string::npos)
        << r.err;
}

TEST_F(VeskE2E, MissingOptionFileAndErrorChannel) {
    VeskRun r = run(dir.path() + "/no_such.opt");
    EXPECT_TRUE(r.aborted()) << r.status;
    EXPECT_NE(r.err.find("will read " + dir.path() + "/no_such.opt\n"), std::string::npos);
    EXPECT_TRUE(
        std::regex_search(r.err, std::regex(R"(options\([0-9]+\): option does not exists: Random::Seed\n)")))
        << r.err;
    // With no argument at all, the same first key dies; the environment silences or redirects the text.
    for (const char* env : {"", "BASE_ERR_LOG=0", "BASE_ERR_ACT=out"}) {
        r = run("", env);
        EXPECT_TRUE(r.aborted()) << env;
        const bool in_err = env[0] == '\0', in_out = env[0] != '\0' && env[9] == 'A';
        EXPECT_EQ(r.err.find("option does not exists: Random::Seed") != std::string::npos, in_err) << env;
        EXPECT_EQ(r.out.find("option does not exists: Random::Seed") != std::string::npos, in_out) << env;
    }
}

// The human GO case of the benchmark, when its tables have been generated (bench/data/fetch_real.sh):
// a few passes, and a strict report threshold to keep the reference path short.
TEST_F(VeskE2E, RealCaseReducedFastEqualsReference) {
    const std::string real = source_dir() + "/bench/data/out/real/real.opt";
    if (read_file(real).empty())
        GTEST_SKIP() << "real tables not generated (bench/data/fetch_real.sh)";
    std::string reports[2], errs[2];
    const char* paths[2] = {"reference", "fast"};
    for (int p = 0; p < 2; ++p) {
        const std::string over = dir.write(std::string("o_") + paths[p] + ".opt",
                                           "[Tables]\nAnnotReport = " + report + paths[p] +
                                               "\n[Vesk]\nBootstrapNum = 3\nMaxPvToRep = 0.000001\n");
        VeskRun r = run(real + " " + over, std::string("VESK_BOOTSTRAP=") + paths[p]);
        ASSERT_TRUE(r.ok()) << r.err.substr(0, 2000);
        reports[p] = read_file(report + paths[p]);
        errs[p] = r.err.substr(r.err.find('\n', r.err.find('\n') + 1) + 1); // after two "will read" lines
    }
    EXPECT_FALSE(reports[0].empty());
    EXPECT_EQ(reports[0], reports[1]);
    EXPECT_EQ(errs[0], errs[1]);
}
