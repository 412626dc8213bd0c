// Bounded DER walking for the PKCS#15 readers: every element must lie inside
// its parent, so a damaged container is rejected instead of being read past
// its end. Writing goes through the library's DER primitives.
#include "ASN1.h"
#include "containers/pkcs15_internal.h"
#include "core/bytes.h"

namespace kx {
namespace p15 {

unsigned put_header(uint8_t* p, uint8_t tag, unsigned len) { return ASN1_set_header(p, tag, len); }

void move(uint8_t* dst, const uint8_t* src, unsigned n) {
    if (dst == src || n == 0) return;
    // Moving up copies from the end so that an overlapping source survives.
    if (dst > src)
        ASN1_mem_move(const_cast<uint8_t*>(src), dst, n);
    else
        ASN1_mem_copy(const_cast<uint8_t*>(src), dst, n);
}

namespace {

// Header at p with at most `avail` octets readable; 0 when it does not fit
// or is not a definite length of 1..4 octets.
unsigned read_header(const uint8_t* p, size_t avail, size_t& len) {
    if (avail < 2) return 0;
    unsigned first = p[1];
    if (first < 0x80) {
        len = first;
        return 2;
    }
    unsigned n = first & 0x7F;
    if (n == 0 || n > 4 || avail < 2 + n) return 0;
    size_t v = 0;
    for (unsigned i = 0; i < n; ++i) v = (v << 8) | p[2 + i];
    len = v;
    return 2 + n;
}

void fill(uint8_t* p, unsigned hl, size_t len, El& e) {
    e.at = p;
    e.tag = p[0];
    e.value = p + hl;
    e.len = static_cast<unsigned>(len);
    e.end = e.value + len;
}

}  // namespace

bool parse(uint8_t* p, uint8_t* limit, El& e) {
    if (p == nullptr || limit == nullptr || p >= limit) return false;
    size_t avail = static_cast<size_t>(limit - p);
    size_t len = 0;
    unsigned hl = read_header(p, avail, len);
    if (hl == 0 || len > avail - hl) return false;
    fill(p, hl, len, e);
    return true;
}

bool parse_self(uint8_t* p, El& e) {
    if (p == nullptr) return false;
    size_t len = 0;
    unsigned hl = read_header(p, 6, len);
    if (hl == 0) return false;
    fill(p, hl, len, e);
    return true;
}

bool child_tagged(const El& e, uint8_t t, El& c) {
    for (bool ok = first_child(e, c); ok; ok = next(e, c, c))
        if (c.tag == t) return true;
    return false;
}

namespace {

// An INTEGER whose first content octet is v.
bool is_small_int(const El& e, uint8_t v) { return e.tag == 0x02 && e.len >= 1 && e.value[0] == v; }

// SEQUENCE { token OID, [0] { OCTET STRING { SEQUENCE token } } }: the token.
bool token_of(const El& seq, El& token) {
    El oid, a0, os;
    if (seq.tag != 0x30 || !first_child(seq, oid)) return false;
    if (oid.end - oid.at != sizeof kTokenOid || !equal(oid.at, kTokenOid, sizeof kTokenOid)) return false;
    if (!next(seq, oid, a0) || a0.tag != 0xA0) return false;
    if (!first_child(a0, os) || os.tag != 0x04) return false;
    return first_child(os, token) && token.tag == 0x30;
}

}  // namespace

bool token_span(uint8_t* container, Span& out) {
    El outer, c, token, version;
    if (container == nullptr || container[0] != 0x30 || !parse_self(container, outer) || outer.len == 0)
        return false;
    if (!first_child(outer, c) || !is_small_int(c, 0)) return false;
    while (next(outer, c, c)) {
        if (!token_of(c, token)) continue;
        if (!first_child(token, version) || !is_small_int(version, 0)) return false;
        out.begin = version.end;
        out.end = token.end;
        return true;
    }
    return false;
}

bool objects_seq(const Span& token, El& kmi, El& objects) {
    El e;
    kmi.at = nullptr;
    if (!parse(token.begin, token.end, e)) return false;
    if (e.tag == 0xA0) {
        kmi = e;
        if (!parse(e.end, token.end, e)) return false;
    }
    if (e.tag != 0x30 || e.len == 0) return false;
    objects = e;
    return true;
}

bool find_object(const El& objects, uint8_t t1, uint8_t t2, uint8_t t3, El& a2) {
    El o, i2, i3, a1;
    for (bool ok = first_child(objects, o); ok; ok = next(objects, o, o)) {
        if (o.tag != t1 || !first_child(o, i2) || i2.tag != t2 || !first_child(i2, i3) || i3.tag != t3) continue;
        for (bool more = first_child(i3, a1); more; more = next(i3, a1, a1))
            if (a1.tag == 0xA1 && first_child(a1, a2) && a2.tag == 0xA2) return true;
        return false;
    }
    return false;
}

pkcs15_CEK_t get_cek(const El& set) {
    pkcs15_CEK_t r = {{nullptr, nullptr, nullptr, nullptr}};
    El kek, e, alg, par, enc, seq, wrapped, mac;
    if (set.tag != 0x31 || !child_tagged(set, 0xA2, kek)) return r;
    if (!first_child(kek, e) || !is_small_int(e, 4)) return r;
    if (!next(kek, e, e) || e.tag != 0x30) return r;
    r.ptr[PKCS15_CEK_KEKID] = e.value;
    if (!next(kek, e, alg) || alg.tag != 0x30) return r;
    // Key-encryption algorithm { OID, parameters { parameter set, UKM } }.
    if (first_child(alg, e) && next(alg, e, par) && par.tag == 0x30 && child_tagged(par, 0x04, e))
        r.ptr[PKCS15_CEK_UKM] = e.at;
    if (!next(kek, alg, enc) || enc.tag != 0x04) return r;
    if (!first_child(enc, seq) || seq.tag != 0x30) return r;
    if (!first_child(seq, wrapped) || wrapped.tag != 0x04) return r;
    r.ptr[PKCS15_CEK_ENC] = wrapped.at;
    if (next(seq, wrapped, mac) && mac.tag == 0x04) r.ptr[PKCS15_CEK_MAC] = mac.at;
    return r;
}

pkcs15_data_t get_data(const El& seq) {
    pkcs15_data_t r = {nullptr, nullptr};
    El type, alg, e, par;
    if (seq.tag != 0x30 || !first_child(seq, type) || !next(seq, type, alg) || alg.tag != 0x30) return r;
    // Content encryption algorithm { OID, parameters { IV, parameter set } }.
    if (first_child(alg, e) && next(alg, e, par) && par.tag == 0x30 && child_tagged(par, 0x04, e)) r.iv = e.at;
    if (next(seq, alg, e) && e.tag == 0x80) r.content = e.at;
    return r;
}

pkcs15_KEK_t get_kek(const El& a0) {
    pkcs15_KEK_t r = {nullptr, 0};
    El info, alg, seq, oid, par, salt, count;
    if (a0.tag != 0xA0 || !first_child(a0, info) || info.tag != 0x30) return r;
    if (!child_tagged(info, 0xA0, alg) || !first_child(alg, seq) || seq.tag != 0x30) return r;
    // PBKDF2 { OID, params { salt, iteration count, key length, PRF } }.
    if (!first_child(seq, oid) || !next(seq, oid, par) || par.tag != 0x30) return r;
    if (!first_child(par, salt) || salt.tag != 0x04) return r;
    r.salt = salt.at;
    if (next(par, salt, count) && count.tag == 0x02 && (count.len == 1 || count.len == 2))
        r.iterations = count.len == 1 ? count.value[0] : (unsigned(count.value[0]) << 8) | count.value[1];
    return r;
}

bool locate_envelope(const El& a2, Envelope& env) {
    El version, set, info;
    if (!first_child(a2, version) || !is_small_int(version, 2)) return false;
    if (!next(a2, version, set)) return false;
    pkcs15_CEK_t c = get_cek(set);
    El ukm, wrapped, mac, iv, content;
    if (!c.ptr[0] || !parse(c.ptr[PKCS15_CEK_UKM], a2.end, ukm) || !parse(c.ptr[PKCS15_CEK_ENC], a2.end, wrapped) ||
        !parse(c.ptr[PKCS15_CEK_MAC], a2.end, mac))
        return false;
    if (ukm.len != 8 || wrapped.len != 32 || mac.len != 4) return false;
    if (!next(a2, set, info)) return false;
    pkcs15_data_t d = get_data(info);
    if (!parse(d.iv, a2.end, iv) || !parse(d.content, a2.end, content) || iv.len != 8) return false;
    env.ukm = ukm.value;
    env.wrapped = wrapped.value;
    env.wrap_mac = mac.value;
    env.iv = iv.value;
    env.content = content.value;
    env.content_len = content.len;
    return true;
}

}  // namespace p15
}  // namespace kx

