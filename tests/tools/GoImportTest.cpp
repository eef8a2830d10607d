// The OBO, GAF, pairs, GMT and gene list readers: the fixture ontology, gzip and CRLF input, and every
// malformed-line message.
#include "GoImport.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

namespace {

std::string fixture(const std::string& name) { return source_dir() + "/data/vesk/import/" + name; }

GoOntology read_mini(const std::set<std::string>& relations) {
    GoOntology onto;
    LineSource in;
    std::string err;
    EXPECT_TRUE(in.open(fixture("mini.obo"), err)) << err;
    EXPECT_TRUE(onto.read(in, err)) << err;
    onto.link(relations);
    return onto;
}

std::vector<std::string> parent_ids(const GoOntology& onto, const std::string& id) {
    std::vector<std::string> out;
    for (int p : onto.m_parents[onto.find(id)])
        out.push_back(onto.m_terms[p].id);
    std::sort(out.begin(), out.end());
    return out;
}

} // namespace

TEST(GoOntology, FixtureTermsParentsAltIdsAndObsoletes) {
    const GoOntology onto = read_mini({"part_of"});
    ASSERT_EQ(onto.size(), 7); // eight stanzas of terms, one obsolete; the Typedef is skipped
    EXPECT_EQ(onto.m_terms[0].id, "GO:0000001");
    EXPECT_EQ(onto.m_terms[5].name, "binding"); // trailing comment cut
    EXPECT_EQ(onto.m_terms[5].ns, "molecular_function");
    // is_a with a modifier and part_of; regulates is not followed unless asked for.
    EXPECT_EQ(parent_ids(onto, "GO:0000004"), (std::vector<std::string>{"GO:0000001", "GO:0000003"}));
    EXPECT_EQ(parent_ids(onto, "GO:0000003"), (std::vector<std::string>{"GO:0000002"}));
    EXPECT_TRUE(parent_ids(onto, "GO:0000001").empty());
    EXPECT_EQ(onto.find("GO:0000033"), onto.find("GO:0000003"));
    EXPECT_EQ(onto.find("GO:0000006"), -1);
    EXPECT_TRUE(onto.is_obsolete("GO:0000006"));
    EXPECT_TRUE(onto.is_obsolete("GO:0000066"));
    EXPECT_FALSE(onto.is_obsolete("GO:0000001"));
    EXPECT_EQ(onto.m_dangling, 0);

    const GoOntology with_reg = read_mini({"part_of", "regulates"});
    EXPECT_EQ(parent_ids(with_reg, "GO:0000003"), (std::vector<std::string>{"GO:0000002", "GO:0000005"}));
    const GoOntology is_a_only = read_mini({});
    EXPECT_EQ(parent_ids(is_a_only, "GO:0000004"), (std::vector<std::string>{"GO:0000001"}));

    EXPECT_EQ(GoOntology::type_label("biological_process"), "P");
    EXPECT_EQ(GoOntology::type_label("molecular_function"), "F");
    EXPECT_EQ(GoOntology::type_label("cellular_component"), "C");
    EXPECT_EQ(GoOntology::type_label("plant_anatomy"), "plant_anatomy");
}

TEST(GoOntology, DefaultNamespaceAndLinksOutsideTheFile) {
    TempDir dir;
    const std::string path = dir.write("o.obo", "default-namespace: plant_anatomy\n\n[Term]\nid: PO:1\n"
                                                "is_a: PO:9\nrelationship: part_of PO:1\n");
    GoOntology onto;
    LineSource in;
    std::string err;
    ASSERT_TRUE(in.open(path, err) && onto.read(in, err)) << err;
    onto.link({"part_of"});
    EXPECT_EQ(onto.m_terms[0].ns, "plant_anatomy");
    EXPECT_EQ(onto.m_dangling, 1);
    EXPECT_EQ(onto.m_parents[0], std::vector<int>{0});
}

