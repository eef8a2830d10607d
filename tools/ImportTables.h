// vesk_import: from an ontology, annotations and gene sets to the six vesk tables, name tables and run.opt.
#ifndef VESK_TOOLS_IMPORTTABLES_H
#define VESK_TOOLS_IMPORTTABLES_H

#include <ostream>
#include <set>
#include <string>

// What one import reads and where it writes; empty paths are absent inputs.
struct ImportSettings {
    std::string obo, gaf, pairs, gmt, background, genes, out;
    std::set<std::string> exclude_evidence;
    // relationship types propagated besides is_a
    std::set<std::string> relations{"part_of"};
};

// Exit statuses of vesk_import.
enum ImportStatus { kImportOk = 0, kImportUsage = 1, kImportInput = 2, kImportOutput = 3 };

// Reads the inputs, propagates the annotations up the ontology (true-path rule) and writes
// genes.tab, chip.txt, gotype.tab, clskey.tab, clsassoc.tab, sets.tab, set_names.tsv, terms.tsv and
// run.opt into `out`. What was read, kept and left out goes to `log`. Returns kImportOk, or another
// status with the reason in `err`.
ImportStatus run_import(const ImportSettings& settings, std::ostream& log, std::string& err);

#endif
