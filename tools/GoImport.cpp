// LineSource, GoOntology, GeneTable and the annotation, gene set and word list readers.
#include "GoImport.h"

#include <zlib.h>

#include <cstring>
#include <sstream>

namespace {

std::string trim(const std::string& s) {
    const char* ws = " \t\r\n";
    const std::size_t a = s.find_first_not_of(ws);
    if (a == std::string::npos)
        return std::string();
    const std::size_t b = s.find_last_not_of(ws);
    return s.substr(a, b - a + 1);
}

std::vector<std::string> split_tabs(const std::string& line) {
    std::vector<std::string> out;
    std::size_t start = 0;
    for (;;) {
        const std::size_t tab = line.find('\t', start);
        out.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
        if (tab == std::string::npos)
            return out;
        start = tab + 1;
    }
}

std::string first_word(const std::string& s) {
    std::istringstream in(s);
    std::string w;
    in >> w;
    return w;
}

// An OBO value without its trailing comment ("! ...") and modifiers ("{...}"), unescaped.
std::string obo_value(const std::string& raw) {
    std::string v;
    bool in_quote = false;
    int braces = 0;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const char c = raw[i];
        if (c == '\\' && i + 1 < raw.size()) {
            if (braces == 0)
                v += raw[++i];
            else
                ++i;
            continue;
        }
        if (c == '"')
            in_quote = !in_quote;
        if (!in_quote && c == '!')
            break;
        if (!in_quote && c == '{')
            ++braces;
        if (braces == 0)
            v += c;
        if (!in_quote && c == '}' && braces > 0)
            --braces;
    }
    return trim(v);
}

std::string at_line(const std::string& path, int line, const std::string& what) {
    return path + ":" + std::to_string(line) + ": " + what;
}

} // namespace

LineSource::~LineSource() {
    if (m_gz)
        gzclose(m_gz);
}

bool LineSource::open(const std::string& path, std::string& err) {
    m_path = path;
    m_line = 0;
    unsigned char magic[2] = {0, 0};
    {
        std::ifstream probe(path.c_str(), std::ios::binary);
        if (!probe) {
            err = "cannot open " + path;
            return false;
        }
        probe.read(reinterpret_cast<char*>(magic), 2);
    }
    if (magic[0] == 0x1f && magic[1] == 0x8b) {
        m_gz = gzopen(path.c_str(), "rb");
        if (!m_gz) {
            err = "cannot open " + path + " through zlib";
            return false;
        }
        return true;
    }
    m_in.open(path.c_str(), std::ios::binary);
    if (!m_in) {
        err = "cannot open " + path;
        return false;
    }
    return true;
}

bool LineSource::next(std::string& line) {
    line.clear();
    if (m_gz) {
        char buf[8192];
        bool any = false;
        while (gzgets(m_gz, buf, sizeof buf)) {
            any = true;
            const std::size_t n = std::strlen(buf);
            line.append(buf, n);
            if (n > 0 && buf[n - 1] == '\n')
                break;
        }
        int status = Z_OK;
        gzerror(m_gz, &status);
        if (status != Z_OK && status != Z_STREAM_END) {
            m_failed = true;
            return false;
        }
        if (!any)
            return false;
        if (!line.empty() && line.back() == '\n')
            line.pop_back();
    } else if (!std::getline(m_in, line)) {
        m_failed = m_in.bad();
        return false;
    }
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    ++m_line;
    return true;
}

std::string LineSource::error(const std::string& what) const { return at_line(m_path, m_line, what); }

bool LineSource::ended_cleanly(std::string& err) const {
    if (!m_failed)
        return true;
    err = at_line(m_path, m_line + 1,
                  compressed() ? "expected more gzip data; the file is damaged or cut short"
                               : "expected a readable line; the read failed");
    return false;
}