TEST(GafReader, GzipCrlfFileGivesThePlainFilesAnnotations) {
    const GoOntology onto = read_mini({"part_of"});
    DirectAnnotations got[2];
    AnnotationCounts counts[2];
    const char* files[] = {"mini.gaf", "mini_crlf.gaf.gz"};
    for (int i = 0; i < 2; ++i) {
        GeneTable genes;
        LineSource in;
        std::string err;
        ASSERT_TRUE(in.open(fixture(files[i]), err)) << err;
        EXPECT_EQ(in.compressed(), i == 1);
        ASSERT_TRUE(read_gaf(in, onto, {"IEA"}, genes, got[i], counts[i], err)) << err;
        EXPECT_EQ(genes.symbols, (std::vector<std::string>{"A", "B", "C", "D", "E", "F"}));
        EXPECT_EQ(genes.ids[5], "P6");
    }
    EXPECT_EQ(got[0], got[1]);
    // Rows: 11; NOT 1 (D), IEA 1 (C), obsolete 2 (E, by id and by alt_id), unknown 1 (F's GO:0009999).
    const AnnotationCounts& c = counts[1];
    EXPECT_EQ(c.rows, 11);
    EXPECT_EQ(c.negated, 1);
    EXPECT_EQ(c.by_evidence, 1);
    EXPECT_EQ(c.obsolete_terms, 2);
    EXPECT_EQ(c.unknown_terms, 1);
    EXPECT_EQ(c.kept, 6);
    EXPECT_EQ(c.unknown_examples, std::set<std::string>{"GO:0009999"});
    // B's annotation to the alt_id GO:0000033 is filed under GO:0000003.
    EXPECT_EQ(got[0][1], std::make_pair(1, onto.find("GO:0000003")));
}

TEST(GafReader, CutGzipFileIsAnErrorNotAShortFile) {
    const GoOntology onto = read_mini({"part_of"});
    const std::string whole = read_file(fixture("mini_crlf.gaf.gz"));
    TempDir dir;
    const std::string path = dir.write("cut.gaf.gz", whole.substr(0, whole.size() / 2));
    GeneTable genes;
    DirectAnnotations out;
    AnnotationCounts counts;
    LineSource in;
    std::string err;
    ASSERT_TRUE(in.open(path, err)) << err;
    EXPECT_FALSE(read_gaf(in, onto, {}, genes, out, counts, err));
    const std::string tail = ": expected more gzip data; the file is damaged or cut short";
    EXPECT_EQ(err.rfind(path + ":", 0), 0u) << err;
    ASSERT_GT(err.size(), tail.size());
    EXPECT_EQ(err.substr(err.size() - tail.size()), tail);
}

