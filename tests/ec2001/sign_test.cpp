// GOST R 34.10-2001 keys, signatures and VKO: the example of the standard,
// every result code and quirk of the check, and interop with OpenSSL's GOST
// engine (fixtures from tests/vectors/ec2001/generate.sh).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "GOST_34_10_2012.h"
#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "PRNG.h"
#include "ec2001/ec_test_util.h"

using ect::be256;
using ect::small;
using ect::u256;
using T = type_uN<32>;
using Sig = type_uN<64>;

namespace {

// The example of GOST R 34.10-2001 (appendix A) on the test curve.
const T kD = be256("7A929ADE789BB9BE10ED359DD39A72C11B60961F49397EEE1D19CE9891EC3B28");
const T kE = be256("2DFBC1B372D89A1188C09C52E0EEC61FCE52032AB1022E8E67ECE6672B043EE5");
const char* kR = "41AA28D2F1AB148280CD9ED56FEDA41974053554A42767B83AD043FD39DC0493";
const char* kS = "01456C64BA4642A1653C235A98A60249BCD6D3F746B631DF928014F6C5BF9C40";

Sig pair(const T& lo, const T& hi) { return ect::from_hex<64>(ect::hex(lo) + ect::hex(hi)); }
const Sig kQ = pair(be256("7F2B49E270DB6D90D8595BEC458B50C58585BA1D4E9B788F6689DBD8E56FD80B"),
                    be256("26F1B489D6701DD185C8413A977B3CBBAF64D1C593D26627DFFB101A87FF77DA"));

// RFC 4490 layout: s big-endian, then r big-endian.
Sig rfc4490(const std::string& s_be, const std::string& r_be) { return ect::from_hex<64>(s_be + r_be); }

Sig reversed_halves(Sig s) {
    std::reverse(s.b, s.b + 32);
    std::reverse(s.b + 32, s.b + 64);
    return s;
}

void seed_prng(unsigned char first) {
    unsigned char seed[40];
    for (int i = 0; i < 40; ++i) seed[i] = static_cast<unsigned char>(first + i);
    ASSERT_EQ(PRNG_init(seed), 0);
}

int check(T h, Sig q, Sig* sig, unsigned char set) { return GOST_34_10_2001_check_DS(&h, &q, sig, set); }

// Every selector outside 1..3 is the test curve. A full check, pass or fail,
// leaves the caller's layout as it was; one bit changed in the hash, s, r or
// the key fails it.
TEST(Gost2001, ExampleKeyAndSignature) {
    for (unsigned char set : {0, 4, 17, 255}) {
        T d = kD;
        Sig q;
        GOST_34_10_2001_gen_open_key(&d, &q, set);
        EXPECT_EQ(q, kQ) << int(set);
    }
    const Sig orig = rfc4490(kS, kR);
    for (int where = -1; where < 4; ++where) {
        T e = kE;
        Sig q = kQ, sig = orig;
        if (where == 0) e.b[7] ^= 0x10;
        if (where == 1) sig.b[31] ^= 1;  // low bit of s
        if (where == 2) sig.b[40] ^= 4;
        if (where == 3) q.b[3] ^= 1;
        Sig sent = sig;
        EXPECT_EQ(check(e, q, &sig, 0), where < 0) << where;
        EXPECT_EQ(sig, sent) << where;
    }
}

// Out-of-range s or r: 0 at once, with the buffer left byte-reversed; a
// second rotation restores it.
TEST(Gost2001, EarlyRejectLeavesBufferReversed) {
    ect::Curve c = ect::curve(0);
    std::string q_be = kt::to_hex(kt::reversed(kt::Bytes(c.q.b, c.q.b + 32))), zero(64, '0');
    const std::pair<std::string, std::string> cases[] = {
        {zero, kR}, {kS, zero}, {q_be, kR}, {kS, q_be}, {std::string(64, 'f'), kR}};
    for (const auto& k : cases) {
        Sig sig = rfc4490(k.first, k.second), orig = sig;
        EXPECT_EQ(check(kE, kQ, &sig, 0), 0) << k.first << k.second;
        EXPECT_EQ(sig, reversed_halves(orig));
        GOST_34_10_2001_rotate_DS_RFC4490(&sig);
        EXPECT_EQ(sig, orig);
    }
}

// The public key is not validated: against the point at infinity the check
// reduces to R = x(s/e * P), so with e = 1 the pair (s, x(sP) mod q) passes.
TEST(Gost2001, PublicKeyIsNotValidated) {
    for (unsigned char set : {0, 1, 3}) {
        ect::Curve c = ect::curve(set);
        T s = small(5), r;
        GOST_34_10_2001_mul_k_EP(&s, &c.x, &c.y, &r, nullptr, &c.a, &c.p);
        GOST_34_10_2001_mod_p_256_bit(&r, &c.q);
        Sig sig = reversed_halves(pair(s, r));
        EXPECT_EQ(check(small(1), Sig{}, &sig, set), 1) << int(set);
    }
}

TEST(Gost2001, GeneratorNotSeeded) {
    unsigned char saved[40];
    std::memcpy(saved, PRNG_get_RAND_ptr(), 40);
    std::memset(PRNG_get_RAND_ptr(), 0, 40);
    T d = small(0x55), h = kE, dk = kD;
    Sig q = pair(small(0x66), small(0x77)), sig;
    std::memset(sig.b, 0xAA, 64);
    EXPECT_EQ(GOST_34_10_2001_gen_key_pair(&d, &q, 1), 1);
    EXPECT_EQ(q, pair(small(0x66), small(0x77)));  // nothing computed
    EXPECT_EQ(d, T{});                              // zeroed before the draw
    EXPECT_EQ(GOST_34_10_2001_create_DS(&h, &dk, &sig, 1), 1);
    EXPECT_EQ(sig, Sig{});  // zeros in the internal layout, never rotated
    std::memcpy(PRNG_get_RAND_ptr(), saved, 40);
}

// The key is the generator's first 32 bytes as a little-endian number, less
// q once when it is not below q (set 2: q is just above 2^255). Seed 1 draws
// 0x96a3... (above q), seed 10 draws 0x5058... (below).
TEST(Gost2001, KeyPairIsTheDrawReducedOnce) {
    for (unsigned char first : {1, 10}) {
        for (unsigned char set : {1, 2}) {
            ect::Curve c = ect::curve(set);
            T draw, d;
            Sig q;
            seed_prng(first);
            ASSERT_EQ(PRNG_get(&draw), 0);
            seed_prng(first);
            ASSERT_EQ(GOST_34_10_2001_gen_key_pair(&d, &q, set), 0);
            T expect = draw;
            GOST_34_10_2001_mod_p_256_bit(&expect, &c.q);
            EXPECT_EQ(d, expect) << int(first) << " " << int(set);
            EXPECT_EQ(d == draw, GOST_34_10_2001_comparison_256_bit(&draw, &c.q) == 0);
        }
    }
}

// A private key is used as it is, not reduced; d and d + q still give the
// same public key, signature and shared key, since every product with d keeps
// d as the multiplier (r * d, t * d) and so comes out fully reduced.
TEST(Gost2001, PrivateKeyAboveQActsAsReduced) {
    for (unsigned char set : {0, 2}) {
        ect::Curve c = ect::curve(set);
        T d = u256("5d3c0e1f2a4b6c7d8e9fa0b1c2d3e4f5061728394a5b6c7d8e9fa0b1c2d3e41f"), dq, h = kE, k1, k2;
        ASSERT_EQ(GOST_34_10_2001_add_256_bit(&dq, &d, &c.q), 0);
        Sig q1, q2, s1, s2;
        GOST_34_10_2001_gen_open_key(&d, &q1, set);
        GOST_34_10_2001_gen_open_key(&dq, &q2, set);
        EXPECT_EQ(q1, q2) << int(set);
        seed_prng(7);
        ASSERT_EQ(GOST_34_10_2001_create_DS(&h, &d, &s1, set), 0);
        seed_prng(7);
        ASSERT_EQ(GOST_34_10_2001_create_DS(&h, &dq, &s2, set), 0);
        EXPECT_EQ(s1, s2) << int(set);
        EXPECT_EQ(check(h, q1, &s2, set), 1);
        unsigned long long ukm = 0x0123456789ABCDEFull;
        GOST_34_10_2001_VKO(&k1, &ukm, &d, &q1, set);
        GOST_34_10_2001_VKO(&k2, &ukm, &dq, &q1, set);
        EXPECT_EQ(k1, k2) << int(set);
    }
}

class PerSet : public ::testing::TestWithParam<int> {};

// Fresh keys sign and verify; another curve's check fails; a hash equal to q
// or to 0 reduces to 0 and is then taken as 1.
TEST_P(PerSet, KeyPairSignVerify) {
    unsigned char set = static_cast<unsigned char>(GetParam());
    ect::Curve c = ect::curve(set);
    seed_prng(static_cast<unsigned char>(10 + set));
    T d;
    Sig q, q2, sig;
    ASSERT_EQ(GOST_34_10_2001_gen_key_pair(&d, &q, set), 0);
    EXPECT_EQ(GOST_34_10_2001_comparison_256_bit_zero(&d), 2);
    EXPECT_EQ(GOST_34_10_2001_comparison_256_bit(&d, &c.q), 0);
    GOST_34_10_2001_gen_open_key(&d, &q2, set);
    EXPECT_EQ(q, q2);

    T h = ect::from_hex<32>(kt::to_hex(kt::Rng(set + 1).bytes(32)));
    ASSERT_EQ(GOST_34_10_2001_create_DS(&h, &d, &sig, set), 0);
    Sig kept = sig;
    EXPECT_EQ(check(h, q, &sig, set), 1);  // so s and r are in [1, q - 1]
    EXPECT_EQ(sig, kept);
    EXPECT_EQ(check(h, q, &sig, set == 1 ? 2 : 1), 0);

    for (T hq : {c.q, T{}}) {
        ASSERT_EQ(GOST_34_10_2001_create_DS(&hq, &d, &sig, set), 0);
        for (T hv : {small(1), c.q, T{}}) {
            Sig s2 = sig;
            EXPECT_EQ(check(hv, q, &s2, set), 1);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, PerSet, ::testing::Values(0, 1, 2, 3));

// OpenSSL's keys and signatures over GOST R 34.11-94 digests.
TEST(Gost2001Interop, OpenSslSignaturesVerify) {
    auto recs = kt::load_records("ec2001/sign.txt");
    EXPECT_EQ(recs.size(), 12u);
    for (auto& rec : recs) {
        unsigned char set = static_cast<unsigned char>(std::stoi(rec["set"]));
        T d = u256(rec["d"]), h;
        Sig q = ect::from_hex<64>(rec["Q"]), mine, sig = ect::from_hex<64>(rec["sig"]);
        GOST_34_10_2001_gen_open_key(&d, &mine, set);
        EXPECT_EQ(mine, q) << rec["paramset"];
        kt::Bytes msg = kt::from_hex(rec["msg"]);
        GOST_34_11_94_hash(msg.data(), static_cast<unsigned>(msg.size()), nullptr, &h);
        EXPECT_EQ(ect::hex(h), rec["digest"]);
        h = u256(rec["digest"]);
        EXPECT_EQ(check(h, q, &sig, set), 1) << rec["paramset"];
        h.b[0] ^= 1;
        EXPECT_EQ(check(h, q, &sig, set), 0) << rec["paramset"];
    }
}

// Our signatures, accepted by `openssl pkeyutl -verify` when the fixtures
// were made: the same seed gives the same bytes.
TEST(Gost2001Interop, OurSignaturesAsOpenSslChecked) {
    auto recs = kt::load_records("ec2001/ours.txt");
    ASSERT_EQ(recs.size(), 13u);
    kt::Bytes seed = kt::from_hex(recs[0]["seed"]);
    for (size_t i = 1; i < recs.size(); ++i) {
        auto& rec = recs[i];
        unsigned char set = static_cast<unsigned char>(std::stoi(rec["set"]));
        ASSERT_EQ(PRNG_init(seed.data()), 0);
        T h = u256(rec["digest"]), d = u256(rec["d"]);
        Sig sig;
        ASSERT_EQ(GOST_34_10_2001_create_DS(&h, &d, &sig, set), 0);
        EXPECT_EQ(ect::hex(sig), rec["sig"]);
        EXPECT_EQ(check(h, ect::from_hex<64>(rec["Q"]), &sig, set), 1);
    }
}

TEST(Gost2001Interop, VkoAgreesWithOpenSsl) {
    auto recs = kt::load_records("ec2001/vko.txt");
    EXPECT_EQ(recs.size(), 10u);
    for (auto& rec : recs) {
        unsigned char set = static_cast<unsigned char>(std::stoi(rec["set"]));
        auto vko = rec["alg"] == "gost2012_256" ? GOST_34_10_2012_VKO_256 : GOST_34_10_2001_VKO;
        unsigned long long ukm;
        std::memcpy(&ukm, kt::from_hex(rec["ukm"]).data(), 8);
        T da = u256(rec["a_d"]), db = u256(rec["b_d"]), k1, k2;
        Sig qa = ect::from_hex<64>(rec["a_Q"]), qb = ect::from_hex<64>(rec["b_Q"]);
        vko(&k1, &ukm, &da, &qb, set);
        vko(&k2, &ukm, &db, &qa, set);
        EXPECT_EQ(ect::hex(k1) + ect::hex(k2), rec["key"] + rec["key"]) << rec["alg"] << " " << rec["paramset"];
    }
}

// A null UKM means 1 for the 2012 variant; UKM 0 gives K = (0, 0) and the hash
// of 64 zero bytes, no error; the UKM is read little-endian from any alignment.
TEST(Gost2001, VkoUkmEdgeCases) {
    T d = kD, k1, k2, z;
    Sig q = kQ;
    unsigned long long one = 1, zero = 0, u = 12345;
    GOST_34_10_2012_VKO_256(&k1, nullptr, &d, &q, 0);
    GOST_34_10_2012_VKO_256(&k2, &one, &d, &q, 0);
    EXPECT_EQ(k1, k2);
    unsigned char zeros[64] = {0};
    GOST_34_10_2012_VKO_256(&k1, &zero, &d, &q, 0);
    GOST_34_11_2012_hash_256_bit(zeros, 64, &z);
    EXPECT_EQ(k1, z);
    GOST_34_10_2001_VKO(&k1, &zero, &d, &q, 0);
    GOST_34_11_94_hash(zeros, 64, nullptr, &z);
    EXPECT_EQ(k1, z);
    unsigned char raw[9] = {0, 0x39, 0x30, 0, 0, 0, 0, 0, 0};  // 12345 at an odd address
    GOST_34_10_2001_VKO(&k1, reinterpret_cast<unsigned long long*>(raw + 1), &d, &q, 1);
    GOST_34_10_2001_VKO(&k2, &u, &d, &q, 1);
    EXPECT_EQ(k1, k2);
}

}  // namespace
