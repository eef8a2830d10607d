// Fuzzer of the graph's option form: the input is an option text whose scope G holds LineSize and
// Edges; the graph read from it is checked and written back.
#include "FuzzHarness.h"
#include "ds/GraphWeb.h"
#include "options.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_run([&] {
        options o;
        std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
        o.read(in, false);
        GraphWeb g(0, true);
        g.read_option(o, "G");
        if (!g.verify())
            __builtin_trap();
        std::vector<int> lines(static_cast<size_t>(g.line_size()) * g.edges_num());
        std::ostringstream out;
        g.write_option(out, lines);
    });
    return 0;
}
