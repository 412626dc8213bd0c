// Hostile and out-of-range operands of both sizes under AddressSanitizer:
// every function reads and writes exactly its operands (heap blocks of the
// exact size, at odd addresses), never loops forever, and accepts any
// aliasing of results and operands.
#include <cstring>
#include <memory>
#include <vector>

#include "PRNG.h"
#include "ec2001/ec_sizes.h"

namespace {

using namespace ecs;

// Exact-size heap blocks of random bytes, each starting at an odd address.
struct Blocks {
    kt::Rng& rng;
    std::vector<std::unique_ptr<unsigned char[]>> mem;
    template <class V>
    V* get() {
        mem.emplace_back(new unsigned char[sizeof(V) + 1]);
        kt::Bytes b = rng.bytes(sizeof(V));
        std::memcpy(mem.back().get() + 1, b.data(), sizeof(V));
        return reinterpret_cast<V*>(mem.back().get() + 1);
    }
};

template <class F>
void repeat(int n, F f) {
    kt::Rng rng(0xEC2001);
    for (int i = 0; i < n; ++i) {
        Blocks b{rng, {}};
        f(b, i);
    }
}

// The shared keys of each size, the UKM in its own exact block.
void vko(Blocks& m, type_uN<32>* d, type_uN<64>* q, unsigned char set) {
    auto *out = m.get<type_uN<32>>(), *out2 = m.get<type_uN<32>>();
    auto* ukm = m.get<unsigned long long>();
    GOST_34_10_2001_VKO(out, ukm, d, q, set);
    GOST_34_10_2012_VKO_256(out2, ukm, d, q, set);
    GOST_34_10_2012_VKO_256(out2, nullptr, d, q, set);
}
void vko(Blocks& m, type_uN<64>* d, type_uN<128>* q, unsigned char set) {
    auto *out = m.get<type_uN<64>>(), *ukm = m.get<type_uN<64>>();
    GOST_34_10_2012_VKO_512(out, ukm, d, q, set);
    GOST_34_10_2012_VKO_512(out, nullptr, d, q, set);
}

template <class S>
class Hostile : public ::testing::Test {};
TYPED_TEST_SUITE(Hostile, Sizes);

TYPED_TEST(Hostile, ArithmeticOnArbitraryOperands) {
    EC_SIZE;
    repeat(200, [](Blocks& m, int i) {
        // Any values, including p even, p < a, p = 0, p = 1.
        V *r = m.get<V>(), *a = m.get<V>(), *b = m.get<V>(), *p = m.get<V>();
        if (i % 7 == 0 || i % 11 == 0) std::memset(p, 0, sizeof(V));
        if (i % 11 == 0) p->b[0] = 1;
        S::add(r, a, b);
        S::sub(r, r, r);
        S::shl(a);
        S::shr(b);
        S::cmp(a, b);
        S::cmp0(a);
        S::cmp1(b);
        S::addm(r, a, b, p);
        S::subm(r, r, b, p);
        S::modp(r, p);
        S::mulm(r, a, b, p);
        S::mulm(a, a, a, a);
        S::divm(r, b, p);
        S::divm(b, nullptr, b);
        S::set(r, r);
    });
}

// Points off the curve; the scalar multiples are slow, so a few suffice.
TYPED_TEST(Hostile, PointsOffTheCurve) {
    EC_SIZE;
    repeat(20, [](Blocks& m, int) {
        V *x = m.get<V>(), *y = m.get<V>(), *x2 = m.get<V>(), *y2 = m.get<V>(), *a = m.get<V>(), *p = m.get<V>();
        V* k = m.get<V>();
        p->b[0] |= 1;  // an odd modulus keeps the inversions meaningful
        S::dbl(x, y, a, p);
        S::padd(x, x2, y, y2, a, p);
        S::padd(x, x, y, y, a, p);
        S::mulk(k, x, y, x, nullptr, a, p);
        S::mulk(k, x, y, nullptr, y, a, p);
    });
}

TYPED_TEST(Hostile, SignatureChecksOnGarbage) {
    EC_SIZE;
    using Sig = typename S::Sig;
    repeat(12, [](Blocks& m, int i) {
        V *h = m.get<V>(), *d = m.get<V>();
        Sig *q = m.get<Sig>(), *sig = m.get<Sig>();
        unsigned char set = static_cast<unsigned char>(m.rng.below(256));
        if (i % 3 == 0) std::memset(sig, 0, sizeof(Sig));
        EXPECT_EQ(S::verify(h, q, sig, set), 0);
        S::open(d, q, set);
        vko(m, d, q, set);
        S::rotate(sig);
    });
}

// The functions that draw from the generator.
TYPED_TEST(Hostile, KeysAndSignaturesInExactBlocks) {
    EC_SIZE;
    using Sig = typename S::Sig;
    kt::Rng rng(0x2001);
    Blocks m{rng, {}};
    struct Seed { unsigned char b[40]; };
    ASSERT_EQ(PRNG_init(m.get<Seed>()->b), 0);
    for (int set : S::sets) {
        auto sel = static_cast<unsigned char>(set);
        V *d = m.get<V>(), *h = m.get<V>();
        Sig *q = m.get<Sig>(), *sig = m.get<Sig>();
        h->b[sizeof(V) - 1] &= 0x3F;  // below every q: a hash is reduced only once
        ASSERT_EQ(S::genkp(d, q, sel), 0);
        ASSERT_EQ(S::sign(h, d, sig, sel), 0);
        EXPECT_EQ(S::verify(h, q, sig, sel), 1);
        vko(m, d, q, sel);
    }
}

TEST(Hostile256, TablesFillExactly16384Bytes) {
    std::unique_ptr<unsigned char[]> t(new unsigned char[16384]);
    GOST_34_10_2001_2P_table(t.get(), 3);
    GOST_34_10_2001_NAF_2kP_table(t.get(), 0);
    GOST_34_10_2001_xP_table(t.get(), 1);
    EXPECT_EQ(std::memcmp(t.get(), std::vector<unsigned char>(64, 0).data(), 64), 0);
}

// The 512-bit MP, unsuffixed and Jacobian families, on copies of paramSetA's
// values in exact blocks.
TEST(Hostile512, MpAndJacobianFamilies) {
    using U = type_uN<64>;
    kt::Rng rng(99);
    Blocks m{rng, {}};
    auto c = Ec512::curve(1);
    auto copy = [&m](const U& v) { U* r = m.get<U>(); *r = v; return r; };
    U *R = m.get<U>(), *a = m.get<U>(), *b = m.get<U>(), *p = copy(c.p), *q = copy(c.q), *k = copy(small<U>(5));
    a->b[63] = 0x12, b->b[63] = 0x34;
    GOST_34_10_2012_mul_MP_mod_p_512_bit(R, a, b, p);
    GOST_34_10_2012_mul_MP_mod_q_512_bit(R, a, b, q);
    GOST_34_10_2012_squ_MP_mod_p_512_bit(R, a, p);
    GOST_34_10_2012_mul2_MP_512_bit(R, a, p);
    GOST_34_10_2012_mul3_MP_512_bit(R, a, p);
    GOST_34_10_2012_div2_mod_MP_512_bit(R, p);
    GOST_34_10_2012_sub_mul2_MP_512_bit(R, a, b, p);
    U *x = copy(c.x), *y = copy(c.y), *ca = copy(c.a), *x2 = copy(c.x), *y2 = copy(c.y), *z = copy(small<U>(1));
    GOST_34_10_2012_mul_2_EP(x, y, ca, p);
    GOST_34_10_2012_add_EP(x, x2, y, y2, ca, p);
    GOST_34_10_2012_mul_J_2_EP(x, y, z, p);
    GOST_34_10_2012_add_J_EP(x, x2, y, y2, z, p);
    GOST_34_10_2012_mul_J_k_EP(k, x2, y2, a, b, p);
}

}  // namespace
