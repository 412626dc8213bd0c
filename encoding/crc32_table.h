// Tables of the reflected CRC-32 polynomial 0xEDB88320, built at compile
// time. Row 0 is the standard byte-wise table (entry 1 = 0x77073096); row j
// advances a byte through j further zero bytes, for slicing by sixteen.
#ifndef KORVEX_ENCODING_CRC32_TABLE_H
#define KORVEX_ENCODING_CRC32_TABLE_H

#include <stdint.h>

namespace kx {

constexpr uint32_t kCrc32Poly = 0xEDB88320u;

// reg >> 1, XOR the polynomial when the bit shifted out was 1. Written as a
// select, which compiles to a conditional move: shorter latency than a mask.
constexpr uint32_t crc32_bit_step(uint32_t reg) {
    const uint32_t s = reg >> 1;
    return (reg & 1u) ? s ^ kCrc32Poly : s;
}

struct Crc32Tables {
    uint32_t t[16][256];
};

constexpr Crc32Tables make_crc32_tables() {
    Crc32Tables r{};
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t reg = i;
        for (int b = 0; b < 8; ++b) reg = crc32_bit_step(reg);
        r.t[0][i] = reg;
    }
    for (int j = 1; j < 16; ++j)
        for (uint32_t i = 0; i < 256; ++i)
            r.t[j][i] = (r.t[j - 1][i] >> 8) ^ r.t[0][r.t[j - 1][i] & 0xFF];
    return r;
}

inline constexpr Crc32Tables kCrc32 = make_crc32_tables();
static_assert(kCrc32.t[0][1] == 0x77073096u, "standard CRC-32 table");

}  // namespace kx

#endif
