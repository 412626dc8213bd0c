// Shared types of libKorvex: fixed-width byte values and the caller-owned
// streaming records. Every record here is plain data owned by the caller.
#ifndef KORVEX_TYPES_H
#define KORVEX_TYPES_H

// Marks a declaration as part of the exported C interface.
#ifndef KORVEX_API
#define KORVEX_API extern "C" __attribute__((visibility("default")))
#endif

// An N-byte value (N = 32, 64 or 128). As a number it is little-endian:
// byte 0 is the least significant. Alignment is 1, so any byte pointer, for
// instance one into a certificate, is a valid type_uN<N>*.
template <unsigned N>
struct type_uN {
    unsigned char b[N];
};
static_assert(sizeof(type_uN<32>) == 32 && alignof(type_uN<32>) == 1, "type_uN must be packed bytes");
static_assert(sizeof(type_uN<64>) == 64 && sizeof(type_uN<128>) == 128, "type_uN must be packed bytes");

// One GOST 28147-89 block, synchro or UKM: a little-endian 64-bit number.
// Bytes 0..3 are the half N1, bytes 4..7 the half N2. The library reads and
// writes caller blocks through unaligned-safe accessors.
typedef unsigned long long type_u64;

// Streaming counter mode (GOST 28147-89 gamma).
struct stream_GOST_CTR_t {
    type_uN<32> key;       // copy of the key given to init
    type_u64 counter;      // running counter: the encrypted synchro after init
    unsigned char used;    // bytes of gamma consumed; 0 = none saved, 8 = used up
    type_u64 gamma;        // last keystream block produced for a partial block
    unsigned char sbox;    // parameter-set selector
};

// Streaming GOST 28147-89 MAC.
struct stream_MAC_t {
    type_uN<32> key;             // copy of the key given to init
    unsigned char pending[8];    // bytes of an incomplete block
    type_u64 acc;                // running value over all complete blocks
    unsigned char sbox;          // parameter-set selector
    unsigned char pending_len;   // valid bytes in pending, 0..7
};

// Streaming GOST R 34.11-94.
struct stream_hash_t {
    type_uN<32> H;               // chaining value
    type_uN<32> sigma;           // control sum of all complete blocks mod 2^256
    type_uN<32> length;          // message length in bits (low 32-bit word used)
    unsigned char pending[32];   // bytes of the incomplete block
    unsigned char pending_len;   // valid bytes in pending, 0..31
};

// Streaming GOST R 34.11-2012 (both widths).
struct stream_hash_2012_t {
    type_uN<64> h;               // chaining value
    type_uN<64> sigma;           // sum of all message blocks mod 2^512
    type_uN<64> N;               // number of message bits processed
    unsigned char pending[64];   // bytes of the incomplete block
    unsigned char pending_len;   // valid bytes in pending, 0..63
};

#endif
