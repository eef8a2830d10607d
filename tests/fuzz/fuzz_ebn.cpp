// Fuzzer of the Bayesian-network readers: with a first byte 'v' the variable id-space table, with 'l'
// the logic node table and its attributes (nodes NUL attrs) over a net of eight variables
// (ids 0 ... 7, three values each).
#include "FuzzHarness.h"
#include "LocalLogic.h"
#include "Net.h"
#include "VarIdSpace.h"

#include <sstream>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    fuzz_run([&] {
        const std::vector<std::string> t = fuzz_split(data + 1, size - 1, 2);
        if (data[0] == 'v') {
            VarIdSpace s;
            std::istringstream in(t[0]);
            s.read_tab(in);
        } else if (data[0] == 'l') {
            Net net;
            for (int v = 0; v < 8; ++v)
                net.add_rand_var(v, 3);
            LocalLogicSet set(net);
            std::istringstream n(t[0]), a(t[1]);
            try {
                set.read(n, a);
            } catch (const std::out_of_range&) {
                // A "table" attribute with fewer values than the table has entries ends in the failure
                // of the substring operation: the reader's defined outcome, kept as it stands.
            }
        }
    });
    return 0;
}
