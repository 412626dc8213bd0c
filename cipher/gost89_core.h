// GOST 28147-89 core for use inside the library: the constant-time round
// function, the three cycles of the standard on a key held in locals, and the
// selector-to-table mapping. The exported functions in gost89_*.cpp are thin
// wrappers over these; the GOST R 34.11-94 step and the generator call them
// directly.
#ifndef KORVEX_CIPHER_GOST89_CORE_H
#define KORVEX_CIPHER_GOST89_CORE_H

#include <stddef.h>
#include <stdint.h>

#include "core/bytes.h"

namespace kx {

// Algebraic normal form of all eight S-boxes: w[m] is the coefficient of the
// monomial whose variables are the set bits of m, nibble k for S-box K(k+1).
// w[15] is always zero (a 4-bit permutation has degree at most 3).
struct alignas(64) Gost89Table {
    uint32_t w[16];
};

// Six parameter sets, in this order.
enum Gost89Set : unsigned {
    kGost89CryptoProA = 0,
    kGost89R3411CryptoPro = 1,
    kGost89CryptoProB = 2,
    kGost89CryptoProC = 3,
    kGost89CryptoProD = 4,
    kGost89ParamZ = 5,
};
extern const Gost89Table gost89_tables[6];

// Selector of the public interface: 1 hash set, 4 B, 5 C, 6 D, 7 Z; every
// other value, including 0, 2 and 3, is CryptoPro-A.
inline const Gost89Table& gost89_table(unsigned char sbox) {
    switch (sbox) {
        case 1: return gost89_tables[kGost89R3411CryptoPro];
        case 4: return gost89_tables[kGost89CryptoProB];
        case 5: return gost89_tables[kGost89CryptoProC];
        case 6: return gost89_tables[kGost89CryptoProD];
        case 7: return gost89_tables[kGost89ParamZ];
        default: return gost89_tables[kGost89CryptoProA];
    }
}

// Eight subkeys K0..K7 read from the little-endian key bytes.
struct Gost89Key {
    uint32_t k[8];
};

inline Gost89Key gost89_key(const void* key) {
    const unsigned char* p = static_cast<const unsigned char*>(key);
    Gost89Key r;
    for (int i = 0; i < 8; ++i) r.k[i] = load32(p + 4 * i);
    return r;
}

inline void gost89_wipe(Gost89Key& key) { wipe(&key, sizeof key); }

// Reads an optional synchro/IV: null is the zero block.
inline uint64_t gost89_block_or_zero(const void* p) { return p ? load64(p) : 0; }

// f(s): all eight S-boxes evaluated from the ANF by masks, then the 11-bit
// rotation. No memory access depends on s, and no branch: the timing is the
// same for every key and data. V is uint32_t for one block, or a GCC vector
// of 32-bit lanes for several blocks at once (gost89_lanes.cpp).
template <class V>
__attribute__((always_inline)) inline V gost89_f_lanes(V s, const V* w) {
    // Bit j of every nibble, spread over its nibble (0x1 -> 0xF, 0x0 -> 0x0);
    // the addition never carries out of a nibble.
    const V x0 = ((s & 0x11111111u) + 0x77777777u) ^ 0x77777777u;
    const V x1 = (((s >> 1) & 0x11111111u) + 0x77777777u) ^ 0x77777777u;
    const V x2 = (((s >> 2) & 0x11111111u) + 0x77777777u) ^ 0x77777777u;
    const V x3 = (((s >> 3) & 0x11111111u) + 0x77777777u) ^ 0x77777777u;
    const V x01 = x0 & x1;
    const V c0 = w[0] ^ (x0 & w[1]) ^ (x1 & w[2]) ^ (x01 & w[3]);
    const V c2 = w[4] ^ (x0 & w[5]) ^ (x1 & w[6]) ^ (x01 & w[7]);
    const V c3 = w[8] ^ (x0 & w[9]) ^ (x1 & w[10]) ^ (x01 & w[11]);
    const V c23 = w[12] ^ (x0 & w[13]) ^ (x1 & w[14]);
    const V y = c0 ^ (x2 & (c2 ^ (x3 & c23))) ^ (x3 & c3);
    return (y << 11) | (y >> 21);
}

__attribute__((always_inline)) inline uint32_t gost89_f(uint32_t s, const uint32_t* w) {
    return gost89_f_lanes<uint32_t>(s, w);
}

// The halves live in a (N1) and b (N2). One round computes
// N1' = f(N1 + K) ^ N2, N2' = N1; writing the result over N2 and swapping the
// roles of a and b from round to round avoids moving the halves. Eight
// rounds take K0..K7 (Up) or K7..K0.
template <class V, bool Up>
__attribute__((always_inline)) inline void gost89_eight(V& a, V& b, const V* k, const V* w) {
    for (int i = 0; i < 8; i += 2) {
        b ^= gost89_f_lanes<V>(a + k[Up ? i : 7 - i], w);
        a ^= gost89_f_lanes<V>(b + k[Up ? i + 1 : 6 - i], w);
    }
}

// 32-Z: K0..K7 three times, K7..K0 once; 32-R: K0..K7 once, K7..K0 three
// times. The caller exchanges the halves afterwards.
template <class V, bool Decrypt>
__attribute__((always_inline)) inline void gost89_rounds32(V& a, V& b, const V* k, const V* w) {
    gost89_eight<V, true>(a, b, k, w);
    gost89_eight<V, !Decrypt>(a, b, k, w);
    gost89_eight<V, !Decrypt>(a, b, k, w);
    gost89_eight<V, false>(a, b, k, w);
}

template <bool Decrypt>
__attribute__((always_inline)) inline uint64_t gost89_cycle32(uint64_t block, const Gost89Key& k, const Gost89Table& t) {
    uint32_t a = static_cast<uint32_t>(block), b = static_cast<uint32_t>(block >> 32);
    gost89_rounds32<uint32_t, Decrypt>(a, b, k.k, t.w);
    return static_cast<uint64_t>(a) << 32 | b;  // halves exchanged
}

inline uint64_t gost89_encrypt(uint64_t block, const Gost89Key& k, const Gost89Table& t) {
    return gost89_cycle32<false>(block, k, t);
}

inline uint64_t gost89_decrypt(uint64_t block, const Gost89Key& k, const Gost89Table& t) {
    return gost89_cycle32<true>(block, k, t);
}

// 16-Z of the MAC: K0..K7 twice, halves not exchanged.
inline uint64_t gost89_mac16(uint64_t block, const Gost89Key& k, const Gost89Table& t) {
    uint32_t a = static_cast<uint32_t>(block), b = static_cast<uint32_t>(block >> 32);
    gost89_eight<uint32_t, true>(a, b, k.k, t.w);
    gost89_eight<uint32_t, true>(a, b, k.k, t.w);
    return static_cast<uint64_t>(b) << 32 | a;
}

// Counter step of the gamma mode: N1 += C2 mod 2^32, N2 += C1 mod 2^32 - 1
// (a sum that reaches 2^32 drops 2^32 and gains 1). No branch on the value.
inline uint64_t gost89_ctr_next(uint64_t ctr) {
    const uint32_t n1 = static_cast<uint32_t>(ctr) + 0x01010101u;
    const uint64_t s = static_cast<uint64_t>(ctr >> 32) + 0x01010104u;
    const uint32_t n2 = static_cast<uint32_t>(s) + static_cast<uint32_t>(s >> 32);
    return static_cast<uint64_t>(n2) << 32 | n1;
}

// The counter j >= 1 steps on, each step as gost89_ctr_next: the high half,
// kept in [1, 2^32 - 1] by the end-around carry after its first step, is
// (N2 + j C1 - 1) mod (2^32 - 1) + 1. Independent of the other steps, so a
// group of counters has no chain.
inline uint64_t gost89_ctr_advance(uint64_t ctr, uint32_t j) {
    const uint32_t n1 = static_cast<uint32_t>(ctr) + j * 0x01010101u;
    // t = N2 + j C1 - 1 < 2^33 (j is at most a group's size): one end-around
    // fold leaves at most 2^32, one masked subtraction a residue below 2^32 - 1.
    uint64_t t = (ctr >> 32) + uint64_t{j} * 0x01010104u - 1;
    t = (t & 0xFFFFFFFFu) + (t >> 32);
    t -= 0xFFFFFFFFu & (0 - static_cast<uint64_t>(t >= 0xFFFFFFFFu));
    return (t + 1) << 32 | n1;
}

// Several independent blocks at once, one per 32-bit vector lane, on the
// widest kernel the processor has (gost89_kernels.h: AVX-512 VBMI permutes,
// or the bit-sliced round on AVX2 or SSE2; all constant-time): the parallel
// modes hand over up to kGost89Lanes blocks under one key, and callers with
// four keys (the GOST R 34.11-94 key generation) run four blocks under four
// keys.
constexpr size_t kGost89Lanes = 64;

// A table with every word repeated over the eight lanes.
struct alignas(32) Gost89TableWide {
    uint32_t w[15][8];
};
extern const Gost89TableWide gost89_tables_wide[6];  // in the order of gost89_tables
// t must be one of gost89_tables (as gost89_table returns).
inline const Gost89TableWide& gost89_table_wide(const Gost89Table& t) { return gost89_tables_wide[&t - gost89_tables]; }
// Earlier names of the same, kept for the callers that use them.
typedef Gost89TableWide Gost89Table4;
inline const Gost89TableWide& gost89_table4(const Gost89Table& t) { return gost89_table_wide(t); }
inline const Gost89TableWide& gost89_table4(unsigned char sbox) { return gost89_table_wide(gost89_table(sbox)); }

// 32-Z or 32-R of blocks[0..n-1] in place, n >= 1, one key.
void gost89_encrypt_many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t);
void gost89_decrypt_many(uint64_t* blocks, size_t n, const Gost89Key& k, const Gost89TableWide& t);

