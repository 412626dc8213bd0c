// Exported affine point operations of GOST R 34.10-2001 (256-bit curves).
#include "GOST_34_10_2001.h"
#include "ec/point.h"

KORVEX_API void GOST_34_10_2001_mul_2_EP(type_uN<32>* x, type_uN<32>* y, type_uN<32>* a, type_uN<32>* p) {
    kx::ec::x_dbl<4>(x, y, a, p);
}

KORVEX_API void GOST_34_10_2001_add_EP(type_uN<32>* x1, type_uN<32>* x2, type_uN<32>* y1, type_uN<32>* y2,
                                       type_uN<32>* a, type_uN<32>* p) {
    kx::ec::x_add<4>(x1, x2, y1, y2, a, p);
}

KORVEX_API void GOST_34_10_2001_mul_k_EP(type_uN<32>* k, type_uN<32>* Px, type_uN<32>* Py, type_uN<32>* Qx,
                                         type_uN<32>* Qy, type_uN<32>* a, type_uN<32>* p) {
    kx::ec::x_mul_k<4>(k, Px, Py, Qx, Qy, a, p);
}
