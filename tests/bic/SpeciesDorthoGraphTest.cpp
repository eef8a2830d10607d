// DomainOrthoGraph and SpeciesDorthoGraph: the per-pair and all-species tables, similarity files
// (threshold sense, name then alias lookup, unknown and equal ids, carriage returns, progress),
// the directory reader and its fatal.
#include "SpeciesDorthoGraph.h"

#include "OrthoTestTree.h"

namespace {

std::string edges_str(const std::vector<DorthoEdge>& v) {
    std::ostringstream os;
    for (const DorthoEdge& e : v)
        os << e << ";";
    return os.str();
}

TEST(DorthoEdge, PrintAndCompactRecord) {
    const DorthoEdge e{3, 10, 250, 7, 1, 240, 55.5f};
    std::ostringstream os;
    e.print(os);
    EXPECT_EQ(os.str(), "3 (10,250) -> 7 (1,240) +55.5");
    EXPECT_LE(sizeof(DorthoEdge), 16u);
    EXPECT_EQ(sizeof(OrDomain), 6u);
}

TEST(SpeciesDorthoGraph, TablesKeepOwnPairAndScoresBelowTheBound) {
    FourSpeciesTree t;
    SpeciesDorthoGraph g(*t.tree, 50.0f, 5);
    std::istringstream all("0 1 2 3 1 4 5 6 49.5\n"
                           "0 2 1 1 1 5 1 1 50\n" // equal to the bound: dropped
                           "2 0 1 9 3 5 2 8 7\n"
                           "1 3 0 1 0 4 0 1 80\n");
    quiet([&] { g.read_table(all); });
    EXPECT_EQ(edges_str(g.edges(0, 1, 1)), "1 (2,3) -> 4 (5,6) +49.5;");
    EXPECT_EQ(edges_str(g.edges(0, 2, 1)), "");
    EXPECT_EQ(edges_str(g.edges(2, 0, 3)), "0 (1,9) -> 5 (2,8) +7;");
    EXPECT_EQ(edges_str(g.edges(1, 3, 0)), "");
    EXPECT_EQ(g.graph(4, 0), nullptr);
    EXPECT_EQ(g.species(), (std::vector<int>{0, 1, 2, 3}));

    // The per-pair table: species a, species b first; no bound.
    DomainOrthoGraph p(*t.tree, 1, 2, 6, 5);
    std::istringstream pair("1 2 0 1 2 3 4 5 900\n2 1 0 1 2 3 4 5 1\n1 2 5 6 7 0 0 9 2.5\n");
    p.read_table(pair);
    EXPECT_EQ(edges_str(p.m_edges[0]), "0 (1,2) -> 3 (4,5) +900;");
    EXPECT_EQ(edges_str(p.m_edges[5]), "5 (6,7) -> 0 (0,9) +2.5;");
}

TEST(SpeciesDorthoGraph, SimilarityFileLines) {
    FourSpeciesTree t;
    DomainOrthoGraph g(*t.tree, 0, 1, 6, 5);
    std::istringstream in("A1\tB2\t33.5\t100\t5\t0\t3\t90\t4\t95\t60.5\n" // names: kept
                          "al_A2 B_s3 20 1 1 1 7 8 9 10 60.0000001\n"     // alias and printed name
                          "A3 B4 20 1 1 1 1 2 3 4 60\n"                   // equal to the threshold
                          "A3 B4 20 1 1 1 1 2 3 4 59\n"                   // below
                          "nobody B4 20 1 1 1 1 2 3 4 99\n"               // unknown query
                          "A4 B4 20 1 1 1 1 2 3 4 99\n"                   // same id on both sides
                          "A5 B0 20 1 1 1 11 12 13 14 99\r\n"             // carriage return
                          "A5 B0 20 1 1 1 11 12 13\n");                   // short line
    const std::string trace = quiet([&] { g.read_blast(in, 60.0f); });
    EXPECT_EQ(edges_str(g.m_edges[1]), "1 (3,90) -> 2 (4,95) +33.5;");
    EXPECT_EQ(edges_str(g.m_edges[2]), "2 (7,8) -> 3 (9,10) +20;");
    EXPECT_EQ(edges_str(g.m_edges[3]), "");
    EXPECT_EQ(edges_str(g.m_edges[4]), "");
    EXPECT_EQ(edges_str(g.m_edges[5]), "5 (11,12) -> 0 (13,14) +20;");
    EXPECT_EQ(trace, "from spid 0 to spid 1\ngot 3 interactions\n");

    std::ostringstream many;
    for (int i = 0; i < 2500; ++i)
        many << "A" << (i % 2) << " B" << (2 + i % 3) << " 1 1 1 1 1 2 3 4 99\n";
    std::istringstream in2(many.str());
    EXPECT_EQ(quiet([&] { g.read_blast(in2, 0.0f); }),
              "from spid 0 to spid 1\ngot 1000 interactions\ngot 2000 interactions\ngot 2500 interactions\n");
}

TEST(SpeciesDorthoGraph, ReadsEveryOrderedPairFromTheDirectory) {
    FourSpeciesTree t;
    TempDir hits;
    const char* names[] = {"A", "B", "C", "D"};
    for (int a = 0; a < 4; ++a)
        for (int b = 0; b < 4; ++b)
            if (a != b)
                hits.write(std::string(names[a]) + "." + names[b] + ".fixed",
                           std::string(names[a]) + "1 " + names[b] + std::to_string(b + 2) + " " +
                               std::to_string(10 * a + b) + " 1 1 1 1 2 3 4 " + std::to_string(a + b) + "\n");
    SpeciesDorthoGraph g(*t.tree, 2.5f, 5);
    const std::string trace = quiet([&] { g.read_blast_dir(hits.path()); });
    // Kept when a + b > 2.5.
    for (int a = 0; a < 4; ++a)
        for (int b = 0; b < 4; ++b) {
            if (a == b)
                continue;
            SCOPED_TRACE(std::to_string(a) + "-" + std::to_string(b));
            const std::string want = a + b > 2.5 ? "1 (1,2) -> " + std::to_string(b + 2) + " (3,4) +" +
                                                       std::to_string(10 * a + b) + ";"
                                                 : "";
            EXPECT_EQ(edges_str(g.edges(a, 1, b)), want);
        }
    EXPECT_NE(trace.find("will read dorthos from " + hits.path() + "/C.A.fixed\n"), std::string::npos);
}

TEST(SpeciesDorthoGraphDeath, MissingPairFileIsFatal) {
    FourSpeciesTree t;
    TempDir hits;
    hits.write("A.B.fixed", "");
    const struct {
        std::string dir, regex;
    } cases[] = {
        {hits.path(), R"(SpeciesDorthoGraph\([0-9]+\): cannot open ortho table .*/A\.C\.fixed)"},
        {hits.path() + "/none",
         R"(SpeciesDorthoGraph\([0-9]+\): cannot open ortho table .*/none/A\.B\.fixed)"},
    };
    SpeciesDorthoGraph g(*t.tree, 0.0f, 5);
    for (const auto& c : cases)
        EXPECT_DEATH(g.read_blast_dir(c.dir), c.regex);
}

} // namespace
