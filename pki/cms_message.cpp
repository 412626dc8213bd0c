// The SignedData ContentInfo (RFC 5652 5.1-5.3): building it around a
// signer block and locating its parts.
#include "CMS.h"
#include "core/bytes.h"
#include "encoding/der.h"
#include "pki/cms_templates.h"
#include "pki/x509_key.h"

namespace kx {
namespace pki {
namespace {

constexpr unsigned char kVersion1[3] = {kTagInt, 1, 1};  // INTEGER 1

// The signer's issuer and serialNumber, from a certificate with an explicit
// version field.
bool signer_fields(unsigned char* cert, Der& c, Der& issuer, Der& serial) {
    Der tbs, e;
    if (!enter_tbs(cert, c, tbs)) return false;
    DerCursor it = children(tbs);
    if (!it.next(kTagCtx0, e) || !it.next(kTagInt, serial) || !it.next(kTagSeq, e) ||
        !it.next(kTagSeq, issuer))
        return false;
    return serial.len() != 0 && issuer.len() != 0;
}

// The OID element at e equals the template of n octets.
bool oid_is(const Der& e, const unsigned char* oid, unsigned int n) {
    return e.t() == kTagOid && e.size() == n && kx::equal(e.tag, oid, n);
}

}  // namespace
}  // namespace pki
}  // namespace kx

using namespace kx;
using namespace kx::pki;

KORVEX_API unsigned int CMS_SignedData_create(unsigned char* content, unsigned int contentLen,
                                              unsigned char* block, unsigned int blockLen,
                                              unsigned char* cert, unsigned char includeCert,
                                              unsigned char* out) {
    Der c, issuer, serial;
    if (!signer_fields(cert, c, issuer, serial)) return 0;
    if (!block || blockLen == 0 || (!content && contentLen)) return 0;

    // The signer block's [0] goes before signatureAlgorithm, the rest after.
    unsigned int attrs = 0;
    if (block[0] == kTagCtx0) {
        Der a;
        if (!der_at(block, block + blockLen, a)) return 0;
        attrs = a.size();
    }

    uint64_t sid = uint64_t{issuer.size()} + serial.size();
    uint64_t signerInfo = wrapped(sid) + blockLen + sizeof kVersion1 + 2 * sizeof kDigestAlgorithm;
    uint64_t signerInfos = wrapped(signerInfo);
    uint64_t certs = includeCert ? wrapped(c.size()) : 0;
    uint64_t encap = sizeof kSignedDataOid + (content ? wrapped(wrapped(contentLen)) : 0);
    uint64_t signedData = sizeof kVersion1 + wrapped(sizeof kDigestAlgorithm) + wrapped(encap) + certs +
                          wrapped(signerInfos);
    uint64_t contentInfo = sizeof kSignedDataOid + wrapped(wrapped(signedData));
    uint64_t total = wrapped(contentInfo);
    if (total > kMaxSize) return 0;
    if (!out) return static_cast<unsigned int>(total);

    DerWriter w{out};
    w.header(kTagSeq, contentInfo);
    w.bytes(kSignedDataOid, sizeof kSignedDataOid);
    w.header(kTagCtx0, wrapped(signedData));
    w.header(kTagSeq, signedData);
    w.bytes(kVersion1, sizeof kVersion1);
    w.header(kTagSet, sizeof kDigestAlgorithm);
    w.bytes(kDigestAlgorithm, sizeof kDigestAlgorithm);
    w.header(kTagSeq, encap);
    w.bytes(kSignedDataOid, sizeof kSignedDataOid);
    if (content) {
        w.header(kTagCtx0, wrapped(contentLen));
        w.header(kTagOctets, contentLen);
        w.bytes(content, contentLen);
    }
    if (includeCert) {
        w.header(kTagCtx0, c.size());
        w.bytes(c.tag, c.size());
    }
    w.header(kTagSet, signerInfos);
    w.header(kTagSeq, signerInfo);
    w.bytes(kVersion1, sizeof kVersion1);
    w.header(kTagSeq, sid);
    w.bytes(issuer.tag, issuer.size());
    w.bytes(serial.tag, serial.size());
    w.bytes(kDigestAlgorithm, sizeof kDigestAlgorithm);
    w.bytes(block, attrs);
    w.bytes(kSignatureAlgorithm, sizeof kSignatureAlgorithm);
    w.bytes(block + attrs, blockLen - attrs);
    return static_cast<unsigned int>(total);
}

KORVEX_API cms_signed_data_t CMS_SignedData_parse(unsigned char* msg) {
    cms_signed_data_t r{};
    r.status = 1;
    Der ci, e, sd, algs, alg, oid, encap, si;
    if (!der_top(msg, ci) || ci.t() != kTagSeq) return r;
    DerCursor it = children(ci);
    if (!it.next(e) || !oid_is(e, kSignedDataOid, sizeof kSignedDataOid)) return r;
    if (!it.next(kTagCtx0, e) || !der_first(e, kTagSeq, sd)) return r;

    it = children(sd);
    if (!it.next(kTagInt, e) || !it.next(kTagSet, algs)) return r;
    if (!der_first(algs, alg) || !der_first(alg, oid) || !oid_is(oid, kDigestOid, sizeof kDigestOid)) return r;
    if (!it.next(kTagSeq, encap)) return r;
    DerCursor in = children(encap);
    if (!in.next(kTagOid, e)) return r;
    Der wrapper, octets;
    if (in.next(kTagCtx0, wrapper) && der_first(wrapper, kTagOctets, octets)) {
        r.content = octets.val;
        r.content_len = octets.len();
    }

    if (!it.next(e)) return r;
    if (e.t() == kTagCtx0) {  // certificates: only the first is used
        Der cert;
        if (der_first(e, cert) && cert.t() == kTagSeq) {
            r.certificate = cert.tag;
            r.certificate_len = cert.size();
        }
        if (!it.next(e)) return r;
    }
    if (e.t() == kTagCtx1 && !it.next(e)) return r;  // crls
    if (e.t() != kTagSet || !der_first(e, kTagSeq, si)) return r;  // only the first signer

    in = children(si);
    if (!in.next(kTagInt, e) || !in.next(kTagSeq, e)) return r;
    r.signer_id = e.tag;
    r.signer_id_len = e.size();
    if (!in.next(kTagSeq, e) || !in.next(e)) return r;
    if (e.t() == kTagCtx0) {
        r.signed_attrs = e.tag;
        r.signed_attrs_len = e.size();
        if (!in.next(e)) return r;
    }
    if (e.t() != kTagSeq || !in.next(kTagOctets, e)) return r;
    r.signature = e.val;
    r.signature_len = e.len();
    r.status = 0;
    return r;
}
