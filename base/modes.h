// ActiveMode: one diagnostic channel (error or trace) configured from the environment.
#ifndef VESK_BASE_MODES_H
#define VESK_BASE_MODES_H

#include <ostream>

class ActiveMode {
public:
    // Names of the environment variables for m_out, m_log and the stream, with their defaults.
    ActiveMode(const char* out_var, int out_default, const char* log_var, int log_default,
               const char* stream_var, std::ostream* stream_default);
    ~ActiveMode();

    // Copies are a programming error: they print a panic line and exit with status 1.
    ActiveMode(const ActiveMode&);
    ActiveMode& operator=(const ActiveMode&);

    bool is_on() const { return m_log >= 1; }

    int m_out;
    int m_log;
    std::ostream* m_stream;
};

ActiveMode* get_error_mode();
ActiveMode* get_trace_mode();
bool* get_dbg_mode();

#endif
