// Readers of the files vesk_import takes in: numbered text lines (plain or gzip), GO OBO, GAF, gene-term
// pairs, GMT.
#ifndef VESK_TOOLS_GOIMPORT_H
#define VESK_TOOLS_GOIMPORT_H

#include <fstream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

struct gzFile_s;

// The lines of a text file, numbered from 1, with line ends (LF or CRLF) removed. A file whose
// first two bytes are the gzip magic 1f 8b is read through zlib.
class LineSource {
public:
    LineSource() = default;
    ~LineSource();
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;

    // False with a message in `err` if the file cannot be opened.
    bool open(const std::string& path, std::string& err);
    bool next(std::string& line);

    int line_no() const { return m_line; }
    const std::string& path() const { return m_path; }
    // "path:line: " followed by `what`, for a message about the current line.
    std::string error(const std::string& what) const;
    bool compressed() const { return m_gz != nullptr; }
    // After next() gave false: true if the file ended cleanly, else false with the reason in `err`
    // (a damaged or cut gzip stream, a read error).
    bool ended_cleanly(std::string& err) const;

private:
    std::string m_path;
    int m_line = 0;
    bool m_failed = false;
    std::ifstream m_in;
    gzFile_s* m_gz = nullptr;
};

// One [Term] stanza of an OBO file, as written.
struct OboTerm {
    std::string id, name, ns;
    std::vector<std::string> is_a;
    std::vector<std::pair<std::string, std::string>> relations; // (type, target) of `relationship:`
    std::vector<std::string> alt_ids;
    bool obsolete = false;
    int line = 0; // where the stanza begins
};

// The terms of an OBO 1.2 ontology: [Term] stanzas with id, name, namespace, is_a, relationship,
// alt_id and is_obsolete; other stanzas and tags are skipped. Obsolete terms are dropped, and
// alt_ids resolve to their primary term.
class GoOntology {
public:
    // Reads the whole file; false with "file:line: expected ..." in `err` on a malformed line.
    bool read(LineSource& in, std::string& err);
    // Builds each term's parents over is_a and the `relationship` types in `relations`; links to
    // terms not in the ontology (or obsolete ones) are counted in m_dangling and left out.
    void link(const std::set<std::string>& relations);

    // Index of a term by its id or one of its alt_ids; -1 if unknown or obsolete.
    int find(const std::string& id) const;
    bool is_obsolete(const std::string& id) const { return m_obsolete.count(id) != 0; }
    int size() const { return static_cast<int>(m_terms.size()); }
    // P, F or C for the three GO namespaces, the namespace itself otherwise.
    static std::string type_label(const std::string& ns);

    std::vector<OboTerm> m_terms;            // the live terms in file order
    std::vector<std::vector<int>> m_parents; // per term, parent indices (after link)
    std::map<std::string, int> m_index;      // primary and alternative ids of live terms
    std::set<std::string> m_obsolete;        // ids and alt_ids of obsolete terms
    int m_dangling = 0;
};

// The genes met while reading: per dense number an identifier (name1) and a symbol (name2).
struct GeneTable {
    std::vector<std::string> ids, symbols;
    std::map<std::string, int> by_id;

    // The gene of `id`, added with `symbol` if new.
    int add(const std::string& id, const std::string& symbol);
    int find_id(const std::string& id) const;
    int size() const { return static_cast<int>(ids.size()); }
};

// What an annotation reader kept and left out, for the user.
struct AnnotationCounts {
    int rows = 0;                           // annotation lines read
    int kept = 0;                           // direct annotations kept
    int negated = 0;                        // NOT in the qualifier
    int by_evidence = 0;                    // evidence code excluded
    int obsolete_terms = 0;                 // term obsolete in the ontology
    int unknown_terms = 0;                  // term not in the ontology
    std::set<std::string> unknown_examples; // a few of those terms
};

// Direct annotations as (gene, term index) pairs.
typedef std::vector<std::pair<int, int>> DirectAnnotations;

// GAF 2.x: '!' lines are comments; at least 15 tab-separated columns; the gene is column 2 (DB
// Object ID) with column 3 as its symbol, the term column 5, the evidence code column 7; rows with
// NOT among the '|'-separated qualifiers of column 4 or an evidence code in `exclude` are left out.
bool read_gaf(LineSource& in, const GoOntology& onto, const std::set<std::string>& exclude, GeneTable& genes,
              DirectAnnotations& out, AnnotationCounts& counts, std::string& err);

// Plain pairs: gene TAB term per line; blank lines and lines opening with '#' or '!' are skipped.
// A gene is its word as both names.
bool read_pairs(LineSource& in, const GoOntology& onto, GeneTable& genes, DirectAnnotations& out,
                AnnotationCounts& counts, std::string& err);

// A gene list: ID TAB SYMBOL per line (blank and '#' lines skipped), in the order wanted.
bool read_gene_list(LineSource& in, GeneTable& genes, std::string& err);

struct GeneSet {
    std::string name, description;
    std::vector<std::string> members;
};

// GMT: name TAB description TAB members...; empty member fields are skipped.
bool read_gmt(LineSource& in, std::vector<GeneSet>& sets, std::string& err);

// Every white-space separated word of the file, in order ('#' lines skipped).
bool read_words(LineSource& in, std::vector<std::string>& words, std::string& err);

#endif