// Four keys, lane i taking the subkeys k[.][i] of key i.
struct alignas(16) Gost89Key4 {
    uint32_t k[8][4];
};
inline Gost89Key4 gost89_key4(const Gost89Key& a, const Gost89Key& b, const Gost89Key& c, const Gost89Key& d) {
    Gost89Key4 r;
    for (int i = 0; i < 8; ++i) {
        r.k[i][0] = a.k[i];
        r.k[i][1] = b.k[i];
        r.k[i][2] = c.k[i];
        r.k[i][3] = d.k[i];
    }
    return r;
}
inline void gost89_wipe(Gost89Key4& key) { wipe(&key, sizeof key); }
// 32-Z of blocks[i] under key i, i = 0..3, in place.
void gost89_encrypt_x4(uint64_t blocks[4], const Gost89Key4& k, const Gost89TableWide& t);

// Whole-buffer helpers shared by the exported modes (gost89_*.cpp); t must
// be one of gost89_tables, since the parallel paths use its wide twin.
// ECB over the whole blocks of data; the tail is left alone.
void gost89_ecb(unsigned char* data, size_t len, const Gost89Key& k, const Gost89Table& t, bool decrypt);
// Counter mode: advances *ctr once per (partial) block; the keystream block of
// a trailing partial block is stored in *tail_gamma when that is not null.
void gost89_ctr(unsigned char* data, size_t len, const Gost89Key& k, const Gost89Table& t, uint64_t* ctr, uint64_t* tail_gamma);
// CFB with the running value *s (the last ciphertext block).
void gost89_cfb(unsigned char* data, size_t len, const Gost89Key& k, const Gost89Table& t, uint64_t* s, bool decrypt);
// CBC encryption over the whole blocks of data, from the running value *v.
void gost89_cbc_encrypt(unsigned char* data, size_t blocks, const Gost89Key& k, const Gost89Table& t, uint64_t* v);
// MAC over the whole blocks of data, from the running value acc.
uint64_t gost89_mac_blocks(const unsigned char* data, size_t blocks, const Gost89Key& k, const Gost89Table& t, uint64_t acc);

}  // namespace kx

#endif
