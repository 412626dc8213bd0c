// The exported DER header functions, on the library's DER layer
// (encoding/der.h): tag byte, then a definite length in the short form or in
// the long form with 1..4 big-endian length octets (X.690 8.1.3).
#include "ASN1.h"
#include "encoding/der.h"

namespace {

// Content length at p, 0 for the indefinite and over-long forms.
inline unsigned int content_length(const unsigned char* p) {
    unsigned int k = kx::length_octets(p + 1);
    return k == 0 ? 0 : kx::length_value(p + 1, k);
}

}  // namespace

KORVEX_API unsigned int ASN1_header_legth(unsigned char* p) {
    return kx::header_at(p);
}

KORVEX_API unsigned int ASN1_get_block_length(unsigned char* p) {
    return content_length(p);
}

KORVEX_API unsigned int ASN1_set_block_length(unsigned char* p, unsigned int len) {
    return 1 + kx::DerLength::put(p + 1, len);
}

KORVEX_API unsigned int ASN1_set_header(unsigned char* p, unsigned char tag, unsigned int len) {
    return kx::put_header(p, tag, len);
}

KORVEX_API unsigned int ASN1_calculate_len_of_hdr(unsigned int len) {
    // An empty element is reported as having no header at all: the callers
    // this was written for size first and leave empty elements out. The
    // library's own writers use kx::header_size.
    return len == 0 ? 0 : kx::header_size(len);
}

KORVEX_API int ASN1_get_sruct(asn1_t* s, unsigned char* p) {
    s->block = p;
    s->length = static_cast<unsigned short>(content_length(p));
    s->value = p + kx::header_at(p);
    s->end = s->value + s->length;
    return 0;
}

KORVEX_API int ASN1_set_sruct(asn1_t* s, unsigned char* src, unsigned short len,
                              unsigned char tag, unsigned char* out) {
    (void)src;  // content is placed by the caller
    unsigned char h = static_cast<unsigned char>(kx::put_header(out, tag, len));
    s->block = out;
    s->length = len;
    s->value = out + h;
    return h == 0 ? 0 : 1;
}
