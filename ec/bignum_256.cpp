// Exported 256-bit arithmetic of GOST R 34.10-2001: thin wrappers over the
// limb templates of bignum.h, instantiated for four 64-bit words.
#include "GOST_34_10_2001.h"
#include "ec/bignum.h"

namespace {
const type_uN<32> kZero256 = {{0}};
const type_uN<32> kOne256 = {{1}};
}  // namespace

// The functions take non-const operands, so the constants are offered through
// non-const pointers; the objects themselves sit in read-only memory.
KORVEX_API type_uN<32>* const zero_256_bit_ptr = const_cast<type_uN<32>*>(&kZero256);
KORVEX_API type_uN<32>* const one_256_bit_ptr = const_cast<type_uN<32>*>(&kOne256);

KORVEX_API unsigned char GOST_34_10_2001_add_256_bit(type_uN<32>* r, type_uN<32>* a, type_uN<32>* b) {
    return kx::bn::x_add<4>(r, a, b);
}

KORVEX_API unsigned char GOST_34_10_2001_sub_256_bit(type_uN<32>* r, type_uN<32>* a, type_uN<32>* b) {
    return kx::bn::x_sub<4>(r, a, b);
}

KORVEX_API unsigned char GOST_34_10_2001_shr_256_bit(type_uN<32>* a) { return kx::bn::x_shr<4>(a); }

KORVEX_API unsigned char GOST_34_10_2001_shl_256_bit(type_uN<32>* a) { return kx::bn::x_shl<4>(a); }

KORVEX_API void GOST_34_10_2001_set_256_bit(type_uN<32>* r, type_uN<32>* a) { kx::bn::x_set<4>(r, a); }

KORVEX_API unsigned char GOST_34_10_2001_comparison_256_bit(type_uN<32>* a, type_uN<32>* b) {
    return kx::bn::x_cmp<4>(a, b);
}

KORVEX_API unsigned char GOST_34_10_2001_comparison_256_bit_zero(type_uN<32>* a) {
    return kx::bn::x_cmp_zero<4>(a);
}

KORVEX_API unsigned char GOST_34_10_2001_comparison_256_bit_one(type_uN<32>* a) {
    return kx::bn::x_cmp_one<4>(a);
}

KORVEX_API void GOST_34_10_2001_add_mod_p_256_bit(type_uN<32>* r, type_uN<32>* a, type_uN<32>* b, type_uN<32>* p) {
    kx::bn::x_add_mod<4>(r, a, b, p);
}

KORVEX_API void GOST_34_10_2001_sub_mod_p_256_bit(type_uN<32>* r, type_uN<32>* a, type_uN<32>* b, type_uN<32>* p) {
    kx::bn::x_sub_mod<4>(r, a, b, p);
}

KORVEX_API void GOST_34_10_2001_mod_p_256_bit(type_uN<32>* a, type_uN<32>* p) { kx::bn::x_mod_p<4>(a, p); }

KORVEX_API void GOST_34_10_2001_mul_mod_p_256_bit(type_uN<32>* r, type_uN<32>* a, type_uN<32>* b, type_uN<32>* p) {
    kx::bn::x_mul_mod<4>(r, a, b, p);
}

KORVEX_API void GOST_34_10_2001_div_mod_p_256_bit(type_uN<32>* x, type_uN<32>* n, type_uN<32>* p) {
    kx::bn::x_div_mod<4>(x, n, p);
}
