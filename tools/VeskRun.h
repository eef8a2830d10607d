// vesk_main: the whole run of the vesk enrichment tool, from option files to the report.
#ifndef VESK_TOOLS_VESKRUN_H
#define VESK_TOOLS_VESKRUN_H

#include <istream>
#include <vector>

class VarUniverse;

// How a run computes, as opposed to what it computes: neither changes the report.
struct VeskRunSettings {
    bool reference_bootstrap = false; // the straightforward class-by-class path instead of the fast one
    int threads = 1;                  // threads of the fast path
};

// Reads the option files argv[1..argc), runs the bootstrap and writes the report; returns the exit status.
int vesk_main(int argc, char** argv, const VeskRunSettings& settings);

// Reads the gene set table into `sets` (by set id, members in file order): rows of a gene word, matched
// by printed name then first name, and a set id. A row whose gene doesn't match is dropped with a
// warning before its id is looked at; a set id outside 0 ... 2^22 - 1 is fatal.
void read_gene_sets(std::istream& in, const VarUniverse& univ, std::vector<std::vector<int>>& sets);

#endif
