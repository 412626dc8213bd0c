// Every 512-bit entry point on exact-size, misaligned caller buffers under
// AddressSanitizer: no read or write past a value's 64 or 128 bytes, any
// alignment accepted.
#include <cstring>
#include <memory>
#include <vector>

#include "PRNG.h"
#include "ec2012_util.h"

using namespace ec2012;

namespace {

// Copies of values, each ending exactly at the end of a heap block, at an odd
// address.
struct Exact {
    std::vector<std::unique_ptr<unsigned char[]>> mem;
    template <class V>
    V* operator()(const V& v) {
        mem.emplace_back(new unsigned char[sizeof v.b + 1]);
        std::memcpy(mem.back().get() + 1, v.b, sizeof v.b);
        return reinterpret_cast<V*>(mem.back().get() + 1);
    }
};

}  // namespace

TEST(Bounds512, ArithmeticAndMP) {
    kt::Rng rng(99);
    U64 av = le(kt::to_hex(rng.bytes(64))), bv = le(kt::to_hex(rng.bytes(64)));
    av.b[63] = 0x12, bv.b[63] = 0x34;
    Curve A = curve(1);
    Exact x;
    U64 *R = x(U64{}), *Av = x(av), *B = x(bv), *Pm = x(A.p), *Qm = x(A.q);
    GOST_34_10_2012_add_512_bit(R, Av, B);
    GOST_34_10_2012_sub_512_bit(R, Av, B);
    GOST_34_10_2012_shr_512_bit(R);
    GOST_34_10_2012_shl_512_bit(R);
    GOST_34_10_2012_set_512_bit(R, Av);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit(R, Av), 1);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_zero(R), 2);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_one(R), 2);
    GOST_34_10_2012_add_mod_p_512_bit(R, Av, B, Pm);
    GOST_34_10_2012_sub_mod_p_512_bit(R, Av, B, Pm);
    GOST_34_10_2012_mod_p_512_bit(R, Pm);
    GOST_34_10_2012_mul_mod_p_512_bit(R, Av, B, Pm);
    std::string generic = hex(*R);
    GOST_34_10_2012_mul_MP_mod_p_512_bit(R, Av, B, Pm);
    EXPECT_EQ(hex(*R), generic);  // small operands: reduced the same way
    GOST_34_10_2012_div_mod_p_512_bit(R, Av, Pm);
    GOST_34_10_2012_div_mod_p_512_bit(R, nullptr, Pm);
    GOST_34_10_2012_mul_MP_mod_q_512_bit(R, Av, B, Qm);
    GOST_34_10_2012_squ_MP_mod_p_512_bit(R, Av, Pm);
    GOST_34_10_2012_mul2_MP_512_bit(R, Av, Pm);
    GOST_34_10_2012_mul3_MP_512_bit(R, Av, Pm);
    GOST_34_10_2012_div2_mod_MP_512_bit(R, Pm);
    GOST_34_10_2012_sub_mul2_MP_512_bit(R, Av, B, Pm);
}

TEST(Bounds512, PointsSignaturesAndVko) {
    unsigned char seed[40];
    for (int i = 0; i < 40; ++i) seed[i] = static_cast<unsigned char>(3 * i + 1);
    ASSERT_EQ(PRNG_init(seed), 0);
    Curve A = curve(1);
    Exact e;
    U64 *x = e(A.x), *y = e(A.y), *a = e(A.a), *p = e(A.p), *k = e(small(5)), *qx = e(U64{}), *qy = e(U64{});
    U64 *z = e(small(1)), *x2 = e(A.x), *y2 = e(A.y), *X = e(A.x), *Y = e(A.y);
    GOST_34_10_2012_mul_2_EP_test(x, y, a, p);
    GOST_34_10_2012_mul_2_EP(x, y, a, p);
    GOST_34_10_2012_add_EP_test(x, x2, y, y2, a, p);
    GOST_34_10_2012_add_EP(x, x2, y, y2, a, p);
    GOST_34_10_2012_mul_k_EP_test(k, x2, y2, qx, qy, a, p);
    GOST_34_10_2012_mul_J_2_EP(X, Y, z, p);
    GOST_34_10_2012_add_J_EP(X, x2, Y, y2, z, p);
    GOST_34_10_2012_mul_J_k_EP(k, x2, y2, qx, qy, p);

    U64 *d = e(U64{}), *h = e(small(42)), *out = e(U64{}), *ukm = e(small(7));
    U128 *Q = e(U128{}), *sig = e(U128{});
    ASSERT_EQ(GOST_34_10_2012_512_gen_key_pair(d, Q, 1), 0);
    GOST_34_10_2012_512_gen_open_key(d, Q, 1);
    ASSERT_EQ(GOST_34_10_2012_create_DS_512_bit(h, d, sig, 1), 0);
    EXPECT_EQ(GOST_34_10_2012_check_DS_512_bit(h, Q, sig, 1), 1);
    GOST_34_10_2012_rotate_DS_TC26(sig);
    GOST_34_10_2012_VKO_512(out, ukm, d, Q, 1);
    GOST_34_10_2012_VKO_512(out, nullptr, d, Q, 1);
}
