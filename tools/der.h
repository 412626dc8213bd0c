// Small DER writer and reader for the korvex program, built on libcrypto's
// generic ASN.1 primitives (ASN1_put_object, ASN1_get_object, OBJ_txt2obj).
#ifndef KORVEX_TOOLS_DER_H
#define KORVEX_TOOLS_DER_H

#include <string>
#include <vector>

#include "cli.h"


namespace der {

using cli::Bytes;

Bytes tlv(unsigned char tag, const Bytes& content);
Bytes seq(const std::vector<Bytes>& items);
Bytes set(const std::vector<Bytes>& items);
Bytes oid(const std::string& dotted);
Bytes integer_be(Bytes magnitude);  // big-endian magnitude, made positive and minimal
Bytes integer(unsigned long v);
Bytes octets(const Bytes& v);
Bytes bits(const Bytes& v);  // BIT STRING with 0 unused bits
Bytes null();
Bytes utf8(const std::string& s);
Bytes printable(const std::string& s);
Bytes ia5(const std::string& s);
Bytes utc_time(long long unix_seconds);
Bytes cat(const std::vector<Bytes>& parts);

// Reading: an element at p inside [p, end): tag, header size, content size.
struct Elem {
    const unsigned char* p = nullptr;
    unsigned char tag = 0;
    size_t hdr = 0, len = 0;
    const unsigned char* content() const { return p + hdr; }
    size_t size() const { return hdr + len; }
    const unsigned char* end() const { return p + hdr + len; }
    Bytes bytes() const { return Bytes(p, p + size()); }
    Bytes value() const { return Bytes(content(), content() + len); }
};
// Throws cli::Error when the element does not fit before `limit`.
Elem read(const unsigned char* p, const unsigned char* limit);
// The children of a constructed element.
std::vector<Elem> children(const Elem& e);
std::string oid_text(const Elem& e);

}  // namespace der

#endif
