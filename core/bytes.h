// Internal byte helpers: unaligned little-endian loads and stores, copies,
// XOR and wiping. Caller buffers may have any alignment, so every multi-byte
// access goes through these. Not part of the public interface.
#ifndef KORVEX_ENCODING_BYTES_H
#define KORVEX_ENCODING_BYTES_H

#include <stddef.h>
#include <stdint.h>

namespace kx {

// x86-64 is little-endian; __builtin_memcpy of a constant size compiles to a
// single unaligned move.
inline uint32_t load32(const void* p) { uint32_t v; __builtin_memcpy(&v, p, 4); return v; }
inline uint64_t load64(const void* p) { uint64_t v; __builtin_memcpy(&v, p, 8); return v; }
inline uint16_t load16(const void* p) { uint16_t v; __builtin_memcpy(&v, p, 2); return v; }
inline void store32(void* p, uint32_t v) { __builtin_memcpy(p, &v, 4); }
inline void store64(void* p, uint64_t v) { __builtin_memcpy(p, &v, 8); }
inline void store16(void* p, uint16_t v) { __builtin_memcpy(p, &v, 2); }

inline uint32_t load32_be(const void* p) { return __builtin_bswap32(load32(p)); }
inline uint64_t load64_be(const void* p) { return __builtin_bswap64(load64(p)); }
inline void store32_be(void* p, uint32_t v) { store32(p, __builtin_bswap32(v)); }
inline void store64_be(void* p, uint64_t v) { store64(p, __builtin_bswap64(v)); }

inline void copy(void* dst, const void* src, size_t n) {
    unsigned char* d = static_cast<unsigned char*>(dst);
    const unsigned char* s = static_cast<const unsigned char*>(src);
    for (; n >= 8; n -= 8, d += 8, s += 8) store64(d, load64(s));
    for (; n; --n) *d++ = *s++;
}

inline void fill(void* dst, unsigned char v, size_t n) {
    unsigned char* d = static_cast<unsigned char*>(dst);
    for (; n; --n) *d++ = v;
}

// dst ^= src, byte by byte in memory order.
inline void xor_into(void* dst, const void* src, size_t n) {
    unsigned char* d = static_cast<unsigned char*>(dst);
    const unsigned char* s = static_cast<const unsigned char*>(src);
    for (; n >= 8; n -= 8, d += 8, s += 8) store64(d, load64(d) ^ load64(s));
    for (; n; --n) *d++ ^= *s++;
}

// True when the two ranges hold the same bytes; time depends on n only.
inline bool equal(const void* a, const void* b, size_t n) {
    const unsigned char* x = static_cast<const unsigned char*>(a);
    const unsigned char* y = static_cast<const unsigned char*>(b);
    unsigned char acc = 0;
    for (size_t i = 0; i < n; ++i) acc |= static_cast<unsigned char>(x[i] ^ y[i]);
    return acc == 0;
}

// Overwrites secrets; the volatile stores cannot be dropped as dead. Whole
// 64-bit words are stored where the address allows (stack copies of keys and
// states always do), octets elsewhere.
inline void wipe(void* p, size_t n) {
    unsigned char* b = static_cast<unsigned char*>(p);
    if ((reinterpret_cast<uintptr_t>(b) & 7) == 0) {
        volatile uint64_t* w = reinterpret_cast<volatile uint64_t*>(b);
        for (size_t k = n / 8; k; --k) *w++ = 0;
        b += n & ~size_t{7};
        n &= 7;
    }
    volatile unsigned char* d = b;
    for (; n; --n) *d++ = 0;
}

template <class T>
inline void wipe_obj(T& obj) { wipe(&obj, sizeof(T)); }

}  // namespace kx

#endif
