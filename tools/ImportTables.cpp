// run_import: reading, propagation up the ontology, gene numbering and the written tables.
#include "ImportTables.h"

#include "GoImport.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <vector>

namespace {

// A name as one word: vesk reads gene names and type labels as white-space separated words.
std::string one_word(const std::string& s) {
    std::string w = s;
    for (char& c : w)
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f')
            c = '_';
    return w;
}

// A field of a tab table: tabs and line ends become blanks.
std::string field(const std::string& s) {
    std::string f = s;
    for (char& c : f)
        if (c == '\t' || c == '\n' || c == '\r')
            c = ' ';
    return f;
}

// The genes with the names vesk will print: each symbol once, so that a word matches one gene.
struct NamedGenes {
    GeneTable table;
    std::vector<std::string> name1, name2;
    std::map<std::string, int> by_name2, by_symbol;
    int renamed = 0;

    // Names of the genes added since the last call.
    void name_new() {
        for (int g = static_cast<int>(name1.size()); g < table.size(); ++g) {
            name1.push_back(one_word(table.ids[g]));
            std::string n2 = one_word(table.symbols[g]);
            by_symbol.emplace(table.symbols[g], g);
            if (by_name2.count(n2)) {
                n2 += "_" + name1.back();
                ++renamed;
            }
            by_name2[n2] = g;
            name2.push_back(n2);
        }
    }
    // A word as vesk matches it: printed name first, then id, then an original symbol.
    int match(const std::string& word) const {
        auto a = by_name2.find(word);
        if (a != by_name2.end())
            return a->second;
        const int g = table.find_id(word);
        if (g >= 0)
            return g;
        auto b = by_symbol.find(word);
        return b == by_symbol.end() ? -1 : b->second;
    }
};

bool open_input(const std::string& path, LineSource& in, std::string& err) { return in.open(path, err); }

std::string examples(const std::vector<std::string>& words) {
    std::string s;
    for (std::size_t i = 0; i < words.size() && i < 5; ++i)
        s += (i ? ", " : "") + words[i];
    if (words.size() > 5)
        s += ", ...";
    return s;
}

// Writes `text` to out/name; false with a reason in `err`.
bool write_file(const std::string& dir, const std::string& name, const std::string& text, std::string& err) {
    const std::string path = dir + "/" + name;
    std::ofstream f(path.c_str(), std::ios::binary | std::ios::trunc);
    f << text;
    f.close();
    if (!f) {
        err = "cannot write " + path;
        return false;
    }
    return true;
}

const char kRunOpt[] = "# vesk run over the tables written by vesk_import; run it as: vesk run.opt\n"
                       "# File names are relative to this directory. Defaults: see docs/vesk_import.md.\n"
                       "\n"
                       "[Random]\n"
                       "Seed = 1\n"
                       "\n"
                       "[Tables]\n"
                       "varob = genes.tab\n"
                       "ChipOrfs = chip.txt\n"
                       "GoTypeTab = gotype.tab\n"
                       "goclskey = clskey.tab\n"
                       "clsassoc = clsassoc.tab\n"
                       "SetsOrfs = sets.tab\n"
                       "AnnotReport = report.tsv\n"
                       "\n"
                       "[Vesk]\n"
                       "BootstrapNum = 1000\n"
                       "MinClsSize = 5\n"
                       "MaxClsSize = 500\n"
                       "MinClsInter = 2\n"
                       "MaxPvToRep = 0.01\n"
                       "FilterRedPVThres = 0.01\n"
                       "ReportGeneList = 1\n";

} // namespace

