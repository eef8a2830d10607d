// Harness services: base_crash turned into an exception, the error channel and the traces silenced.
#include "FuzzHarness.h"

#include "modes.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

// Linked with --wrap=_Z10base_crashv: every call of base_crash() from the libraries comes here.
extern "C" [[noreturn]] void __wrap__Z10base_crashv() { throw FuzzFatal(); }

// Linked with --wrap of the two input ceilings: ids and tables a thousand times smaller than in the
// tools, so that an input near the ceiling costs microseconds, not a 100 MiB allocation. The bounds are
// the same code at any scale; their values are checked by the unit tests.
extern "C" long long __wrap__Z16input_id_ceilingv() { return 1LL << 12; }
extern "C" long long __wrap__Z18input_cell_ceilingv() { return 1LL << 17; }

// The traces of the readers and the fatal texts would dominate the run time; VESK_FUZZ_VERBOSE keeps them.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (!std::getenv("VESK_FUZZ_VERBOSE")) {
        get_error_mode()->m_log = 0;
        std::cerr.rdbuf(nullptr);
    }
    return 0;
}

std::vector<std::string> fuzz_split(const uint8_t* data, size_t size, int parts) {
    std::vector<std::string> out(parts);
    int at = 0;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0 && at + 1 < parts)
            ++at;
        else
            out[at] += static_cast<char>(data[i]);
    }
    return out;
}

std::string fuzz_file(const std::string& name, const std::string& text) {
    static const std::string dir = [] {
        const char* tmp = std::getenv("TMPDIR");
        std::string d = std::string(tmp ? tmp : "/tmp") + "/vesk_fuzz_" + std::to_string(getpid());
        std::system(("mkdir -p '" + d + "'").c_str());
        return d;
    }();
    const std::string path = dir + "/" + name;
    std::ofstream(path.c_str(), std::ios::binary | std::ios::trunc) << text;
    return path;
}
