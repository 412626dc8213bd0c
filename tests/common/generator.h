// The library's generator in tests: seeding from a number, clearing it (every
// draw then fails until the next seed), and the blocks a seed gives.
#ifndef KORVEX_TESTS_GENERATOR_H
#define KORVEX_TESTS_GENERATOR_H

#include <algorithm>
#include <string>
#include <vector>

#include "PRNG.h"
#include "common/test_util.h"

namespace kt {

inline void seed(uint64_t n = 1) {
    Bytes s = Rng(n).bytes(40);
    PRNG_init(s.data());
}
inline void unseed() { std::fill(PRNG_get_RAND_ptr(), PRNG_get_RAND_ptr() + 40, 0); }

// The n 32-octet blocks the generator gives after seed(s), as hex; the
// generator is seeded with s again for the code under test.
inline std::vector<std::string> draws(uint64_t s, int n) {
    seed(s);
    std::vector<std::string> d;
    for (type_uN<32> b; n-- > 0 && PRNG_get(&b) == 0;) d.push_back(to_hex(b.b, 32));
    seed(s);
    return d;
}

}  // namespace kt

#endif
