// PBKDF2 (RFC 2898 5.2) as the key containers use it: one 32-byte block
// (index 1), a 4-byte salt, and a 16-bit iteration count counted down, so
// that 0 wraps to 65536 iterations.
#include "pkcs5.h"

#include "hash/hmac.h"
#include "hash/streebog_run.h"

namespace {

template <class H>
void pbkdf2(const unsigned char* password, unsigned password_len, const unsigned char* salt, unsigned short iterations,
            unsigned char* out) {
    kx::hmac::Keyed<H> prf;
    kx::hmac::set_key(prf, password, password_len);
    unsigned char u[H::Out];
    unsigned char first[8] = {salt[0], salt[1], salt[2], salt[3], 0, 0, 0, 1};
    kx::hmac::mac(prf, first, 8, u);
    unsigned char t[32];
    kx::copy(t, u, 32);
    for (unsigned short left = static_cast<unsigned short>(iterations - 1); left; --left) {
        kx::hmac::mac(prf, u, H::Out, u);
        kx::xor_into(t, u, 32);
    }
    kx::copy(out, t, 32);
    kx::wipe(&prf, sizeof prf);
    kx::wipe(u, sizeof u);
    kx::wipe(t, sizeof t);
}

// The 2012 variant on the hash's running values: the inner and outer runs
// after the key blocks are taken once, and each PRF call is then the four
// compressions of each half with no buffering in between. The same
// computation as the generic form, without the record round trips.
void pbkdf2_2012(const unsigned char* password, unsigned password_len, const unsigned char* salt,
                 unsigned short iterations, unsigned char* out) {
    using namespace kx::streebog;
    struct Work {
        Run in, out, r;
        Block u, t;
        kx::hmac::Keyed<kx::hmac::Gost2012_512> prf;
    } w;
    kx::hmac::set_key(w.prf, password, password_len);
    const stream_hash_2012_t* st[2] = {&w.prf.inner, &w.prf.outer};
    Run* run[2] = {&w.in, &w.out};
    for (int i = 0; i < 2; ++i) {
        load(run[i]->h, st[i]->h.b);
        load(run[i]->sigma, st[i]->sigma.b);
        load(run[i]->N, st[i]->N.b);
    }
    const unsigned char first[8] = {salt[0], salt[1], salt[2], salt[3], 0, 0, 0, 1};
    w.r = w.in;
    finish(w.r, first, 8);
    for (unsigned short left = iterations;;) {
        w.u = w.r.h;  // the inner hash, then the outer one over it
        w.r = w.out;
        absorb_block(w.r, w.u);
        finish(w.r, first, 0);
        if (left == iterations) {
            w.t = w.r.h;
        } else {
            xor_to(w.t, w.t, w.r.h);
        }
        if (--left == 0) break;
        w.u = w.r.h;
        w.r = w.in;
        absorb_block(w.r, w.u);
        finish(w.r, first, 0);
    }
    for (int i = 0; i < 4; ++i) kx::store64(out + 8 * i, w.t.w[i]);
    wipe_words(w.in);
    wipe_words(w.out);
    wipe_words(w.r);
    wipe_words(w.u);
    wipe_words(w.t);
    kx::wipe(&w.prf, sizeof w.prf);
}

}  // namespace

KORVEX_API void pkcs5_PBKDF2(unsigned char* password, unsigned char password_len, unsigned char* salt,
                             unsigned short iterations, type_uN<32>* out) {
    pbkdf2<kx::hmac::Gost94>(password, password_len, salt, iterations, out->b);
}

KORVEX_API void pkcs5_PBKDF2_2012(unsigned char* password, unsigned char password_len, unsigned char* salt,
                                  unsigned short iterations, type_uN<32>* out) {
    pbkdf2_2012(password, password_len, salt, iterations, out->b);
}
