// Walks of the PKCS#15 container on the library's bounded DER reader
// (encoding/der.h): every element must lie inside its parent, so a damaged
// container is rejected instead of being read past its end.
#include "containers/pkcs15_internal.h"
#include "core/bytes.h"

namespace kx {
namespace p15 {

void move(uint8_t* dst, const uint8_t* src, unsigned n) {
    if (dst == src || n == 0) return;
    // Moving up copies from the end so that an overlapping source survives.
    if (dst > src)
        copy_descending(src, dst, n);
    else
        copy_ascending(src, dst, n);
}

namespace {

// An INTEGER whose first content octet is v.
bool is_small_int(const Der& e, uint8_t v) { return e.t() == kTagInt && e.len() >= 1 && e.val[0] == v; }

// SEQUENCE { token OID, [0] { OCTET STRING { SEQUENCE token } } }: the token.
bool token_of(const Der& seq, Der& token) {
    DerCursor it = children(seq);
    Der oid, a0, os;
    if (seq.t() != kTagSeq || !it.next(oid)) return false;
    if (oid.size() != sizeof kTokenOid || !equal(oid.tag, kTokenOid, sizeof kTokenOid)) return false;
    return it.next(kTagCtx0, a0) && der_first(a0, kTagOctets, os) && der_first(os, kTagSeq, token);
}

}  // namespace

bool token_span(uint8_t* container, DerCursor& out) {
    Der outer, c, token, version;
    if (container == nullptr || container[0] != kTagSeq || !der_top(container, outer) || outer.len() == 0)
        return false;
    DerCursor it = children(outer);
    if (!it.next(c) || !is_small_int(c, 0)) return false;
    while (it.next(c)) {
        if (!token_of(c, token)) continue;
        out = children(token);
        return out.next(version) && is_small_int(version, 0);
    }
    return false;
}

bool objects_seq(DerCursor token, Der& kmi, Der& objects) {
    Der e;
    kmi.tag = nullptr;
    if (!token.next(e)) return false;
    if (e.t() == kTagCtx0) {
        kmi = e;
        if (!token.next(e)) return false;
    }
    if (e.t() != kTagSeq || e.len() == 0) return false;
    objects = e;
    return true;
}

bool find_object(const Der& objects, uint8_t t1, uint8_t t2, uint8_t t3, Der& a2) {
    Der o, i2, i3, a1;
    for (DerCursor it = children(objects); it.next(o);) {
        if (o.t() != t1 || !der_first(o, t2, i2) || !der_first(i2, t3, i3)) continue;
        for (DerCursor in = children(i3); in.next(a1);)
            if (a1.t() == kTagCtx1 && der_first(a1, kTagCtx2, a2)) return true;
        return false;
    }
    return false;
}

pkcs15_CEK_t get_cek(const Der& set) {
    pkcs15_CEK_t r = {{nullptr, nullptr, nullptr, nullptr}};
    Der kek, e, alg, par, enc, seq, wrapped, mac;
    if (set.t() != kTagSet || !children(set).find(kTagCtx2, kek)) return r;
    DerCursor it = children(kek);
    if (!it.next(e) || !is_small_int(e, 4)) return r;
    if (!it.next(kTagSeq, e)) return r;
    r.ptr[PKCS15_CEK_KEKID] = e.val;
    if (!it.next(kTagSeq, alg)) return r;
    // Key-encryption algorithm { OID, parameters { parameter set, UKM } }.
    DerCursor a = children(alg);
    if (a.next(e) && a.next(kTagSeq, par) && children(par).find(kTagOctets, e)) r.ptr[PKCS15_CEK_UKM] = e.tag;
    if (!it.next(kTagOctets, enc) || !der_first(enc, kTagSeq, seq)) return r;
    DerCursor s = children(seq);
    if (!s.next(kTagOctets, wrapped)) return r;
    r.ptr[PKCS15_CEK_ENC] = wrapped.tag;
    if (s.next(kTagOctets, mac)) r.ptr[PKCS15_CEK_MAC] = mac.tag;
    return r;
}

pkcs15_data_t get_data(const Der& seq) {
    pkcs15_data_t r = {nullptr, nullptr};
    Der type, alg, e, par;
    DerCursor it = children(seq);
    if (seq.t() != kTagSeq || !it.next(type) || !it.next(kTagSeq, alg)) return r;
    // Content encryption algorithm { OID, parameters { IV, parameter set } }.
    DerCursor a = children(alg);
    if (a.next(e) && a.next(kTagSeq, par) && children(par).find(kTagOctets, e)) r.iv = e.tag;
    if (it.next(tag_ctx_prim(0), e)) r.content = e.tag;
    return r;
}

pkcs15_KEK_t get_kek(const Der& a0) {
    pkcs15_KEK_t r = {nullptr, 0};
    Der info, alg, seq, oid, par, salt, count;
    if (a0.t() != kTagCtx0 || !der_first(a0, kTagSeq, info)) return r;
    if (!children(info).find(kTagCtx0, alg) || !der_first(alg, kTagSeq, seq)) return r;
    // PBKDF2 { OID, params { salt, iteration count, key length, PRF } }.
    DerCursor it = children(seq);
    if (!it.next(oid) || !it.next(kTagSeq, par)) return r;
    DerCursor p = children(par);
    if (!p.next(kTagOctets, salt)) return r;
    r.salt = salt.tag;
    if (p.next(kTagInt, count) && (count.len() == 1 || count.len() == 2))
        r.iterations = count.len() == 1 ? count.val[0] : (unsigned(count.val[0]) << 8) | count.val[1];
    return r;
}

bool locate_envelope(const Der& a2, Envelope& env) {
    Der version, set, info;
    DerCursor it = children(a2);
    if (!it.next(version) || !is_small_int(version, 2)) return false;
    if (!it.next(set)) return false;
    pkcs15_CEK_t c = get_cek(set);
    Der ukm, wrapped, mac, iv, content;
    if (!c.ptr[0] || !der_at(c.ptr[PKCS15_CEK_UKM], a2.end, ukm) || !der_at(c.ptr[PKCS15_CEK_ENC], a2.end, wrapped) ||
        !der_at(c.ptr[PKCS15_CEK_MAC], a2.end, mac))
        return false;
    if (ukm.len() != 8 || wrapped.len() != 32 || mac.len() != 4) return false;
    if (!it.next(info)) return false;
    pkcs15_data_t d = get_data(info);
    if (!der_at(d.iv, a2.end, iv) || !der_at(d.content, a2.end, content) || iv.len() != 8) return false;
    env.ukm = ukm.val;
    env.wrapped = wrapped.val;
    env.wrap_mac = mac.val;
    env.iv = iv.val;
    env.content = content.val;
    env.content_len = content.len();
    return true;
}

}  // namespace p15
}  // namespace kx

