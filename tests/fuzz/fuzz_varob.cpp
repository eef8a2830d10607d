// Fuzzer of the variable tables: the short gene table, or with a first byte 'L' the long object table.
#include "FuzzHarness.h"
#include "VarUniverse.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_run([&] {
        VarUniverse u;
        const bool long_table = size > 0 && data[0] == 'L';
        std::istringstream in(std::string(reinterpret_cast<const char*>(data), size).substr(long_table)),
            none;
        if (long_table)
            u.read_tabs(in, none);
        else
            u.read_short_tabs(in);
    });
    return 0;
}
