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

// An exact-size heap block starting at an odd address.
struct Block {
    std::unique_ptr<unsigned char[]> mem;
    unsigned char* p;
    explicit Block(size_t n, kt::Rng& rng) : mem(new unsigned char[n + 1]) {
        p = mem.get() + 1;
        kt::Bytes b = rng.bytes(n);
        std::memcpy(p, b.data(), n);
    }
};

template <class F>
void repeat(F f) {
    kt::Rng rng(0xEC2001);
    for (int i = 0; i < 200; ++i) f(rng, i);
}

T* as256(Block& b) { return reinterpret_cast<T*>(b.p); }

TEST(Hostile256, ArithmeticOnArbitraryOperands) {
    repeat([](kt::Rng& rng, int i) {
        // Any 256-bit values, including p even, p < a, p = 0, p = 1.
        std::vector<Block> v;
        for (int k = 0; k < 4; ++k) v.emplace_back(32, rng);
        T *r = as256(v[0]), *a = as256(v[1]), *b = as256(v[2]), *p = as256(v[3]);
        if (i % 7 == 0) std::memset(p, 0, 32);
        if (i % 11 == 0) { std::memset(p, 0, 32); p->b[0] = 1; }
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

TEST(Hostile256, PointsOffTheCurve) {
    repeat([](kt::Rng& rng, int i) {
        std::vector<Block> v;
        for (int k = 0; k < 6; ++k) v.emplace_back(32, rng);
        T *x = as256(v[0]), *y = as256(v[1]), *x2 = as256(v[2]), *y2 = as256(v[3]), *a = as256(v[4]);
        T* p = as256(v[5]);
        p->b[0] |= 1;  // an odd modulus keeps the inversions meaningful
        if (i >= 20) return;  // the scalar multiples below are slow; a few suffice
        GOST_34_10_2001_mul_2_EP(x, y, a, p);
        GOST_34_10_2001_add_EP(x, x2, y, y2, a, p);
        GOST_34_10_2001_add_EP(x, x, y, y, a, p);
        Block k(32, rng);
        GOST_34_10_2001_mul_k_EP(as256(k), x, y, x, nullptr, a, p);
        GOST_34_10_2001_mul_k_EP(as256(k), x, y, nullptr, y, a, p);
    });
}

TEST(Hostile256, SignatureChecksOnGarbage) {
    repeat([](kt::Rng& rng, int i) {
        if (i >= 12) return;
        Block h(32, rng), q(64, rng), sig(64, rng), out(32, rng), d(32, rng);
        unsigned char set = static_cast<unsigned char>(rng.below(256));
        if (i % 3 == 0) std::memset(sig.p, 0, 64);
        EXPECT_EQ(GOST_34_10_2001_check_DS(as256(h), reinterpret_cast<type_uN<64>*>(q.p),
                                           reinterpret_cast<type_uN<64>*>(sig.p), set), 0);
        GOST_34_10_2001_gen_open_key(as256(d), reinterpret_cast<type_uN<64>*>(q.p), set);
        std::unique_ptr<unsigned long long> ukm(new unsigned long long(rng.next()));
        GOST_34_10_2001_VKO(as256(out), ukm.get(), as256(d), reinterpret_cast<type_uN<64>*>(q.p), set);
        GOST_34_10_2001_rotate_DS_RFC4490(reinterpret_cast<type_uN<64>*>(sig.p));
    });
}

// The functions that draw from the generator, and the 2012 VKO, on exact-size
// blocks at odd addresses.
TEST(Hostile256, KeysAndSignaturesInExactBlocks) {
    kt::Rng rng(0x2001);
    Block seed(40, rng);
    ASSERT_EQ(PRNG_init(seed.p), 0);
    for (unsigned char set : {0, 1, 2, 3}) {
        Block d(32, rng), q(64, rng), h(32, rng), sig(64, rng), out(32, rng);
        auto* Q = reinterpret_cast<type_uN<64>*>(q.p);
        auto* S = reinterpret_cast<type_uN<64>*>(sig.p);
        ASSERT_EQ(GOST_34_10_2001_gen_key_pair(as256(d), Q, set), 0);
        ASSERT_EQ(GOST_34_10_2001_create_DS(as256(h), as256(d), S, set), 0);
        EXPECT_EQ(GOST_34_10_2001_check_DS(as256(h), Q, S, set), 1);
        GOST_34_10_2012_VKO_256(as256(out), nullptr, as256(d), Q, set);
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
