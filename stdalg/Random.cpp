// Random: generator steps in 32-bit signed arithmetic (Schrage's method keeps them in range).
#include "Random.h"

#include <cstdlib>
#include <ctime>

namespace {
constexpr int M1 = 2147483563, A1 = 40014, Q1 = 53668, R1 = 12211;
constexpr int M2 = 2147483399, A2 = 40692, Q2 = 52774, R2 = 3791;
constexpr int M1_1 = 2147483562;
constexpr int D = 67108862;
} // namespace

int Random::state1 = 0;
int Random::state2 = 0;
int Random::prev = 0;
int Random::table[32] = {};
int Random::bits_num = 0;
std::uint32_t Random::bits_data = 0;

int Random::time_seed() { return static_cast<int>(std::time(nullptr)); }

void Random::reset(int seed) {
    if (seed == -1)
        seed = time_seed();
    int s = seed == 0 ? 1 : std::abs(seed);
    state1 = state2 = s;
    for (int j = 39; j >= 0; --j) {
        const int k = s / Q1;
        s = A1 * (s - k * Q1) - k * R1;
        if (s < 0)
            s += M1;
        if (j < 32)
            table[j] = s;
    }
    prev = table[0];
    state1 = s;
}

std::uint32_t Random::bits() {
    int k = state1 / Q1;
    state1 = A1 * (state1 - k * Q1) - k * R1;
    if (state1 < 0)
        state1 += M1;
    k = state2 / Q2;
    state2 = A2 * (state2 - k * Q2) - k * R2;
    if (state2 < 0)
        state2 += M2;
    const int j = prev / D;
    prev = table[j] - state2;
    table[j] = state1;
    if (prev < 1)
        prev += M1_1;
    const std::uint32_t p = static_cast<std::uint32_t>(prev);
    return p ^ (p << 16);
}

std::uint32_t Random::bits(int n) {
    if (bits_num < n) {
        bits_data = bits();
        bits_num = 32;
    }
    const std::uint32_t out = n >= 32 ? bits_data : (bits_data & ((std::uint32_t(1) << n) - 1));
    bits_data = n >= 32 ? 0 : (bits_data >> n);
    bits_num -= n;
    return out;
}

bool Random::boolean() {
    if (bits_num == 0) {
        bits_data = bits();
        bits_num = 32;
    }
    const bool out = bits_data & 1u;
    bits_data >>= 1;
    --bits_num;
    return out;
}
