// GOST R 34.10-2012 with 512-bit curves: 512-bit integer and modular
// arithmetic (including fast multiplications for moduli of special form),
// affine and Jacobian curve points, the built-in parameter sets, keys,
// signatures and VKO key agreement (RFC 7836).
//
// Numbers are KORVEX_UN(64), little-endian. Results go through the first
// argument and may alias any operand. Curve selector (last argument):
// 1 = id-tc26-gost-3410-12-512-paramSetA, 2 = paramSetB, any other value = the
// 512-bit example curve of GOST R 34.10-2012, held in p_test .. y_test below.
#ifndef KORVEX_GOST_34_10_2012_H
#define KORVEX_GOST_34_10_2012_H

#include "korvex_types.h"

// ---- 512-bit arithmetic. Comparison codes: 2 greater, 1 equal, 0 less.

// Read-only constants 0 and 1 (writing through them faults).
KORVEX_API KORVEX_UN(64)* const zero_512_bit_ptr;
KORVEX_API KORVEX_UN(64)* const one_512_bit_ptr;

// r = a + b mod 2^512; returns the carry (0 or 1).
KORVEX_API unsigned char GOST_34_10_2012_add_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b);
// r = a - b mod 2^512; returns the borrow (1 if a < b).
KORVEX_API unsigned char GOST_34_10_2012_sub_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b);
// a >>= 1; returns the old bit 0.
KORVEX_API unsigned char GOST_34_10_2012_shr_512_bit(KORVEX_UN(64)* a);
// a <<= 1; returns the old bit 511.
KORVEX_API unsigned char GOST_34_10_2012_shl_512_bit(KORVEX_UN(64)* a);
// r = a.
KORVEX_API void GOST_34_10_2012_set_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a);
// 2 if a > b, 1 if a = b, 0 if a < b.
KORVEX_API unsigned char GOST_34_10_2012_comparison_512_bit(KORVEX_UN(64)* a, KORVEX_UN(64)* b);
// 1 if a = 0, else 2.
KORVEX_API unsigned char GOST_34_10_2012_comparison_512_bit_zero(KORVEX_UN(64)* a);
// 0 if a = 0, 1 if a = 1, 2 if a > 1.
KORVEX_API unsigned char GOST_34_10_2012_comparison_512_bit_one(KORVEX_UN(64)* a);
// r = a + b mod p (a, b < p).
KORVEX_API void GOST_34_10_2012_add_mod_p_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b, KORVEX_UN(64)* p);
// r = a - b mod p (a, b < p).
KORVEX_API void GOST_34_10_2012_sub_mod_p_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b, KORVEX_UN(64)* p);
// a = a - p if a >= p (a single subtraction).
KORVEX_API void GOST_34_10_2012_mod_p_512_bit(KORVEX_UN(64)* a, KORVEX_UN(64)* p);
// r = a * b mod p (a, b < p), shift-and-add; any modulus.
KORVEX_API void GOST_34_10_2012_mul_mod_p_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b, KORVEX_UN(64)* p);
// x = n / x mod p (p odd, x < p); a null n means 1; x = 0 gives 0.
KORVEX_API void GOST_34_10_2012_div_mod_p_512_bit(KORVEX_UN(64)* x, KORVEX_UN(64)* n, KORVEX_UN(64)* p);

// ---- Multiplications for moduli of special form, and helpers of the
// Jacobian point code.

// r = a * b mod 2^512 - 569 (the paramSetA prime), schoolbook product and
// fold. Only a modulus m whose low byte is 0xC7 reduces; for any other m the
// low 512 bits of the plain product are returned. The result may lie in
// [p, 2^512).
KORVEX_API void GOST_34_10_2012_mul_MP_mod_p_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b, KORVEX_UN(64)* m);
// r = a * b mod m for m close to 2^512 (such as the paramSetA order), by
// folding with 2^512 - m; fully reduced for such m.
KORVEX_API void GOST_34_10_2012_mul_MP_mod_q_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b, KORVEX_UN(64)* m);
// r = a * a mod m (generic multiplication).
KORVEX_API void GOST_34_10_2012_squ_MP_mod_p_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* m);
// r = 2a mod m.
KORVEX_API void GOST_34_10_2012_mul2_MP_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* m);
// r = 3a mod m.
KORVEX_API void GOST_34_10_2012_mul3_MP_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* m);
// a = a / 2 mod m in place (m odd); returns the bit shifted out.
KORVEX_API unsigned char GOST_34_10_2012_div2_mod_MP_512_bit(KORVEX_UN(64)* a, KORVEX_UN(64)* m);
// r = a - 2b mod m.
KORVEX_API void GOST_34_10_2012_sub_mul2_MP_512_bit(KORVEX_UN(64)* r, KORVEX_UN(64)* a, KORVEX_UN(64)* b, KORVEX_UN(64)* m);

// ---- Affine points on y^2 = x^3 + a*x + b over GF(p); infinity is (0, 0).

// Generic multiplication, correct on every curve.
// (x, y) = 2 * (x, y).
KORVEX_API void GOST_34_10_2012_mul_2_EP_test(KORVEX_UN(64)* x, KORVEX_UN(64)* y, KORVEX_UN(64)* a, KORVEX_UN(64)* p);
// (x1, y1) = (x1, y1) + (x2, y2); mind the argument order.
KORVEX_API void GOST_34_10_2012_add_EP_test(KORVEX_UN(64)* x1, KORVEX_UN(64)* x2, KORVEX_UN(64)* y1, KORVEX_UN(64)* y2,
                                            KORVEX_UN(64)* a, KORVEX_UN(64)* p);