TEST(ImportReaders, MalformedLinesNameFileLineAndWhatWasExpected) {
    const GoOntology onto = read_mini({"part_of"});
    using Reader = std::function<bool(LineSource&, std::string&)>;
    const Reader obo = [](LineSource& in, std::string& err) {
        GoOntology o;
        return o.read(in, err);
    };
    const Reader gaf = [&onto](LineSource& in, std::string& err) {
        GeneTable g;
        DirectAnnotations d;
        AnnotationCounts c;
        return read_gaf(in, onto, {}, g, d, c, err);
    };
    const Reader pairs = [&onto](LineSource& in, std::string& err) {
        GeneTable g;
        DirectAnnotations d;
        AnnotationCounts c;
        return read_pairs(in, onto, g, d, c, err);
    };
    const Reader gmt = [](LineSource& in, std::string& err) {
        std::vector<GeneSet> s;
        return read_gmt(in, s, err);
    };
    const Reader genes = [](LineSource& in, std::string& err) {
        GeneTable g;
        return read_gene_list(in, g, err);
    };
    const std::string gaf_row = "DB\tP1\tA\t\tGO:0000001\tREF\tIDA\t\tP\t\t\tprotein\ttaxon:1\t20220101\tX\n";
    struct Case {
        const Reader* reader;
        std::string text;
        int line;
        std::string message;
    } cases[] = {
        {&obo, "format-version: 1.2\n[Term\nid: GO:1\n", 2, "expected a stanza header such as [Term]"},
        {&obo, "[Term]\nname: x\n\n[Term]\nid: GO:2\n", 1, "expected an id: line in this [Term] stanza"},
        {&obo, "[Term]\nid: GO:1\njunk line\n", 3, "expected a tag-value line, tag: value"},
        {&obo, "[Term]\nid: ! none\n", 2, "expected a term id after id:"},
        {&obo, "[Term]\nid: GO:1\nis_a:\n", 3, "expected a term id after is_a:"},
        {&obo, "[Term]\nid: GO:1\nalt_id: ! nothing\n", 3, "expected a term id after alt_id:"},
        {&obo, "[Term]\nid: GO:1\nrelationship: part_of\n", 3,
         "expected a relationship type and a term id after relationship:"},
        {&obo, "[Term]\nid: GO:1\nis_obsolete: yes\n", 3, "expected true or false after is_obsolete:"},
        {&obo, "[Term]\nid: GO:1\n\n[Term]\nid: GO:1\n", 4,
         "expected each term once; GO:1 is defined at line 1 already"},
        {&gaf, "!gaf-version: 2.2\nDB\tP1\tA\n", 2,
         "expected at least 15 tab-separated columns (GAF 2.x), found 3"},
        {&gaf, gaf_row + "DB\t\tA\t\tGO:1\tR\tIDA\t\tP\t\t\tp\tt\td\tX\n", 2,
         "expected a DB Object ID in column 2"},
        {&gaf, "DB\tP1\tA\t\t\tR\tIDA\t\tP\t\t\tp\tt\td\tX\n", 1, "expected a GO id in column 5"},
        {&gaf, "DB\tP1\tA\t\tGO:1\tR\t\t\tP\t\t\tp\tt\td\tX\n", 1, "expected an evidence code in column 7"},
        {&pairs, "A\tGO:0000001\n\nB\tGO:1\tX\n", 3, "expected a gene and a term separated by one tab"},
        {&pairs, "A GO:0000001\n", 1, "expected a gene and a term separated by one tab"},
        {&gmt, "S1\td\tA\nS2\n", 2, "expected a set name, a description and members, separated by tabs"},
        {&gmt, "\tdesc\tA\n", 1, "expected a set name in column 1"},
        {&genes, "1\tA\n2\n", 2, "expected a gene id and a symbol separated by a tab"},
    };
    TempDir dir;
    int n = 0;
    for (const Case& c : cases) {
        const std::string path = dir.write("case" + std::to_string(n++), c.text);
        LineSource in;
        std::string err;
        ASSERT_TRUE(in.open(path, err));
        EXPECT_FALSE((*c.reader)(in, err)) << c.text;
        EXPECT_EQ(err, path + ":" + std::to_string(c.line) + ": " + c.message) << c.text;
    }
    LineSource missing;
    std::string err;
    EXPECT_FALSE(missing.open(dir.path() + "/nope", err));
    EXPECT_EQ(err, "cannot open " + dir.path() + "/nope");
}

// Debian's r-bioc-gseabase ships the plant GO slim; bench/data/fetch_goslim.sh puts it where this
// test finds it. Expected: its 106 [Term] stanzas (51 process, 28 component, 27 function terms),
// one parent per is_a and part_of line, thylakoid part_of intracellular.
TEST(GoOntology, PlantSlimFromGseabase) {
    const std::string path = source_dir() + "/bench/data/scratch/goslim/goslim_plant.obo";
    const std::string text = read_file(path);
    if (text.empty())
        GTEST_SKIP() << "no " << path << " (run bench/data/fetch_goslim.sh)";
    GoOntology onto;
    LineSource in;
    std::string err;
    ASSERT_TRUE(in.open(path, err) && onto.read(in, err)) << err;
    onto.link({"part_of"});
    ASSERT_EQ(onto.size(), 106);
    std::map<std::string, int> per_type;
    std::size_t parents = 0;
    for (int t = 0; t < onto.size(); ++t) {
        ++per_type[GoOntology::type_label(onto.m_terms[t].ns)];
        parents += onto.m_parents[t].size();
    }
    EXPECT_EQ(per_type, (std::map<std::string, int>{{"P", 51}, {"C", 28}, {"F", 27}}));
    // Parent lines counted in the raw text, independently of the reader.
    int lines = 0;
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
        lines += text.compare(at, 6, "is_a: ") == 0 || text.compare(at, 22, "relationship: part_of ") == 0;
        if (text.find('\n', at) == std::string::npos)
            break;
    }
    EXPECT_EQ(lines, 118);
    EXPECT_EQ(static_cast<int>(parents) + onto.m_dangling, lines);
    EXPECT_EQ(onto.m_dangling, 0);
    const int thylakoid = onto.find("GO:0009579");
    ASSERT_GE(thylakoid, 0);
    EXPECT_EQ(onto.m_terms[thylakoid].name, "thylakoid");
    EXPECT_EQ(onto.m_parents[thylakoid], std::vector<int>{onto.find("GO:0005622")});
}
