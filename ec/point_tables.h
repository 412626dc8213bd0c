// Builders of the 256-entry precomputed point tables (entry = x then y, each
// little-endian, 64 bytes). Shared by the exported builders and by the
// build-time generator of p_table, so both produce the same bytes.
#ifndef KORVEX_EC_POINT_TABLES_H
#define KORVEX_EC_POINT_TABLES_H

#include "ec/curves_2001.h"
#include "ec/point.h"

namespace kx {
namespace ec {

constexpr unsigned kTableEntries = 256;
constexpr unsigned kTableBytes = kTableEntries * 64;

inline void put_entry(unsigned char* table, unsigned i, const bn::Num<4>& x, const bn::Num<4>& y) {
    bn::store(table + 64 * i, x);
    bn::store(table + 64 * i + 32, y);
}

// Entry i = 2^i * P.
inline void build_2P_table(unsigned char* table, const Curve256& c) {
    bn::Num<4> x = c.x, y = c.y;
    put_entry(table, 0, x, y);
    for (unsigned i = 1; i < kTableEntries; ++i) {
        dbl<4>(x, y, c.a, c.p);
        put_entry(table, i, x, y);
    }
}

// Entry i = (2i + 1) * P, each computed from P afresh.
inline void build_odd_table(unsigned char* table, const Curve256& c) {
    put_entry(table, 0, c.x, c.y);
    for (unsigned i = 1; i < kTableEntries; ++i) {
        bn::Num<4> x, y;
        mul_k<4>(bn::from_u64<4>(2 * i + 1), c.x, c.y, x, y, c.a, c.p);
        put_entry(table, i, x, y);
    }
}

// Comb with eight teeth 32 bits apart: entry b = sum of G_j = 2^(32j) * P over
// the set bits j of b (entry 0 is infinity).
inline void build_comb_table(unsigned char* table, const Curve256& c) {
    bn::Num<4> gx[8], gy[8];
    for (unsigned j = 0; j < 8; ++j) {
        bn::Num<4> k{};
        k.w[j / 2] = uint64_t(1) << (32 * (j % 2));
        mul_k<4>(k, c.x, c.y, gx[j], gy[j], c.a, c.p);
    }
    for (unsigned b = 0; b < kTableEntries; ++b) {
        bn::Num<4> x{}, y{};
        for (unsigned j = 0; j < 8; ++j)
            if ((b >> j) & 1) add<4>(x, gx[j], y, gy[j], c.a, c.p);
        put_entry(table, b, x, y);
    }
}

}  // namespace ec
}  // namespace kx

#endif