// ---- Exported getters: each element is bounded by its own header. ---------

KORVEX_API unsigned char* pkcs15_get_pkcs15content(unsigned char* container) {
    kx::DerCursor t;
    return kx::p15::token_span(container, t) ? t.p : nullptr;
}

KORVEX_API unsigned int pkcs15_get_version(unsigned char* container) {
    using namespace kx;
    DerCursor t;
    Der kmi, objects, o, i2, x;
    if (!p15::token_span(container, t) || !p15::objects_seq(t, kmi, objects)) return 0;
    for (DerCursor it = children(objects); it.next(o);) {
        if (o.t() != kTagCtx0 || !der_first(o, kTagCtx0, i2) || !der_first(i2, x)) continue;
        if (x.t() == p15::g2001.key_tag) return 1;
        if (x.t() == p15::g2012.key_tag) return 2;
    }
    return 0;
}

KORVEX_API pkcs15_CEK_t pkcs15_get_pkcs15_CEK(unsigned char* p) {
    kx::Der e;
    if (!kx::der_top(p, e)) return pkcs15_CEK_t{{nullptr, nullptr, nullptr, nullptr}};
    return kx::p15::get_cek(e);
}

KORVEX_API pkcs15_data_t pkcs15_get_pkcs15_data(unsigned char* p) {
    kx::Der e;
    if (!kx::der_top(p, e)) return pkcs15_data_t{nullptr, nullptr};
    return kx::p15::get_data(e);
}

KORVEX_API pkcs15_KEK_t pkcs15_get_pkcs15_KEK(unsigned char* p) {
    kx::Der e;
    if (!kx::der_top(p, e)) return pkcs15_KEK_t{nullptr, 0};
    return kx::p15::get_kek(e);
}
