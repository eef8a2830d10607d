// Whole-program runs of vesk: golden reports and error streams, option layering, bad input.
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

struct VeskRun {
    int status;      // raw wait status
    std::string err; // the error stream
    std::string out; // the standard output
};

// Runs vesk from the repository root with the given option files.
VeskRun run_vesk(const TempDir& dir, const std::string& args, const std::string& env = "") {
    const std::string err = dir.path() + "/stderr", out = dir.path() + "/stdout";
    const std::string cmd = "cd '" + source_dir() + "' && exec env " + env + " '" + VESK_BIN_PATH + "' " +
                            args + " >'" + out + "' 2>'" + err + "'";
    VeskRun r;
    r.status = std::system(cmd.c_str());
    r.err = read_file(err);
    r.out = read_file(out);
    return r;
}

bool exited_ok(int status) { return WIFEXITED(status) && WEXITSTATUS(status) == 0; }

bool aborted(int status) { return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT; }

std::string expected(const std::string& rel) { return read_file(source_dir() + "/" + rel); }

// Inserts the "will read" line of an extra option file after the first line of an error stream.
std::string with_extra_read(const std::string& err, const std::string& path) {
    const std::string::size_type nl = err.find('\n');
    return err.substr(0, nl + 1) + "will read " + path + "\n" + err.substr(nl + 1);
}

// Option file with the six tables of the bundled example, for bad-input variants.
std::string example_tables(const std::string& report) {
    const std::string d = source_dir() + "/data/vesk/";
    return "[Random]\nSeed = 105\n[Tables]\nvarob = " + d + "varob.tab\nChipOrfs = " + d +
           "chip.txt\nGoTypeTab = " + d + "gotype.tab\ngoclskey = " + d + "clskey.tab\nclsassoc = " + d +
           "clsassoc.tab\nSetsOrfs = " + d + "sets.tab\nAnnotReport = " + report +
           "\n[Vesk]\nBootstrapNum = 5\nMinClsSize = 3\nMaxClsSize = 30\nMinClsInter = 2\nMaxPvToRep = 0.2\n"
           "FilterRedPVThres = 0.01\n";
}

} // namespace

TEST(VeskE2E, BundledExampleMatchesGoldenReportAndTrace) {
    TempDir dir;
    const std::string report = dir.path() + "/report";
    const std::string over = dir.write("out.opt", "[Tables]\nAnnotReport = " + report + "\n");
    VeskRun r = run_vesk(dir, "data/vesk/run.opt " + over);
    ASSERT_TRUE(exited_ok(r.status)) << r.err;
    EXPECT_EQ(read_file(report), expected("data/vesk/expected/AnnotReport"));
    EXPECT_EQ(r.err, with_extra_read(expected("data/vesk/expected/stderr.txt"), over));
    EXPECT_EQ(r.out, "");
}

TEST(VeskE2E, LaterOptionFileWins) {
    TempDir dir;
    const std::string report = dir.path() + "/report";
    const std::string over = dir.write("out.opt", "[Tables]\nAnnotReport = " + report + "\n");
    VeskRun r = run_vesk(dir, "data/vesk/run.opt data/vesk/layer.opt " + over);
    ASSERT_TRUE(exited_ok(r.status)) << r.err;
    EXPECT_EQ(read_file(report), expected("data/vesk/expected/AnnotReport.layered"));
    const std::string err = r.err;
    const std::string want = expected("data/vesk/expected/stderr.layered.txt");
    // Two "will read" lines precede ours.
    const std::string::size_type second = want.find('\n', want.find('\n') + 1);
    EXPECT_EQ(err, want.substr(0, second + 1) + "will read " + over + "\n" + want.substr(second + 1));
    EXPECT_NE(read_file(report), expected("data/vesk/expected/AnnotReport"));
}

TEST(VeskE2E, TinyHandWorkedCase) {
    TempDir dir;
    const std::string report = dir.path() + "/report";
    const std::string over = dir.write("out.opt", "[Tables]\nAnnotReport = " + report + "\n");
    VeskRun r = run_vesk(dir, "data/vesk/tiny/run.opt " + over);
    ASSERT_TRUE(exited_ok(r.status)) << r.err;
    EXPECT_EQ(read_file(report), expected("data/vesk/tiny/expected/AnnotReport"));
    EXPECT_EQ(r.err, with_extra_read(expected("data/vesk/tiny/expected/stderr.txt"), over));
}