bool GoOntology::read(LineSource& in, std::string& err) {
    std::string line, stanza, default_ns;
    bool in_header = true;
    OboTerm cur;
    std::vector<OboTerm> all;
    std::map<std::string, int> first_line;

    // Closes the [Term] stanza being read, if any.
    auto finish = [&]() -> bool {
        if (stanza != "Term")
            return true;
        if (cur.id.empty()) {
            err = at_line(in.path(), cur.line, "expected an id: line in this [Term] stanza");
            return false;
        }
        if (cur.ns.empty())
            cur.ns = default_ns;
        auto seen = first_line.find(cur.id);
        if (seen != first_line.end()) {
            err = at_line(in.path(), cur.line,
                          "expected each term once; " + cur.id + " is defined at line " +
                              std::to_string(seen->second) + " already");
            return false;
        }
        first_line[cur.id] = cur.line;
        all.push_back(cur);
        return true;
    };

    while (in.next(line)) {
        const std::string t = trim(line);
        if (t.empty() || t[0] == '!')
            continue;
        if (t[0] == '[') {
            if (t.back() != ']') {
                err = in.error("expected a stanza header such as [Term]");
                return false;
            }
            if (!finish())
                return false;
            in_header = false;
            stanza = trim(t.substr(1, t.size() - 2));
            cur = OboTerm();
            cur.line = in.line_no();
            continue;
        }
        const std::size_t colon = t.find(':');
        if (colon == std::string::npos || colon == 0) {
            err = in.error("expected a tag-value line, tag: value");
            return false;
        }
        const std::string tag = trim(t.substr(0, colon));
        const std::string value = obo_value(t.substr(colon + 1));
        if (in_header) {
            if (tag == "default-namespace")
                default_ns = value;
            continue;
        }
        if (stanza != "Term")
            continue;
        if (tag == "id") {
            cur.id = first_word(value);
            if (cur.id.empty()) {
                err = in.error("expected a term id after id:");
                return false;
            }
        } else if (tag == "name") {
            cur.name = value;
        } else if (tag == "namespace") {
            cur.ns = first_word(value);
        } else if (tag == "is_a" || tag == "alt_id") {
            const std::string target = first_word(value);
            if (target.empty()) {
                err = in.error("expected a term id after " + tag + ":");
                return false;
            }
            (tag == "is_a" ? cur.is_a : cur.alt_ids).push_back(target);
        } else if (tag == "relationship") {
            std::istringstream words(value);
            std::string type, target;
            if (!(words >> type >> target)) {
                err = in.error("expected a relationship type and a term id after relationship:");
                return false;
            }
            cur.relations.emplace_back(type, target);
        } else if (tag == "is_obsolete") {
            if (value != "true" && value != "false") {
                err = in.error("expected true or false after is_obsolete:");
                return false;
            }
            cur.obsolete = value == "true";
        }
    }
    if (!in.ended_cleanly(err) || !finish())
        return false;

    m_terms.clear();
    m_index.clear();
    m_obsolete.clear();
    for (OboTerm& term : all) {
        if (term.obsolete)
            continue;
        m_index[term.id] = static_cast<int>(m_terms.size());
        m_terms.push_back(term);
    }
    // Alternative ids after all primary ones, so that a primary id always names its own term.
    for (int i = 0; i < size(); ++i)
        for (const std::string& alt : m_terms[i].alt_ids)
            m_index.emplace(alt, i);
    for (const OboTerm& term : all) {
        if (!term.obsolete)
            continue;
        if (!m_index.count(term.id))
            m_obsolete.insert(term.id);
        for (const std::string& alt : term.alt_ids)
            if (!m_index.count(alt))
                m_obsolete.insert(alt);
    }
    m_parents.assign(m_terms.size(), std::vector<int>());
    return true;
}

void GoOntology::link(const std::set<std::string>& relations) {
    m_dangling = 0;
    m_parents.assign(m_terms.size(), std::vector<int>());
    for (int i = 0; i < size(); ++i) {
        std::vector<std::string> targets = m_terms[i].is_a;
        for (const auto& rel : m_terms[i].relations)
            if (relations.count(rel.first))
                targets.push_back(rel.second);
        for (const std::string& target : targets) {
            const int p = find(target);
            if (p < 0) {
                ++m_dangling;
                continue;
            }
            m_parents[i].push_back(p);
        }
    }
}

int GoOntology::find(const std::string& id) const {
    auto it = m_index.find(id);
    return it == m_index.end() ? -1 : it->second;
}

std::string GoOntology::type_label(const std::string& ns) {
    if (ns == "biological_process")
        return "P";
    if (ns == "molecular_function")
        return "F";
    if (ns == "cellular_component")
        return "C";
    return ns;
}

int GeneTable::add(const std::string& id, const std::string& symbol) {
    auto it = by_id.find(id);
    if (it != by_id.end())
        return it->second;
    const int g = size();
    by_id[id] = g;
    ids.push_back(id);
    symbols.push_back(symbol.empty() ? id : symbol);
    return g;
}

int GeneTable::find_id(const std::string& id) const {
    auto it = by_id.find(id);
    return it == by_id.end() ? -1 : it->second;
}

