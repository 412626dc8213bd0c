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
    attrs[0] = 0x82;
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
bool encapsulated(uint8_t* content, unsigned len, El& os) {
    El seq, oid, a0;
    if (!parse(content, content + len, seq) || seq.tag != 0x30) return false;
    if (!first_child(seq, oid) || oid.tag != 0x06 || !next(seq, oid, a0) || a0.tag != 0xA0) return false;
    return first_child(a0, os) && os.tag == 0x04;
}

// SEQUENCE { messageDigest OID, SET { OCTET STRING } }: the digest value.
bool message_digest(const El& attr, unsigned n, uint8_t*& value) {
    static constexpr uint8_t kOid[11] = {0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x04};
    El oid, set, os;
    if (attr.tag != 0x30 || !first_child(attr, oid) || oid.end - oid.at != 11 || !equal(oid.at, kOid, 11))
        return false;
    if (!next(attr, oid, set) || set.tag != 0x31 || !first_child(set, os) || os.tag != 0x04 || os.len != n)
        return false;
    value = os.value;
    return true;
}

}  // namespace

bool locate_authdata(const Generation& g, uint8_t* container, AuthData& ad) {
    El outer, e, attrs, os, a;
    if (container == nullptr || container[0] != 0x30 || !parse_self(container, outer)) return false;
    // version, recipientInfos, macAlgorithm, [1] digestAlgorithm, content,
    // [2] authAttrs, mac.
    if (!first_child(outer, e) || e.tag != 0x02) return false;
    if (!next(outer, e, e)) return false;
    pkcs15_CEK_t c = get_cek(e);
    El ukm, wrapped, mac;
    if (!parse(c.ptr[PKCS15_CEK_UKM], e.end, ukm) || !parse(c.ptr[PKCS15_CEK_ENC], e.end, wrapped) ||
        !parse(c.ptr[PKCS15_CEK_MAC], e.end, mac) || ukm.len != 8 || wrapped.len != 32 || mac.len != 4)
        return false;
    if (!next(outer, e, e) || e.tag != 0x30 || !next(outer, e, e)) return false;
    if (e.tag == 0xA1 && !next(outer, e, e)) return false;
    if (!encapsulated(e.at, static_cast<unsigned>(e.end - e.at), os)) return false;
    if (!next(outer, e, attrs) || attrs.tag != 0xA2) return false;
    ad.digest = nullptr;
    for (bool ok = first_child(attrs, a); ok && !ad.digest; ok = next(attrs, a, a))
        message_digest(a, g.digest_len, ad.digest);
    if (!ad.digest || !next(outer, attrs, e) || e.tag != 0x04 || e.len != g.digest_len) return false;
    ad.ukm = ukm.value;
    ad.wrapped = wrapped.value;
    ad.wrap_mac = mac.value;
    ad.content = os.value;
    ad.content_len = os.len;
    ad.attrs = attrs.at;
    ad.attrs_len = static_cast<unsigned>(attrs.end - attrs.at);
    ad.mac = e.value;
    return true;
}

unsigned authdata(const Generation& g, uint8_t* content, unsigned len, type_uN<32>* kek, uint8_t* out) {
    uint64_t inner64 = uint64_t{ad_prefix_len(g)} + len + g.ad_suffix_len;
    if (wrapped_size(inner64) > kMaxSize) return 0;
    unsigned inner = static_cast<unsigned>(inner64), total = static_cast<unsigned>(wrapped_size(inner));
    El os;
    if (content != nullptr && !encapsulated(content, len, os)) return 0;
    if (out == nullptr) return total;
    if (content == nullptr) return 0;
    uint8_t ukm[32], mac_key[32];
    if (!draw(ukm) || !draw(mac_key)) {
        wipe(mac_key, sizeof mac_key);
        return 0;
    }
    uint8_t* prefix = out + hdr_size(inner);
    uint8_t* moved = prefix + ad_prefix_len(g);
    uint8_t* suffix = moved + len;
    move(moved, content, len);
    put_header(out, 0x30, inner);
    copy(prefix, g.recipient, g.recipient_len);
    prefix[2] = 0;  // AuthenticatedData version 0 where the envelope template has 2
    copy(prefix + g.recipient_len, g.ad_algs, g.ad_algs_len);
    copy(suffix, g.ad_suffix, g.ad_suffix_len);
    AuthData ad = {prefix + g.ukm_at,
                   prefix + g.wrapped_at,
                   prefix + g.wrap_mac_at,
                   moved + (os.value - content),
                   os.len,
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
