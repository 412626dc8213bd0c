// HMAC (RFC 2104) over the library's hashes, as used by the exported HMAC
// functions and by PBKDF2. A keyed context holds the hash states after the
// key block XOR ipad / opad, so repeated MACs under one key (PBKDF2) skip
// those two compressions.
#ifndef KORVEX_HASH_HMAC_H
#define KORVEX_HASH_HMAC_H

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "core/bytes.h"

namespace kx {
namespace hmac {

inline constexpr unsigned char kIpadRun[16] = {0x36, 0x36, 0x36, 0x36, 0x36, 0x36, 0x36, 0x36,
                                               0x36, 0x36, 0x36, 0x36, 0x36, 0x36, 0x36, 0x36};
inline constexpr unsigned char kOpadRun[16] = {0x5C, 0x5C, 0x5C, 0x5C, 0x5C, 0x5C, 0x5C, 0x5C,
                                               0x5C, 0x5C, 0x5C, 0x5C, 0x5C, 0x5C, 0x5C, 0x5C};

// The three variants. Block is the HMAC block length, Out the MAC length;
// a key longer than Block is replaced by its Out-byte hash (RFC 4357 for the
// 34.11-94 variant, RFC 7836 for the 2012 ones), zero-padded to Block.
struct Gost94 {
    static constexpr unsigned Block = 32, Out = 32;
    typedef stream_hash_t State;
    static void init(State* s) { GOST_34_11_94_hash_init(nullptr, s); }
    static void write(State* s, const unsigned char* p, unsigned n) {
        GOST_34_11_94_hash_write(const_cast<unsigned char*>(p), n, s);
    }
    static void end(unsigned char* out, State* s) { GOST_34_11_94_hash_end(reinterpret_cast<type_uN<32>*>(out), s); }
    static void hash(const unsigned char* p, unsigned n, unsigned char* out) {
        GOST_34_11_94_hash(const_cast<unsigned char*>(p), n, nullptr, reinterpret_cast<type_uN<32>*>(out));
    }
};

struct Gost2012_256 {
    static constexpr unsigned Block = 64, Out = 32;
    typedef stream_hash_2012_t State;
    static void init(State* s) { GOST_34_11_2012_hash_256_init(s); }
    static void write(State* s, const unsigned char* p, unsigned n) {
        GOST_34_11_2012_hash_write(const_cast<unsigned char*>(p), n, s);
    }
    static void end(unsigned char* out, State* s) { GOST_34_11_2012_hash_256_end(reinterpret_cast<type_uN<32>*>(out), s); }
    static void hash(const unsigned char* p, unsigned n, unsigned char* out) {
        GOST_34_11_2012_hash_256_bit(const_cast<unsigned char*>(p), n, reinterpret_cast<type_uN<32>*>(out));
    }
};

struct Gost2012_512 {
    static constexpr unsigned Block = 64, Out = 64;
    typedef stream_hash_2012_t State;
    static void init(State* s) { GOST_34_11_2012_hash_512_init(s); }
    static void write(State* s, const unsigned char* p, unsigned n) {
        GOST_34_11_2012_hash_write(const_cast<unsigned char*>(p), n, s);
    }
    static void end(unsigned char* out, State* s) { GOST_34_11_2012_hash_512_end(reinterpret_cast<type_uN<64>*>(out), s); }
    static void hash(const unsigned char* p, unsigned n, unsigned char* out) {
        GOST_34_11_2012_hash_512_bit(const_cast<unsigned char*>(p), n, reinterpret_cast<type_uN<64>*>(out));
    }
};

template <class H>
struct Keyed {
    typename H::State inner, outer;
};

template <class H>
inline void xor_pad(unsigned char* block, const unsigned char* k0, const unsigned char (&run)[16]) {
    for (unsigned i = 0; i < H::Block; i += 16) {
        copy(block + i, k0 + i, 16);
        xor_into(block + i, run, 16);
    }
}

template <class H>
inline void set_key(Keyed<H>& ctx, const unsigned char* key, unsigned key_len) {
    unsigned char k0[H::Block];
    if (key_len > H::Block) {
        H::hash(key, key_len, k0);
        fill(k0 + H::Out, 0, H::Block - H::Out);
    } else {
        copy(k0, key, key_len);
        fill(k0 + key_len, 0, H::Block - key_len);
    }
    unsigned char block[H::Block];
    xor_pad<H>(block, k0, kIpadRun);
    H::init(&ctx.inner);
    H::write(&ctx.inner, block, H::Block);
    xor_pad<H>(block, k0, kOpadRun);
    H::init(&ctx.outer);
    H::write(&ctx.outer, block, H::Block);
    wipe(k0, sizeof k0);
    wipe(block, sizeof block);
}

// out (H::Out bytes) := HMAC of data under the key of ctx; ctx is kept.
template <class H>
inline void mac(const Keyed<H>& ctx, const unsigned char* data, unsigned len, unsigned char* out) {
    typename H::State s = ctx.inner;
    unsigned char inner[H::Out];
    H::write(&s, data, len);
    H::end(inner, &s);
    s = ctx.outer;
    H::write(&s, inner, H::Out);
    H::end(out, &s);
    wipe(&s, sizeof s);
    wipe(inner, sizeof inner);
}

template <class H>
inline void hmac(const unsigned char* data, unsigned len, const unsigned char* key, unsigned key_len, unsigned char* out) {
    Keyed<H> ctx;
    set_key(ctx, key, key_len);
    mac(ctx, data, len, out);
    wipe(&ctx, sizeof ctx);
}

}  // namespace hmac
}  // namespace kx

#endif
