// Every 512-bit entry point on exact-size, misaligned caller buffers under
// AddressSanitizer: no read or write past a value's 64 or 128 bytes, any
// alignment accepted.
#include <cstring>
#include <memory>

#include "GOST_34_10_2012.h"
#include "PRNG.h"
#include "common/test_util.h"
#include "gtest/gtest.h"

namespace {

// n bytes ending exactly at the end of a heap block, at an odd address.
struct Exact {
    std::unique_ptr<unsigned char[]> block;
    unsigned char* p;
    explicit Exact(const kt::Bytes& v) : block(new unsigned char[v.size() + 1]), p(block.get() + 1) {
        std::memcpy(p, v.data(), v.size());
    }
    template <class T>
    T* as() { return reinterpret_cast<T*>(p); }
    kt::Bytes bytes(size_t n) const { return kt::Bytes(p, p + n); }
};

using U64 = type_uN<64>;
using U128 = type_uN<128>;

kt::Bytes le_hex(const std::string& be) { return kt::reversed(kt::from_hex(be)); }

const kt::Bytes kP = le_hex(
    "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
    "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFDC7");
const kt::Bytes kQ = le_hex(
    "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
    "27E69532F48D89116FF22B8D4E0560609B4B38ABFAD2B85DCACDB1411F10B275");

kt::Bytes small(unsigned v) {
    kt::Bytes b(64, 0);
    b[0] = static_cast<unsigned char>(v);
    return b;
}

}  // namespace

TEST(Bounds512, ArithmeticAndMP) {
    kt::Rng rng(99);
    kt::Bytes av = rng.bytes(64), bv = rng.bytes(64);
    av[63] = 0x12, bv[63] = 0x34;
    Exact r(kt::Bytes(64, 0)), a(av), b(bv), p(kP), q(kQ);
    U64 *R = r.as<U64>(), *A = a.as<U64>(), *B = b.as<U64>(), *Pm = p.as<U64>(), *Qm = q.as<U64>();
    GOST_34_10_2012_add_512_bit(R, A, B);
    GOST_34_10_2012_sub_512_bit(R, A, B);
    GOST_34_10_2012_shr_512_bit(R);
    GOST_34_10_2012_shl_512_bit(R);
    GOST_34_10_2012_set_512_bit(R, A);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit(R, A), 1);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_zero(R), 2);
    EXPECT_EQ(GOST_34_10_2012_comparison_512_bit_one(R), 2);
    GOST_34_10_2012_add_mod_p_512_bit(R, A, B, Pm);
    GOST_34_10_2012_sub_mod_p_512_bit(R, A, B, Pm);
    GOST_34_10_2012_mod_p_512_bit(R, Pm);
    GOST_34_10_2012_mul_mod_p_512_bit(R, A, B, Pm);
    kt::Bytes generic = r.bytes(64);
    GOST_34_10_2012_mul_MP_mod_p_512_bit(R, A, B, Pm);
    EXPECT_EQ(r.bytes(64), generic);  // small operands: reduced the same way
    GOST_34_10_2012_div_mod_p_512_bit(R, A, Pm);
    GOST_34_10_2012_div_mod_p_512_bit(R, nullptr, Pm);
    GOST_34_10_2012_mul_MP_mod_q_512_bit(R, A, B, Qm);
    GOST_34_10_2012_squ_MP_mod_p_512_bit(R, A, Pm);
    GOST_34_10_2012_mul2_MP_512_bit(R, A, Pm);
    GOST_34_10_2012_mul3_MP_512_bit(R, A, Pm);
    GOST_34_10_2012_div2_mod_MP_512_bit(R, Pm);
    GOST_34_10_2012_sub_mul2_MP_512_bit(R, A, B, Pm);
}

TEST(Bounds512, PointsSignaturesAndVko) {
    unsigned char seed[40];
    for (int i = 0; i < 40; ++i) seed[i] = static_cast<unsigned char>(3 * i + 1);
    ASSERT_EQ(PRNG_init(seed), 0);
    kt::Bytes gx = small(3), gy = le_hex(
        "7503CFE87A836AE3A61B8816E25450E6CE5E1C93ACF1ABC1778064FDCBEFA921"
        "DF1626BE4FD036E93D75E6A50E3A41E98028FE5FC235F5B889A589CB5215F2A4");
    kt::Bytes av = kP;
    av[0] -= 3;
    Exact x(gx), y(gy), a(av), p(kP), k(small(5)), qx(kt::Bytes(64, 0)), qy(kt::Bytes(64, 0)), z(small(1));
    GOST_34_10_2012_mul_2_EP_test(x.as<U64>(), y.as<U64>(), a.as<U64>(), p.as<U64>());
    GOST_34_10_2012_mul_2_EP(x.as<U64>(), y.as<U64>(), a.as<U64>(), p.as<U64>());
    Exact x2(gx), y2(gy);
    GOST_34_10_2012_add_EP_test(x.as<U64>(), x2.as<U64>(), y.as<U64>(), y2.as<U64>(), a.as<U64>(), p.as<U64>());
    GOST_34_10_2012_add_EP(x.as<U64>(), x2.as<U64>(), y.as<U64>(), y2.as<U64>(), a.as<U64>(), p.as<U64>());
    GOST_34_10_2012_mul_k_EP_test(k.as<U64>(), x2.as<U64>(), y2.as<U64>(), qx.as<U64>(), qy.as<U64>(), a.as<U64>(),
                                  p.as<U64>());
    Exact X(gx), Y(gy);
    GOST_34_10_2012_mul_J_2_EP(X.as<U64>(), Y.as<U64>(), z.as<U64>(), p.as<U64>());
    GOST_34_10_2012_add_J_EP(X.as<U64>(), x2.as<U64>(), Y.as<U64>(), y2.as<U64>(), z.as<U64>(), p.as<U64>());
    GOST_34_10_2012_mul_J_k_EP(k.as<U64>(), x2.as<U64>(), y2.as<U64>(), qx.as<U64>(), qy.as<U64>(), p.as<U64>());

    Exact d(kt::Bytes(64, 0)), Q(kt::Bytes(128, 0)), h(small(42)), sig(kt::Bytes(128, 0)), out(kt::Bytes(64, 0)),
        ukm(small(7));
    ASSERT_EQ(GOST_34_10_2012_512_gen_key_pair(d.as<U64>(), Q.as<U128>(), 1), 0);
    GOST_34_10_2012_512_gen_open_key(d.as<U64>(), Q.as<U128>(), 1);
    ASSERT_EQ(GOST_34_10_2012_create_DS_512_bit(h.as<U64>(), d.as<U64>(), sig.as<U128>(), 1), 0);
    EXPECT_EQ(GOST_34_10_2012_check_DS_512_bit(h.as<U64>(), Q.as<U128>(), sig.as<U128>(), 1), 1);
    GOST_34_10_2012_rotate_DS_TC26(sig.as<U128>());
    GOST_34_10_2012_VKO_512(out.as<U64>(), ukm.as<U64>(), d.as<U64>(), Q.as<U128>(), 1);
    GOST_34_10_2012_VKO_512(out.as<U64>(), nullptr, d.as<U64>(), Q.as<U128>(), 1);
}
