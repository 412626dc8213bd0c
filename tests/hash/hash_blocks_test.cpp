// The exported building blocks against their definitions, and the
// 34.11-94 hash with a caller's starting vector rebuilt from them.
#include <gtest/gtest.h>

#include <cstring>

#include "GOST_28147_89.h"
#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "common/test_util.h"

namespace {

using kt::Bytes;
typedef type_uN<32> U256;
typedef type_uN<64> U512;

// n bytes of m from pos, zero-padded.
template <unsigned N>
type_uN<N> load(const Bytes& m, size_t pos = 0, size_t n = N) {
    type_uN<N> v{};
    std::memcpy(v.b, m.data() + pos, n);
    return v;
}
template <unsigned N>
type_uN<N> rnd(kt::Rng& rng) { return load<N>(rng.bytes(N)); }

template <unsigned N>
std::string hex(const type_uN<N>& v) { return kt::to_hex(v.b, N); }

template <unsigned N>
type_uN<N> xorv(const type_uN<N>& a, const type_uN<N>& b) {
    type_uN<N> r;
    for (unsigned i = 0; i < N; ++i) r.b[i] = a.b[i] ^ b.b[i];
    return r;
}

uint64_t word(const unsigned char* p, int i) {
    uint64_t w;
    std::memcpy(&w, p + 8 * i, 8);
    return w;
}

// --- GOST R 34.11-94 ---------------------------------------------------------

// psi on sixteen 16-bit words, straight from the definition.
void psi_ref(U256& y) {
    uint16_t w[16];
    std::memcpy(w, y.b, 32);
    uint16_t top = w[0] ^ w[1] ^ w[2] ^ w[3] ^ w[12] ^ w[15];
    std::memmove(w, w + 1, 30);
    w[15] = top;
    std::memcpy(y.b, w, 32);
}

TEST(Gost94Blocks, APAndMix) {
    kt::Rng rng(1);
    U256 y = rnd<32>(rng), r = y;
    GOST_34_11_94_A(&r);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(word(r.b, i), word(y.b, i + 1));
    EXPECT_EQ(word(r.b, 3), word(y.b, 0) ^ word(y.b, 1));

    U256 in, out;
    for (int i = 0; i < 32; ++i) in.b[i] = static_cast<unsigned char>(i);
    GOST_34_11_94_P(&out, &in);
    for (int i = 0; i < 32; ++i) EXPECT_EQ(out.b[i], 8 * (i % 4) + i / 4);
    GOST_34_11_94_P(&in, &in);  // in place
    EXPECT_EQ(hex(in), hex(out));

    for (unsigned n : {0u, 1u, 2u, 3u, 4u, 5u, 12u, 61u, 200u, 255u}) {
        U256 m = rnd<32>(rng), ref = m;
        for (unsigned i = 0; i < n; ++i) psi_ref(ref);
        GOST_34_11_94_mix(&m, static_cast<unsigned char>(n));
        EXPECT_EQ(hex(m), hex(ref)) << n;
    }
}

TEST(Gost94Blocks, MixingKeyGenAndStep) {
    kt::Rng rng(3);
    for (int t = 0; t < 8; ++t) {
        U256 s = rnd<32>(rng), m = rnd<32>(rng), h = rnd<32>(rng);
        // Shuffle: psi^12, XOR M, psi, XOR H, psi^61; a null M skips its XOR.
        for (U256* mp : {&m, static_cast<U256*>(nullptr)}) {
            U256 ref = s, got = s;
            GOST_34_11_94_mix(&ref, 12);
            if (mp) ref = xorv(ref, *mp);
            GOST_34_11_94_mix(&ref, 1);
            ref = xorv(ref, h);
            GOST_34_11_94_mix(&ref, 61);
            GOST_34_11_94_mixing(&got, mp, &h);
            EXPECT_EQ(hex(got), hex(ref));
        }
        // Key generation and encryption with the cipher's own 32-Z cycle.
        U256 u = h, v = m, enc = h,
             c = load<32>(kt::from_hex("00ff00ff00ff00ffff00ff00ff00ff0000ffff00ff0000ffff000000ffff00ff"));  // C3
        for (int i = 0; i < 4; ++i) {
            U256 w = xorv(u, v), key;
            GOST_34_11_94_P(&key, &w);
            type_u64 block;
            std::memcpy(&block, enc.b + 8 * i, 8);
            GOST_28147_cycle_32_Z(&block, &key, GOST_28147_89_get_s_box_ptr(1));
            std::memcpy(enc.b + 8 * i, &block, 8);
            GOST_34_11_94_A(&u);
            if (i == 1) u = xorv(u, c);
            GOST_34_11_94_A(&v);
            GOST_34_11_94_A(&v);
        }
        U256 gen;
        GOST_34_11_94_gen_key_and_encrypt(&gen, &m, &h);
        EXPECT_EQ(hex(gen), hex(enc));
        // The step function is the two combined.
        GOST_34_11_94_mixing(&enc, &m, &h);
        GOST_34_11_94_base_step(&m, &h);
        EXPECT_EQ(hex(h), hex(enc));
    }
}

// The hash with a caller's starting vector rebuilt from the step function
// (the peer digests pin the zero start): blocks, the last one zero-padded,
// then the 32-bit bit length and sigma.
TEST(Gost94Blocks, HashWithStartFromPieces) {
    kt::Rng rng(5);
    for (size_t n : {0, 1, 31, 32, 33, 64, 100}) {
        Bytes m = rng.bytes(n);
        U256 start = rnd<32>(rng), h = start, sigma{}, len{}, out;
        for (size_t pos = 0; pos < n; pos += 32) {
            U256 blk = load<32>(m, pos, std::min<size_t>(32, n - pos));
            GOST_34_11_94_sum_mod_2_256(&sigma, &blk);
            GOST_34_11_94_base_step(&blk, &h);
        }
        uint32_t bits = static_cast<uint32_t>(n * 8);
        std::memcpy(len.b, &bits, 4);
        GOST_34_11_94_base_step(&len, &h);
        GOST_34_11_94_base_step(&sigma, &h);
        GOST_34_11_94_hash(m.data(), static_cast<unsigned>(n), &start, &out);
        EXPECT_EQ(hex(out), hex(h)) << n;
    }
}

// --- GOST R 34.11-2012 -------------------------------------------------------

U512 lps(U512 x) {
    GOST_34_11_2012_Sbox(&x);
    GOST_34_11_2012_Transposition(&x);
    GOST_34_11_2012_Mix_Columns(&x);
    return x;
}

TEST(Gost2012Blocks, SboxTranspositionMixColumns) {
    U512 x;
    for (int i = 0; i < 64; ++i) x.b[i] = static_cast<unsigned char>(i);
    GOST_34_11_2012_Transposition(&x);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(x.b[i], 8 * (i % 8) + i / 8);
    // pi(0..3) = FC EE DD 11, pi(63) = 1F (RFC 6986 section 6); the whole
    // table is pinned by the digests and by E against LPS below.
    for (int i = 0; i < 64; ++i) x.b[i] = static_cast<unsigned char>(i);
    GOST_34_11_2012_Sbox(&x);
    EXPECT_EQ(kt::to_hex(x.b, 4) + kt::to_hex(x.b + 63, 1), "fceedd111f");
    // A single set bit 63 - k of a word selects row k of A; rows 0, 1 and 63
    // as published in RFC 6986.
    const struct { int bit; uint64_t row; } cases[] = {
        {63, 0x8e20faa72ba0b470ull}, {62, 0x47107ddd9b505a38ull}, {0, 0x641c314b2b8ee083ull}};
    for (const auto& c : cases)
        for (int w = 0; w < 8; ++w) {
            uint64_t v = 1ull << c.bit;
            x = U512{};
            std::memcpy(x.b + 8 * w, &v, 8);
            GOST_34_11_2012_Mix_Columns(&x);
            for (int i = 0; i < 8; ++i) EXPECT_EQ(word(x.b, i), i == w ? c.row : 0) << c.bit << " " << w;
        }
}

// Both sums and XORs against schoolbook byte addition: the 256-bit ones on
// the low halves, the 512-bit sum also in place.
TEST(HashBlocks, SumsAndXors) {
    kt::Rng rng(4);
    for (int t = 0; t < 6; ++t) {
        U512 a = rnd<64>(rng), b = rnd<64>(rng), r, ref;
        if (t == 0) std::memset(a.b, 0xFF, 64), b = U512{}, b.b[0] = 2;  // 2^512 - 1 + 2 = 1
        if (t == 1) a = b = U512{}, a.b[6] = a.b[7] = 0xFF, b.b[6] = 1;   // carry across a word boundary
        for (unsigned i = 0, carry = 0; i < 64; ++i, carry >>= 8)
            ref.b[i] = static_cast<unsigned char>(carry += a.b[i] + b.b[i]);
        U256 a4 = load<32>(Bytes(a.b, a.b + 32)), b4 = load<32>(Bytes(b.b, b.b + 32)), x4;
        GOST_34_11_2012_xor_512(&r, &a, &b);
        EXPECT_EQ(hex(r), hex(xorv(a, b)));
        GOST_34_11_94_xor_u256(&x4, &a4, &b4);
        EXPECT_EQ(hex(x4), hex(xorv(a, b)).substr(0, 64));
        GOST_34_11_94_sum_mod_2_256(&a4, &b4);
        EXPECT_EQ(hex(a4), hex(ref).substr(0, 64));
        GOST_34_11_2012_sum_mod_2_512(&r, &a, &b);
        EXPECT_EQ(hex(r), hex(ref));
        GOST_34_11_2012_sum_mod_2_512(&a, &a, &b);
        EXPECT_EQ(hex(a), hex(ref));
    }
}

TEST(Gost2012Blocks, KeyEAndG) {
    // C1 of RFC 6986, most significant byte first.
    Bytes c1 = kt::reversed(kt::from_hex(
        "b1085bda1ecadae9ebcb2f81c0657c1f2f6a76432e45d016714eb88d7585c4fc"
        "4b7ce09192676901a2422a08a460d31505767436cc744d23dd806559f2a64507"));
    U512 k{};
    GOST_34_11_2012_Key(&k, 0);
    EXPECT_EQ(hex(k), hex(lps(load<64>(c1))));
    U512 same = k;
    GOST_34_11_2012_Key(&same, 12);  // no thirteenth constant: unchanged
    EXPECT_EQ(hex(same), hex(k));

    kt::Rng rng(8);
    for (int t = 0; t < 4; ++t) {
        U512 key = rnd<64>(rng), m = rnd<64>(rng), h = rnd<64>(rng), n = rnd<64>(rng);
        // E from LPS and the key schedule.
        U512 s = xorv(key, m), kk = key, e, ek = key;
        for (unsigned char i = 0; i < 12; ++i) {
            GOST_34_11_2012_Key(&kk, i);
            s = xorv(lps(s), kk);
        }
        GOST_34_11_2012_E(&e, &ek, &m);
        EXPECT_EQ(hex(e), hex(s));
        EXPECT_EQ(hex(ek), hex(kk));
        // g_N(h, m) = E(LPS(h ^ N), m) ^ h ^ m.
        U512 k0 = lps(xorv(h, n)), t0, g = h;
        GOST_34_11_2012_E(&t0, &k0, &m);
        GOST_34_11_2012_G(&n, &g, &m);
        EXPECT_EQ(hex(g), hex(xorv(xorv(t0, h), m)));
    }
}

}  // namespace
