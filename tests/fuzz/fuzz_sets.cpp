// Fuzzer of the tool's gene set table, read against the bundled gene table (data/vesk/varob.tab).
#include "FuzzHarness.h"
#include "VarUniverse.h"
#include "VeskRun.h"

#include <fstream>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static VarUniverse* universe = [] {
        VarUniverse* u = new VarUniverse();
        std::ifstream in(std::string(VESK_SOURCE_DIR) + "/data/vesk/varob.tab");
        u->read_short_tabs(in);
        return u;
    }();
    fuzz_run([&] {
        std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
        std::vector<std::vector<int>> sets;
        read_gene_sets(in, *universe, sets);
    });
    return 0;
}
