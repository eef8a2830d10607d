// MapDorthoClusts and MapHDocs on hand hit tables over four species: each rule of the hit-seeded
// growth deciding once (margin, give-up, domain slack, near hits, paralogues, identical docs), and
// the transitivity, size limit and gluing of the breadth-first generator.
#include "MapDorthoClusts.h"

#include "OrthoTestTree.h"

#include <algorithm>

namespace {

const char kBase[] = "[Docs]\nMaxDomDelta = 5\nLogit = 1\nMaxDocSize = 4\nOnlyComplete = 0\n";

// Docs as sorted member lists such as "A0 B0 C0", in doc order, joined by " | ".
std::string doc_strings(const std::vector<DorthoClust>& docs, const std::vector<char>* alive = nullptr) {
    std::string out;
    for (std::size_t d = 0; d < docs.size(); ++d) {
        if (alive && !(*alive)[d])
            continue;
        std::vector<std::string> m;
        for (int s = 0; s < 4; ++s)
            for (const OrDomain& dom : docs[d].m_domains[s])
                m.push_back(std::string(1, char('A' + s)) + std::to_string(dom.gid));
        std::sort(m.begin(), m.end());
        out += out.empty() ? "" : " | ";
        for (std::size_t i = 0; i < m.size(); ++i)
            out += (i ? " " : "") + m[i];
    }
    return out;
}

struct GenRun {
    std::string docs;
    std::string trace;
    std::string table;
};

const std::vector<char>* alive_of(const MapDorthoClusts&) { return nullptr; }
const std::vector<char>* alive_of(const MapHDocs& m) { return &m.m_alive; }

// Runs a generator on hits in the all-species table form (one direction unless both are listed),
// with proteins of length 100 for the species in `lengths`.
template <class Gen> GenRun run_gen(const std::string& hits, const std::string& keys, int lengths = 0) {
    FourSpeciesTree t;
    for (int s = 0; s < lengths; ++s) {
        std::istringstream len("0 100\n");
        t.tree->read_prot_length(s, len);
    }
    ortho_read_options(t.opt, std::string(kBase) + keys);
    SpeciesDorthoGraph g(*t.tree, 1000.0f, 5);
    std::istringstream in(hits);
    quiet([&] { g.read_table(in); });
    Gen m(g, t.opt, "Docs");
    std::ostringstream os;
    const std::string trace = quiet([&] {
        m.calc();
        m.dump_table(os);
    });
    return GenRun{doc_strings(m.m_docs, alive_of(m)), trace, os.str()};
}

const char kLimits[] = "WgtMargin = 1\nMaxParalouges = 2\nHugeParalouges = 3\n";
const char kTri[] = "0 0 1 100 1 0 1 100 10\n0 0 1 100 2 0 1 100 8\n1 0 1 100 2 0 1 100 9\n";
const char kPara[] = "0 0 1 100 1 0 1 100 10\n0 0 2 99 1 1 1 100 10\n1 0 1 100 1 1 1 100 10\n";

// A generator run: its docs, and a text its trace must hold (or none).
struct GenCase {
    const char* name;
    std::string hits, keys, docs;
    const char* trace;
};
template <class Gen> void run_cases(const std::vector<GenCase>& cases) {
    for (const GenCase& c : cases) {
        SCOPED_TRACE(c.name);
        const GenRun r = run_gen<Gen>(c.hits, c.keys);
        EXPECT_EQ(r.docs, c.docs);
        if (*c.trace) {
            EXPECT_NE(r.trace.find(c.trace), std::string::npos) << r.trace;
        }
    }
}

TEST(MapDorthoClusts, EachGrowthRuleDecides) {
    run_cases<MapDorthoClusts>({
        // A hit and its reverse grow the same gene set twice: the second is dropped.
        {"identical", "0 0 1 100 1 0 1 100 10\n1 0 1 100 0 0 1 100 10\n", kLimits, "A0 B0",
         "new oc is identical to 0"},
        // B0-C0 (9) joins the growth from A0-B0 (10) because 10 <= 9 + 1 ...
        {"margin in", kTri, kLimits, "A0 B0 C0 | A0 C0 | B0 C0",
         "new doc defined by 0 (1,100) -> 0 (1,100) +10 id 0 size 3"},
        // ... and not with a margin of 0.5 (10 > 8.5 and 10 > 9.5).
        {"margin out", kTri, "WgtMargin = 0.5\nMaxParalouges = 2\nHugeParalouges = 3\n",
         "A0 B0 | A0 C0 | B0 C0", ""},
        // B0 hits D0 more strongly (12) than A0 hits B0 (10), and D0 is outside A0's neighbours.
        {"give up", "0 0 1 100 1 0 1 100 10\n1 0 1 100 3 0 1 100 12\n", kLimits, "B0 D0", " skip\n"},
        {"weaker outside", "0 0 1 100 1 0 1 100 10\n1 0 1 100 3 0 1 100 9\n", kLimits, "A0 B0 | B0 D0", ""},
        // A0's hit to C0 starts at 50: beyond the slack of 5 from A0-B0's start 1.
        {"slack out", "0 0 1 100 1 0 1 100 10\n0 0 50 150 2 0 1 100 10\n1 0 1 100 2 0 1 100 10\n", kLimits,
         "A0 B0 | A0 C0 | B0 C0", ""},
        {"slack in", "0 0 1 100 1 0 1 100 10\n0 0 3 98 2 0 1 100 10\n1 0 1 100 2 0 1 100 10\n", kLimits,
         "A0 B0 C0 | A0 C0 | B0 C0", ""},
        // Two hits of A0 into B with near bounds: the weaker (rising order) is taken, the other skipped.
        {"near hits", "0 0 1 100 1 0 1 100 10\n0 0 3 102 1 1 1 100 9\n", kLimits, "A0 B1",
         "growing from 0 (3,102) -> 1 (1,100) +9\n"},
        {"far hits", "0 0 20 120 1 0 1 100 10\n0 0 3 102 1 1 1 100 9\n", kLimits, "A0 B1 | A0 B0", ""},
        // A paralogue hit B0-B1 brings a second B gene.
        {"paralogues kept", kPara, kLimits, "A0 B0 B1", ""},
        {"paralogues over", kPara, "WgtMargin = 1\nMaxParalouges = 1\nHugeParalouges = 3\n", "", ""},
        {"paralogues huge", kPara, "WgtMargin = 1\nMaxParalouges = 0\nHugeParalouges = 1\n", "",
         "is huge, ospid 1\n"},
    });
}

TEST(MapDorthoClusts, DumpTableWritesDocsUnderTheirIndex) {
    const GenRun r = run_gen<MapDorthoClusts>(kTri, kLimits);
    EXPECT_EQ(r.table, "0\t0\t0\t1\t100\n0\t1\t0\t1\t100\n0\t2\t0\t1\t100\n"
                       "1\t0\t0\t1\t100\n1\t2\t0\t1\t100\n"
                       "2\t1\t0\t1\t100\n2\t2\t0\t1\t100\n");
    EXPECT_NE(r.trace.find("will dump table, docs size 3\n"), std::string::npos);
}

// Both directions of each listed hit "a-b:w" between gene 0 of species a and gene 0 of species b.
std::string both_ways(const std::string& hits) {
    std::ostringstream os;
    std::istringstream in(hits);
    int a, b;
    char c;
    for (std::string w; in >> a >> c >> b >> c >> w;) {
        os << a << " 0 1 100 " << b << " 0 1 100 " << w << "\n";
        os << b << " 0 1 100 " << a << " 0 1 100 " << w << "\n";
    }
    return os.str();
}

TEST(MapHDocs, TransitivityMarginSizeAndGlue) {
    const std::string triangle = both_ways("0-1:10 0-2:10 1-2:10"), path = both_ways("0-1:10 1-2:10");
    const std::string weak = both_ways("0-1:10 1-2:5");
    // Two strong pairs with weaker cross hits between every member, or all but one.
    const std::string cliques = both_ways("0-1:10 2-3:10 0-2:5 0-3:5 1-2:5 1-3:5");
    const std::string holed = both_ways("0-1:10 2-3:10 0-2:5 0-3:5 1-2:5");
    const std::string lim = std::string(kLimits) + "MaxDocSize = 2\n";
    run_cases<MapHDocs>({
        {"triangle", triangle, kLimits, "A0 B0 C0", "new oc is identical to 0"},
        {"path", path, kLimits, "", " NON TRAN"},
        // From A0 the weight is 10 and B0-C0 (5 + 1 < 10) is not followed; from B0 towards C the
        // weight is 5 and the growth reaches A0 and C0, which are not linked.
        {"weak link", weak, kLimits, "A0 B0", " NON TRAN"},
        {"too big", triangle, lim, "", ""},
        // Growths of weight 5 reach all four genes and exceed the size of 2; the two strong pairs
        // glue into one doc.
        {"glue", cliques, lim, "A0 B0 C0 D0", "can join 0 1\n"},
        {"no glue", holed, lim, "A0 B0 | C0 D0", "test join 0 and 1 dsize 2\n"},
    });
}

// Lengths 100 for A0, B0 and C0; A0-C0 covers 1..60 only: 100 - 5 < 96 on both sides of A0-B0,
// 100 - 5 < 60 fails for A0-C0.
TEST(MapHDocs, OnlyCompleteNeedsHitsCoveringBothProteins) {
    const GenRun r =
        run_gen<MapHDocs>("0 0 1 100 1 0 3 98 10\n1 0 3 98 0 0 1 100 10\n0 0 1 60 2 0 1 100 20\n",
                          std::string(kLimits) + "OnlyComplete = 1\n", 3);
    EXPECT_EQ(r.docs, "A0 B0");
    EXPECT_NE(r.trace.find("only incomp edge 0 (1,60) -> 0 (1,100) +20 l1 = 100\n"), std::string::npos)
        << r.trace;
}

} // namespace
