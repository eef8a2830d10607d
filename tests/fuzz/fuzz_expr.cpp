// Fuzzer of every expression table reader over a universe of eight genes (Gene0 ... Gene7). The
// first byte picks the reader: 'p' key NUL data pair, 'm' the pair with array tables, 'x' read_mat
// (columns from the next four bytes), 't' a wide text table, 'c' the same in click format, 'b' the
// discrete pair of StateDataSetBV, 'r' the ratio pair; the texts follow, cut at NUL bytes.
#include "FuzzHarness.h"
#include "RatioExperDataSetReal.h"
#include "StateDataSetBV.h"
#include "StateDataSetReal.h"
#include "VarUniverse.h"

#include <cstring>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1)
        return 0;
    fuzz_run([&] {
        static VarUniverse* universe = [] {
            VarUniverse* u = new VarUniverse();
            u->init_idspace(8);
            return u;
        }();
        const char kind = static_cast<char>(data[0]);
        const std::vector<std::string> t = fuzz_split(data + 1, size - 1, 4);
        std::istringstream a(t[0]), b(t[1]), c(t[2]), d(t[3]);
        StateDataSetReal ds(*universe);
        switch (kind) {
        case 'p':
            ds.read(a, b, 0.5f);
            break;
        case 'm':
            ds.read_multi(a, b, c, d, 0.0f);
            break;
        case 'x': {
            int32_t cols = 0;
            if (size >= 5)
                std::memcpy(&cols, data + 1, 4);
            std::istringstream m(
                std::string(reinterpret_cast<const char*>(data), size).substr(size >= 5 ? 5 : 1));
            ds.read_mat(m, cols);
            break;
        }
        case 't':
        case 'c': {
            std::map<std::string, std::string> params{{"file", fuzz_file("wide.txt", t[0])}};
            if (kind == 'c')
                params["click_format"] = "1";
            // Optional parameters, as key=value lines of the second text.
            std::string line;
            while (std::getline(b, line))
                if (line.find('=') != std::string::npos)
                    params[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
            ds.read_txt(params, 1);
            break;
        }
        case 'b': {
            StateDataSetBV bv(*universe, 3);
            bv.read(a, b, 0.5f);
            bv.verify();
            break;
        }
        case 'r': {
            RatioExperDataSetReal ratio(*universe);
            ratio.read(a, b, 0.0f);
            break;
        }
        default:
            break;
        }
    });
    return 0;
}
