// Fuzzer of the option-file parser and the getters.
#include "FuzzHarness.h"
#include "options.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_run([&] {
        options o;
        std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
        o.read(in, false);
        o.get_int("A", "x", false);
        o.get_float("A", "y", false);
        o.get_str("", "z", false);
        if (std::vector<int>* v = o.get_ints("A", "i", false))
            for (int x : *v)
                (void)x;
        o.get_floats("A", "f", false);
        o.get_strs("A", "s", false);
    });
    return 0;
}
