// DER element headers: tag byte, then a definite length in the short form or
// in the long form with 1..4 big-endian length octets (X.690 8.1.3).
#include "ASN1.h"

namespace {

// Number of octets needed for len in the long form, 0 when the short form
// (one octet below 0x80) will do.
inline unsigned int long_form_octets(unsigned int len) {
    if (len < 0x80) return 0;
    if (len < 0x100) return 1;
    if (len < 0x10000) return 2;
    if (len < 0x1000000) return 3;
    return 4;
}

// Tag plus length octets, 0 for the indefinite and over-long forms.
inline unsigned int header_length(const unsigned char* p) {
    unsigned int first = p[1];
    if (first < 0x80) return 2;
    unsigned int n = first & 0x7F;  // 0 here is the indefinite form
    if (n == 0 || n > 4) return 0;
    return n + 2;
}

inline unsigned int content_length(const unsigned char* p) {
    unsigned int h = header_length(p);
    if (h == 0) return 0;
    if (h == 2) return p[1];
    // Non-minimal long forms (0x81 0x05, leading zero octets) are taken as
    // they stand.
    unsigned int len = 0;
    for (unsigned int i = 2; i < h; ++i) len = (len << 8) | p[i];
    return len;
}

// Writes the length octets at p[1] onward; returns the header length.
inline unsigned int write_length(unsigned char* p, unsigned int len) {
    unsigned int n = long_form_octets(len);
    if (n == 0) {
        p[1] = static_cast<unsigned char>(len);
        return 2;
    }
    p[1] = static_cast<unsigned char>(0x80 | n);
    for (unsigned int i = 0; i < n; ++i)
        p[2 + i] = static_cast<unsigned char>(len >> (8 * (n - 1 - i)));
    return n + 2;
}

}  // namespace

KORVEX_API unsigned int ASN1_header_legth(unsigned char* p) {
    return header_length(p);
}

KORVEX_API unsigned int ASN1_get_block_length(unsigned char* p) {
    return content_length(p);
}

KORVEX_API unsigned int ASN1_set_block_length(unsigned char* p, unsigned int len) {
    return write_length(p, len);
}

KORVEX_API unsigned int ASN1_set_header(unsigned char* p, unsigned char tag, unsigned int len) {
    p[0] = tag;
    return write_length(p, len);
}

KORVEX_API unsigned int ASN1_calculate_len_of_hdr(unsigned int len) {
    // An empty element is reported as having no header at all; callers that
    // size first and write later rely on this.
    if (len == 0) return 0;
    return long_form_octets(len) + 2;
}

KORVEX_API int ASN1_get_sruct(asn1_t* s, unsigned char* p) {
    s->block = p;
    s->length = static_cast<unsigned short>(content_length(p));
    s->value = p + header_length(p);
    s->end = s->value + s->length;
    return 0;
}

KORVEX_API int ASN1_set_sruct(asn1_t* s, unsigned char* src, unsigned short len,
                              unsigned char tag, unsigned char* out) {
    (void)src;  // content is placed by the caller
    out[0] = tag;
    unsigned char h = static_cast<unsigned char>(write_length(out, len));
    s->block = out;
    s->length = len;
    s->value = out + h;
    return h == 0 ? 0 : 1;
}
