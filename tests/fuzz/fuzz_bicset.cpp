// Fuzzer of the bicluster tables (bick NUL bicd NUL bicm) and of the edge table (input starting
// with 'E'), both against a small synthetic graph of 6 conditions and 10 genes.
#include "BicSet.h"
#include "BicSynth.h"
#include "FuzzHarness.h"

#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_run([&] {
        if (size > 0 && data[0] == 'E') {
            Synth s(6, 10, {0, 1, 2}, {0, 1, 2, 3}, 3.0f, 5u, true);
            std::istringstream in(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
            s.graph->build_edges_from_table(in);
            return;
        }
        static Synth* s = new Synth(6, 10, {0, 1, 2}, {0, 1, 2, 3}, 3.0f, 5u, true);
        const std::vector<std::string> t = fuzz_split(data, size, 3);
        std::istringstream k(t[0]), d(t[1]), m(t[2]);
        BicSet set(*s->graph, *s->wgt);
        set.read(k, d);
        set.read_bicm(m);
    });
    return 0;
}
