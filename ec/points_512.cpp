// Exported affine points of the 512-bit curves: the templates of point.h with
// the generic shift-and-add multiplication (the _test family, correct on
// every curve) and with the paramSetA multiplication of mp_512 (no suffix,
// correct only for p = 2^512 - 569).
#include "GOST_34_10_2012.h"
#include "ec/mp_512.h"
#include "ec/point.h"

KORVEX_API void GOST_34_10_2012_mul_2_EP_test(type_uN<64>* x, type_uN<64>* y, type_uN<64>* a, type_uN<64>* p) {
    kx::ec::x_dbl<8>(x, y, a, p);
}

KORVEX_API void GOST_34_10_2012_add_EP_test(type_uN<64>* x1, type_uN<64>* x2, type_uN<64>* y1, type_uN<64>* y2,
                                            type_uN<64>* a, type_uN<64>* p) {
    kx::ec::x_add<8>(x1, x2, y1, y2, a, p);
}

KORVEX_API void GOST_34_10_2012_mul_k_EP_test(type_uN<64>* k, type_uN<64>* Px, type_uN<64>* Py, type_uN<64>* Qx,
                                              type_uN<64>* Qy, type_uN<64>* a, type_uN<64>* p) {
    kx::ec::x_mul_k<8>(k, Px, Py, Qx, Qy, a, p);
}

KORVEX_API void GOST_34_10_2012_mul_2_EP(type_uN<64>* x, type_uN<64>* y, type_uN<64>* a, type_uN<64>* p) {
    kx::ec::x_dbl<8, kx::mp::mul_p>(x, y, a, p);
}

KORVEX_API void GOST_34_10_2012_add_EP(type_uN<64>* x1, type_uN<64>* x2, type_uN<64>* y1, type_uN<64>* y2,
                                       type_uN<64>* a, type_uN<64>* p) {
    kx::ec::x_add<8, kx::mp::mul_p>(x1, x2, y1, y2, a, p);
}
