// GOST 28147-89 block cipher: parameter sets, the constant-time core, the
// ECB/CTR/CFB/CBC modes, key meshing (RFC 4357 2.3), the MAC and key wrapping
// (RFC 4357 6.1, 6.5).
//
// Every function ends with a parameter-set selector:
//   1 id-GostR3411-94-CryptoProParamSet, 4 CryptoPro-B, 5 CryptoPro-C,
//   6 CryptoPro-D, 7 id-tc26-gost-28147-param-Z, any other value CryptoPro-A.
// Keys are eight little-endian 32-bit subkeys; a block (type_u64) is one
// little-endian 64-bit value, bytes 0..3 being N1 and bytes 4..7 N2. A null
// synchro/IV means the zero block. Nothing here fails, allocates or keeps
// state; a length of 0 never touches the data pointer.
#ifndef KORVEX_GOST_28147_89_H
#define KORVEX_GOST_28147_89_H

#include "korvex_types.h"

// The 16 x 16 Moebius matrix over GF(2): entry (m, j) is 1 when the bits of j
// are a subset of those of m. Read only by GOST_28147_89_tableZ.
KORVEX_API unsigned char Mat[256];

// --- core ---------------------------------------------------------------

// The 16-word ANF table of the selected parameter set (read-only data).
KORVEX_API unsigned int* GOST_28147_89_get_s_box_ptr(unsigned char sbox);
// One round with the subkey *subkey.
KORVEX_API type_u64 GOST_28147_89_base_step(type_u64 block, unsigned int* subkey, unsigned int* table);
// 32-Z (encrypt) and 32-R (decrypt) cycles, in place.
KORVEX_API void GOST_28147_cycle_32_Z(type_u64* block, KORVEX_UN(32)* key, unsigned int* table);
KORVEX_API void GOST_28147_cycle_32_R(type_u64* block, KORVEX_UN(32)* key, unsigned int* table);
// 16-Z cycle of the MAC (no final exchange of halves).
KORVEX_API type_u64 GOST_28147_cycle_16_Z(type_u64 block, KORVEX_UN(32)* key, unsigned int* table);
// ECB in place over the whole blocks; the last len % 8 bytes are untouched.
KORVEX_API void GOST_28147_89_Z_ECB(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, unsigned char sbox);
KORVEX_API void GOST_28147_89_R_ECB(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, unsigned char sbox);
// Writes the byte-per-nibble ANF of S-box Z (8 rows x 16) into out; the first
// argument is ignored.
KORVEX_API unsigned char* GOST_28147_89_tableZ(unsigned char ignored, unsigned char* out);

// --- modes --------------------------------------------------------------

// Counter (gamma) mode, its own inverse.
KORVEX_API void GOST_28147_89_ZR_CTR(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, type_u64* synchro, unsigned char sbox);
KORVEX_API void GOST_28147_89_ZR_CTR_init(KORVEX_UN(32)* key, type_u64* synchro, unsigned char sbox, stream_GOST_CTR_t* state);
KORVEX_API void GOST_28147_89_ZR_CTR_step(unsigned char* data, unsigned int len, stream_GOST_CTR_t* state);
// Cipher feedback; a trailing partial block is enciphered too.
KORVEX_API void GOST_28147_89_Z_CFB(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, type_u64* synchro, unsigned char sbox);
KORVEX_API void GOST_28147_89_R_CFB(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, type_u64* synchro, unsigned char sbox);
// Cipher block chaining over whole blocks; returns the last ciphertext block
// (the IV when len < 8).
KORVEX_API type_u64 GOST_28147_89_Z_CBC(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, type_u64* iv, unsigned char sbox);
KORVEX_API void GOST_28147_89_R_CBC(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, type_u64* iv, unsigned char sbox);
// Builds a padded last block of len (1..7) bytes in out; the pad byte
// (8 - len, or 0 when mode is 0) starts at out[len - 1], overwriting the last
// data byte. len 0 or >= 8 writes nothing.
KORVEX_API void GOST_28147_89_padding(unsigned char* data, unsigned char len, type_u64* out, unsigned char mode);
// CryptoPro key meshing (RFC 4357 2.3.2) of key and, when not null, iv.
KORVEX_API void GOST_28147_89_key_mesh(KORVEX_UN(32)* key, type_u64* iv, unsigned char sbox);

// --- MAC ----------------------------------------------------------------

// The full 64-bit MAC value; the usual 32-bit MAC is its bytes 0..3.
KORVEX_API type_u64 GOST_28147_89_MAC(unsigned char* data, unsigned int len, KORVEX_UN(32)* key, type_u64* iv, unsigned char sbox);
KORVEX_API void GOST_28147_89_MAC_init(KORVEX_UN(32)* key, unsigned char sbox, stream_MAC_t* state);
// Feeds len bytes and returns the MAC of everything fed since init.
KORVEX_API type_u64 GOST_28147_89_MAC_step(unsigned char* data, unsigned int len, stream_MAC_t* state);

// --- key wrap -----------------------------------------------------------

// RFC 4357 6.1 wrap: out = UKM | ECB(cek) | MAC32, 44 bytes.
KORVEX_API void GOST_28147_89_Key_Wrap(unsigned char* out, type_u64* ukm, KORVEX_UN(32)* kek, KORVEX_UN(32)* cek, unsigned char sbox);
// Returns true when the MAC does not match; cek is written either way and the
// wrapped buffer is left as it was.
KORVEX_API bool GOST_28147_89_Key_Unwrap(unsigned char* wrapped, unsigned char ignored, KORVEX_UN(32)* kek, KORVEX_UN(32)* cek, unsigned char sbox);
// CryptoPro KEK diversification (RFC 4357 6.5) of key, in place; the second
// argument is ignored.
KORVEX_API void GOST_28147_89_CryptoPro_KEK_DA(type_u64* ukm, KORVEX_UN(32)* ignored, KORVEX_UN(32)* key, unsigned char sbox);
// CryptoPro wrap/unwrap: the key is diversified from a zero key, so kek does
// not enter the result.
KORVEX_API void GOST_28147_89_CryptoPro_Key_Wrap(unsigned char* out, type_u64* ukm, KORVEX_UN(32)* kek, KORVEX_UN(32)* cek, unsigned char sbox);
KORVEX_API bool GOST_28147_89_CryptoPro_Key_Unwrap(unsigned char* wrapped, unsigned char ignored, KORVEX_UN(32)* kek, KORVEX_UN(32)* cek, unsigned char sbox);

#endif
