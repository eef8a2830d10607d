// Fuzzer of the tool's gene set table: whole runs of vesk on the bundled tables with the input as
// SetsOrfs (two bootstrap passes, one thread).
#include "FuzzHarness.h"
#include "VeskRun.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string opt = [] {
        const std::string d = std::string(VESK_SOURCE_DIR) + "/data/vesk/";
        return fuzz_file("run.opt", "[Random]\nSeed = 7\n[Tables]\nvarob = " + d +
                                        "varob.tab\nChipOrfs = " + d + "chip.txt\nGoTypeTab = " + d +
                                        "gotype.tab\ngoclskey = " + d + "clskey.tab\nclsassoc = " + d +
                                        "clsassoc.tab\nSetsOrfs = " + fuzz_file("sets.tab", "") +
                                        "\nAnnotReport = " + fuzz_file("report", "") +
                                        "\n[Vesk]\nBootstrapNum = 2\nMinClsSize = 1\nMaxClsSize = 100\n"
                                        "MinClsInter = 1\nMaxPvToRep = 0.5\nFilterRedPVThres = 0.01\n");
    }();
    fuzz_file("sets.tab", std::string(reinterpret_cast<const char*>(data), size));
    fuzz_run([&] {
        char arg0[] = "vesk";
        std::string path = opt;
        char* argv[] = {arg0, &path[0], nullptr};
        VeskRunSettings settings;
        vesk_main(2, argv, settings);
    });
    return 0;
}
