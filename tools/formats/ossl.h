// Small helpers over OpenSSL's libcrypto (generic ASN.1, PEM, PKCS#12
// structures; no GOST engine): owning pointers, OIDs as text, and a bounded
// DER walker on ASN1_get_object.
#ifndef KORVEX_TOOLS_FORMATS_OSSL_H
#define KORVEX_TOOLS_FORMATS_OSSL_H

#include <initializer_list>
#include <memory>
#include <string>

#include <openssl/asn1.h>
#include <openssl/objects.h>
#include <openssl/types.h>

#include "formats/error.h"

namespace formats {

template <class T, void (*F)(T*)>
struct Free {
    void operator()(T* p) const { F(p); }
};
template <class T, void (*F)(T*)>
using Own = std::unique_ptr<T, Free<T, F>>;

std::string oid_text(const ASN1_OBJECT* o);
ASN1_OBJECT* oid_obj(const char* dotted);  // new object; throws on bad text

// One DER element inside [p, end): throws (exit 4) when it does not fit.
struct Tlv {
    const unsigned char* start = nullptr;  // the tag
    const unsigned char* p = nullptr;      // the content
    long len = 0;
    int tag = 0, cls = 0;
    bool cons = false;
    const unsigned char* end() const { return p + len; }
    Bytes whole() const { return Bytes(start, end()); }
    Bytes value() const { return Bytes(p, end()); }
    bool is(int t, int c = V_ASN1_UNIVERSAL) const { return tag == t && cls == c; }
};
Tlv tlv_at(const unsigned char*& cur, const unsigned char* end, const char* what);
// The children of a constructed element, checked to fill it exactly.
std::vector<Tlv> tlv_children(const Tlv& t, const char* what);
std::string tlv_oid(const Tlv& t, const char* what);
long tlv_int(const Tlv& t, const char* what);  // small non-negative INTEGER

}  // namespace formats

#endif

namespace formats {

// DER writing through ASN1_put_object.
Bytes der(int tag, const Bytes& content, bool constructed = false, int cls = V_ASN1_UNIVERSAL);
inline Bytes der_seq(const Bytes& content) { return der(V_ASN1_SEQUENCE, content, true); }
Bytes der_oid(const char* dotted);
Bytes der_int(long v);
Bytes cat(std::initializer_list<Bytes> parts);

// An AlgorithmIdentifier's OID, and its parameters as DER (empty unless a SEQUENCE).
Bytes alg_params(const X509_ALGOR* alg, std::string& oid);
std::string alg_oid(const X509_ALGOR* alg);
inline Bytes bytes_of(const std::string& s) { return Bytes(s.begin(), s.end()); }

}  // namespace formats
