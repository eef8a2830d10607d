// Log-space arithmetic in single precision.
#include "LogSpace.h"

float log_one_minus(float p) {
    if (static_cast<double>(p) < 0.001)
        return -p;
    return logf(1.0f - p);
}

float log_one_minus_exp(float l) { return logf(1.0f - expf(l)); }
