// The harness side of the fuzzers: the system's fatal as a clean return, quiet diagnostics, and the
// cutting of one fuzz input into the several streams a reader takes.
#ifndef VESK_TESTS_FUZZ_FUZZHARNESS_H
#define VESK_TESTS_FUZZ_FUZZHARNESS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Thrown by the harness build's base_crash (wrapped at link time): a fatal of the system, which
// ends one input cleanly. Nothing in the libraries catches it.
struct FuzzFatal {};

// Runs `f`; a fatal of the system is a clean return. Any other abort, signal or sanitizer report
// stays a crash.
template <class F> void fuzz_run(F f) {
    try {
        f();
    } catch (const FuzzFatal&) {
    }
}

// The input cut at NUL bytes into exactly `parts` texts (missing ones empty, the last one takes the rest).
std::vector<std::string> fuzz_split(const uint8_t* data, size_t size, int parts);

// Writes `text` to a file named `name` in the harness's scratch folder and returns the path.
std::string fuzz_file(const std::string& name, const std::string& text);

#endif
