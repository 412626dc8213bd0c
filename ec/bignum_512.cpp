// Exported 512-bit arithmetic of GOST R 34.10-2012: thin wrappers over the
// limb templates of bignum.h, instantiated for eight 64-bit words.
#include "GOST_34_10_2012.h"
#include "ec/bignum.h"

namespace {
const type_uN<64> kZero512 = {{0}};
const type_uN<64> kOne512 = {{1}};
}  // namespace

// The functions take non-const operands, so the constants are offered through
// non-const pointers; the objects themselves sit in read-only memory.
KORVEX_API type_uN<64>* const zero_512_bit_ptr = const_cast<type_uN<64>*>(&kZero512);
KORVEX_API type_uN<64>* const one_512_bit_ptr = const_cast<type_uN<64>*>(&kOne512);

KORVEX_API unsigned char GOST_34_10_2012_add_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b) {
    return kx::bn::x_add<8>(r, a, b);
}

KORVEX_API unsigned char GOST_34_10_2012_sub_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b) {
    return kx::bn::x_sub<8>(r, a, b);
}

KORVEX_API unsigned char GOST_34_10_2012_shr_512_bit(type_uN<64>* a) { return kx::bn::x_shr<8>(a); }

KORVEX_API unsigned char GOST_34_10_2012_shl_512_bit(type_uN<64>* a) { return kx::bn::x_shl<8>(a); }

KORVEX_API void GOST_34_10_2012_set_512_bit(type_uN<64>* r, type_uN<64>* a) { kx::bn::x_set<8>(r, a); }

KORVEX_API unsigned char GOST_34_10_2012_comparison_512_bit(type_uN<64>* a, type_uN<64>* b) {
    return kx::bn::x_cmp<8>(a, b);
}

KORVEX_API unsigned char GOST_34_10_2012_comparison_512_bit_zero(type_uN<64>* a) {
    return kx::bn::x_cmp_zero<8>(a);
}

KORVEX_API unsigned char GOST_34_10_2012_comparison_512_bit_one(type_uN<64>* a) {
    return kx::bn::x_cmp_one<8>(a);
}

KORVEX_API void GOST_34_10_2012_add_mod_p_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b, type_uN<64>* p) {
    kx::bn::x_add_mod<8>(r, a, b, p);
}

KORVEX_API void GOST_34_10_2012_sub_mod_p_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b, type_uN<64>* p) {
    kx::bn::x_sub_mod<8>(r, a, b, p);
}

KORVEX_API void GOST_34_10_2012_mod_p_512_bit(type_uN<64>* a, type_uN<64>* p) { kx::bn::x_mod_p<8>(a, p); }

KORVEX_API void GOST_34_10_2012_mul_mod_p_512_bit(type_uN<64>* r, type_uN<64>* a, type_uN<64>* b, type_uN<64>* p) {
    kx::bn::x_mul_mod<8>(r, a, b, p);
}

KORVEX_API void GOST_34_10_2012_div_mod_p_512_bit(type_uN<64>* x, type_uN<64>* n, type_uN<64>* p) {
    kx::bn::x_div_mod<8>(x, n, p);
}
