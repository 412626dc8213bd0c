// Shared types of libKorvex: fixed-width byte values and the caller-owned
// streaming records. Every record here is plain data owned by the caller.
#ifndef KORVEX_TYPES_H
#define KORVEX_TYPES_H

// Marks a declaration as part of the exported C interface.
#ifndef KORVEX_API
#ifdef __cplusplus
#define KORVEX_API extern "C" __attribute__((visibility("default")))
#else
#define KORVEX_API __attribute__((visibility("default")))
#endif
#endif

// An N-byte value (N = 32, 64 or 128). As a number it is little-endian:
// byte 0 is the least significant. Alignment is 1, so any byte pointer, for
// instance one into a certificate, is a valid type_uN<N>*. The headers name
// it KORVEX_UN(N): type_uN<N> in C++, and in C the struct type_uN_N of the
// same N bytes (the functions take pointers, so both are the same to them).
#ifdef __cplusplus
template <unsigned N>
struct type_uN {
    unsigned char b[N];
};
static_assert(sizeof(type_uN<32>) == 32 && alignof(type_uN<32>) == 1, "type_uN must be packed bytes");
static_assert(sizeof(type_uN<64>) == 64 && sizeof(type_uN<128>) == 128, "type_uN must be packed bytes");
#define KORVEX_UN(n) type_uN<n>
#else
#include <stdbool.h>
typedef struct type_uN_32 { unsigned char b[32]; } type_uN_32;
typedef struct type_uN_64 { unsigned char b[64]; } type_uN_64;
typedef struct type_uN_128 { unsigned char b[128]; } type_uN_128;
#define KORVEX_UN(n) type_uN_##n
#endif

// One GOST 28147-89 block, synchro or UKM: a little-endian 64-bit number.
// Bytes 0..3 are the half N1, bytes 4..7 the half N2. The library reads and
// writes caller blocks through unaligned-safe accessors.
typedef unsigned long long type_u64;

// Streaming counter mode (GOST 28147-89 gamma).
typedef struct stream_GOST_CTR_t {
    KORVEX_UN(32) key;       // copy of the key given to init
    type_u64 counter;      // running counter: the encrypted synchro after init
    unsigned char used;    // bytes of gamma consumed; 0 = none saved, 8 = used up
    type_u64 gamma;        // last keystream block produced for a partial block
    unsigned char sbox;    // parameter-set selector
} stream_GOST_CTR_t;

// Streaming GOST 28147-89 MAC.
typedef struct stream_MAC_t {
    KORVEX_UN(32) key;             // copy of the key given to init
    unsigned char pending[8];    // bytes of an incomplete block
    type_u64 acc;                // running value over all complete blocks
    unsigned char sbox;          // parameter-set selector
    unsigned char pending_len;   // valid bytes in pending, 0..7
} stream_MAC_t;

// Streaming GOST R 34.11-94.
typedef struct stream_hash_t {
    KORVEX_UN(32) H;               // chaining value
    KORVEX_UN(32) sigma;           // control sum of all complete blocks mod 2^256
    KORVEX_UN(32) length;          // message length in bits (low 32-bit word used)
    unsigned char pending[32];   // bytes of the incomplete block
    unsigned char pending_len;   // valid bytes in pending, 0..31
} stream_hash_t;

// Streaming GOST R 34.11-2012 (both widths).
typedef struct stream_hash_2012_t {
    KORVEX_UN(64) h;               // chaining value
    KORVEX_UN(64) sigma;           // sum of all message blocks mod 2^512
    KORVEX_UN(64) N;               // number of message bits processed
    unsigned char pending[64];   // bytes of the incomplete block
    unsigned char pending_len;   // valid bytes in pending, 0..63
} stream_hash_2012_t;

#endif
