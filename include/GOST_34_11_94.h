// GOST R 34.11-94 hash (256-bit result), one-shot and streaming, plus the
// pieces of its step function. The block cipher inside is GOST 28147-89 with
// the S-box of id-GostR3411-94-CryptoProParamSet, always; no function here
// takes a selector. A null starting vector means zero (as in RFC 4357).
//
// All values are 32-byte little-endian numbers; the result is the state H as
// it lies in memory, without reversal. The bit length is kept modulo 2^32.
#ifndef KORVEX_GOST_34_11_94_H
#define KORVEX_GOST_34_11_94_H

#include "korvex_types.h"

// --- whole message and streaming ----------------------------------------

KORVEX_API void GOST_34_11_94_hash(unsigned char* data, unsigned int len, KORVEX_UN(32)* start, KORVEX_UN(32)* out);
// H := start (or zero), everything else zero.
KORVEX_API void GOST_34_11_94_hash_init(KORVEX_UN(32)* start, stream_hash_t* state);
KORVEX_API void GOST_34_11_94_hash_write(unsigned char* data, unsigned int len, stream_hash_t* state);
// Hash of everything written so far; the state is left unchanged, so writing
// may go on afterwards.
KORVEX_API void GOST_34_11_94_hash_end(KORVEX_UN(32)* out, stream_hash_t* state);

// --- step function pieces -----------------------------------------------

// H := f(H, M).
KORVEX_API void GOST_34_11_94_base_step(KORVEX_UN(32)* M, KORVEX_UN(32)* H);
// Key generation and encryption transform: S := E(H) under keys from H, M.
KORVEX_API void GOST_34_11_94_gen_key_and_encrypt(KORVEX_UN(32)* S, KORVEX_UN(32)* M, KORVEX_UN(32)* H);
// Shuffle: S := psi^61(H ^ psi(M ^ psi^12(S))); a null M skips its XOR.
KORVEX_API void GOST_34_11_94_mixing(KORVEX_UN(32)* S, KORVEX_UN(32)* M, KORVEX_UN(32)* H);
// psi applied n times in place.
KORVEX_API void GOST_34_11_94_mix(KORVEX_UN(32)* Y, unsigned char n);
// Byte permutation P: out[4k + i] := in[8i + k].
KORVEX_API void GOST_34_11_94_P(KORVEX_UN(32)* out, KORVEX_UN(32)* in);
// Transform A in place: (y3, y2, y1, y0) -> (y0 ^ y1, y3, y2, y1).
KORVEX_API void GOST_34_11_94_A(KORVEX_UN(32)* Y);
// a := a + b mod 2^256.
KORVEX_API void GOST_34_11_94_sum_mod_2_256(KORVEX_UN(32)* a, KORVEX_UN(32)* b);
// out := a ^ b.
KORVEX_API void GOST_34_11_94_xor_u256(KORVEX_UN(32)* out, KORVEX_UN(32)* a, KORVEX_UN(32)* b);

// --- HMAC (RFC 4357 HMAC_GOSTR3411, 32-byte block) ----------------------

KORVEX_API void GOST_34_11_94_HMAC(unsigned char* data, unsigned int len, unsigned char* key, unsigned char key_len, KORVEX_UN(32)* out);

#endif
