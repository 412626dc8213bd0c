// GOST R 34.11-94: whole-message and streaming hashing and the exported
// pieces of the step function. The cipher is always GOST 28147-89 with the
// id-GostR3411-94-CryptoProParamSet S-box (RFC 4357).
#include "GOST_34_11_94.h"

#include "core/bytes.h"
#include "hash/block_stream.h"
#include "hash/gost94_core.h"

namespace {

using kx::gost94::V256;

void start_value(V256& h, const type_uN<32>* start) {
    if (start)
        kx::gost94::load(h, start->b);
    else
        h = V256{};
}

// Hashes whole blocks into h and sigma.
// The working values below are wiped before they go out of scope: the
// message may be a secret (an HMAC key block, a PBKDF2 password).
void absorb(V256& h, V256& sigma, const unsigned char* p, size_t blocks) {
    V256 m;
    for (; blocks; --blocks, p += 32) {
        kx::gost94::load(m, p);
        kx::gost94::add(sigma, m);
        kx::gost94::step(h, m);
    }
    kx::wipe_obj(m);
}

// The zero-padded tail block when there is one (t > 0), then the length
// block and the control sum. bits is the 32-bit bit count without the tail.
void finish(V256& h, V256 sigma, uint32_t bits, const unsigned char* tail, unsigned t) {
    if (t) {
        unsigned char buf[32];
        kx::copy(buf, tail, t);
        kx::fill(buf + t, 0, 32 - t);
        V256 m;
        kx::gost94::load(m, buf);
        kx::gost94::add(sigma, m);
        kx::gost94::step(h, m);
        bits += 8 * t;
        kx::wipe(buf, sizeof buf);
        kx::wipe_obj(m);
    }
    kx::gost94::step(h, V256{{bits, 0, 0, 0}});
    kx::gost94::step(h, sigma);
    kx::wipe_obj(sigma);
}

}  // namespace

KORVEX_API void GOST_34_11_94_hash(unsigned char* data, unsigned int len, type_uN<32>* start, type_uN<32>* out) {
    V256 h, sigma{};
    start_value(h, start);
    absorb(h, sigma, data, len / 32);
    // The length field is 32 bits wide and wraps.
    finish(h, sigma, static_cast<uint32_t>(len & ~31u) * 8u, data + (len & ~31u), len % 32);
    kx::gost94::store(out->b, h);
    kx::wipe_obj(h), kx::wipe_obj(sigma);
}

KORVEX_API void GOST_34_11_94_hash_init(type_uN<32>* start, stream_hash_t* state) {
    V256 h;
    start_value(h, start);
    kx::gost94::store(state->H.b, h);
    kx::fill(state->sigma.b, 0, 32);
    kx::fill(state->length.b, 0, 32);
    kx::fill(state->pending, 0, 32);
    state->pending_len = 0;
}

KORVEX_API void GOST_34_11_94_hash_write(unsigned char* data, unsigned int len, stream_hash_t* state) {
    if (len == 0) return;
    V256 h, sigma;
    kx::gost94::load(h, state->H.b);
    kx::gost94::load(sigma, state->sigma.b);
    uint32_t bits = kx::load32(state->length.b);
    state->pending_len = static_cast<unsigned char>(
        kx::stream_blocks(state->pending, state->pending_len & 31u, data, len, [&](const unsigned char* p, size_t n) {
            absorb(h, sigma, p, n);
            bits += 256u * static_cast<uint32_t>(n);  // the low word only, wrapping
        }));
    kx::gost94::store(state->H.b, h);
    kx::gost94::store(state->sigma.b, sigma);
    kx::store32(state->length.b, bits);
    kx::wipe_obj(h), kx::wipe_obj(sigma);
}

KORVEX_API void GOST_34_11_94_hash_end(type_uN<32>* out, stream_hash_t* state) {
    V256 h, sigma;
    kx::gost94::load(h, state->H.b);
    kx::gost94::load(sigma, state->sigma.b);
    finish(h, sigma, kx::load32(state->length.b), state->pending, state->pending_len & 31u);
    kx::gost94::store(out->b, h);
    kx::wipe_obj(h), kx::wipe_obj(sigma);
}

// --- step function pieces ----------------------------------------------------

KORVEX_API void GOST_34_11_94_base_step(type_uN<32>* M, type_uN<32>* H) {
    V256 m, h;
    kx::gost94::load(m, M->b);
    kx::gost94::load(h, H->b);
    kx::gost94::step(h, m);
    kx::gost94::store(H->b, h);
}

KORVEX_API void GOST_34_11_94_gen_key_and_encrypt(type_uN<32>* S, type_uN<32>* M, type_uN<32>* H) {
    V256 m, h;
    kx::gost94::load(m, M->b);
    kx::gost94::load(h, H->b);
    kx::gost94::store(S->b, kx::gost94::keygen_encrypt(m, h));
}

KORVEX_API void GOST_34_11_94_mixing(type_uN<32>* S, type_uN<32>* M, type_uN<32>* H) {
    V256 s, m, h;
    kx::gost94::load(s, S->b);
    kx::gost94::load(h, H->b);
    if (M) kx::gost94::load(m, M->b);
    kx::gost94::shuffle(s, M ? &m : nullptr, h);
    kx::gost94::store(S->b, s);
}

KORVEX_API void GOST_34_11_94_mix(type_uN<32>* Y, unsigned char n) {
    if (n == 0) return;
    V256 y;
    kx::gost94::load(y, Y->b);
    kx::gost94::psi_n(y, n);
    kx::gost94::store(Y->b, y);
}

KORVEX_API void GOST_34_11_94_P(type_uN<32>* out, type_uN<32>* in) {
    unsigned char t[32];
    kx::copy(t, in->b, 32);
    for (int k = 0; k < 8; ++k)
        for (int i = 0; i < 4; ++i) out->b[4 * k + i] = t[8 * i + k];
}

KORVEX_API void GOST_34_11_94_A(type_uN<32>* Y) {
    V256 y;
    kx::gost94::load(y, Y->b);
    kx::gost94::store(Y->b, kx::gost94::transform_a(y));
}

KORVEX_API void GOST_34_11_94_sum_mod_2_256(type_uN<32>* a, type_uN<32>* b) {
    V256 x, y;
    kx::gost94::load(x, a->b);
    kx::gost94::load(y, b->b);
    kx::gost94::add(x, y);
    kx::gost94::store(a->b, x);
}

KORVEX_API void GOST_34_11_94_xor_u256(type_uN<32>* out, type_uN<32>* a, type_uN<32>* b) {
    V256 x, y;
    kx::gost94::load(x, a->b);
    kx::gost94::load(y, b->b);
    kx::gost94::store(out->b, kx::gost94::vxor(x, y));
}
