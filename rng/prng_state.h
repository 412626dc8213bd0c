// The generator's process-wide state and its internal step, shared by
// PRNG_get and the seeding self-test.
#ifndef KORVEX_RNG_PRNG_STATE_H
#define KORVEX_RNG_PRNG_STATE_H

#include <stddef.h>
#include <stdint.h>

#include "rng/spin_lock.h"

namespace kx {

constexpr size_t kPrngStateSize = 40;   // 32-byte key, then 8-byte synchro
constexpr size_t kPrngOutput = 32;
constexpr size_t kPrngTestBuffer = 1024;

// Zero-initialised: all zero is "not seeded".
extern unsigned char prng_state[kPrngStateSize];
// Generator output under test during PRNG_init; cleared when the test passes.
extern unsigned char prng_test_buffer[kPrngTestBuffer];
// Guards prng_state and prng_test_buffer for PRNG_get and PRNG_init.
extern SpinLock prng_lock;

// True when any of the ten 32-bit words of the state is non-zero.
bool prng_seeded();

// One step with key erasure; the caller holds prng_lock. Returns 1 (and
// writes nothing) when the state is all zero, else writes 32 bytes and
// returns 0.
int prng_step(unsigned char* out);

}  // namespace kx

#endif
