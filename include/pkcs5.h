// PBKDF2 (PKCS#5, RFC 2898) in the fixed form the key containers use: one
// 32-byte output block, the first 4 salt bytes only, and a 16-bit iteration
// count where 0 stands for 65536.
#ifndef KORVEX_PKCS5_H
#define KORVEX_PKCS5_H

#include "korvex_types.h"

// PRF: HMAC over GOST R 34.11-94 (GOST_34_11_94_HMAC).
KORVEX_API void pkcs5_PBKDF2(unsigned char* password, unsigned char password_len, unsigned char* salt, unsigned short iterations, KORVEX_UN(32)* out);
// PRF: HMAC over GOST R 34.11-2012 512-bit; the block is cut to 32 bytes.
KORVEX_API void pkcs5_PBKDF2_2012(unsigned char* password, unsigned char password_len, unsigned char* salt, unsigned short iterations, KORVEX_UN(32)* out);

#endif
