// Test helpers: temporary directories, files from inline text, seeds printed on failure.
#ifndef VESK_TESTS_SUPPORT_TESTSUPPORT_H
#define VESK_TESTS_SUPPORT_TESTSUPPORT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

// A fresh directory under the system temp folder, removed with its files on destruction.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    // Writes `text` to `name` inside the directory and returns the full path.
    std::string write(const std::string& name, const std::string& text) const;

private:
    std::string m_path;
};

std::string read_file(const std::string& path);

// Seed for a randomised test: VESK_TEST_SEED if set, else a fixed default. Tests pass it to
// SCOPED_TRACE so that a failure prints it.
std::uint32_t test_seed(std::uint32_t fallback = 12345);

// Runs f with the error stream captured and returns what it printed.
template <class F> std::string quiet(F f) {
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

// Passes when |got - want| is within rel * |want| or abs_floor, whichever is larger.
inline ::testing::AssertionResult near_rel(double got, long double want, double rel, double abs_floor) {
    const long double diff = got > want ? got - want : want - got;
    const long double w = want < 0 ? -want : want;
    if (diff <= (abs_floor > rel * w ? abs_floor : rel * w))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << got << " want " << static_cast<double>(want);
}

// Repository root (where data/ lives).
std::string source_dir();

#endif
