// Values of N 64-bit words, least significant first, as both hashes hold
// them: 256-bit for GOST R 34.11-94 (N = 4), 512-bit for 34.11-2012 (N = 8).
// Caller bytes are read and written little-endian at any alignment.
#ifndef KORVEX_HASH_WORDS_H
#define KORVEX_HASH_WORDS_H

#include <stdint.h>

#include "core/bytes.h"

namespace kx {
namespace words {

template <int N>
struct Words {
    uint64_t w[N];
};

template <int N>
inline void load(Words<N>& v, const void* p) {
    const unsigned char* s = static_cast<const unsigned char*>(p);
    for (int i = 0; i < N; ++i) v.w[i] = load64(s + 8 * i);
}

template <int N>
inline void store(void* p, const Words<N>& v) {
    unsigned char* d = static_cast<unsigned char*>(p);
    for (int i = 0; i < N; ++i) store64(d + 8 * i, v.w[i]);
}

template <int N>
inline void xor_to(Words<N>& r, const Words<N>& a, const Words<N>& b) {
    for (int i = 0; i < N; ++i) r.w[i] = a.w[i] ^ b.w[i];
}

// r := a + b mod 2^(64 N); r may be a or b.
template <int N>
inline void add_to(Words<N>& r, const Words<N>& a, const Words<N>& b) {
    unsigned carry = 0;
    for (int i = 0; i < N; ++i) {
        unsigned __int128 s = static_cast<unsigned __int128>(a.w[i]) + b.w[i] + carry;
        r.w[i] = static_cast<uint64_t>(s);
        carry = static_cast<unsigned>(s >> 64);
    }
}

}  // namespace words
}  // namespace kx

#endif
