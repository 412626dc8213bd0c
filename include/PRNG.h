// The library's pseudo-random generator: GOST 28147-89 in CFB mode over a
// 40-byte process-wide state (32-byte key, then 8-byte synchro), seeded by the
// caller and checked by a statistical self-test at seeding. The library
// gathers no entropy: the seed must come from a good source.
//
// Every step and every seeding runs under an internal spin lock, so concurrent
// callers never receive the same output.
#ifndef KORVEX_PRNG_H
#define KORVEX_PRNG_H

#include "korvex_types.h"

// Copies 40 seed bytes (key, then synchro) into the state and runs the
// self-test, up to five attempts. 0: passed; 3: failed five times (the state
// stays seeded and advanced). An all-zero seed leaves the generator unseeded
// and gives 3.
KORVEX_API int PRNG_init(unsigned char* seed);

// Writes 32 random bytes. 0: written; 1: never seeded (state all zero);
// 2: out is null. On 1 and 2 nothing is written and the state is unchanged.
KORVEX_API int PRNG_get(KORVEX_UN(32)* out);

// The 40-byte state itself (key, then synchro), for reading or setting it
// directly. Access through this pointer bypasses the lock.
KORVEX_API unsigned char* PRNG_get_RAND_ptr();

#endif
