// GOST R 34.10-2001: 256-bit integer and modular arithmetic, affine curve
// points, the four built-in parameter sets, keys, signatures and VKO key
// agreement (RFC 4357, RFC 4490).
//
// Numbers are KORVEX_UN(32), little-endian. Results go through the first
// argument and may alias any operand. Curve selector (last argument):
// 1 = CryptoPro-A (also XchA), 2 = CryptoPro-B, 3 = CryptoPro-C (also XchB),
// any other value = the GOST R 34.10-2001 test curve.
#ifndef KORVEX_GOST_34_10_2001_H
#define KORVEX_GOST_34_10_2001_H

#include "korvex_types.h"

// ---- 256-bit arithmetic. Comparison codes: 2 greater, 1 equal, 0 less.

// Read-only constants 0 and 1 (writing through them faults).
KORVEX_API KORVEX_UN(32)* const zero_256_bit_ptr;
KORVEX_API KORVEX_UN(32)* const one_256_bit_ptr;

// r = a + b mod 2^256; returns the carry (0 or 1).
KORVEX_API unsigned char GOST_34_10_2001_add_256_bit(KORVEX_UN(32)* r, KORVEX_UN(32)* a, KORVEX_UN(32)* b);
// r = a - b mod 2^256; returns the borrow (1 if a < b).
KORVEX_API unsigned char GOST_34_10_2001_sub_256_bit(KORVEX_UN(32)* r, KORVEX_UN(32)* a, KORVEX_UN(32)* b);
// a >>= 1; returns the old bit 0.
KORVEX_API unsigned char GOST_34_10_2001_shr_256_bit(KORVEX_UN(32)* a);
// a <<= 1; returns the old bit 255.
KORVEX_API unsigned char GOST_34_10_2001_shl_256_bit(KORVEX_UN(32)* a);
// r = a.
KORVEX_API void GOST_34_10_2001_set_256_bit(KORVEX_UN(32)* r, KORVEX_UN(32)* a);
// 2 if a > b, 1 if a = b, 0 if a < b.
KORVEX_API unsigned char GOST_34_10_2001_comparison_256_bit(KORVEX_UN(32)* a, KORVEX_UN(32)* b);
// 1 if a = 0, else 2.
KORVEX_API unsigned char GOST_34_10_2001_comparison_256_bit_zero(KORVEX_UN(32)* a);
// 0 if a = 0, 1 if a = 1, 2 if a > 1.
KORVEX_API unsigned char GOST_34_10_2001_comparison_256_bit_one(KORVEX_UN(32)* a);
// r = a + b mod p (a, b < p).
KORVEX_API void GOST_34_10_2001_add_mod_p_256_bit(KORVEX_UN(32)* r, KORVEX_UN(32)* a, KORVEX_UN(32)* b, KORVEX_UN(32)* p);
// r = a - b mod p (a, b < p).
KORVEX_API void GOST_34_10_2001_sub_mod_p_256_bit(KORVEX_UN(32)* r, KORVEX_UN(32)* a, KORVEX_UN(32)* b, KORVEX_UN(32)* p);
// a = a - p if a >= p (a single subtraction).
KORVEX_API void GOST_34_10_2001_mod_p_256_bit(KORVEX_UN(32)* a, KORVEX_UN(32)* p);
// r = a * b mod p (a, b < p), shift-and-add.
KORVEX_API void GOST_34_10_2001_mul_mod_p_256_bit(KORVEX_UN(32)* r, KORVEX_UN(32)* a, KORVEX_UN(32)* b, KORVEX_UN(32)* p);
// x = n / x mod p (p odd, x < p); a null n means 1; x = 0 gives 0.
KORVEX_API void GOST_34_10_2001_div_mod_p_256_bit(KORVEX_UN(32)* x, KORVEX_UN(32)* n, KORVEX_UN(32)* p);

// ---- Affine points on y^2 = x^3 + a*x + b over GF(p); infinity is (0, 0).

// (x, y) = 2 * (x, y).
KORVEX_API void GOST_34_10_2001_mul_2_EP(KORVEX_UN(32)* x, KORVEX_UN(32)* y, KORVEX_UN(32)* a, KORVEX_UN(32)* p);
// (x1, y1) = (x1, y1) + (x2, y2); mind the argument order.
KORVEX_API void GOST_34_10_2001_add_EP(KORVEX_UN(32)* x1, KORVEX_UN(32)* x2, KORVEX_UN(32)* y1, KORVEX_UN(32)* y2,
                                       KORVEX_UN(32)* a, KORVEX_UN(32)* p);
// Q = k * P over all 256 bits of k; a null Qx or Qy is not stored.
KORVEX_API void GOST_34_10_2001_mul_k_EP(KORVEX_UN(32)* k, KORVEX_UN(32)* Px, KORVEX_UN(32)* Py, KORVEX_UN(32)* Qx,
                                         KORVEX_UN(32)* Qy, KORVEX_UN(32)* a, KORVEX_UN(32)* p);

// Table builders: 256 entries of 64 bytes (x then y), 16384 bytes in all,
// for the base point of the selected set.
// Entry i = 2^i * P.
KORVEX_API void GOST_34_10_2001_2P_table(unsigned char* table, unsigned char set);
// Comb table: entry b = sum of 2^(32j) * P over the set bits j of b.
KORVEX_API void GOST_34_10_2001_xP_table(unsigned char* table, unsigned char set);
// Entry i = (2i + 1) * P.
KORVEX_API void GOST_34_10_2001_NAF_2kP_table(unsigned char* table, unsigned char set);

// The output of GOST_34_10_2001_2P_table for set 1 (CryptoPro-A).
KORVEX_API const unsigned char p_table[16384];

// ---- Keys, signatures, key agreement.

// d = random in [1, q - 1], Q = d * P (x in bytes 0..31, y in 32..63).
// 0 ok, 1 when the generator is not seeded.
KORVEX_API unsigned char GOST_34_10_2001_gen_key_pair(KORVEX_UN(32)* d_out, KORVEX_UN(64)* Q_out, unsigned char set);
// Q = d * P for the given d (used as it is).
KORVEX_API void GOST_34_10_2001_gen_open_key(KORVEX_UN(32)* d, KORVEX_UN(64)* Q_out, unsigned char set);
// Signs a hash value (little-endian number) into the RFC 4490 layout: s then
// r, each big-endian. 0 ok, 1 when the generator is not seeded.
KORVEX_API unsigned char GOST_34_10_2001_create_DS(KORVEX_UN(32)* hash, KORVEX_UN(32)* d, KORVEX_UN(64)* sig_out,
                                                   unsigned char set);
// 1 valid, 0 invalid. The signature buffer is converted in place and only
// restored by a full check: when s or r is out of [1, q - 1] it is left in the
// internal layout.
KORVEX_API unsigned char GOST_34_10_2001_check_DS(KORVEX_UN(32)* hash, KORVEX_UN(64)* Q, KORVEX_UN(64)* sig,
                                                  unsigned char set);
// RFC 4357 VKO: out = GOST R 34.11-94 of (ukm * d mod q) * Q; ukm not null.
KORVEX_API void GOST_34_10_2001_VKO(KORVEX_UN(32)* out, unsigned long long* ukm, KORVEX_UN(32)* d, KORVEX_UN(64)* Q,
                                    unsigned char set);
// Reverses bytes 0..31 and bytes 32..63 separately (its own inverse).
KORVEX_API void GOST_34_10_2001_rotate_DS_RFC4490(KORVEX_UN(64)* sig);

#endif
