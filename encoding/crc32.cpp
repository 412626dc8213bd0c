// CRC-32 (ISO-HDLC, IEEE 802.3): reflected polynomial 0xEDB88320, register
// preset to all ones, complemented at the end.
#include "CRC32.h"
#include "core/bytes.h"
#include "encoding/crc32_table.h"

namespace {

inline uint32_t byte_step(uint32_t reg, unsigned char b) {
    return (reg >> 8) ^ kx::kCrc32.t[0][(reg ^ b) & 0xFF];
}

// The raw register over data with the table, sixteen bytes at a time
// (slicing: the register meets the next sixteen bytes at once, each byte
// through the row that accounts for the bytes after it).
uint32_t update(uint32_t reg, const unsigned char* data, size_t len) {
    const auto& t = kx::kCrc32.t;
    for (; len >= 16; len -= 16, data += 16) {
        const uint64_t v = kx::load64(data) ^ reg, w = kx::load64(data + 8);
        reg = t[15][v & 0xFF] ^ t[14][(v >> 8) & 0xFF] ^ t[13][(v >> 16) & 0xFF] ^ t[12][(v >> 24) & 0xFF] ^
              t[11][(v >> 32) & 0xFF] ^ t[10][(v >> 40) & 0xFF] ^ t[9][(v >> 48) & 0xFF] ^ t[8][v >> 56] ^
              t[7][w & 0xFF] ^ t[6][(w >> 8) & 0xFF] ^ t[5][(w >> 16) & 0xFF] ^ t[4][(w >> 24) & 0xFF] ^
              t[3][(w >> 32) & 0xFF] ^ t[2][(w >> 40) & 0xFF] ^ t[1][(w >> 48) & 0xFF] ^ t[0][w >> 56];
    }
    for (; len; --len) reg = byte_step(reg, *data++);
    return reg;
}

}  // namespace

KORVEX_API unsigned int CRC32_block(unsigned char* data, unsigned int len) {
    uint32_t reg = 0xFFFFFFFFu;
    for (unsigned int i = 0; i < len; ++i) {
        reg ^= data[i];
        for (int b = 0; b < 8; ++b) reg = kx::crc32_bit_step(reg);
    }
    return ~reg;
}

KORVEX_API unsigned int CRC32_block_lookup(unsigned char* data, unsigned int len) {
    return ~update(0xFFFFFFFFu, data, len);
}

KORVEX_API unsigned int CRC32_stream(unsigned int* reg, unsigned char* data, unsigned int len) {
    const uintptr_t r = reinterpret_cast<uintptr_t>(reg), d = reinterpret_cast<uintptr_t>(data);
    if (len == 0) return 0;
    if (r + 4 <= d || d + len <= r) {
        kx::store32(reg, update(kx::load32(reg), data, len));
        return 0;
    }
    // The register lies inside the data: it is stored after every byte, as a
    // byte-serial loop does, and the bytes after it see each stored value.
    uint32_t v = kx::load32(reg);
    for (unsigned int i = 0; i < len; ++i) {
        v = byte_step(v, data[i]);
        kx::store32(reg, v);
    }
    return 0;
}
