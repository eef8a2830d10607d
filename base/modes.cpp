// ActiveMode construction from the BASE_ environment variables, and the process-wide channels.
#include "modes.h"

#include "init.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>

namespace {

int env_int(const char* var, int def) {
    const char* text = var ? std::getenv(var) : nullptr;
    if (!text)
        return def;
    return static_cast<int>(std::strtol(text, nullptr, 10));
}

std::ostream* env_stream(const char* var, std::ostream* def) {
    const char* text = var ? std::getenv(var) : nullptr;
    if (!text)
        return def;
    if (std::strcmp(text, "out") == 0 || std::strcmp(text, "OUT") == 0)
        return &std::cout;
    if (std::strcmp(text, "err") == 0 || std::strcmp(text, "ERR") == 0)
        return &std::cerr;
    // A file that cannot be opened leaves a failed stream: output is lost quietly.
    return new std::ofstream(text, std::ios::out | std::ios::trunc);
}

} // namespace

ActiveMode::ActiveMode(const char* out_var, int out_default, const char* log_var, int log_default,
                       const char* stream_var, std::ostream* stream_default)
    : m_out(env_int(out_var, out_default)), m_log(env_int(log_var, log_default)),
      m_stream(env_stream(stream_var, stream_default)) {}

ActiveMode::~ActiveMode() {
    if (m_stream && m_stream != &std::cout && m_stream != &std::cerr)
        delete m_stream;
}

ActiveMode::ActiveMode(const ActiveMode&) : m_out(0), m_log(0), m_stream(nullptr) {
    std::cerr << "PANIC: ActiveMode::ActiveMode called" << std::endl;
    std::exit(1);
}

ActiveMode& ActiveMode::operator=(const ActiveMode&) {
    std::cerr << "PANIC: ActiveMode::operator= called" << std::endl;
    std::exit(1);
}

// The channels are function-local statics so that static initialisation order cannot bite.
// The exit hook runner is registered before either channel is built, so at process end the
// channels are destroyed first and the hooks run after them (a hook must not use them).
ActiveMode* get_error_mode() {
    static const bool runner = base_register_exit_runner();
    static ActiveMode mode("BASE_ERR_OUT", 1, "BASE_ERR_LOG", 1, "BASE_ERR_ACT", &std::cerr);
    (void)runner;
    return &mode;
}

ActiveMode* get_trace_mode() {
    get_error_mode();
    static ActiveMode mode("BASE_TRC_OUT", 1, "BASE_TRC_LOG", 1, "BASE_TRC_ACT", &std::cerr);
    return &mode;
}

bool* get_dbg_mode() {
    static bool base_dbg_mode = false;
    return &base_dbg_mode;
}
