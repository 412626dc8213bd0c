// The constant-time engine behind keys, signatures and VKO against the
// reference affine double-and-add (the library's own templates run with
// AffineOps): same bytes, codes and buffer effects on random, edge and
// hostile input, for every built-in curve. KORVEX_EC_DIFF_SCALE=n multiplies
// the number of random cases (the long run).
#include <cstdlib>
#include <cstring>

#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "PRNG.h"
#include "ec/affine_ops.h"
#include "ec/curves_2001.h"
#include "ec/curves_2012.h"
#include "ec/ds_2012.h"
#include "gtest/gtest.h"

namespace {

using namespace kx;

uint64_t g_rng = 0x9E3779B97F4A7C15ull;
uint64_t next() {  // splitmix64
    uint64_t z = (g_rng += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

unsigned scaled(unsigned n) {
    const char* e = std::getenv("KORVEX_EC_DIFF_SCALE");
    return n * (e && std::atoi(e) > 0 ? std::atoi(e) : 1);
}

void seed(uint64_t v) {
    unsigned char s[40];
    for (int i = 0; i < 40; ++i) s[i] = static_cast<unsigned char>(v >> (8 * (i % 8))) ^ static_cast<unsigned char>(i);
    ASSERT_EQ(PRNG_init(s), 0);
}

// The exported functions of one size, and its reference curves.
template <unsigned W>
struct Size;
template <>
struct Size<4> {
    using Lit = ec::Curve256;
    using H = type_uN<32>;
    using P = type_uN<64>;
    static constexpr int kSets[] = {1, 2, 3, 0};
    static Lit curve(int s) { return s == 1 ? ec::kCryptoProA : s == 2 ? ec::kCryptoProB : s == 3 ? ec::kCryptoProC : ec::kTest; }
    static void open(H* d, P* q, int s) { GOST_34_10_2001_gen_open_key(d, q, s); }
    static int pair(H* d, P* q, int s) { return GOST_34_10_2001_gen_key_pair(d, q, s); }
    static int sign(H* h, H* d, P* sig, int s) { return GOST_34_10_2001_create_DS(h, d, sig, s); }
    static int check(H* h, P* q, P* sig, int s) { return GOST_34_10_2001_check_DS(h, q, sig, s); }
    // Both 256-bit VKO against the reference point, hashed as they hash it.
    static void vko(const H& ukm, H* d, P* q, int s, const Lit& c) {
        unsigned long long u;
        std::memcpy(&u, ukm.b, 8);
        for (int v = 0; v < 2; ++v) {
            P K;
            H want, got;
            ec::ds::vko_point<ec::AffineOps<4, Lit>>(K.b, bn::from_u64<4>(u), d, q->b, c);
            if (v == 0) {
                GOST_34_11_94_hash(K.b, 64, nullptr, &want);
                GOST_34_10_2001_VKO(&got, &u, d, q, s);
            } else {
                GOST_34_11_2012_hash_256_bit(K.b, 64, &want);
                GOST_34_10_2012_VKO_256(&got, &u, d, q, s);
            }
            EXPECT_EQ(0, std::memcmp(want.b, got.b, 32)) << "VKO " << v << " set " << s;
        }
    }
};
constexpr int Size<4>::kSets[];
template <>
struct Size<8> {
    using Lit = ec::Curve512;
    using H = type_uN<64>;
    using P = type_uN<128>;
    static constexpr int kSets[] = {1, 2};
    static Lit curve(int s) { return s == 1 ? ec::kParamSetA : ec::kParamSetB; }
    static void open(H* d, P* q, int s) { GOST_34_10_2012_512_gen_open_key(d, q, s); }
    static int pair(H* d, P* q, int s) { return GOST_34_10_2012_512_gen_key_pair(d, q, s); }
    static int sign(H* h, H* d, P* sig, int s) { return GOST_34_10_2012_create_DS_512_bit(h, d, sig, s); }
    static int check(H* h, P* q, P* sig, int s) { return GOST_34_10_2012_check_DS_512_bit(h, q, sig, s); }
    static void vko(H ukm, H* d, P* q, int s, const Lit& c) {
        bn::Num<8> t = bn::load<8>(ukm.b);
        if (bn::is_zero(t)) t = bn::from_u64<8>(1);
        P K;
        H want, got;
        ec::ds::vko_point<ec::AffineOps<8, Lit>>(K.b, t, d, q->b, c);
        GOST_34_11_2012_hash_512_bit(K.b, 128, &want);
        GOST_34_10_2012_VKO_512(&got, &ukm, d, q, s);
        EXPECT_EQ(0, std::memcmp(want.b, got.b, 64)) << "VKO set " << s;
    }
};
constexpr int Size<8>::kSets[];

// Scalars: random, or one of the edges around 0, q, p and 2^(64W).
template <unsigned W>
bn::Num<W> scalar(unsigned i, const typename Size<W>::Lit& c) {
    bn::Num<W> k{}, one = bn::from_u64<W>(1);
    for (auto& w : k.w) w = next();
    switch (i % 12) {
        case 0: return bn::Num<W>{};
        case 1: return one;
        case 2: bn::sub(k, c.q, one); return k;
        case 3: return c.q;
        case 4: bn::add(k, c.q, one); return k;
        case 5: for (auto& w : k.w) w = ~0ull; return k;
        case 6: return c.p;
        case 7: k.w[W - 1] >>= 8; return k;  // shorter than q
        default: return k;
    }
}

// Public keys: d * G as the reference computes it, then hostile variants.
template <unsigned W>
void key(unsigned i, const typename Size<W>::Lit& c, const bn::Num<W>& d, unsigned char* q) {
    ec::ds::open_key<ec::AffineOps<W, typename Size<W>::Lit>>(d.w, q, c);
    bn::Num<W> y = bn::load<W>(q + 8 * W), t;
    switch (i % 10) {
        case 0: std::memset(q, 0, 16 * W); break;                                      // (0, 0)
        case 1: bn::store(q, c.x); bn::store(q + 8 * W, c.y); break;                   // G
        case 2: bn::store(q, c.x); bn::sub(t, c.p, c.y); bn::store(q + 8 * W, t); break;  // -G
        case 3: y.w[0] ^= 1; bn::store(q + 8 * W, y); break;                           // off the curve
        case 4: bn::add(t, bn::load<W>(q), c.p); bn::store(q, t); break;               // x + p
        default: break;
    }
}

template <unsigned W>
void run(unsigned n) {
    using S = Size<W>;
    using Ref = ec::AffineOps<W, typename S::Lit>;
    for (int set : S::kSets) {
        const typename S::Lit c = S::curve(set);
        for (unsigned i = 0; i < n; ++i) {
            typename S::H d, h, d2, ukm;
            typename S::P q1, q2, sig1, sig2;
            bn::store(d.b, scalar<W>(i, c));
            bn::store(h.b, scalar<W>(i / 12 + i, c));
            for (auto& b : ukm.b) b = static_cast<unsigned char>(next());
            if (i % 7 == 0) std::memset(ukm.b, 0, sizeof ukm.b);
            if (i % 7 == 1) bn::store(ukm.b, c.q);

            ec::ds::open_key<Ref>(d.b, q1.b, c);
            S::open(&d, &q2, set);
            ASSERT_EQ(0, std::memcmp(q1.b, q2.b, sizeof q1.b)) << "open key, set " << set << " case " << i;

            uint64_t sd = next();
            seed(sd);
            int rc1 = ec::ds::sign<Ref>(h.b, d.b, sig1.b, c);
            seed(sd);
            int rc2 = S::sign(&h, &d, &sig2, set);
            ASSERT_EQ(rc1, rc2);
            ASSERT_EQ(0, std::memcmp(sig1.b, sig2.b, sizeof sig1.b)) << "sign, set " << set << " case " << i;
            if (i % 3 == 0) {
                seed(sd);
                rc1 = ec::ds::key_pair<Ref>(d2.b, q1.b, c);
                seed(sd);
                rc2 = S::pair(&d2, &q2, set);
                ASSERT_EQ(rc1, rc2);
                ASSERT_EQ(0, std::memcmp(q1.b, q2.b, sizeof q1.b)) << "key pair, set " << set;
            }

            // Verification: the true key, hostile keys, damaged signatures.
            typename S::P key1;
            key<W>(i / 2, c, bn::load<W>(d.b), key1.b);
            if (i % 4 == 1) sig1.b[i % sizeof sig1.b] ^= 1;
            if (i % 8 == 2) std::memset(sig1.b + (i % 16 < 8 ? 0 : 8 * W), 0, 8 * W);
            std::memcpy(sig2.b, sig1.b, sizeof sig1.b);
            rc1 = ec::ds::verify<Ref>(h.b, key1.b, sig1.b, c);
            rc2 = S::check(&h, &key1, &sig2, set);
            ASSERT_EQ(rc1, rc2) << "verify, set " << set << " case " << i;
            ASSERT_EQ(0, std::memcmp(sig1.b, sig2.b, sizeof sig1.b));

            if (i % 2 == 0) S::vko(ukm, &d, &key1, set, c);
        }
    }
}

TEST(EngineDiff, Curves256) { run<4>(scaled(64)); }
TEST(EngineDiff, Curves512) { run<8>(scaled(12)); }

}  // namespace
