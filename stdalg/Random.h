// Random: the process-wide random source, L'Ecuyer's combined generator with a Bays-Durham shuffle.
#ifndef VESK_STDALG_RANDOM_H
#define VESK_STDALG_RANDOM_H

#include <cstdint>

class Random {
public:
    // Seeds the generator; -1 takes the clock, 0 acts as 1, a negative seed as its absolute value.
    static void reset(int seed);
    // 32 pseudo-random bits.
    static std::uint32_t bits();
    // `n` bits (1..32) from a reservoir refilled with bits() when it runs short.
    static std::uint32_t bits(int n);
    // One bit from the reservoir.
    static bool boolean();
    // The clock in seconds.
    static int time_seed();

    // Reservoir state, exposed for checks.
    static int reservoir_bits() { return bits_num; }

private:
    static int state1;
    static int state2;
    static int prev;
    static int table[32];
    static int bits_num;
    static std::uint32_t bits_data;
};

#endif
