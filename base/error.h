// The fatal error path: VESK_FATAL writes "<source>(<line>): <message>" on the error channel and crashes.
#ifndef VESK_BASE_ERROR_H
#define VESK_BASE_ERROR_H

#include "init.h"
#include "modes.h"

#include <ostream>

// `src` is the file's source name, a literal constant per file (never __FILE__);
// `msg` is any chain of stream insertions.
#define VESK_FATAL(src, msg)                                                                                 \
    do {                                                                                                     \
        ActiveMode* vesk_em_ = get_error_mode();                                                             \
        if (vesk_em_->m_log >= 1) {                                                                          \
            *vesk_em_->m_stream << (src) << "(" << __LINE__ << "): " << msg << std::endl;                    \
        }                                                                                                    \
        base_crash();                                                                                        \
    } while (0)

#endif
