// Internal access to a certificate's layout and public key, shared by the
// certificate and the signed-message code.
#ifndef KORVEX_PKI_X509_KEY_H
#define KORVEX_PKI_X509_KEY_H

#include "encoding/der.h"
#include "korvex_types.h"

namespace kx {
namespace pki {

// The Certificate SEQUENCE and its tbsCertificate SEQUENCE.
bool enter_tbs(unsigned char* cert, Der& c, Der& tbs);
inline bool enter_tbs(unsigned char* cert, Der& tbs) {
    Der c;
    return enter_tbs(cert, c, tbs);
}

// The OCTET STRING holding the public key (content = the key as stored).
bool public_key_octets(unsigned char* cert, Der& key);

// The key and curve selector a GOST R 34.10-2001 verification takes from
// cert: at least 64 key octets and a selector whose low byte is below 255.
bool verification_key(unsigned char* cert, unsigned char*& key, unsigned char& sel);

// GOST_34_10_2001_check_DS over hash with the 64 signature octets at sig
// (RFC 4490 layout). The verifier byte-reverses its signature argument in
// place and leaves it so on its early returns, so it is given a copy: the
// caller's certificate or message is never changed.
unsigned char check_signature(type_uN<32>* hash, unsigned char* key, const unsigned char* sig, unsigned char sel);

}  // namespace pki
}  // namespace kx

#endif
