// CRC-32 (ISO-HDLC, IEEE 802.3): reflected polynomial 0xEDB88320, register
// preset to all ones, complemented at the end.
#include "CRC32.h"
#include "encoding/bytes.h"
#include "encoding/crc32_table.h"

namespace {

inline uint32_t byte_step(uint32_t reg, unsigned char b) {
    return (reg >> 8) ^ kx::kCrc32.t[0][(reg ^ b) & 0xFF];
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
    const auto& t = kx::kCrc32.t;
    uint32_t reg = 0xFFFFFFFFu;
    // Slicing by eight: the register meets the next eight bytes at once.
    for (; len >= 8; len -= 8, data += 8) {
        uint64_t v = kx::load64(data) ^ reg;
        reg = t[7][v & 0xFF] ^ t[6][(v >> 8) & 0xFF] ^ t[5][(v >> 16) & 0xFF] ^ t[4][(v >> 24) & 0xFF] ^
              t[3][(v >> 32) & 0xFF] ^ t[2][(v >> 40) & 0xFF] ^ t[1][(v >> 48) & 0xFF] ^ t[0][v >> 56];
    }
    for (; len; --len) reg = byte_step(reg, *data++);
    return ~reg;
}

KORVEX_API unsigned int CRC32_stream(unsigned int* reg, unsigned char* data, unsigned int len) {
    // The register is stored after every byte, as a byte-serial loop does;
    // a register placed inside the data is thus seen by the bytes after it.
    uint32_t r = kx::load32(reg);
    for (unsigned int i = 0; i < len; ++i) {
        r = byte_step(r, data[i]);
        kx::store32(reg, r);
    }
    return 0;
}
