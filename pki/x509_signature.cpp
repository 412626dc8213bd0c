// Certificate signature check: GOST R 34.10-2001 over the GOST R 34.11-94
// digest of tbsCertificate (RFC 4491 2.2.2).
#include "GOST_34_10_2001.h"
#include "GOST_34_11_94.h"
#include "encoding/bytes.h"
#include "pki/x509_key.h"
#include "x_509.h"

using namespace kx::pki;

KORVEX_API unsigned int x_509_check_certificate(unsigned char* cert, unsigned char* issuerCert) {
    if (!cert) return 0;
    unsigned char* keyCert = issuerCert ? issuerCert : cert;
    unsigned char* key = public_key_of_size(keyCert, 64);
    unsigned int sel = x_509_get_open_key_parametrs_ds(keyCert);
    Der c, tbs, alg, bits;
    if (!key || (sel & 0xFF) == 0xFF) return 0;
    if (!der_top(cert, c) || c.t() != kTagSeq) return 0;
    DerIter it = children(c);
    if (!der_next(it, kTagSeq, tbs) || !der_next(it, alg) || !der_next(it, kTagBitString, bits))
        return 0;
    if (bits.len() < 65) return 0;

    type_uN<32> hash;
    GOST_34_11_94_hash(tbs.tag, tbs.size(), nullptr, &hash);
    // The verifier byte-reverses its signature argument in place: work on a
    // copy so that the certificate is never modified.
    type_uN<64> sig;
    kx::copy(sig.b, bits.val + 1, 64);
    return GOST_34_10_2001_check_DS(&hash, reinterpret_cast<type_uN<64>*>(key), &sig,
                                    static_cast<unsigned char>(sel));
}
