// vesk: enrichment of gene sets in annotation classes, corrected by a randomisation bootstrap.
#include "VeskRun.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

// VESK_BOOTSTRAP=reference selects the straightforward class-by-class bootstrap; both paths give
// the same report. VESK_THREADS sets the threads of the fast path (default: the machine's cores, at
// most 16).
VeskRunSettings settings_from_environment() {
    VeskRunSettings s;
    const char* path = std::getenv("VESK_BOOTSTRAP");
    s.reference_bootstrap = path && std::string(path) == "reference";
    const char* threads = std::getenv("VESK_THREADS");
    if (threads && std::atoi(threads) > 0) {
        s.threads = std::atoi(threads);
    } else {
        const unsigned hw = std::thread::hardware_concurrency();
        s.threads = hw > 0 ? static_cast<int>(std::min(hw, 16u)) : 1;
    }
    return s;
}

} // namespace

int main(int argc, char** argv) { return vesk_main(argc, argv, settings_from_environment()); }
