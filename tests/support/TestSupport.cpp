// Test helpers.
#include "TestSupport.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <unistd.h>
#include <vector>

TempDir::TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string templ = std::string(base && *base ? base : "/tmp") + "/vesk_test_XXXXXX";
    std::vector<char> buf(templ.begin(), templ.end());
    buf.push_back('\0');
    if (!mkdtemp(buf.data()))
        throw std::runtime_error("mkdtemp failed");
    m_path = buf.data();
}

TempDir::~TempDir() {
    std::string cmd = "rm -rf '" + m_path + "'";
    if (std::system(cmd.c_str()) != 0) {
        // Nothing useful to do in a destructor.
    }
}

std::string TempDir::write(const std::string& name, const std::string& text) const {
    const std::string p = m_path + "/" + name;
    std::ofstream out(p.c_str(), std::ios::binary);
    out << text;
    return p;
}

std::string read_file(const std::string& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::uint32_t test_seed(std::uint32_t fallback) {
    const char* s = std::getenv("VESK_TEST_SEED");
    return s ? static_cast<std::uint32_t>(std::strtoul(s, nullptr, 10)) : fallback;
}

std::string source_dir() {
#ifdef VESK_SOURCE_DIR
    return VESK_SOURCE_DIR;
#else
    return ".";
#endif
}
