// PBES2 as the GOST PKCS#12 profile uses it (RFC 9548, OpenSSL's GOST
// engine): PBKDF2-HMAC-Streebog-512 and GOST 28147-89 CFB with key meshing.
#ifndef KORVEX_TOOLS_FORMATS_PBES2_H
#define KORVEX_TOOLS_FORMATS_PBES2_H

#include <string>

#include <openssl/types.h>

#include "formats/error.h"

namespace formats {

struct GostPbes2 {
    Bytes salt, iv;
    long iterations = 0;
    unsigned char sbox = 0;
};
// Reads the parameters; false when the algorithm is not PBES2 with the GOST
// cipher (another PBE for libcrypto). Refuses other PRFs and absurd counts.
bool gost_pbes2_params(const X509_ALGOR* alg, GostPbes2& out, const char* what);
Secret gost_pbes2_crypt(bool decrypt, const GostPbes2& g, const std::string& password, const unsigned char* data,
                        size_t n);
// The AlgorithmIdentifier (DER) of g, parameter set Z.
Bytes gost_pbes2_alg(const GostPbes2& g);

}  // namespace formats

#endif
