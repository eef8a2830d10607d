// Fuzzer of the class tables: key table NUL association table, over 64 variables, half of them on
// the chip mask (or no mask when the key text starts with 'N').
#include "FuzzHarness.h"
#include "VarClasses.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_run([&] {
        const std::vector<std::string> parts = fuzz_split(data, size, 2);
        const int n = 64;
        ds_bitvec mask(n);
        for (int v = 0; v < n; v += 2)
            mask.set_ind(v);
        const bool masked = parts[0].empty() || parts[0][0] != 'N';
        std::istringstream keys(parts[0]), assoc(parts[1]);
        VarClasses c;
        c.read(keys, assoc, n, masked ? &mask : nullptr);
    });
    return 0;
}