namespace {

// Files the annotation of `gene` to the term `term_id`, or counts why it is left out.
void file_annotation(const GoOntology& onto, int gene, const std::string& term_id, DirectAnnotations& out,
                     AnnotationCounts& counts) {
    const int t = onto.find(term_id);
    if (t >= 0) {
        out.emplace_back(gene, t);
        ++counts.kept;
    } else if (onto.is_obsolete(term_id)) {
        ++counts.obsolete_terms;
    } else {
        ++counts.unknown_terms;
        if (counts.unknown_examples.size() < 5)
            counts.unknown_examples.insert(term_id);
    }
}

bool skippable(const std::string& line, const char* comments) {
    const std::string t = trim(line);
    return t.empty() || std::strchr(comments, t[0]) != nullptr;
}

} // namespace

bool read_gaf(LineSource& in, const GoOntology& onto, const std::set<std::string>& exclude, GeneTable& genes,
              DirectAnnotations& out, AnnotationCounts& counts, std::string& err) {
    std::string line;
    while (in.next(line)) {
        if (skippable(line, "!"))
            continue;
        const std::vector<std::string> col = split_tabs(line);
        if (col.size() < 15) {
            err = in.error("expected at least 15 tab-separated columns (GAF 2.x), found " +
                           std::to_string(col.size()));
            return false;
        }
        const std::string id = trim(col[1]), symbol = trim(col[2]), term = trim(col[4]);
        const std::string evidence = trim(col[6]);
        if (id.empty()) {
            err = in.error("expected a DB Object ID in column 2");
            return false;
        }
        if (term.empty()) {
            err = in.error("expected a GO id in column 5");
            return false;
        }
        if (evidence.empty()) {
            err = in.error("expected an evidence code in column 7");
            return false;
        }
        ++counts.rows;
        const int g = genes.add(id, symbol);
        bool negated = false;
        std::istringstream quals(col[3]);
        std::string q;
        while (std::getline(quals, q, '|'))
            negated = negated || trim(q) == "NOT";
        if (negated) {
            ++counts.negated;
            continue;
        }
        if (exclude.count(evidence)) {
            ++counts.by_evidence;
            continue;
        }
        file_annotation(onto, g, term, out, counts);
    }
    return in.ended_cleanly(err);
}

bool read_pairs(LineSource& in, const GoOntology& onto, GeneTable& genes, DirectAnnotations& out,
                AnnotationCounts& counts, std::string& err) {
    std::string line;
    while (in.next(line)) {
        if (skippable(line, "#!"))
            continue;
        const std::vector<std::string> col = split_tabs(line);
        if (col.size() != 2 || trim(col[0]).empty() || trim(col[1]).empty()) {
            err = in.error("expected a gene and a term separated by one tab");
            return false;
        }
        ++counts.rows;
        const std::string gene = trim(col[0]);
        file_annotation(onto, genes.add(gene, gene), trim(col[1]), out, counts);
    }
    return in.ended_cleanly(err);
}

bool read_gene_list(LineSource& in, GeneTable& genes, std::string& err) {
    std::string line;
    while (in.next(line)) {
        if (skippable(line, "#"))
            continue;
        const std::vector<std::string> col = split_tabs(line);
        if (col.size() < 2 || trim(col[0]).empty() || trim(col[1]).empty()) {
            err = in.error("expected a gene id and a symbol separated by a tab");
            return false;
        }
        genes.add(trim(col[0]), trim(col[1]));
    }
    return in.ended_cleanly(err);
}

bool read_gmt(LineSource& in, std::vector<GeneSet>& sets, std::string& err) {
    std::string line;
    while (in.next(line)) {
        if (trim(line).empty())
            continue;
        const std::vector<std::string> col = split_tabs(line);
        if (col.size() < 2) {
            err = in.error("expected a set name, a description and members, separated by tabs");
            return false;
        }
        GeneSet set;
        set.name = trim(col[0]);
        if (set.name.empty()) {
            err = in.error("expected a set name in column 1");
            return false;
        }
        set.description = trim(col[1]);
        for (std::size_t i = 2; i < col.size(); ++i) {
            const std::string m = trim(col[i]);
            if (!m.empty())
                set.members.push_back(m);
        }
        sets.push_back(set);
    }
    return in.ended_cleanly(err);
}

bool read_words(LineSource& in, std::vector<std::string>& words, std::string& err) {
    std::string line;
    while (in.next(line)) {
        if (skippable(line, "#"))
            continue;
        std::istringstream split(line);
        std::string w;
        while (split >> w)
            words.push_back(w);
    }
    return in.ended_cleanly(err);
}