TEST(VeskE2E, ReportGeneListAbsentEqualsZero) {
    TempDir dir;
    const std::string a = dir.path() + "/a", b = dir.path() + "/b";
    const std::string opt_a = dir.write("a.opt", example_tables(a));
    const std::string opt_b = dir.write("b.opt", example_tables(b) + "ReportGeneList = 0\n");
    ASSERT_TRUE(exited_ok(run_vesk(dir, opt_a).status));
    ASSERT_TRUE(exited_ok(run_vesk(dir, opt_b).status));
    EXPECT_FALSE(read_file(a).empty());
    EXPECT_EQ(read_file(a), read_file(b));
}

TEST(VeskE2E, NoBootstrapGivesInfiniteColumnFour) {
    TempDir dir;
    const std::string report = dir.path() + "/r";
    const std::string opt = dir.write("a.opt", example_tables(report) + "BootstrapNum = 0\n");
    VeskRun r = run_vesk(dir, opt);
    ASSERT_TRUE(exited_ok(r.status)) << r.err;
    EXPECT_NE(r.err.find("\ngot 0rand pvs\n"), std::string::npos) << r.err;
    const std::string rep = read_file(report);
    ASSERT_FALSE(rep.empty());
    std::string::size_type pos = 0;
    while (pos < rep.size()) {
        const std::string::size_type end = rep.find('\n', pos);
        const std::string line = rep.substr(pos, end - pos);
        // Column 4 is log10(1 / 0).
        std::string::size_type t = 0;
        for (int c = 0; c < 3; ++c)
            t = line.find('\t', t) + 1;
        EXPECT_EQ(line.substr(t, line.find('\t', t) - t), "inf") << line;
        pos = end + 1;
    }
}

TEST(VeskE2E, MissingOptionFileReadsAsEmpty) {
    TempDir dir;
    VeskRun r = run_vesk(dir, dir.path() + "/no_such.opt");
    EXPECT_TRUE(aborted(r.status)) << r.status;
    EXPECT_NE(r.err.find("will read " + dir.path() + "/no_such.opt\n"), std::string::npos);
    EXPECT_NE(r.err.find("options("), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("): option does not exists: Random::Seed\n"), std::string::npos) << r.err;
    // With no argument at all, the same first key dies.
    VeskRun none = run_vesk(dir, "");
    EXPECT_TRUE(aborted(none.status));
    EXPECT_NE(none.err.find("option does not exists: Random::Seed"), std::string::npos);
}

TEST(VeskE2E, MissingTablesAreFatalWithTheirTexts) {
    TempDir dir;
    const std::string report = dir.path() + "/r";
    const std::string base = example_tables(report);
    struct Case {
        const char* key;
        const char* want; // the text after "vesk(<line>): "
    } cases[] = {
        {"varob", "cannot open varob table /nonexistent/t\n\n"},
        {"ChipOrfs", "Cannot open chip orf file\n\n"},
        {"GoTypeTab", "Cannot open go type file\n\n"},
        {"SetsOrfs", "Cannot open sets orf file\n\n"},
    };
    for (const Case& c : cases) {
        const std::string opt = dir.write("m.opt", base + "[Tables]\n" + c.key + " = /nonexistent/t\n");
        VeskRun r = run_vesk(dir, opt);
        EXPECT_TRUE(aborted(r.status)) << c.key;
        const std::string::size_type at = r.err.find("vesk(");
        ASSERT_NE(at, std::string::npos) << c.key << "\n" << r.err;
        const std::string::size_type colon = r.err.find("): ", at);
        EXPECT_EQ(r.err.substr(colon + 3), c.want) << c.key;
    }
}

TEST(VeskE2E, MissingClassTablesGiveAnEmptyReport) {
    TempDir dir;
    const std::string report = dir.path() + "/r";
    const std::string base = example_tables(report);
    std::string opt = dir.write("k.opt", base + "[Tables]\ngoclskey = /nonexistent/k\n");
    VeskRun r = run_vesk(dir, opt);
    ASSERT_TRUE(exited_ok(r.status)) << r.err;
    EXPECT_NE(r.err.find("Cannot open annok file /nonexistent/k\n"), std::string::npos);
    EXPECT_EQ(r.err.find("max class id"), std::string::npos); // nothing was read
    EXPECT_EQ(read_file(report), "");

    opt = dir.write("d.opt", base + "[Tables]\nclsassoc = /nonexistent/d\n");
    r = run_vesk(dir, opt);
    ASSERT_TRUE(exited_ok(r.status)) << r.err;
    EXPECT_NE(r.err.find("Cannot open annod file /nonexistent/d\n"), std::string::npos);
    EXPECT_EQ(r.err.find("max class id"), std::string::npos);
    EXPECT_EQ(read_file(report), "");
}

