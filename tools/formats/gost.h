// The GOST building blocks of the key formats, made from libKorvex's public
// functions: PBKDF2 over HMAC-Streebog-512 with any count and length, GOST
// 28147-89 CFB with CryptoPro key meshing, the RFC 7836 KDF, the RFC 4357
// key diversification, and CryptoPro CSP's iterated GOST R 34.11-94 PBE.
#ifndef KORVEX_TOOLS_FORMATS_GOST_H
#define KORVEX_TOOLS_FORMATS_GOST_H

#include "formats/error.h"

namespace formats {

// Parameter-set selectors of the cipher functions.
constexpr unsigned char kSboxA = 0;  // id-Gost28147-89-CryptoPro-A-ParamSet
constexpr unsigned char kSboxZ = 7;  // id-tc26-gost-28147-param-Z

// Iteration counts above this are refused before any work is done.
constexpr unsigned long kMaxIterations = 10000000;
void check_iterations(long n, const char* what);

// The GOST HMACs: Streebog-512, Streebog-256 (RFC 7836), GOST R 34.11-94 (RFC 4357).
enum class Hmac { streebog512, streebog256, gost94 };
Secret hmac(Hmac h, const unsigned char* key, size_t key_len, const unsigned char* data, size_t n);
// PBKDF2 (RFC 8018 5.2) with any salt, count and length.
Secret pbkdf2(Hmac h, const Bytes& password, const Bytes& salt, unsigned long iterations, size_t out_len);

// CFB over data in place with key meshing after every 1024 bytes (RFC 4357
// 2.3.2), as OpenSSL's gost89 cipher and the GOST PKCS#12 bags use it.
void cfb_meshed(bool decrypt, unsigned char* data, size_t n, const unsigned char key[32], const unsigned char iv[8],
                unsigned char sbox);

// KDF_GOSTR3411_2012_256(K, label, seed) = HMAC-Streebog-256(K, 01|label|00|seed|01 00).
Secret kdf_2012_256(const Secret& key, const Bytes& label, const Bytes& seed);
// RFC 4357 6.5 CryptoPro KEK diversification of key by an 8-byte UKM.
Secret kek_diversify(const Secret& key, const unsigned char ukm[8], unsigned char sbox);
// The 4-byte GOST 28147-89 MAC with an IV (null = zero).
Bytes mac4(const unsigned char* data, size_t n, const Secret& key, const unsigned char* iv, unsigned char sbox);
// CryptoPro CSP's PFX key-bag PBE: K_i = H94(K_{i-1} | salt | i as 2 bytes
// big-endian), K_0 the password in UTF-16LE.
Secret csp_pbe_key(const Bytes& password_utf16, const Bytes& salt, unsigned long iterations);

}  // namespace formats

#endif
