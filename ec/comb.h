// Fixed-base tables of the built-in curves, computed at build time by
// ec/gen/comb_gen.cpp: entry [i][d - 1] = d * 16^i * G (d = 1..15) in affine
// Montgomery form, x then y. A scalar's 4-bit digit at window i selects one
// entry per window, so k * G is a sum of 64W/4 table points, no doubling.
#ifndef KORVEX_EC_COMB_H
#define KORVEX_EC_COMB_H

#include <stdint.h>

namespace kx {
namespace ec {

template <unsigned W>
using CombTable = uint64_t[16 * W][15][2][W];

// [0..3] = CryptoPro-A, -B, -C and the test curve; [0..1] = paramSetA, -B.
extern const CombTable<4> kComb256[4];
extern const CombTable<8> kComb512[2];

}  // namespace ec
}  // namespace kx

#endif
