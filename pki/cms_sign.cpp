// Signing and verifying a CMS signer (RFC 5652 5.4, 5.6; RFC 4490): GOST
// R 34.11-94 digests, GOST R 34.10-2001 signatures.
#include "CMS.h"
#include "GOST_34_10_2001.h"
#include "GOST_34_11_94.h"
#include "core/bytes.h"
#include "encoding/der.h"
#include "pki/x509_key.h"

namespace kx {
namespace pki {
namespace {

enum : unsigned int { kFormatError = 2 };
enum : unsigned int { kNoKey = 3, kNoData = 4, kValid = 5, kInvalid = 6 };

// Signing is always on CryptoPro-A, whatever the certificate says.
constexpr unsigned char kSigningCurve = 1;

// The signed attributes are digested as the DER of SET OF Attribute: the
// [0] IMPLICIT tag is replaced by the SET tag (RFC 5652 5.4).
void signed_attrs_digest(const Der& a, type_uN<32>* out) {
    stream_hash_t st;
    unsigned char set = kTagSet;
    GOST_34_11_94_hash_init(nullptr, &st);
    GOST_34_11_94_hash_write(&set, 1, &st);
    GOST_34_11_94_hash_write(a.tag + 1, a.size() - 1, &st);
    GOST_34_11_94_hash_end(out, &st);
}

// Stores the content digest in the signer block and signs.
unsigned int sign_block(unsigned char* block, const unsigned char* contentDigest, type_uN<32>* key) {
    type_uN<32> digest;
    kx::copy(digest.b, contentDigest, 32);
    unsigned char* sig = block;
    if (block[0] == kTagCtx0) {
        Der a;
        unsigned char* field = CMS_SignedAttr_find_msg_digest_value_field(block);
        if (!field || !der_top(block, a)) return kFormatError;
        kx::copy(field, contentDigest, 32);
        signed_attrs_digest(a, &digest);
        sig = a.end;
    }
    // The element must be an OCTET STRING or hold 64 octets; as the signature
    // goes two octets behind the element's tag, it must in any case hold 64
    // octets behind a two-octet header (04 00 or 04 81 40 would have the
    // signature written past the element or over its header).
    Der s;
    if (!der_top(sig, s) || s.len() != 64 || s.val != sig + 2) return kFormatError;
    return GOST_34_10_2001_create_DS(&digest, key, reinterpret_cast<type_uN<64>*>(sig + 2), kSigningCurve);
}

// Checks a signature over value with the certificate's key.
unsigned int verify(type_uN<32>* value, unsigned char* cert, type_uN<64>* signature) {
    unsigned char* key;
    unsigned char sel;
    if (!verification_key(cert, key, sel)) return kNoKey;
    if (!signature) return kNoData;
    return check_signature(value, key, signature->b, sel) == 1 ? kValid : kInvalid;
}

// The value a signer signed when it has signed attributes.
bool signed_attrs_value(unsigned char* signedAttrs, type_uN<32>* value) {
    Der a;
    if (!der_top(signedAttrs, a)) return false;
    signed_attrs_digest(a, value);
    return true;
}

}  // namespace
}  // namespace pki
}  // namespace kx

using namespace kx;
using namespace kx::pki;

KORVEX_API unsigned int CMS_sig_SignedAttr(unsigned char* block, unsigned char* content,
                                           unsigned int contentLen, type_uN<32>* key) {
    if (!block || (block[0] != kTagOctets && block[0] != kTagCtx0)) return kFormatError;
    type_uN<32> digest;
    GOST_34_11_94_hash(content, contentLen, nullptr, &digest);
    return sign_block(block, digest.b, key);
}

KORVEX_API unsigned int CMS_sig_SignedAttr_hash(unsigned char* block, type_uN<32>* digest,
                                                type_uN<32>* key) {
    if (!block || !digest || (block[0] != kTagOctets && block[0] != kTagCtx0)) return kFormatError;
    return sign_block(block, digest->b, key);
}

KORVEX_API unsigned int CMS_SignedData_check(unsigned char* signedAttrs, unsigned char* /*reserved*/,
                                             unsigned char* content, unsigned int contentLen,
                                             unsigned char* cert, type_uN<64>* signature) {
    type_uN<32> value;
    if (signedAttrs) {
        // The messageDigest attribute is not compared with the content here.
        if (!signed_attrs_value(signedAttrs, &value)) return kNoData;
    } else {
        if (!content || contentLen == 0) return kNoData;
        GOST_34_11_94_hash(content, contentLen, nullptr, &value);
    }
    return verify(&value, cert, signature);
}

KORVEX_API unsigned int CMS_SignedData_check_hash(unsigned char* signedAttrs, unsigned char* /*reserved*/,
                                                  unsigned char* digest, unsigned int digestLen,
                                                  unsigned char* cert, type_uN<64>* signature) {
    type_uN<32> value;
    if (signedAttrs) {
        if (!signed_attrs_value(signedAttrs, &value)) return kNoData;
    } else {
        if (!digest || digestLen != 32) return kNoData;
        kx::copy(value.b, digest, 32);
    }
    return verify(&value, cert, signature);
}
