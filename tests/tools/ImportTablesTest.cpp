// run_import on the fixtures against tables written by hand, the relation choice, pairs input and
// shared symbols (the exit statuses are tested through the command line, vesk_import_cli.sh).
#include "ImportTables.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

std::string fixture(const std::string& name) { return source_dir() + "/data/vesk/import/" + name; }

const char* const kTables[] = {"genes.tab",    "chip.txt", "gotype.tab",    "clskey.tab",
                               "clsassoc.tab", "sets.tab", "set_names.tsv", "terms.tsv"};

ImportSettings mini(const std::string& out) {
    ImportSettings s;
    s.obo = fixture("mini.obo");
    s.gaf = fixture("mini.gaf");
    s.gmt = fixture("mini.gmt");
    s.out = out;
    return s;
}

ImportStatus run(const ImportSettings& s, std::string& log, std::string& err) {
    std::ostringstream out;
    const ImportStatus st = run_import(s, out, err);
    log = out.str();
    return st;
}

} // namespace

// Expected tables in data/vesk/import/expected/ were worked out by hand from the fixture (see the
// README there): true path over is_a and part_of, alt_id to primary, NOT and obsolete left out.
TEST(ImportTables, FixturesGiveTheHandCheckedTables) {
    struct Case {
        const char* expected;
        const char* gaf;
        bool iea_and_background;
    } cases[] = {
        {"default", "mini.gaf", false},
        {"iea_bg", "mini.gaf", true},
        {"iea_bg", "mini_crlf.gaf.gz", true}, // gzip, CRLF and 15 columns: same tables
    };
    for (const Case& c : cases) {
        TempDir dir;
        ImportSettings s = mini(dir.path() + "/out");
        s.gaf = fixture(c.gaf);
        if (c.iea_and_background) {
            s.exclude_evidence = {"IEA", "ND"};
            s.background = fixture("background.txt");
        }
        std::string log, err;
        ASSERT_EQ(run(s, log, err), kImportOk) << err;
        for (const char* t : kTables)
            EXPECT_EQ(read_file(s.out + "/" + t),
                      read_file(fixture(std::string("expected/") + c.expected + "/" + t)))
                << c.expected << " " << c.gaf << " " << t;
        const std::string opt = read_file(s.out + "/run.opt");
        for (const char* key : {"varob = genes.tab", "AnnotReport = report.tsv", "BootstrapNum = 1000",
                                "MinClsSize = 5", "MaxClsSize = 500"})
            EXPECT_NE(opt.find(key), std::string::npos) << key;
        // Unknown genes and members off the background are reported, with their counts.
        EXPECT_NE(log.find("1 unknown genes left out (SET1:ZZZ)"), std::string::npos) << log;
        EXPECT_NE(log.find(c.iea_and_background ? "2 members not in the background" : "1 members not in the"),
                  std::string::npos)
            << log;
    }
}

TEST(ImportTables, RegulatesCarriesAnnotationsWhenAsked) {
    TempDir dir;
    ImportSettings s = mini(dir.path() + "/out");
    s.relations = {"part_of", "regulates"};
    std::string log, err;
    ASSERT_EQ(run(s, log, err), kImportOk) << err;
    // GO:0000003 regulates GO:0000005: A (via GO:0000004) and B join C in class 4 (GO:0000005).
    const std::string assoc = read_file(s.out + "/clsassoc.tab");
    EXPECT_NE(assoc.find("4\t0\n4\t1\n4\t2\n"), std::string::npos) << assoc;
}

TEST(ImportTables, PairsGiveEachGeneItsWordAsBothNames) {
    TempDir dir;
    ImportSettings s = mini(dir.path() + "/out");
    s.gaf.clear();
    s.pairs = fixture("pairs.tsv");
    std::string log, err;
    ASSERT_EQ(run(s, log, err), kImportOk) << err;
    EXPECT_EQ(read_file(s.out + "/genes.tab"), "0\tA\tA\n1\tB\tB\n2\tC\tC\n");
    // A: GO:4 -> 1, 3 -> 2 -> 1; B: GO:3 (alt id) -> 2 -> 1; C: GO:10 (and an obsolete term).
    EXPECT_EQ(read_file(s.out + "/clsassoc.tab"), "0\t0\n0\t1\n1\t0\n1\t1\n2\t0\n2\t1\n3\t0\n4\t2\n");
    EXPECT_EQ(read_file(s.out + "/chip.txt"), "A\nB\nC\n");
}

TEST(ImportTables, SharedSymbolsPrintOnceEach) {
    TempDir dir;
    ImportSettings s = mini(dir.path() + "/out");
    s.gaf.clear();
    s.genes = dir.write("genes.tsv", "10\tHBD\n20\tHBD\n30\tX\n");
    s.pairs = dir.write("p.tsv", "20\tGO:0000010\n10\tGO:0000010\n");
    s.gmt = dir.write("s.gmt", "S\td\tHBD\tHBD_20\t30\n");
    std::string log, err;
    ASSERT_EQ(run(s, log, err), kImportOk) << err;
    // The list's order numbers the genes; the second HBD prints as HBD_20; X is known but unannotated.
    EXPECT_EQ(read_file(s.out + "/genes.tab"), "0\t10\tHBD\n1\t20\tHBD_20\n2\t30\tX\n");
    EXPECT_EQ(read_file(s.out + "/chip.txt"), "HBD\nHBD_20\n");
    EXPECT_EQ(read_file(s.out + "/sets.tab"), "HBD\t0\nHBD_20\t0\nX\t0\n");
}
