// The vesk report with set and term names: a readable table and an SVG dot plot of the top terms per set.
#ifndef VESK_TOOLS_REPORTJOIN_H
#define VESK_TOOLS_REPORTJOIN_H

#include <ostream>
#include <string>
#include <vector>

// One report line with its names; numbers stay as vesk wrote them.
struct NamedReportRow {
    int set_id = 0;
    std::string set_name, term_id, term_name, ns;
    std::string overlap, fraction, log10_p, log10_corrected_p;
};

// Reads the report at `report` and the name tables set_names.tsv and terms.tsv of `names_dir`.
// A term missing from terms.tsv keeps the report's class name and the namespace "NA". False with
// "file:line: expected ..." in `err` on a malformed line or a set id the names do not hold.
bool join_report(const std::string& report, const std::string& names_dir, std::vector<NamedReportRow>& rows,
                 std::string& err);

// Header line, then one tab-separated line per row: set_name, term_id, term_name, namespace,
// overlap, fraction, log10_p, log10_corrected_p.
void write_named_report(std::ostream& out, const std::vector<NamedReportRow>& rows);

// A dot plot as SVG: the `max_sets` sets with the smallest log10 p, each with its first
// `top_terms` rows (the report lists a set's classes best first); x is -log10 p, the dot's area
// grows with the overlap and its colour gives the namespace.
void write_dot_plot(std::ostream& out, const std::vector<NamedReportRow>& rows, int top_terms, int max_sets);

#endif
