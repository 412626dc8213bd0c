// HMAC over GOST R 34.11-94 (RFC 4357 HMAC_GOSTR3411) and GOST R 34.11-2012
// (RFC 7836 HMAC_GOSTR3411_2012_256 / _512).
#include "hash/hmac.h"

KORVEX_API void GOST_34_11_94_HMAC(unsigned char* data, unsigned int len, unsigned char* key, unsigned char key_len,
                                   type_uN<32>* out) {
    kx::hmac::hmac<kx::hmac::Gost94>(data, len, key, key_len, out->b);
}

KORVEX_API void GOST_34_11_2012_HMAC_256_bit(unsigned char* data, unsigned int len, unsigned char* key,
                                             unsigned char key_len, type_uN<32>* out) {
    kx::hmac::hmac<kx::hmac::Gost2012_256>(data, len, key, key_len, out->b);
}

KORVEX_API void GOST_34_11_2012_HMAC_512_bit(unsigned char* data, unsigned int len, unsigned char* key,
                                             unsigned char key_len, type_uN<64>* out) {
    kx::hmac::hmac<kx::hmac::Gost2012_512>(data, len, key, key_len, out->b);
}
