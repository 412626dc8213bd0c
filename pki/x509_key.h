// Internal access to a certificate's public key, shared by the certificate
// and the signed-message code.
#ifndef KORVEX_PKI_X509_KEY_H
#define KORVEX_PKI_X509_KEY_H

#include "pki/der_walk.h"

namespace kx {
namespace pki {

// The OCTET STRING holding the public key (content = the key as stored).
bool public_key_octets(unsigned char* cert, Der& key);

// The public key when at least n octets of it lie inside the certificate,
// else null.
unsigned char* public_key_of_size(unsigned char* cert, uint32_t n);

}  // namespace pki
}  // namespace kx

#endif
