// vesk_main: the whole run of the vesk enrichment tool, from option files to the report.
#ifndef VESK_TOOLS_VESKRUN_H
#define VESK_TOOLS_VESKRUN_H

// How a run computes, as opposed to what it computes: neither changes the report.
struct VeskRunSettings {
    bool reference_bootstrap = false; // the straightforward class-by-class path instead of the fast one
    int threads = 1;                  // threads of the fast path
};

// Reads the option files argv[1..argc), runs the bootstrap and writes the report; returns the exit status.
int vesk_main(int argc, char** argv, const VeskRunSettings& settings);

#endif