// Q = k * P over all 512 bits of k; a null Qx or Qy is not stored.
KORVEX_API void GOST_34_10_2012_mul_k_EP_test(KORVEX_UN(64)* k, KORVEX_UN(64)* Px, KORVEX_UN(64)* Py, KORVEX_UN(64)* Qx,
                                              KORVEX_UN(64)* Qy, KORVEX_UN(64)* a, KORVEX_UN(64)* p);

// The same through GOST_34_10_2012_mul_MP_mod_p_512_bit: correct only for
// p = 2^512 - 569 (paramSetA).
KORVEX_API void GOST_34_10_2012_mul_2_EP(KORVEX_UN(64)* x, KORVEX_UN(64)* y, KORVEX_UN(64)* a, KORVEX_UN(64)* p);
KORVEX_API void GOST_34_10_2012_add_EP(KORVEX_UN(64)* x1, KORVEX_UN(64)* x2, KORVEX_UN(64)* y1, KORVEX_UN(64)* y2,
                                       KORVEX_UN(64)* a, KORVEX_UN(64)* p);

// ---- Jacobian points (X/Z^2, Y/Z^3) on curves with a = -3 (paramSetA,
// paramSetB); infinity is (1, 1, 0).

// (X, Y, Z) = 2 * (X, Y, Z). The last step subtracts 16*Y^4 (the textbook
// formula has 8*Y^4), so Y is not that of the true double.
KORVEX_API void GOST_34_10_2012_mul_J_2_EP(KORVEX_UN(64)* X, KORVEX_UN(64)* Y, KORVEX_UN(64)* Z, KORVEX_UN(64)* p);
// (X1, Y1, Z1) = (X1, Y1, Z1) + affine (x2, y2).
KORVEX_API void GOST_34_10_2012_add_J_EP(KORVEX_UN(64)* X1, KORVEX_UN(64)* x2, KORVEX_UN(64)* Y1, KORVEX_UN(64)* y2,
                                         KORVEX_UN(64)* Z1, KORVEX_UN(64)* p);
// Q = k * P, left-to-right, converted back to affine: Qx = X / Z^2; Qy =
// Y / Z^3 when Qx is requested too, but Y / (Px * Z) when Qx is null.
KORVEX_API void GOST_34_10_2012_mul_J_k_EP(KORVEX_UN(64)* k, KORVEX_UN(64)* Px, KORVEX_UN(64)* Py, KORVEX_UN(64)* Qx,
                                           KORVEX_UN(64)* Qy, KORVEX_UN(64)* p);

// ---- Parameter sets, keys, signatures, key agreement.

// The example curve of GOST R 34.10-2012 (512 bits), selected by every
// selector other than 1 and 2. Writable: a caller may install another curve
// here; it is read at every call. k_test holds the example's ephemeral k and
// is not read by the library.
KORVEX_API KORVEX_UN(64) p_test;
KORVEX_API KORVEX_UN(64) a_test;
KORVEX_API KORVEX_UN(64) q_test;
KORVEX_API KORVEX_UN(64) x_test;
KORVEX_API KORVEX_UN(64) y_test;
KORVEX_API KORVEX_UN(64) k_test;

// d = 512 random bits with one conditional subtraction of q, non-zero;
// Q = d * P (x in bytes 0..63, y in 64..127). 0 ok, 1 when the generator is
// not seeded.
KORVEX_API unsigned char GOST_34_10_2012_512_gen_key_pair(KORVEX_UN(64)* d_out, KORVEX_UN(128)* Q_out, unsigned char set);
// Q = d * P for the given d (used as it is).
KORVEX_API void GOST_34_10_2012_512_gen_open_key(KORVEX_UN(64)* d, KORVEX_UN(128)* Q_out, unsigned char set);
// Signs a hash value (little-endian number). Layout of the result: s in
// bytes 0..63 as two separately reversed 32-byte halves, r little-endian in
// bytes 64..127. 0 ok, 1 when the generator is not seeded.
KORVEX_API unsigned char GOST_34_10_2012_create_DS_512_bit(KORVEX_UN(64)* hash, KORVEX_UN(64)* d, KORVEX_UN(128)* sig_out,
                                                           unsigned char set);
// 1 valid, 0 invalid. The signature buffer is converted in place and only
// restored by a full check: when s or r is out of [1, q - 1] it is left in the
// internal layout (s, r little-endian).
KORVEX_API unsigned char GOST_34_10_2012_check_DS_512_bit(KORVEX_UN(64)* hash, KORVEX_UN(128)* Q, KORVEX_UN(128)* sig,
                                                          unsigned char set);
// RFC 7836 VKO: out = GOST R 34.11-2012 (512) of (ukm * d mod q) * Q, x then
// y, little-endian; a null or zero ukm means 1.
KORVEX_API void GOST_34_10_2012_VKO_512(KORVEX_UN(64)* out, KORVEX_UN(64)* ukm, KORVEX_UN(64)* d, KORVEX_UN(128)* Q,
                                        unsigned char set);
// Reverses bytes 0..31 and bytes 32..63 separately; bytes 64..127 untouched
// (its own inverse).
KORVEX_API void GOST_34_10_2012_rotate_DS_TC26(KORVEX_UN(128)* sig);

// RFC 7836 VKO on the 256-bit curves of GOST R 34.10-2001 (selector as there):
// out = GOST R 34.11-2012 (256) of (ukm * d mod q) * Q; a null ukm means 1.
KORVEX_API void GOST_34_10_2012_VKO_256(KORVEX_UN(32)* out, unsigned long long* ukm, KORVEX_UN(32)* d, KORVEX_UN(64)* Q,
                                        unsigned char set);

#endif
