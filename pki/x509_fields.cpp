// Certificate fields shown to users: Name attributes, the positions of
// subject, serial number, validity and issuer, keyUsage, and the serial number
// and validity texts (RFC 5280 4.1, 4.2.1.3).
#include "ASN1.h"
#include "core/bytes.h"
#include "pki/x509_key.h"
#include "x_509.h"

namespace kx {
namespace pki {
namespace {

constexpr unsigned char kTagVersion = kTagCtx0, kTagIssuerUid = tag_ctx_prim(1), kTagSubjectUid = tag_ctx_prim(2),
                        kTagExtensions = tag_ctx(3);

// Attribute types of the X.520 short attributes, in the order they are
// tried, and the slot of x509_name each one fills.
struct ShortAttr {
    unsigned char oid[3];
    x509_name_entry x509_name::*slot;
};
constexpr ShortAttr kShortAttrs[] = {
    {{0x55, 0x04, 0x06}, &x509_name::country},
    {{0x55, 0x04, 0x03}, &x509_name::common_name},
    {{0x55, 0x04, 0x0A}, &x509_name::organization},
    {{0x55, 0x04, 0x0B}, &x509_name::organizational_unit},
    {{0x55, 0x04, 0x05}, &x509_name::serial_number},
    {{0x55, 0x04, 0x08}, &x509_name::state},
    {{0x55, 0x04, 0x2E}, &x509_name::dn_qualifier},
};
// 1.2.840.113549.1.9.1 (PKCS #9 emailAddress).
constexpr unsigned char kEmailOid[9] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x01};
// 2.5.29.15 (id-ce-keyUsage).
constexpr unsigned char kKeyUsageOid[3] = {0x55, 0x1D, 0x0F};

// Records the value element at p (inside the attribute ending at limit).
bool record_value(unsigned char* p, unsigned char* limit, x509_name_entry& slot) {
    Der v;
    if (!der_at(p, limit, v)) return false;
    slot.tag = v.t();
    slot.length = static_cast<uint8_t>(v.len());
    slot.value = v.val;
    return true;
}

// Matches the first attribute of one RDN against the known types.
void name_attribute(const Der& rdn, x509_name& out) {
    Der atv, type;
    if (!der_first(rdn, atv) || !der_first(atv, type) || type.t() != kTagOid) return;
    unsigned char* limit = atv.end;
    if (type.len() == 3) {
        // After a match the later types are compared at the value, as the
        // matched octets are consumed; a real value never looks like 55 04 xx.
        unsigned char* p = type.val;
        for (const ShortAttr& a : kShortAttrs) {
            if (!fits(p, 3, limit) || !equal(p, a.oid, 3)) continue;
            p += 3;
            x509_name_entry& slot = out.*a.slot;
            if (slot.tag == 0) record_value(p, limit, slot);  // the first occurrence wins
        }
    } else if (fits(type.val, sizeof kEmailOid, limit) && equal(type.val, kEmailOid, sizeof kEmailOid)) {
        record_value(type.val + sizeof kEmailOid, limit, out.email);  // the last occurrence wins
    }
}

x509_field_ref whole(const Der& e) { return x509_field_ref{e.tag, static_cast<uint16_t>(e.size())}; }
x509_field_ref content(const Der& e) { return x509_field_ref{e.val, static_cast<uint16_t>(e.len())}; }

// keyUsage flags from the extnValue OCTET STRING of the extension whose
// OID ends at it.p.
unsigned int key_usage_value(DerCursor it) {
    Der e, bits;
    if (!it.next(e)) return 0;
    if (e.t() == kTagBool && !it.next(e)) return 0;  // critical flag
    if (e.t() != kTagOctets || !der_first(e, kTagBitString, bits)) return 0;
    // L - 1 octets after the unused-bits octet, counted in 8 bits; the
    // unused-bits count itself is not applied (trailing bits are zero in DER).
    unsigned char n = static_cast<unsigned char>(bits.len() - 1);
    if (bits.len() == 0 || !fits(bits.val + 1, n, bits.end)) return 0;
    unsigned int flags = 0;
    for (unsigned int i = 0; i < n && i < 4; ++i)
        flags |= static_cast<unsigned int>(ASN1_rotate_rigth_BIT_STRING_byte(bits.val[1 + i])) << (8 * i);
    return flags;
}

}  // namespace
}  // namespace pki
}  // namespace kx

