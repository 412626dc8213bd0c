// CMS AuthenticatedData (RFC 5652 section 9) around the PKCS#15 token: one KEK
// recipient carrying a random MAC key, an HMAC over the authenticated
// attributes and a digest of the encapsulated content.
#include "CMS.h"
#include "containers/pkcs15_internal.h"
#include "core/bytes.h"

namespace kx {
namespace p15 {

void attrs_hmac(const Generation& g, uint8_t* attrs, unsigned attrs_len, uint8_t* mac_key32, uint8_t* out) {
    // The MAC is taken over the attributes with the tag octet 0x82 in place
    // of 0xA2 (RFC 5652 9.2 asks for the SET OF tag 0x31); containers of this
    // format have always been sealed that way, so readers must do the same.
    uint8_t tag = attrs[0];
    attrs[0] = tag_ctx_prim(2);
    hmac(g, attrs, attrs_len, mac_key32, out);
    attrs[0] = tag;
}

void seal_authdata(const Generation& g, const AuthData& ad, type_uN<32>* kek, uint8_t* mac_key32,
                   const uint8_t* ukm8) {
    copy(ad.ukm, ukm8, 8);
    wrap_key(g, mac_key32, kek, ukm8, ad.wrapped, ad.wrap_mac);
    digest(g, ad.content, ad.content_len, ad.digest);
    attrs_hmac(g, ad.attrs, ad.attrs_len, mac_key32, ad.mac);
}

namespace {

// SEQUENCE { OID, [0] { OCTET STRING } } within len octets: the OCTET STRING.
bool encapsulated(uint8_t* content, unsigned len, Der& os) {
    Der seq, oid, a0;
    if (!der_at(content, content + len, seq) || seq.t() != kTagSeq) return false;
    DerCursor it = children(seq);
    return it.next(kTagOid, oid) && it.next(kTagCtx0, a0) && der_first(a0, kTagOctets, os);
}

// SEQUENCE { messageDigest OID, SET { OCTET STRING } }: the digest value.
bool message_digest(const Der& attr, unsigned n, uint8_t*& value) {
    static constexpr uint8_t kOid[11] = {kTagOid, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x04};
    Der oid, set, os;
    DerCursor it = children(attr);
    if (attr.t() != kTagSeq || !it.next(oid) || oid.size() != sizeof kOid || !equal(oid.tag, kOid, sizeof kOid))
        return false;
    if (!it.next(kTagSet, set) || !der_first(set, kTagOctets, os) || os.len() != n) return false;
    value = os.val;
    return true;
}

}  // namespace

bool locate_authdata(const Generation& g, uint8_t* container, AuthData& ad) {
    Der outer, e, attrs, os, a;
    if (container == nullptr || container[0] != kTagSeq || !der_top(container, outer)) return false;
    // version, recipientInfos, macAlgorithm, [1] digestAlgorithm, content,
    // [2] authAttrs, mac.
    DerCursor it = children(outer);
    if (!it.next(kTagInt, e)) return false;
    if (!it.next(e)) return false;
    pkcs15_CEK_t c = get_cek(e);
    Der ukm, wrapped, mac;
    if (!der_at(c.ptr[PKCS15_CEK_UKM], e.end, ukm) || !der_at(c.ptr[PKCS15_CEK_ENC], e.end, wrapped) ||
        !der_at(c.ptr[PKCS15_CEK_MAC], e.end, mac) || ukm.len() != 8 || wrapped.len() != 32 || mac.len() != 4)
        return false;
    if (!it.next(kTagSeq, e) || !it.next(e)) return false;
    if (e.t() == kTagCtx1 && !it.next(e)) return false;
    if (!encapsulated(e.tag, e.size(), os)) return false;
    if (!it.next(kTagCtx2, attrs)) return false;
    ad.digest = nullptr;
    for (DerCursor in = children(attrs); !ad.digest && in.next(a);) message_digest(a, g.digest_len, ad.digest);
    if (!ad.digest || !it.next(kTagOctets, e) || e.len() != g.digest_len) return false;
    ad.ukm = ukm.val;
    ad.wrapped = wrapped.val;
    ad.wrap_mac = mac.val;
    ad.content = os.val;
    ad.content_len = os.len();
    ad.attrs = attrs.tag;
    ad.attrs_len = attrs.size();
    ad.mac = e.val;
    return true;
}

unsigned authdata(const Generation& g, uint8_t* content, unsigned len, type_uN<32>* kek, uint8_t* out) {
    uint64_t inner64 = uint64_t{ad_prefix_len(g)} + len + g.ad_suffix_len;
    if (wrapped(inner64) > kMaxSize) return 0;
    unsigned inner = static_cast<unsigned>(inner64), total = static_cast<unsigned>(wrapped(inner));
    Der os;
    if (content != nullptr && !encapsulated(content, len, os)) return 0;
    if (out == nullptr) return total;
    if (content == nullptr) return 0;
    uint8_t ukm[32], mac_key[32];
    if (!draw(ukm) || !draw(mac_key)) {
        wipe(mac_key, sizeof mac_key);
        return 0;
    }
    uint8_t* prefix = out + header_size(inner);
    uint8_t* moved = prefix + ad_prefix_len(g);
    uint8_t* suffix = moved + len;
    move(moved, content, len);
    put_header(out, kTagSeq, inner);
    copy(prefix, g.recipient, g.recipient_len);
    prefix[2] = 0;  // AuthenticatedData version 0 where the envelope template has 2
    copy(prefix + g.recipient_len, g.ad_algs, g.ad_algs_len);
    copy(suffix, g.ad_suffix, g.ad_suffix_len);
    AuthData ad = {prefix + g.ukm_at,
                   prefix + g.wrapped_at,
                   prefix + g.wrap_mac_at,
                   moved + (os.val - content),
                   os.len(),
                   suffix,
                   g.attrs_len,
                   suffix + g.digest_at,
                   suffix + g.ad_mac_at};
    seal_authdata(g, ad, kek, mac_key, ukm);
    wipe(mac_key, sizeof mac_key);
    wipe(ukm, sizeof ukm);
    return total;
}

}  // namespace p15
}  // namespace kx

KORVEX_API unsigned int CMS_AuthenticatedData_pkcs15_create(unsigned char* content, unsigned int len,
                                                            type_uN<32>* kek, unsigned int /*reserved*/,
                                                            unsigned char* out) {
    return kx::p15::authdata(kx::p15::g2001, content, len, kek, out);
}

KORVEX_API unsigned int CMS_AuthenticatedData_pkcs15_create_2012(unsigned char* content, unsigned int len,
                                                                 type_uN<32>* kek, unsigned int /*reserved*/,
                                                                 unsigned char* out) {
    return kx::p15::authdata(kx::p15::g2012, content, len, kek, out);
}