TEST(VeskE2E, AssociationPastKeyTableIsFatal) {
    TempDir dir;
    const std::string assoc = dir.write("assoc.tab", "0 1\n99 2\n");
    const std::string opt =
        dir.write("a.opt", example_tables(dir.path() + "/r") + "[Tables]\nclsassoc = " + assoc + "\n");
    VeskRun r = run_vesk(dir, opt);
    EXPECT_TRUE(aborted(r.status));
    EXPECT_NE(r.err.find("Class 99 size 22\nvesk("), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("): Table id mismatch\n"), std::string::npos);
}

TEST(VeskE2E, CrlfOptionFileKeepsCarriageReturnsInPaths) {
    TempDir dir;
    std::string text = example_tables(dir.path() + "/r");
    std::string crlf;
    for (char ch : text) {
        if (ch == '\n')
            crlf += '\r';
        crlf += ch;
    }
    const std::string opt = dir.write("dos.opt", crlf);
    VeskRun r = run_vesk(dir, opt);
    EXPECT_TRUE(aborted(r.status));
    // The seed converts despite its "\r"; the path keeps it and does not open.
    EXPECT_NE(r.err.find("): cannot open varob table " + source_dir() + "/data/vesk/varob.tab\r\n\n"),
              std::string::npos)
        << r.err;
}

TEST(VeskE2E, UnopenableReportPathIsNotAnError) {
    TempDir dir;
    const std::string opt = dir.write("a.opt", example_tables(dir.path() + "/no/such/dir/report"));
    VeskRun r = run_vesk(dir, opt);
    EXPECT_TRUE(exited_ok(r.status)) << r.err;
    EXPECT_NE(r.err.find("rand pvs"), std::string::npos);
}

TEST(VeskE2E, ErrorChannelEnvironment) {
    TempDir dir;
    VeskRun silent = run_vesk(dir, "", "BASE_ERR_LOG=0");
    EXPECT_TRUE(aborted(silent.status));
    EXPECT_EQ(silent.err.find("option does not exists"), std::string::npos);
    VeskRun to_out = run_vesk(dir, "", "BASE_ERR_ACT=out");
    EXPECT_TRUE(aborted(to_out.status));
    EXPECT_NE(to_out.out.find("option does not exists: Random::Seed"), std::string::npos);
    EXPECT_EQ(to_out.err.find("option does not exists"), std::string::npos);
}

// The human GO case of the benchmark, when its tables have been generated (bench/data/fetch_real.sh):
// a few passes, and a strict report threshold to keep the reference path short.
TEST(VeskE2E, RealCaseReducedFastEqualsReference) {
    const std::string real = source_dir() + "/bench/data/out/real/real.opt";
    if (read_file(real).empty())
        GTEST_SKIP() << "real tables not generated (bench/data/fetch_real.sh)";
    TempDir dir;
    std::string reports[2], errs[2];
    const char* paths[2] = {"reference", "fast"};
    for (int p = 0; p < 2; ++p) {
        const std::string report = dir.path() + "/report_" + paths[p];
        const std::string over = dir.write(std::string("o_") + paths[p] + ".opt",
                                           "[Tables]\nAnnotReport = " + report +
                                               "\n[Vesk]\nBootstrapNum = 3\nMaxPvToRep = 0.000001\n");
        VeskRun r = run_vesk(dir, real + " " + over, std::string("VESK_BOOTSTRAP=") + paths[p]);
        ASSERT_TRUE(exited_ok(r.status)) << r.err.substr(0, 2000);
        reports[p] = read_file(report);
        const std::string::size_type first = r.err.find('\n', r.err.find('\n') + 1); // two "will read" lines
        errs[p] = r.err.substr(first + 1);
    }
    EXPECT_FALSE(reports[0].empty());
    EXPECT_EQ(reports[0], reports[1]);
    EXPECT_EQ(errs[0], errs[1]);
}