using namespace kx;
using namespace kx::pki;

KORVEX_API x509_name x_509_parse_Name_field(unsigned char* name) {
    x509_name out{};
    Der n, rdn;
    if (!der_top(name, n) || n.t() != kTagSeq || n.len() == 0) return out;
    DerCursor it = children(n);  // RDN SETs, tag not checked
    while (it.next(rdn)) name_attribute(rdn, out);
    return out;
}

KORVEX_API x509_field_pointers x_509_get_field_pointers(unsigned char* cert) {
    x509_field_pointers out{};
    Der tbs, e;
    if (!enter_tbs(cert, tbs)) return out;
    DerCursor it = children(tbs);
    if (!it.next(kTagVersion, e)) return out;  // v1 certificates have no explicit version
    if (!it.next(kTagInt, e)) return out;
    out.serial_number = whole(e);
    if (!it.next(kTagSeq, e) || !it.next(kTagSeq, e)) return out;
    out.issuer = whole(e);
    if (!it.next(kTagSeq, e)) return out;
    out.validity = whole(e);
    if (!it.next(kTagSeq, e)) return out;
    out.subject = whole(e);
    return out;
}

KORVEX_API unsigned int x_509_get_key_usage(unsigned char* cert) {
    Der tbs, version, v, e, exts, ext, oid;
    if (!enter_tbs(cert, tbs)) return 0;
    DerCursor it = children(tbs);
    if (!it.next(kTagVersion, version) || !der_first(version, kTagInt, v)) return 0;
    if (v.len() == 0 || v.val[0] < 2) return 0;  // extensions exist from v3 on
    if (!it.next(kTagInt, e)) return 0;
    for (int i = 0; i < 5; ++i)  // signature, issuer, validity, subject, subjectPublicKeyInfo
        if (!it.next(kTagSeq, e)) return 0;
    if (!it.next(e)) return 0;
    if (e.t() == kTagIssuerUid && !it.next(e)) return 0;
    if (e.t() == kTagSubjectUid && !it.next(e)) return 0;
    if (e.t() != kTagExtensions || !der_first(e, kTagSeq, exts)) return 0;
    DerCursor x = children(exts);
    while (x.next(ext)) {
        if (ext.t() != kTagSeq) return 0;
        DerCursor in = children(ext);
        if (!in.next(kTagOid, oid)) return 0;
        if (oid.len() == sizeof kKeyUsageOid && kx::equal(oid.val, kKeyUsageOid, sizeof kKeyUsageOid))
            return key_usage_value(in);
    }
    return 0;
}

KORVEX_API x509_textbox x_509_get_textbox_of_cer(unsigned char* cert) {
    x509_textbox out{};
    Der tbs, e, validity, t;
    if (!enter_tbs(cert, tbs)) return out;
    DerCursor it = children(tbs);
    if (!it.next(e)) return out;  // taken to be the version, whatever it is
    DerCursor from = it;
    if (from.next(kTagInt, e)) out.serial_number = content(e);
    for (int i = 0; i < 3; ++i)  // serialNumber, signature, issuer
        if (!it.next(e)) return out;
    if (!it.next(kTagSeq, validity)) return out;
    DerCursor v = children(validity);
    if (!v.next(kTagUtcTime, t)) return out;  // GeneralizedTime is not shown
    out.not_before = content(t);
    if (!v.next(kTagUtcTime, t)) return out;
    out.not_after = content(t);
    return out;
}
