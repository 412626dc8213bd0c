// Certificate public key, its GOST parameter set and the length helpers (RFC 5280 layout, RFC 4491 GOST keys).
#include "core/bytes.h"
#include "pki/x509_key.h"
#include "x_509.h"

namespace kx {
namespace pki {
namespace {

// 1.2.643.2.2.35 (GOST R 34.10-2001 signature sets), 1.2.643.2.2.36 (key
// exchange sets, RFC 4357), 1.2.643.7.1.2.1.2 (GOST R 34.10-2012 512-bit sets).
constexpr unsigned char kSigSetPrefix[6] = {0x2A, 0x85, 0x03, 0x02, 0x02, 0x23};
constexpr unsigned char kXchSetPrefix[6] = {0x2A, 0x85, 0x03, 0x02, 0x02, 0x24};
constexpr unsigned char k512SetPrefix[8] = {0x2A, 0x85, 0x03, 0x07, 0x01, 0x02, 0x01, 0x02};

constexpr unsigned int kNoSelector = 0xFFFFFFFFu;

// subjectPublicKeyInfo: the first child of a non-empty tbsCertificate that is
// a SEQUENCE whose first content octet opens another SEQUENCE (the algorithm).
bool find_spki(unsigned char* cert, Der& spki) {
    Der tbs;
    if (!enter_tbs(cert, tbs) || tbs.len() == 0) return false;
    DerCursor it = children(tbs);
    while (it.next(spki))
        if (spki.t() == kTagSeq && spki.len() != 0 && spki.val[0] == kTagSeq) return true;
    return false;
}

// publicKeyParamSet OID inside the algorithm's parameters (RFC 4491 2.3.1);
// limit is the end of the parameters SEQUENCE, the bound for reading the
// OID's octets (its own length is not checked).
bool param_set_oid(unsigned char* cert, Der& oid, unsigned char*& limit) {
    Der spki, alg, skip, params;
    if (!find_spki(cert, spki) || !der_first(spki, kTagSeq, alg)) return false;
    DerCursor it = children(alg);
    if (!it.next(kTagOid, skip) || !it.next(kTagSeq, params)) return false;
    if (!der_first(params, kTagOid, oid)) return false;
    limit = params.end;
    return true;
}

// The selector octet after a matching prefix of n octets.
bool selector_after(const Der& oid, const unsigned char* limit, const unsigned char* prefix,
                    uint32_t n, unsigned char& sel) {
    if (!fits(oid.val, n + 1, limit)) return false;
    if (!equal(oid.val, prefix, n)) return false;
    sel = oid.val[n];
    return true;
}

}  // namespace

bool enter_tbs(unsigned char* cert, Der& c, Der& tbs) {
    return der_top(cert, c) && c.t() == kTagSeq && der_first(c, kTagSeq, tbs);
}

bool public_key_octets(unsigned char* cert, Der& key) {
    Der spki, bits;
    if (!find_spki(cert, spki)) return false;
    DerCursor it = children(spki);
    if (!it.next(key) || !it.next(kTagBitString, bits)) return false;
    // The key is an OCTET STRING wrapped in the BIT STRING after its
    // unused-bits octet.
    if (bits.len() < 2 || bits.val[1] != kTagOctets) return false;
    return der_at(bits.val + 1, bits.end, key);
}

bool verification_key(unsigned char* cert, unsigned char*& key, unsigned char& sel) {
    Der k;
    unsigned int s = x_509_get_open_key_parametrs_ds(cert);
    if (!public_key_octets(cert, k) || k.len() < 64 || (s & 0xFF) == 0xFF) return false;
    key = k.val;
    sel = static_cast<unsigned char>(s);
    return true;
}

}  // namespace pki
}  // namespace kx

using namespace kx;
using namespace kx::pki;

KORVEX_API unsigned char* x_509_find_public_key_info_block(unsigned char* cert) {
    Der spki;
    return find_spki(cert, spki) ? spki.tag : nullptr;
}

KORVEX_API unsigned char* x_509_get_open_key(unsigned char* cert) {
    Der key;
    return public_key_octets(cert, key) ? key.val : nullptr;
}

KORVEX_API unsigned int x_509_get_open_key_parametrs_ds(unsigned char* cert) {
    Der oid;
    unsigned char* limit;
    unsigned char sel;
    if (!param_set_oid(cert, oid, limit)) return kNoSelector;
    if (selector_after(oid, limit, kSigSetPrefix, sizeof kSigSetPrefix, sel)) return sel;
    // XchA shares the curve of CryptoPro-A, XchB that of CryptoPro-C.
    if (selector_after(oid, limit, kXchSetPrefix, sizeof kXchSetPrefix, sel)) return sel == 0 ? 1 : 3;
    return kNoSelector;
}

KORVEX_API unsigned int x_509_get_open_key_parametrs_ds_512bit(unsigned char* cert) {
    Der oid;
    unsigned char* limit;
    unsigned char sel;
    if (!param_set_oid(cert, oid, limit)) return kNoSelector;
    if (selector_after(oid, limit, k512SetPrefix, sizeof k512SetPrefix, sel)) return sel;
    return kNoSelector;
}

KORVEX_API unsigned int x_509_get_block_length(unsigned char* p) {
    if (!p) return 0;
    switch (kx::header_at(p)) {
        case 2:
            return p[1];
        case 3:  // reads the first content octet as the low byte: only for lengths >= 256
        case 4:
            return static_cast<unsigned int>(p[2]) << 8 | p[3];
        default:
            return 0;
    }
}

KORVEX_API unsigned int x_509_get_certificate_length(unsigned char* cert) {
    Der c;
    if (!der_top(cert, c) || c.t() != kTagSeq) return 0;
    return c.size();
}
