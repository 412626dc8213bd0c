// GOST R 34.11-94 step function internals, on 256-bit values held as four
// little-endian 64-bit words (word 0 least significant).
#ifndef KORVEX_HASH_GOST94_CORE_H
#define KORVEX_HASH_GOST94_CORE_H

#include <stdint.h>

#include "cipher/gost89_core.h"
#include "core/bytes.h"
#include "hash/words.h"

namespace kx {
namespace gost94 {

typedef words::Words<4> V256;
using words::load;
using words::store;

inline V256 vxor(const V256& a, const V256& b) {
    return V256{{a.w[0] ^ b.w[0], a.w[1] ^ b.w[1], a.w[2] ^ b.w[2], a.w[3] ^ b.w[3]}};
}

// a := a + b mod 2^256.
inline void add(V256& a, const V256& b) { words::add_to(a, a, b); }

// C3 of the standard as stored, byte 0 first:
// 00 FF 00 FF 00 FF 00 FF  FF 00 FF 00 FF 00 FF 00
// 00 FF FF 00 FF 00 00 FF  FF 00 00 00 FF FF 00 FF
inline constexpr V256 kC3 = {{0xFF00FF00FF00FF00ull, 0x00FF00FF00FF00FFull, 0xFF0000FF00FFFF00ull, 0xFF00FFFF000000FFull}};

// A: (y3, y2, y1, y0) -> (y0 ^ y1, y3, y2, y1).
inline V256 transform_a(const V256& y) {
    return V256{{y.w[1], y.w[2], y.w[3], y.w[0] ^ y.w[1]}};
}

// P: out byte 4k + i := in byte 8i + k. Read as a GOST 28147-89 key, subkey k
// is byte k of each of the four words, word 0 lowest. The key goes to lane
// `lane` of a four-lane key.
inline void key_from_p(const V256& x, Gost89Key4& key, int lane) {
    for (int k = 0; k < 8; ++k) {
        const unsigned s = 8 * k;
        key.k[k][lane] = static_cast<uint32_t>((x.w[0] >> s) & 0xFF) | static_cast<uint32_t>((x.w[1] >> s) & 0xFF) << 8 |
                         static_cast<uint32_t>((x.w[2] >> s) & 0xFF) << 16 | static_cast<uint32_t>((x.w[3] >> s) & 0xFF) << 24;
    }
}

// psi^4: the sixteen 16-bit words move down four places and the four new top
// words w16..w19 are w(t) ^ w(t+1) ^ w(t+2) ^ w(t+3) ^ w(t+12) ^ w(t+15). The
// w(t+15) terms chain the new words, which a prefix XOR over the 16-bit lanes
// resolves.
inline void psi4(V256& y) {
    const uint64_t q0 = y.w[0], q1 = y.w[1], q3 = y.w[3];
    uint64_t r = q0 ^ (q0 >> 16 | q1 << 48) ^ (q0 >> 32 | q1 << 32) ^ (q0 >> 48 | q1 << 16) ^ q3 ^ (q3 >> 48);
    r ^= r << 16;
    r ^= r << 32;
    y.w[0] = q1;
    y.w[1] = y.w[2];
    y.w[2] = q3;
    y.w[3] = r;
}

// psi: the words move down one place; w15 := w0 ^ w1 ^ w2 ^ w3 ^ w12 ^ w15.
inline void psi1(V256& y) {
    const uint64_t t = y.w[0] ^ (y.w[0] >> 16) ^ (y.w[0] >> 32) ^ (y.w[0] >> 48) ^ y.w[3] ^ (y.w[3] >> 48);
    y.w[0] = y.w[0] >> 16 | y.w[1] << 48;
    y.w[1] = y.w[1] >> 16 | y.w[2] << 48;
    y.w[2] = y.w[2] >> 16 | y.w[3] << 48;
    y.w[3] = y.w[3] >> 16 | (t & 0xFFFF) << 48;
}

inline void psi_n(V256& y, unsigned n) {
    for (; n >= 4; n -= 4) psi4(y);
    for (; n; --n) psi1(y);
}

// Key generation and encryption: S := E(H) word by word under K1..K4. The
// four encryptions are independent and run in the four lanes of one
// GOST 28147-89 cycle.
inline V256 keygen_encrypt(const V256& m, const V256& h) {
    Gost89Key4 key;
    V256 u = h, v = m;
    for (int i = 0; i < 4; ++i) {
        key_from_p(vxor(u, v), key, i);
        if (i < 3) {
            u = transform_a(u);
            if (i == 1) u = vxor(u, kC3);
            v = transform_a(transform_a(v));
        }
    }
    V256 s = h;
    const Gost89Table4& table = gost89_table4(gost89_table(1));
    gost89_encrypt_x4(s.w, key, table);
    // The keys are as good as h and m, which may be secret (HMAC, PBKDF2).
    wipe_obj(key), wipe_obj(u), wipe_obj(v);
    return s;
}

// Shuffle: S := psi^61(H ^ psi(M ^ psi^12(S))); a null M skips its XOR.
inline void shuffle(V256& s, const V256* m, const V256& h) {
    psi_n(s, 12);
    if (m) s = vxor(s, *m);
    psi1(s);
    s = vxor(s, h);
    psi_n(s, 61);
}

// h := f(h, m).
inline void step(V256& h, const V256& m) {
    V256 s = keygen_encrypt(m, h);
    shuffle(s, &m, h);
    h = s;
    wipe_obj(s);
}

}  // namespace gost94
}  // namespace kx

#endif
