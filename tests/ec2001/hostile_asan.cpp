// Hostile and out-of-range operands under AddressSanitizer: every function
// reads and writes exactly its 32- or 64-byte operands (heap blocks of the
// exact size, at odd addresses), never loops forever, and accepts any
// aliasing of results and operands.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "PRNG.h"
#include "common/test_util.h"

namespace {

using T = type_uN<32>;
using Q = type_uN<64>;

// Exact-size heap blocks of random bytes, each starting at an odd address.
struct Blocks {
    kt::Rng& rng;
    std::vector<std::unique_ptr<unsigned char[]>> mem;
    unsigned char* get(size_t n) {
        mem.emplace_back(new unsigned char[n + 1]);
        kt::Bytes b = rng.bytes(n);
        std::memcpy(mem.back().get() + 1, b.data(), n);
        return mem.back().get() + 1;
    }
    T* u256() { return reinterpret_cast<T*>(get(32)); }
    Q* u512() { return reinterpret_cast<Q*>(get(64)); }
};

template <class F>
void repeat(int n, F f) {
    kt::Rng rng(0xEC2001);
    for (int i = 0; i < n; ++i) {
        Blocks b{rng, {}};
        f(b, i);
    }
}

TEST(Hostile256, ArithmeticOnArbitraryOperands) {
    repeat(200, [](Blocks& m, int i) {
        // Any 256-bit values, including p even, p < a, p = 0, p = 1.
        T *r = m.u256(), *a = m.u256(), *b = m.u256(), *p = m.u256();
        if (i % 7 == 0 || i % 11 == 0) std::memset(p, 0, 32);
        if (i % 11 == 0) p->b[0] = 1;
        GOST_34_10_2001_add_256_bit(r, a, b);
        GOST_34_10_2001_sub_256_bit(r, r, r);
        GOST_34_10_2001_shl_256_bit(a);
        GOST_34_10_2001_shr_256_bit(b);
        GOST_34_10_2001_comparison_256_bit(a, b);
        GOST_34_10_2001_comparison_256_bit_zero(a);
        GOST_34_10_2001_comparison_256_bit_one(b);
        GOST_34_10_2001_add_mod_p_256_bit(r, a, b, p);
        GOST_34_10_2001_sub_mod_p_256_bit(r, r, b, p);
        GOST_34_10_2001_mod_p_256_bit(r, p);
        GOST_34_10_2001_mul_mod_p_256_bit(r, a, b, p);
        GOST_34_10_2001_mul_mod_p_256_bit(a, a, a, a);
        GOST_34_10_2001_div_mod_p_256_bit(r, b, p);
        GOST_34_10_2001_div_mod_p_256_bit(b, nullptr, b);
        GOST_34_10_2001_set_256_bit(r, r);
    });
}

// Points off the curve; the scalar multiples are slow, so a few suffice.
TEST(Hostile256, PointsOffTheCurve) {
    repeat(20, [](Blocks& m, int) {
        T *x = m.u256(), *y = m.u256(), *x2 = m.u256(), *y2 = m.u256(), *a = m.u256(), *p = m.u256(), *k = m.u256();
        p->b[0] |= 1;  // an odd modulus keeps the inversions meaningful
        GOST_34_10_2001_mul_2_EP(x, y, a, p);
        GOST_34_10_2001_add_EP(x, x2, y, y2, a, p);
        GOST_34_10_2001_add_EP(x, x, y, y, a, p);
        GOST_34_10_2001_mul_k_EP(k, x, y, x, nullptr, a, p);
        GOST_34_10_2001_mul_k_EP(k, x, y, nullptr, y, a, p);
    });
}

TEST(Hostile256, SignatureChecksOnGarbage) {
    repeat(12, [](Blocks& m, int i) {
        T *h = m.u256(), *out = m.u256(), *d = m.u256();
        Q *q = m.u512(), *sig = m.u512();
        unsigned char set = static_cast<unsigned char>(m.rng.below(256));
        if (i % 3 == 0) std::memset(sig, 0, 64);
        EXPECT_EQ(GOST_34_10_2001_check_DS(h, q, sig, set), 0);
        GOST_34_10_2001_gen_open_key(d, q, set);
        std::unique_ptr<unsigned long long> ukm(new unsigned long long(m.rng.next()));
        GOST_34_10_2001_VKO(out, ukm.get(), d, q, set);
        GOST_34_10_2001_rotate_DS_RFC4490(sig);
    });
}

// The functions that draw from the generator, and the 2012 VKO.
TEST(Hostile256, KeysAndSignaturesInExactBlocks) {
    kt::Rng rng(0x2001);
    Blocks m{rng, {}};
    ASSERT_EQ(PRNG_init(m.get(40)), 0);
    for (unsigned char set : {0, 1, 2, 3}) {
        T *d = m.u256(), *h = m.u256(), *out = m.u256();
        Q *q = m.u512(), *sig = m.u512();
        ASSERT_EQ(GOST_34_10_2001_gen_key_pair(d, q, set), 0);
        ASSERT_EQ(GOST_34_10_2001_create_DS(h, d, sig, set), 0);
        EXPECT_EQ(GOST_34_10_2001_check_DS(h, q, sig, set), 1);
        GOST_34_10_2012_VKO_256(out, nullptr, d, q, set);
    }
}

TEST(Hostile256, TablesFillExactly16384Bytes) {
    std::unique_ptr<unsigned char[]> t(new unsigned char[16384]);
    GOST_34_10_2001_2P_table(t.get(), 3);
    GOST_34_10_2001_NAF_2kP_table(t.get(), 0);
    GOST_34_10_2001_xP_table(t.get(), 1);
    EXPECT_EQ(std::memcmp(t.get(), std::vector<unsigned char>(64, 0).data(), 64), 0);
}

}  // namespace
