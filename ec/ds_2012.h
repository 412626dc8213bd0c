// GOST R 34.10 keys and signatures written once over the word count W (8 for
// the 512-bit curves of GOST R 34.10-2012; the steps are those of GOST R
// 34.10-2001 too, so W = 4 fits the 256-bit curves). Ops supplies the point
// and mod-q operations and the curve type (see ops_2012.h).
//
// Internal signature layout: s in bytes 0..8W-1, r in bytes 8W..16W-1, each
// little-endian. The exported layout reverses bytes 0..31 and, separately,
// bytes 32..63: for W = 4 that is RFC 4490 (s, r big-endian); for W = 8 only
// s is touched, as two separately reversed halves.
#ifndef KORVEX_EC_DS_2012_H
#define KORVEX_EC_DS_2012_H

#include "PRNG.h"
#include "core/bytes.h"
#include "ec/bignum.h"
#include "core/ct_check.h"
#include "ec/field.h"

namespace kx {
namespace ec {
namespace ds {

// Reverses bytes 0..31 and bytes 32..63 of the signature in place.
inline void rotate(unsigned char* sig) {
    for (unsigned half = 0; half < 64; half += 32)
        for (unsigned i = 0, j = 31; i < j; ++i, --j) {
            unsigned char t = sig[half + i];
            sig[half + i] = sig[half + j];
            sig[half + j] = t;
        }
}

// Fills 8W bytes at out with W/4 generator calls, low 32 bytes first. False
// as soon as one fails (what was written stays written).
template <unsigned W>
inline bool draw(unsigned char* out) {
    for (unsigned i = 0; i < W / 4; ++i)
        if (PRNG_get(reinterpret_cast<type_uN<32>*>(out + 32 * i)) != 0) return false;
    return true;
}

// e = hash with one conditional subtraction of q; 0 becomes 1.
template <unsigned W>
inline bn::Num<W> digest(const void* hash, const bn::Num<W>& q) {
    bn::Num<W> e = bn::load<W>(hash);
    fe::reduce_once(e, 0, e, q);
    if (bn::is_zero(e)) e = bn::from_u64<W>(1);
    return e;
}

// Q = d * P, d used as it is.
template <class Ops>
inline void open_key(const void* d, unsigned char* Q_out, const typename Ops::Curve& c) {
    using N = typename Ops::N;
    constexpr unsigned kBytes = sizeof(N);
    N D = bn::load<kBytes / 8>(d), x, y;
    Ops::base_mul(x, y, D, c);
    bn::store(Q_out, x);
    bn::store(Q_out + kBytes, y);
    wipe_obj(D);
}

// d_out is zeroed, then d = random with one conditional subtraction of q,
// redrawn while zero; the draw goes straight into d_out. 0 ok, 1 generator
// failure. Only the zero test of the loop leaves the constant-time domain.
template <class Ops>
inline unsigned char key_pair(unsigned char* d_out, unsigned char* Q_out, const typename Ops::Curve& c) {
    using N = typename Ops::N;
    constexpr unsigned W = sizeof(N) / 8;
    wipe(d_out, 8 * W);
    N d{};
    for (;;) {
        if (!draw<W>(d_out)) return 1;
        d = bn::load<W>(d_out);
        fe::reduce_once(d, 0, d, c.q);
        bn::store(d_out, d);
        uint64_t z = fe::zero_mask(d);
        ct::declassify(z);
        if (!z) break;
    }
    wipe_obj(d);
    open_key<Ops>(d_out, Q_out, c);
    return 0;
}

// Signature in the exported layout. On a generator failure sig holds the
// internal-layout values of the last try (or zeros) and 1 is returned.
template <class Ops>
inline unsigned char sign(const void* hash, const void* d, unsigned char* sig, const typename Ops::Curve& c) {
    using N = typename Ops::N;
    constexpr unsigned W = sizeof(N) / 8;
    N r{}, s{}, e = digest<W>(hash, c.q), D = bn::load<W>(d), k, t, y;
    unsigned char kbuf[8 * W];
    bn::store(sig, s);
    bn::store(sig + 8 * W, r);
    unsigned char rc = 0;
    for (;;) {  // until r != 0 and s != 0: the only test on values derived from k
        uint64_t again = fe::zero_mask(r) | fe::zero_mask(s);
        ct::declassify(again);
        if (!again) break;
        if (!draw<W>(kbuf)) {
            rc = 1;
            break;
        }
        k = bn::load<W>(kbuf);       // used as drawn: k = 0 gives r = 0, a new try
        Ops::base_mul(r, y, k, c);
        fe::reduce_once(r, 0, r, c.q);  // r < q: x < p < 2q on every curve
        Ops::mul_q(t, r, D, c);
        Ops::mul_q(s, e, k, c);
        fe::add(s, t, s, c.q);
        bn::store(sig, s);
        bn::store(sig + 8 * W, r);
    }
    wipe(kbuf, sizeof kbuf);
    wipe_obj(k);
    wipe_obj(D);
    wipe_obj(t);  // r * d gives d away
    wipe_obj(y);
    if (rc == 0) rotate(sig);
    return rc;
}

// 1 valid, 0 invalid. s or r out of [1, q - 1] returns at once with the
// buffer left in the internal layout; a full check restores it.
template <class Ops>
inline unsigned char verify(const void* hash, const unsigned char* Q, unsigned char* sig,
                            const typename Ops::Curve& c) {
    using N = typename Ops::N;
    constexpr unsigned W = sizeof(N) / 8;
    rotate(sig);
    N s = bn::load<W>(sig), r = bn::load<W>(sig + 8 * W);
    if (bn::cmp(s, c.q) != bn::kLess || bn::is_zero(s) || bn::cmp(r, c.q) != bn::kLess || bn::is_zero(r))
        return 0;
    N e = digest<W>(hash, c.q), v, z1, z2, zero{};
    Ops::inv_q(v, e, c);
    Ops::mul_q(z1, s, v, c);
    Ops::mul_q(z2, r, v, c);
    bn::sub_mod(z2, zero, z2, c.q);
    unsigned char ok = Ops::twin_check(r, z1, z2, bn::load<W>(Q), bn::load<W>(Q + 8 * W), c) ? 1 : 0;
    rotate(sig);
    return ok;
}

// K = (t * d mod q) * Q for the VKO of RFC 4357 / RFC 7836; the caller
// hashes K.x || K.y. t must already be 1 where the UKM is absent.
template <class Ops>
inline void vko_point(unsigned char* K, const typename Ops::N& t, const void* d, const unsigned char* Q,
                      const typename Ops::Curve& c) {
    using N = typename Ops::N;
    constexpr unsigned W = sizeof(N) / 8;
    N D = bn::load<W>(d), m, x, y;
    Ops::vko_scalar(m, t, D, c);
    Ops::point_mul(x, y, m, bn::load<W>(Q), bn::load<W>(Q + 8 * W), c);
    bn::store(K, x);
    bn::store(K + 8 * W, y);
    wipe_obj(D);
    wipe_obj(m);
    wipe_obj(x);
    wipe_obj(y);
}

}  // namespace ds
}  // namespace ec
}  // namespace kx

#endif
