// Certificate signature check: GOST R 34.10-2001 over the GOST R 34.11-94
// digest of tbsCertificate (RFC 4491 2.2.2).
#include "GOST_34_10_2001.h"
#include "GOST_34_11_94.h"
#include "core/bytes.h"
#include "pki/x509_key.h"
#include "x_509.h"

namespace kx {
namespace pki {

unsigned char check_signature(type_uN<32>* hash, unsigned char* key, const unsigned char* sig, unsigned char sel) {
    type_uN<64> copy;
    kx::copy(copy.b, sig, 64);
    return GOST_34_10_2001_check_DS(hash, reinterpret_cast<type_uN<64>*>(key), &copy, sel);
}

}  // namespace pki
}  // namespace kx

using namespace kx;
using namespace kx::pki;

KORVEX_API unsigned int x_509_check_certificate(unsigned char* cert, unsigned char* issuerCert) {
    if (!cert) return 0;
    // The issuer's key, or the certificate's own for a self-signed one.
    unsigned char* key;
    unsigned char sel;
    Der c, tbs, alg, bits;
    if (!verification_key(issuerCert ? issuerCert : cert, key, sel) || !enter_tbs(cert, c, tbs)) return 0;
    DerCursor it{tbs.end, c.end};
    if (!it.next(alg) || !it.next(kTagBitString, bits) || bits.len() < 65) return 0;

    type_uN<32> hash;
    GOST_34_11_94_hash(tbs.tag, tbs.size(), nullptr, &hash);
    // The signature follows the BIT STRING's unused-bits octet.
    return check_signature(&hash, key, bits.val + 1, sel);
}
