// CRC-32 (ISO-HDLC, IEEE 802.3): reflected polynomial 0xEDB88320, register
// preset to all ones, complemented at the end.
#include "CRC32.h"
#include "encoding/bytes.h"
#include "encoding/crc32_table.h"

namespace {

inline uint32_t byte_step(uint32_t reg, unsigned char b) {
    return (reg >> 8) ^ kx::kCrc32.t[0][(reg ^ b) & 0xFF];
}

// The raw register over data with the table, eight bytes at a time (slicing
// by eight: the register meets the next eight bytes at once).
uint32_t update(uint32_t reg, const unsigned char* data, size_t len) {
    const auto& t = kx::kCrc32.t;
    for (; len >= 8; len -= 8, data += 8) {
        uint64_t v = kx::load64(data) ^ reg;
        reg = t[7][v & 0xFF] ^ t[6][(v >> 8) & 0xFF] ^ t[5][(v >> 16) & 0xFF] ^ t[4][(v >> 24) & 0xFF] ^
              t[3][(v >> 32) & 0xFF] ^ t[2][(v >> 40) & 0xFF] ^ t[1][(v >> 48) & 0xFF] ^ t[0][v >> 56];
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
