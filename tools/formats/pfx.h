// PFX (PKCS#12, RFC 7292) files holding a GOST key:
//  - as CryptoPro CSP exports them: the key bag under CSP's own PBE
//    (1.2.840.113549.1.12.1.80, GOST R 34.11-94 key, 28147-89 CFB, the key
//    itself wrapped once more under the KDF of RFC 7836 or RFC 4357), the
//    certificates under 3DES, AES-256 PBES2 or nothing, MacData SHA-1/SHA-256;
//  - standard GOST PKCS#12 as OpenSSL's GOST engine writes it: both bags under
//    PBES2 (PBKDF2-HMAC-Streebog-512, GOST 28147-89 CFB with key meshing),
//    MacData with a GOST hash keyed as RFC 9548 says.
// The generic structure, the non-GOST ciphers and MACs come from libcrypto,
// every GOST step from libKorvex.
#ifndef KORVEX_TOOLS_FORMATS_PFX_H
#define KORVEX_TOOLS_FORMATS_PFX_H

#include <string>

#include "formats/pkcs8.h"

namespace formats {

struct Pfx {
    PrivateKey key;
    std::vector<Bytes> certs;  // DER; the key's own certificate first
    std::string kind;          // "CryptoPro CSP" or "GOST PKCS#12"
};

// True when the file has the outer shape of a PKCS#12 v3 file.
bool pfx_detect(const Bytes& file);

// Opens the file with the password (UTF-8). Checks the MAC, every integrity
// value of the key bag, and the key against its certificate. Errors: exit 3
// for a wrong password, 4 for a damaged or unreadable file, 5 for what is
// refused (unsupported curve, absurd iteration counts).
Pfx pfx_read(const Bytes& file, const std::string& password);

// Standard GOST PKCS#12 that `openssl pkcs12 -engine gost` opens: PBES2 with
// PBKDF2-HMAC-Streebog-512 (2048 iterations, 8-byte salts), GOST 28147-89 CFB
// with parameter set Z and key meshing, Streebog-512 MacData. The key must
// match the first certificate.
Bytes pfx_write(const PrivateKey& key, const std::vector<Bytes>& certs, const std::string& password);

}  // namespace formats

#endif
