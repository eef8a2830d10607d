// The named report table and the dot plot's choice of sets and terms and its dot positions.
#include "ReportJoin.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

struct Names {
    TempDir dir;
    Names() {
        dir.write("set_names.tsv", "set_id\tname\tdescription\n0\tglycolysis\tsugar\n1\tcell cycle\tcc\n2\t"
                                   "apoptosis\tdeath\n");
        dir.write("terms.tsv",
                  "term_id\tname\tnamespace\nGO:1\tpyruvate metabolic process\tbiological_process\n"
                  "GO:2\tATP binding\tmolecular_function\nGO:3\tnucleus\tcellular_component\n");
    }
};

int count(const std::string& text, const std::string& what) {
    int n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}

} // namespace

TEST(ReportJoin, NamesEveryLineAndKeepsTheNumbersAsWritten) {
    Names names;
    const std::string report =
        names.dir.write("report.tsv", "0\tpyruvate metabolic process\t-7.5\t-3\t0.615385\t40\tGO:1\tP\tPKM\n"
                                      "0\tunlisted term\t-3\t-1.2\t0.2\t5\tGO:9\tNA\n"
                                      "2\tnucleus\t-6\t-3\t0.5\t12\tGO:3\tC\n");
    std::vector<NamedReportRow> rows;
    std::string err;
    ASSERT_TRUE(join_report(report, names.dir.path(), rows, err)) << err;
    std::ostringstream out;
    write_named_report(out, rows);
    EXPECT_EQ(out.str(),
              "set_name\tterm_id\tterm_name\tnamespace\toverlap\tfraction\tlog10_p\tlog10_corrected_p\n"
              "glycolysis\tGO:1\tpyruvate metabolic process\tbiological_process\t40\t0.615385\t-7.5\t-3\n"
              "glycolysis\tGO:9\tunlisted term\tNA\t5\t0.2\t-3\t-1.2\n"
              "apoptosis\tGO:3\tnucleus\tcellular_component\t12\t0.5\t-6\t-3\n");
}

TEST(ReportJoin, MalformedReportLines) {
    Names names;
    const struct {
        const char* text;
        std::string message;
    } cases[] = {
        {"0\tx\t-3\t-1\t0.2\n", "expected at least 8 tab-separated columns of a vesk report, found 5"},
        {"zero\tx\t-3\t-1\t0.2\t5\tGO:1\tP\n", "expected a set id in column 1"},
        {"7\tx\t-3\t-1\t0.2\t5\tGO:1\tP\n",
         "expected a set id of " + names.dir.path() + "/set_names.tsv in column 1"},
    };
    for (const auto& c : cases) {
        const std::string report =
            names.dir.write("bad.tsv", std::string("0\tx\t-3\t-1\t0.2\t5\tGO:1\tP\n") + c.text);
        std::vector<NamedReportRow> rows;
        std::string err;
        EXPECT_FALSE(join_report(report, names.dir.path(), rows, err));
        EXPECT_EQ(err, report + ":2: " + c.message);
    }
}

TEST(ReportJoin, DotPlotShowsTheBestSetsTopTermsAtTheirPValues) {
    std::vector<NamedReportRow> rows;
    auto row = [&rows](int set, const char* term, const char* ns, const char* p, const char* overlap) {
        NamedReportRow r;
        r.set_id = set;
        r.set_name = "set" + std::to_string(set);
        r.term_id = term;
        r.term_name = std::string("name of ") + term;
        r.ns = ns;
        r.log10_p = p;
        r.overlap = overlap;
        rows.push_back(r);
    };
    row(0, "GO:01", "biological_process", "-6", "10");
    row(0, "GO:02", "molecular_function", "-4", "5");
    row(0, "GO:03", "cellular_component", "-3", "2");
    row(1, "GO:11", "biological_process", "-2.5", "3"); // the weakest set: left out with two sets shown
    row(2, "GO:21", "biological_process", "-7.5", "4");
    std::ostringstream svg;
    write_dot_plot(svg, rows, 2, 2);
    const std::string s = svg.str();
    EXPECT_EQ(count(s, "<title>"), 3); // two terms of set 0, one of set 2
    for (const char* t : {"GO:01", "GO:02", "GO:21"})
        EXPECT_NE(s.find("<title>" + std::string(t) + " "), std::string::npos) << t;
    for (const char* t : {"GO:03", "GO:11"})
        EXPECT_EQ(s.find("<title>" + std::string(t) + " "), std::string::npos) << t;
    // Set 2 holds the smallest p, so its header comes first.
    EXPECT_LT(s.find(">set2<"), s.find(">set0<"));
    // The axis: largest -log10 p 7.5, ticks every 2 up to 8 over 420 pixels from x = 380, so
    // -log10 p = 6 sits at 380 + 420 * 6 / 8 = 695 and 4 at 590; the dot of overlap 10 (the
    // largest) has radius 2 + 8 = 10, the one of overlap 5 has 2 + 8 * sqrt(1/2) = 7.66.
    EXPECT_NE(s.find("cx=\"695.0\""), std::string::npos);
    EXPECT_NE(s.find("cx=\"590.0\" cy"), std::string::npos);
    EXPECT_NE(s.find("r=\"10.00\" fill=\"#1b9e77\""), std::string::npos);
    EXPECT_NE(s.find("r=\"7.66\" fill=\"#d95f02\""), std::string::npos);
    EXPECT_NE(s.find(">8</text>"), std::string::npos);
    EXPECT_EQ(s.rfind("</svg>\n"), s.size() - 7);
}
