// The key bag of PFX files exported by CryptoPro CSP (PBE OID
// 1.2.840.113549.1.12.1.80): the password in UTF-16LE iterated through GOST
// R 34.11-94, GOST 28147-89 CFB (parameter set A), and inside a CryptoAPI
// PRIVATEKEYBLOB whose key is wrapped once more (RFC 7836 KDF for 2012 keys,
// RFC 4357 6.5 diversification for 2001 keys) and checked by its MACs.
#ifndef KORVEX_TOOLS_FORMATS_CSP_H
#define KORVEX_TOOLS_FORMATS_CSP_H

#include <string>

#include <openssl/types.h>

#include "formats/pkcs8.h"

namespace formats {

// mac_checked: the PFX MAC already proved the password, so a failure here
// means damage (exit 4) rather than a wrong password (exit 3).
PrivateKey csp_key_bag(const X509_ALGOR* alg, const ASN1_OCTET_STRING* ct, const std::string& password,
                       bool mac_checked);

}  // namespace formats

#endif
