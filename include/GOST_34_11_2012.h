// GOST R 34.11-2012 hash (RFC 6986), 512- and 256-bit results, one-shot and
// streaming, with its building blocks, and HMAC over it (RFC 7836).
//
// Values are little-endian: byte 0 of a KORVEX_UN(64) is the least significant
// and 64-bit word i is bytes 8i..8i+7. Results are the state as it lies in
// memory; the 256-bit result is the upper half (bytes 32..63) of h.
#ifndef KORVEX_GOST_34_11_2012_H
#define KORVEX_GOST_34_11_2012_H

#include "korvex_types.h"

// --- whole message and streaming ----------------------------------------

KORVEX_API void GOST_34_11_2012_hash_512_bit(unsigned char* data, unsigned int len, KORVEX_UN(64)* out);
KORVEX_API void GOST_34_11_2012_hash_256_bit(unsigned char* data, unsigned int len, KORVEX_UN(32)* out);
KORVEX_API void GOST_34_11_2012_hash_256_init(stream_hash_2012_t* state);
KORVEX_API void GOST_34_11_2012_hash_512_init(stream_hash_2012_t* state);
// Serves both widths.
KORVEX_API void GOST_34_11_2012_hash_write(unsigned char* data, unsigned int len, stream_hash_2012_t* state);
// Finish in the state itself: afterwards it must be initialised again.
KORVEX_API void GOST_34_11_2012_hash_256_end(KORVEX_UN(32)* out, stream_hash_2012_t* state);
KORVEX_API void GOST_34_11_2012_hash_512_end(KORVEX_UN(64)* out, stream_hash_2012_t* state);

// --- building blocks, in place unless said ------------------------------

// S: every byte through the substitution pi.
KORVEX_API void GOST_34_11_2012_Sbox(KORVEX_UN(64)* x);
// P: the 8 x 8 byte matrix transposed.
KORVEX_API void GOST_34_11_2012_Transposition(KORVEX_UN(64)* x);
// L: every 64-bit word multiplied by the matrix A.
KORVEX_API void GOST_34_11_2012_Mix_Columns(KORVEX_UN(64)* x);
KORVEX_API void GOST_34_11_2012_xor_512(KORVEX_UN(64)* out, KORVEX_UN(64)* a, KORVEX_UN(64)* b);
// out := a + b mod 2^512 (out may be a).
KORVEX_API void GOST_34_11_2012_sum_mod_2_512(KORVEX_UN(64)* out, KORVEX_UN(64)* a, KORVEX_UN(64)* b);
// K := L(P(S(K ^ C[i + 1]))), round i = 0..11 of the key schedule.
KORVEX_API void GOST_34_11_2012_Key(KORVEX_UN(64)* K, unsigned char i);
// state := E(K, m); K is advanced through the whole schedule.
KORVEX_API void GOST_34_11_2012_E(KORVEX_UN(64)* state, KORVEX_UN(64)* K, KORVEX_UN(64)* m);
// h := g_N(h, m).
KORVEX_API void GOST_34_11_2012_G(KORVEX_UN(64)* N, KORVEX_UN(64)* h, KORVEX_UN(64)* m);
// Hashes a whole message into h, starting from the h the caller set.
KORVEX_API void GOST_34_11_2012_base(unsigned char* data, unsigned int len, KORVEX_UN(64)* h);

// --- HMAC (RFC 7836, 64-byte block) -------------------------------------

KORVEX_API void GOST_34_11_2012_HMAC_256_bit(unsigned char* data, unsigned int len, unsigned char* key, unsigned char key_len, KORVEX_UN(32)* out);
KORVEX_API void GOST_34_11_2012_HMAC_512_bit(unsigned char* data, unsigned int len, unsigned char* key, unsigned char key_len, KORVEX_UN(64)* out);

#endif
