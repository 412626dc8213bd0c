// Schoolbook-and-fold multiplications of the 512-bit layer, and the exported
// MP family.
#include "GOST_34_10_2012.h"
#include "ec/mp_512.h"

namespace kx {
namespace mp {
namespace {

using u128 = unsigned __int128;

// 1024-bit number as sixteen 64-bit words, least significant first.
struct Wide {
    uint64_t w[16];
};

// Full product of two 512-bit values.
Wide mul_wide(const N512& a, const N512& b) {
    Wide r{};
    for (unsigned i = 0; i < 8; ++i) {
        uint64_t carry = 0;
        for (unsigned j = 0; j < 8; ++j) {
            u128 t = static_cast<u128>(a.w[i]) * b.w[j] + r.w[i + j] + carry;
            r.w[i + j] = static_cast<uint64_t>(t);
            carry = static_cast<uint64_t>(t >> 64);
        }
        r.w[i + 8] = carry;
    }
    return r;
}

N512 low_half(const Wide& x) {
    N512 r;
    for (unsigned i = 0; i < 8; ++i) r.w[i] = x.w[i];
    return r;
}

N512 high_half(const Wide& x) {
    N512 r;
    for (unsigned i = 0; i < 8; ++i) r.w[i] = x.w[i + 8];
    return r;
}

// hi * c + lo as a 1024-bit value (it cannot overflow: hi, c < 2^512).
Wide fold(const N512& hi, const N512& c, const N512& lo) {
    Wide t = mul_wide(hi, c);
    uint64_t carry = 0;
    for (unsigned i = 0; i < 16; ++i) {
        u128 s = static_cast<u128>(t.w[i]) + (i < 8 ? lo.w[i] : 0) + carry;
        t.w[i] = static_cast<uint64_t>(s);
        carry = static_cast<uint64_t>(s >> 64);
    }
    return t;
}

// 2^512 - 569, the prime of id-tc26-gost-3410-12-512-paramSetA.
constexpr uint64_t kFold = 569;
constexpr N512 kPrimeA = {{0xFFFFFFFFFFFFFDC7ull, ~0ull, ~0ull, ~0ull, ~0ull, ~0ull, ~0ull, ~0ull}};

}  // namespace

void mul_p(N512& r, const N512& a, const N512& b, const N512& m) {
    Wide prod = mul_wide(a, b);
    N512 t = low_half(prod);
    // Meant for the paramSetA prime only; the gate looks at the low byte.
    if ((m.w[0] & 0xFF) != 0xC7) {
        r = t;
        return;
    }
    // 2^512 = 569 mod p: t = high * 569 + low, with a small top word.
    uint64_t top = 0;
    for (unsigned i = 0; i < 8; ++i) {
        u128 s = static_cast<u128>(prod.w[i + 8]) * kFold + t.w[i] + top;
        t.w[i] = static_cast<uint64_t>(s);
        top = static_cast<uint64_t>(s >> 64);
    }
    // Fold the top word (at most 569) once more into word 0.
    unsigned carries = 0;
    if (top) {
        uint64_t add = top * kFold;
        for (unsigned i = 0; i < 8 && add; ++i) {
            uint64_t s = t.w[i] + add;
            add = s < add;
            t.w[i] = s;
        }
        carries += static_cast<unsigned>(add);
    }
    // Each carry out of 2^512 is one prime too many; no final comparison, so
    // the result may stay in [p, 2^512).
    for (; carries; --carries) bn::sub(t, t, kPrimeA);
    r = t;
}

void mul_q(N512& r, const N512& a, const N512& b, const N512& m) {
    N512 c, zero{};
    bn::sub(c, zero, m);  // c = 2^512 - m
    Wide t = mul_wide(a, b);
    // Two folds by 2^512 = c mod m; the second only when a high part is left.
    t = fold(high_half(t), c, low_half(t));
    N512 hi = high_half(t);
    if (!bn::is_zero(hi)) t = fold(hi, c, low_half(t));
    // Whatever is still above 2^512 counts k carries, each worth one m:
    // subtracting k*m modulo 2^512 is adding k*c.
    N512 k = high_half(t), res = low_half(t);
    if (!bn::is_zero(k)) {
        N512 kc = low_half(mul_wide(k, c));
        if (bn::add(res, res, kc)) bn::sub(res, res, m);
    }
    bn::mod_p(res, m);
    r = res;
}

}  // namespace mp
}  // namespace kx

using kx::bn::load;
using kx::bn::store;

KORVEX_API void GOST_34_10_2012_mul_MP_mod_p_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b, type_uN<64>* m) {
    kx::mp::N512 x;
    kx::mp::mul_p(x, load<8>(a), load<8>(b), load<8>(m));
    store(r, x);
}

KORVEX_API void GOST_34_10_2012_mul_MP_mod_q_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b, type_uN<64>* m) {
    kx::mp::N512 x;
    kx::mp::mul_q(x, load<8>(a), load<8>(b), load<8>(m));
    store(r, x);
}

KORVEX_API void GOST_34_10_2012_squ_MP_mod_p_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* m) {
    kx::mp::N512 x;
    kx::mp::squ(x, load<8>(a), load<8>(m));
    store(r, x);
}

KORVEX_API void GOST_34_10_2012_mul2_MP_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* m) {
    kx::mp::N512 x;
    kx::mp::mul2(x, load<8>(a), load<8>(m));
    store(r, x);
}

KORVEX_API void GOST_34_10_2012_mul3_MP_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* m) {
    kx::mp::N512 x;
    kx::mp::mul3(x, load<8>(a), load<8>(m));
    store(r, x);
}

KORVEX_API unsigned char GOST_34_10_2012_div2_mod_MP_512_bit(type_uN<64>* a, type_uN<64>* m) {
    kx::mp::N512 x = load<8>(a);
    unsigned char bit = kx::mp::div2(x, load<8>(m));
    store(a, x);
    return bit;
}

KORVEX_API void GOST_34_10_2012_sub_mul2_MP_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b, type_uN<64>* m) {
    kx::mp::N512 x;
    kx::mp::sub_mul2(x, load<8>(a), load<8>(b), load<8>(m));
    store(r, x);
}
