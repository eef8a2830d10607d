// vesk_import: GO OBO, GAF or gene-term pairs and GMT gene sets in, vesk tables out; with --report, a
// vesk report joined with set and term names, and a dot plot.
#include "ImportTables.h"
#include "ReportJoin.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#ifndef VESK_VERSION
#define VESK_VERSION "unknown"
#endif

namespace {

const char kUsage[] =
    "usage: vesk_import --obo FILE (--gaf FILE | --pairs FILE) --gmt FILE [--background FILE]\n"
    "                   [--genes FILE] [--exclude-evidence CODES] [--relations TYPES] --out DIR\n"
    "       vesk_import --report REPORT [--names DIR] [--table FILE] [--plot FILE] [--top N] [--sets N]\n"
    "       vesk_import --help | --version\n";

const char kHelp[] =
    "\n"
    "Import: reads the Gene Ontology (OBO 1.2), annotations (GAF 2.x, plain or gzip, or a plain\n"
    "gene<TAB>term table) and gene sets (GMT), carries every annotation up is_a and the relations\n"
    "given (true-path rule) and writes the tables of a vesk run and run.opt into DIR.\n"
    "  --obo FILE               ontology; obsolete terms dropped, alt_ids mapped to their term\n"
    "  --gaf FILE               GAF 2.x annotations; NOT rows left out\n"
    "  --pairs FILE             gene<TAB>term lines instead of a GAF\n"
    "  --gmt FILE               gene sets: name<TAB>description<TAB>members...\n"
    "  --background FILE        genes of the universe, one word each (default: every annotated gene)\n"
    "  --genes FILE             id<TAB>symbol lines: all genes and their numbering, before the annotation's\n"
    "  --exclude-evidence CODES comma-separated evidence codes to leave out, e.g. IEA,ND\n"
    "  --relations TYPES        comma-separated relationship types carried besides is_a (default part_of;\n"
    "                           'none' for is_a only)\n"
    "  --out DIR                output directory, made if missing\n"
    "Then: cd DIR && vesk run.opt\n"
    "\n"
    "Report: joins a vesk report with the names in DIR (set_names.tsv, terms.tsv).\n"
    "  --report REPORT          the vesk report (report.tsv)\n"
    "  --names DIR              where the name tables are (default: the report's directory)\n"
    "  --table FILE             named table (default: DIR/report_named.tsv)\n"
    "  --plot FILE              SVG dot plot (default: DIR/report_plot.svg)\n"
    "  --top N                  terms per set in the plot (default 5)\n"
    "  --sets N                 sets in the plot, those with the smallest p first (default 12)\n"
    "\n"
    "Exit status: 0 done, 1 usage error, 2 unreadable or malformed input, 3 output not written.\n";

int usage_error(const std::string& what) {
    std::cerr << "vesk_import: " << what << "\n" << kUsage << "see vesk_import --help\n";
    return kImportUsage;
}

std::set<std::string> comma_list(const std::string& s) {
    std::set<std::string> out;
    std::istringstream in(s);
    std::string w;
    while (std::getline(in, w, ','))
        if (!w.empty())
            out.insert(w);
    return out;
}

bool positive(const std::string& s, int& v) {
    char* end = nullptr;
    const long x = std::strtol(s.c_str(), &end, 10);
    if (s.empty() || *end != '\0' || x < 1 || x > 100000)
        return false;
    v = static_cast<int>(x);
    return true;
}

int run_report(const std::map<std::string, std::string>& flags) {
    const std::string report = flags.at("--report");
    std::string names = flags.count("--names") ? flags.at("--names") : std::string();
    if (names.empty()) {
        const std::size_t slash = report.rfind('/');
        names = slash == std::string::npos ? "." : report.substr(0, slash);
    }
    int top = 5, sets = 12;
    if (flags.count("--top") && !positive(flags.at("--top"), top))
        return usage_error("--top takes a positive number");
    if (flags.count("--sets") && !positive(flags.at("--sets"), sets))
        return usage_error("--sets takes a positive number");
    const std::string table = flags.count("--table") ? flags.at("--table") : names + "/report_named.tsv";
    const std::string plot = flags.count("--plot") ? flags.at("--plot") : names + "/report_plot.svg";

    std::vector<NamedReportRow> rows;
    std::string err;
    if (!join_report(report, names, rows, err)) {
        std::cerr << "vesk_import: " << err << "\n";
        return kImportInput;
    }
    std::ofstream t(table.c_str(), std::ios::trunc);
    write_named_report(t, rows);
    std::ofstream p(plot.c_str(), std::ios::trunc);
    write_dot_plot(p, rows, top, sets);
    t.close();
    p.close();
    if (!t || !p) {
        std::cerr << "vesk_import: cannot write " << (!t ? table : plot) << "\n";
        return kImportOutput;
    }
    std::cerr << rows.size() << " report lines named\n";
    std::cout << table << "\n" << plot << "\n";
    return kImportOk;
}

} // namespace

int main(int argc, char** argv) {
    static const char* const with_value[] = {
        "--obo",      "--gaf",   "--pairs", "--gmt",  "--background", "--genes", "--out",
        "--report",   "--names", "--table", "--plot", "--top",        "--sets",  "--exclude-evidence",
        "--relations"};
    std::map<std::string, std::string> flags;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--help" || a == "-h") {
            std::cout << kUsage << kHelp;
            return kImportOk;
        }
        if (a == "--version") {
            std::cout << "vesk_import " << VESK_VERSION << "\n";
            return kImportOk;
        }
        bool known = false;
        for (const char* f : with_value)
            known = known || a == f;
        if (!known)
            return usage_error("unknown argument " + a);
        if (i + 1 >= argc)
            return usage_error(a + " needs a value");
        if (flags.count(a))
            return usage_error(a + " given twice");
        flags[a] = argv[++i];
    }
    if (flags.empty())
        return usage_error("nothing to do");
    if (flags.count("--report"))
        return run_report(flags);

    ImportSettings s;
    auto take = [&flags](const char* f) { return flags.count(f) ? flags.at(f) : std::string(); };
    s.obo = take("--obo");
    s.gaf = take("--gaf");
    s.pairs = take("--pairs");
    s.gmt = take("--gmt");
    s.background = take("--background");
    s.genes = take("--genes");
    s.out = take("--out");
    if (s.obo.empty() || s.gmt.empty() || s.out.empty())
        return usage_error("--obo, --gmt and --out are required");
    if (s.gaf.empty() == s.pairs.empty())
        return usage_error("give exactly one of --gaf and --pairs");
    s.exclude_evidence = comma_list(take("--exclude-evidence"));
    if (flags.count("--relations")) {
        s.relations = comma_list(flags.at("--relations"));
        s.relations.erase("none");
    }
    std::string err;
    const ImportStatus status = run_import(s, std::cerr, err);
    if (status != kImportOk) {
        std::cerr << "vesk_import: " << err << "\n";
        return status;
    }
    std::cout << "cd " << s.out << " && vesk run.opt\n";
    return kImportOk;
}
