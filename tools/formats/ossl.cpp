#include "formats/ossl.h"

#include <algorithm>
#include <vector>

#include <openssl/x509.h>

namespace formats {

std::string oid_text(const ASN1_OBJECT* o) {
    char buf[128];
    int n = o ? OBJ_obj2txt(buf, sizeof buf, o, 1) : 0;
    return n > 0 && n < static_cast<int>(sizeof buf) ? std::string(buf, static_cast<size_t>(n)) : std::string();
}

ASN1_OBJECT* oid_obj(const char* dotted) {
    ASN1_OBJECT* o = OBJ_txt2obj(dotted, 1);
    if (!o) throw Error(std::string("cannot encode OID ") + dotted, kInvalid);
    return o;
}

Tlv tlv_at(const unsigned char*& cur, const unsigned char* end, const char* what) {
    Tlv t;
    t.start = cur;
    if (cur >= end) throw Error(std::string(what) + ": truncated");
    const unsigned char* p = cur;
    int r = ASN1_get_object(&p, &t.len, &t.tag, &t.cls, end - cur);
    if (r & 0x80) throw Error(std::string(what) + ": bad DER (truncated or wrong length)");
    if (r & 0x01) throw Error(std::string(what) + ": indefinite lengths are not read");
    t.p = p;
    t.cons = (r & V_ASN1_CONSTRUCTED) != 0;
    cur = t.end();
    return t;
}

std::vector<Tlv> tlv_children(const Tlv& t, const char* what) {
    if (!t.cons) throw Error(std::string(what) + ": not a constructed element");
    std::vector<Tlv> out;
    const unsigned char* p = t.p;
    while (p < t.end()) out.push_back(tlv_at(p, t.end(), what));
    return out;
}

std::string tlv_oid(const Tlv& t, const char* what) {
    const unsigned char* p = t.start;
    Own<ASN1_OBJECT, ASN1_OBJECT_free> o(t.is(V_ASN1_OBJECT) ? d2i_ASN1_OBJECT(nullptr, &p, t.end() - t.start) : nullptr);
    std::string s = oid_text(o.get());
    if (s.empty()) throw Error(std::string(what) + ": OBJECT IDENTIFIER expected");
    return s;
}

long tlv_int(const Tlv& t, const char* what) {
    const unsigned char* p = t.start;
    Own<ASN1_INTEGER, ASN1_INTEGER_free> i(t.is(V_ASN1_INTEGER) ? d2i_ASN1_INTEGER(nullptr, &p, t.end() - t.start) : nullptr);
    int64_t v = -1;
    if (!i || !ASN1_INTEGER_get_int64(&v, i.get()) || v < 0 || v > 0x7FFFFFFF)
        throw Error(std::string(what) + ": bad INTEGER");
    return static_cast<long>(v);
}

}  // namespace formats

namespace formats {

Bytes der(int tag, const Bytes& content, bool constructed, int cls) {
    int len = static_cast<int>(content.size());
    Bytes out(static_cast<size_t>(ASN1_object_size(constructed ? 1 : 0, len, tag)));
    unsigned char* p = out.data();
    ASN1_put_object(&p, constructed ? 1 : 0, len, tag, cls);
    std::copy(content.begin(), content.end(), p);
    return out;
}

Bytes der_oid(const char* dotted) {
    Own<ASN1_OBJECT, ASN1_OBJECT_free> o(oid_obj(dotted));
    Bytes out(static_cast<size_t>(i2d_ASN1_OBJECT(o.get(), nullptr)));
    unsigned char* p = out.data();
    i2d_ASN1_OBJECT(o.get(), &p);
    return out;
}

Bytes der_int(long v) {
    Own<ASN1_INTEGER, ASN1_INTEGER_free> i(ASN1_INTEGER_new());
    ASN1_INTEGER_set(i.get(), v);
    Bytes out(static_cast<size_t>(i2d_ASN1_INTEGER(i.get(), nullptr)));
    unsigned char* p = out.data();
    i2d_ASN1_INTEGER(i.get(), &p);
    return out;
}

Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& b : parts) out.insert(out.end(), b.begin(), b.end());
    return out;
}

// The DER parameters of an AlgorithmIdentifier, read back as one element.
Bytes alg_params(const X509_ALGOR* alg, std::string& oid) {
    const ASN1_OBJECT* obj = nullptr;
    int ptype = 0;
    const void* pval = nullptr;
    X509_ALGOR_get0(&obj, &ptype, &pval, alg);
    oid = oid_text(obj);
    if (ptype != V_ASN1_SEQUENCE) return {};
    const ASN1_STRING* s = static_cast<const ASN1_STRING*>(pval);
    const unsigned char* p = ASN1_STRING_get0_data(s);
    return Bytes(p, p + ASN1_STRING_length(s));
}

std::string alg_oid(const X509_ALGOR* alg) {
    std::string oid;
    alg_params(alg, oid);
    return oid;
}

}  // namespace formats