// ---- Exported getters: each element is bounded by its own header. ---------

KORVEX_API unsigned char* pkcs15_get_pkcs15content(unsigned char* container) {
    kx::p15::Span t;
    return kx::p15::token_span(container, t) ? t.begin : nullptr;
}

KORVEX_API unsigned int pkcs15_get_version(unsigned char* container) {
    using namespace kx::p15;
    Span t;
    El kmi, objects, o, i2, x;
    if (!token_span(container, t) || !objects_seq(t, kmi, objects)) return 0;
    for (bool ok = first_child(objects, o); ok; ok = next(objects, o, o)) {
        if (o.tag != 0xA0 || !first_child(o, i2) || i2.tag != 0xA0 || !first_child(i2, x)) continue;
        if (x.tag == 0xBA) return 1;
        if (x.tag == 0xBB) return 2;
    }
    return 0;
}

KORVEX_API pkcs15_CEK_t pkcs15_get_pkcs15_CEK(unsigned char* p) {
    kx::p15::El e;
    if (!kx::p15::parse_self(p, e)) return pkcs15_CEK_t{{nullptr, nullptr, nullptr, nullptr}};
    return kx::p15::get_cek(e);
}

KORVEX_API pkcs15_data_t pkcs15_get_pkcs15_data(unsigned char* p) {
    kx::p15::El e;
    if (!kx::p15::parse_self(p, e)) return pkcs15_data_t{nullptr, nullptr};
    return kx::p15::get_data(e);
}

KORVEX_API pkcs15_KEK_t pkcs15_get_pkcs15_KEK(unsigned char* p) {
    kx::p15::El e;
    if (!kx::p15::parse_self(p, e)) return pkcs15_KEK_t{nullptr, 0};
    return kx::p15::get_kek(e);
}
