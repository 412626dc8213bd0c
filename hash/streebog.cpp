// GOST R 34.11-2012 (RFC 6986): whole-message and streaming hashing, and the
// exported building blocks of the compression function.
#include "GOST_34_11_2012.h"

#include "core/bytes.h"
#include "hash/block_stream.h"
#include "hash/streebog_core.h"

namespace {

using kx::streebog::Block;

constexpr Block kZero = {};

// The running values of a message: chaining value, block sum, bit counter.
struct Run {
    Block h, sigma, N;
};

// The working values below are wiped before they go out of scope: the
// message may be a secret (an HMAC key block, a PBKDF2 password).
void absorb(Run& r, const unsigned char* p, size_t blocks) {
    Block m;
    for (; blocks; --blocks, p += 64) {
        kx::streebog::load(m, p);
        kx::streebog::compress(r.h, r.N, m);
        kx::streebog::add_to(r.sigma, r.sigma, m);
        kx::streebog::add_small(r.N, 512);
    }
    kx::wipe_obj(m);
}

// The last block (t bytes, then 0x01, then zeros; formed even when t is 0),
// then the counter and the sum with a zero N.
void finish(Run& r, const unsigned char* tail, unsigned t) {
    unsigned char buf[64];
    kx::copy(buf, tail, t);
    buf[t] = 0x01;
    kx::fill(buf + t + 1, 0, 63 - t);
    Block m;
    kx::streebog::load(m, buf);
    kx::streebog::compress(r.h, r.N, m);
    kx::streebog::add_to(r.sigma, r.sigma, m);
    kx::streebog::add_small(r.N, 8ull * t);
    kx::streebog::compress(r.h, kZero, r.N);
    kx::streebog::compress(r.h, kZero, r.sigma);
    kx::wipe(buf, sizeof buf);
    kx::wipe_obj(m);
}

void hash_whole(const unsigned char* data, unsigned int len, Block& h) {
    Run r;
    r.h = h;
    r.sigma = kZero;
    r.N = kZero;
    absorb(r, data, len / 64);
    finish(r, data + (len & ~63u), len % 64);
    h = r.h;
    kx::wipe_obj(r);
}

void iv256(Block& h) {
    unsigned char buf[64];
    for (int i = 0; i < 64; i += 16) kx::copy(buf + i, kx::streebog_iv256_run, 16);
    kx::streebog::load(h, buf);
}

void init(stream_hash_2012_t* st, const Block& h) {
    kx::streebog::store(st->h.b, h);
    kx::fill(st->sigma.b, 0, 64);
    kx::fill(st->N.b, 0, 64);
    kx::fill(st->pending, 0, 64);
    st->pending_len = 0;
}

void load_run(Run& r, const stream_hash_2012_t* st) {
    kx::streebog::load(r.h, st->h.b);
    kx::streebog::load(r.sigma, st->sigma.b);
    kx::streebog::load(r.N, st->N.b);
}

void store_run(stream_hash_2012_t* st, const Run& r) {
    kx::streebog::store(st->h.b, r.h);
    kx::streebog::store(st->sigma.b, r.sigma);
    kx::streebog::store(st->N.b, r.N);
}

// Finishes in the state itself, which is spent afterwards.
void end(stream_hash_2012_t* st, Block& h) {
    Run r;
    load_run(r, st);
    unsigned t = st->pending_len & 63u;
    finish(r, st->pending, t);
    st->pending_len = 0;
    store_run(st, r);
    h = r.h;
    kx::wipe_obj(r);
}

}  // namespace

KORVEX_API void GOST_34_11_2012_hash_512_bit(unsigned char* data, unsigned int len, type_uN<64>* out) {
    Block h = kZero;
    hash_whole(data, len, h);
    kx::streebog::store(out->b, h);
    kx::wipe_obj(h);
}

KORVEX_API void GOST_34_11_2012_hash_256_bit(unsigned char* data, unsigned int len, type_uN<32>* out) {
    Block h;
    iv256(h);
    hash_whole(data, len, h);
    for (int i = 0; i < 4; ++i) kx::store64(out->b + 8 * i, h.w[4 + i]);
    kx::wipe_obj(h);
}

KORVEX_API void GOST_34_11_2012_base(unsigned char* data, unsigned int len, type_uN<64>* h) {
    Block v;
    kx::streebog::load(v, h->b);
    hash_whole(data, len, v);
    kx::streebog::store(h->b, v);
    kx::wipe_obj(v);
}