ImportStatus run_import(const ImportSettings& s, std::ostream& log, std::string& err) {
    // Ontology.
    GoOntology onto;
    {
        LineSource in;
        if (!open_input(s.obo, in, err) || !onto.read(in, err))
            return kImportInput;
    }
    onto.link(s.relations);
    log << "ontology " << s.obo << ": " << onto.size() << " terms, " << onto.m_obsolete.size()
        << " obsolete ids dropped";
    if (onto.m_dangling)
        log << ", " << onto.m_dangling << " links to terms not in the file left out";
    log << "\n";

    // Genes and direct annotations.
    NamedGenes genes;
    if (!s.genes.empty()) {
        LineSource in;
        if (!open_input(s.genes, in, err) || !read_gene_list(in, genes.table, err))
            return kImportInput;
        log << "gene list " << s.genes << ": " << genes.table.size() << " genes\n";
    }
    DirectAnnotations direct;
    AnnotationCounts counts;
    {
        const std::string& path = s.gaf.empty() ? s.pairs : s.gaf;
        LineSource in;
        if (!open_input(path, in, err))
            return kImportInput;
        const bool ok = s.gaf.empty()
                            ? read_pairs(in, onto, genes.table, direct, counts, err)
                            : read_gaf(in, onto, s.exclude_evidence, genes.table, direct, counts, err);
        if (!ok)
            return kImportInput;
        log << "annotations " << path << (in.compressed() ? " (gzip)" : "") << ": " << counts.rows
            << " rows, " << counts.kept << " kept; left out: " << counts.negated << " NOT, "
            << counts.by_evidence << " by evidence code, " << counts.obsolete_terms << " to obsolete terms, "
            << counts.unknown_terms << " to terms not in the ontology";
        if (!counts.unknown_examples.empty()) {
            log << " (";
            bool first = true;
            for (const std::string& t : counts.unknown_examples) {
                log << (first ? "" : ", ") << t;
                first = false;
            }
            log << ")";
        }
        log << "\n";
    }
    genes.name_new();

    // True-path rule: every gene is in each term it is annotated to and in all their ancestors.
    std::vector<std::vector<int>> gene_terms(genes.table.size());
    for (const auto& a : direct)
        gene_terms[a.first].push_back(a.second);
    std::vector<std::vector<int>> term_genes(onto.size());
    std::vector<int> seen(onto.size(), -1), stack;
    for (int g = 0; g < static_cast<int>(gene_terms.size()); ++g) {
        stack = gene_terms[g];
        while (!stack.empty()) {
            const int t = stack.back();
            stack.pop_back();
            if (seen[t] == g)
                continue;
            seen[t] = g;
            term_genes[t].push_back(g);
            for (int p : onto.m_parents[t])
                if (seen[p] != g)
                    stack.push_back(p);
        }
    }

    // The chip: the background, or every gene with an annotation kept.
    std::vector<int> chip;
    std::vector<char> on_chip;
    int background_new = 0;
    if (!s.background.empty()) {
        LineSource in;
        std::vector<std::string> words;
        if (!open_input(s.background, in, err) || !read_words(in, words, err))
            return kImportInput;
        for (const std::string& w : words) {
            int g = genes.match(w);
            if (g < 0) {
                g = genes.table.add(w, w);
                genes.name_new();
                ++background_new;
            }
            if (g >= static_cast<int>(on_chip.size()))
                on_chip.resize(genes.table.size(), 0);
            if (!on_chip[g]) {
                on_chip[g] = 1;
                chip.push_back(g);
            }
        }
        log << "background " << s.background << ": " << chip.size() << " genes, " << background_new
            << " of them with no annotation\n";
    } else {
        for (int g = 0; g < static_cast<int>(gene_terms.size()); ++g)
            if (!gene_terms[g].empty())
                chip.push_back(g);
    }
    on_chip.assign(genes.table.size(), 0);
    for (int g : chip)
        on_chip[g] = 1;

    // Gene sets.
    std::vector<GeneSet> sets;
    {
        LineSource in;
        if (!open_input(s.gmt, in, err) || !read_gmt(in, sets, err))
            return kImportInput;
    }
    std::vector<std::vector<int>> set_members(sets.size());
    std::vector<std::string> unknown, off_chip;
    int member_rows = 0;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        std::set<int> have;
        for (const std::string& w : sets[i].members) {
            ++member_rows;
            const int g = genes.match(w);
            if (g < 0) {
                unknown.push_back(sets[i].name + ":" + w);
                continue;
            }
            if (!have.insert(g).second)
                continue;
            if (!on_chip[g])
                off_chip.push_back(sets[i].name + ":" + w);
            set_members[i].push_back(g);
        }
    }
    log << "gene sets " << s.gmt << ": " << sets.size() << " sets, " << member_rows << " members; "
        << unknown.size() << " unknown genes left out";
    if (!unknown.empty())
        log << " (" << examples(unknown) << ")";
    log << "; " << off_chip.size() << " members not in the background kept (they count in their set's size)";
    if (!off_chip.empty())
        log << " (" << examples(off_chip) << ")";
    log << "\n";
    if (genes.renamed)
        log << genes.renamed << " genes share a symbol with an earlier gene and print as SYMBOL_ID\n";

    // Classes: the terms holding at least one gene, in term id order.
    std::vector<int> class_terms;
    for (int t = 0; t < onto.size(); ++t)
        if (!term_genes[t].empty())
            class_terms.push_back(t);
    std::sort(class_terms.begin(), class_terms.end(),
              [&onto](int a, int b) { return onto.m_terms[a].id < onto.m_terms[b].id; });

    // The files.
    if (mkdir(s.out.c_str(), 0777) != 0 && errno != EEXIST) {
        err = "cannot make directory " + s.out + ": " + std::strerror(errno);
        return kImportOutput;
    }
    std::string genes_tab, chip_txt, gotype, clskey, clsassoc, sets_tab, set_names, terms;
    for (int g = 0; g < genes.table.size(); ++g)
        genes_tab += std::to_string(g) + "\t" + genes.name1[g] + "\t" + genes.name2[g] + "\n";
    for (int g : chip)
        chip_txt += genes.name2[g] + "\n";
    terms = "term_id\tname\tnamespace\n";
    for (const OboTerm& t : onto.m_terms) {
        const std::string label = one_word(GoOntology::type_label(t.ns));
        if (!label.empty())
            gotype += one_word(t.id) + "\t" + label + "\n";
        terms += field(t.id) + "\t" + field(t.name) + "\t" + field(t.ns) + "\n";
    }
    std::size_t memberships = 0;
    for (std::size_t c = 0; c < class_terms.size(); ++c) {
        const OboTerm& t = onto.m_terms[class_terms[c]];
        clskey += std::to_string(c) + "\t" + field(t.id) + "\t" + field(t.name) + "\t0\n";
        for (int g : term_genes[class_terms[c]]) {
            clsassoc += std::to_string(c) + "\t" + std::to_string(g) + "\n";
            ++memberships;
        }
    }
    set_names = "set_id\tname\tdescription\n";
    for (std::size_t i = 0; i < sets.size(); ++i) {
        set_names +=
            std::to_string(i) + "\t" + field(sets[i].name) + "\t" + field(sets[i].description) + "\n";
        for (int g : set_members[i])
            sets_tab += genes.name2[g] + "\t" + std::to_string(i) + "\n";
    }
    const std::pair<const char*, const std::string*> files[] = {
        {"genes.tab", &genes_tab},     {"chip.txt", &chip_txt},     {"gotype.tab", &gotype},
        {"clskey.tab", &clskey},       {"clsassoc.tab", &clsassoc}, {"sets.tab", &sets_tab},
        {"set_names.tsv", &set_names}, {"terms.tsv", &terms}};
    for (const auto& f : files)
        if (!write_file(s.out, f.first, *f.second, err))
            return kImportOutput;
    if (!write_file(s.out, "run.opt", kRunOpt, err))
        return kImportOutput;
    log << "wrote " << s.out << ": " << genes.table.size() << " genes, " << chip.size() << " on the chip, "
        << class_terms.size() << " classes, " << memberships << " memberships, " << sets.size() << " sets\n";
    return kImportOk;
}