KORVEX_API void GOST_34_11_2012_hash_256_init(stream_hash_2012_t* state) {
    Block h;
    iv256(h);
    init(state, h);
}

KORVEX_API void GOST_34_11_2012_hash_512_init(stream_hash_2012_t* state) {
    init(state, kZero);
}

KORVEX_API void GOST_34_11_2012_hash_write(unsigned char* data, unsigned int len, stream_hash_2012_t* state) {
    if (len == 0) return;
    Run r;
    load_run(r, state);
    state->pending_len = static_cast<unsigned char>(kx::stream_blocks(
        state->pending, state->pending_len & 63u, data, len, [&](const unsigned char* p, size_t n) { absorb(r, p, n); }));
    store_run(state, r);
    kx::wipe_obj(r);
}

KORVEX_API void GOST_34_11_2012_hash_512_end(type_uN<64>* out, stream_hash_2012_t* state) {
    Block h;
    end(state, h);
    kx::streebog::store(out->b, h);
    kx::wipe_obj(h);
}

KORVEX_API void GOST_34_11_2012_hash_256_end(type_uN<32>* out, stream_hash_2012_t* state) {
    Block h;
    end(state, h);
    for (int i = 0; i < 4; ++i) kx::store64(out->b + 8 * i, h.w[4 + i]);
    kx::wipe_obj(h);
}

// --- building blocks ---------------------------------------------------------

KORVEX_API void GOST_34_11_2012_Sbox(type_uN<64>* x) {
    for (int i = 0; i < 64; ++i) x->b[i] = kx::streebog_pi[x->b[i]];
}

KORVEX_API void GOST_34_11_2012_Transposition(type_uN<64>* x) {
    for (int i = 0; i < 8; ++i)
        for (int j = i + 1; j < 8; ++j) {
            unsigned char t = x->b[8 * i + j];
            x->b[8 * i + j] = x->b[8 * j + i];
            x->b[8 * j + i] = t;
        }
}

KORVEX_API void GOST_34_11_2012_Mix_Columns(type_uN<64>* x) {
    alignas(32) uint32_t lo[8], hi[8];
    for (int i = 0; i < 8; ++i) {
        lo[i] = kx::load32(x->b + 8 * i);
        hi[i] = kx::load32(x->b + 8 * i + 4);
    }
    Block r;
    kx::streebog::l_pass<kx::streebog::Sse2>(lo, hi, r);
    kx::streebog::store(x->b, r);
}

KORVEX_API void GOST_34_11_2012_xor_512(type_uN<64>* out, type_uN<64>* a, type_uN<64>* b) {
    Block x, y;
    kx::streebog::load(x, a->b);
    kx::streebog::load(y, b->b);
    kx::streebog::xor_to(x, x, y);
    kx::streebog::store(out->b, x);
}

KORVEX_API void GOST_34_11_2012_sum_mod_2_512(type_uN<64>* out, type_uN<64>* a, type_uN<64>* b) {
    Block x, y;
    kx::streebog::load(x, a->b);
    kx::streebog::load(y, b->b);
    kx::streebog::add_to(x, x, y);
    kx::streebog::store(out->b, x);
}

// Rounds beyond the twelve of the schedule have no constant: K is left as is.
KORVEX_API void GOST_34_11_2012_Key(type_uN<64>* K, unsigned char i) {
    if (i > 11) return;
    Block k;
    kx::streebog::load(k, K->b);
    kx::streebog::key_step(k, i);
    kx::streebog::store(K->b, k);
}

KORVEX_API void GOST_34_11_2012_E(type_uN<64>* state, type_uN<64>* K, type_uN<64>* m) {
    Block k, v, s;
    kx::streebog::load(k, K->b);
    kx::streebog::load(v, m->b);
    // Always the SSE2 form: the exported blocks stay on it, so that checking
    // G against E and the other blocks compares the two forms of the L pass
    // on processors with AVX2.
    kx::streebog::encrypt<kx::streebog::Sse2>(s, k, v);
    kx::streebog::store(state->b, s);
    kx::streebog::store(K->b, k);
}

KORVEX_API void GOST_34_11_2012_G(type_uN<64>* N, type_uN<64>* h, type_uN<64>* m) {
    Block n, v, x;
    kx::streebog::load(n, N->b);
    kx::streebog::load(v, h->b);
    kx::streebog::load(x, m->b);
    kx::streebog::compress(v, n, x);
    kx::streebog::store(h->b, v);
}
