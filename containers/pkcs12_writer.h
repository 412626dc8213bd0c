// Internal to the PKCS#12 container: writers of its elements. Lengths go
// through pkcs12_ber_code, the container's own base-128 form.
#ifndef KORVEX_CONTAINERS_PKCS12_WRITER_H
#define KORVEX_CONTAINERS_PKCS12_WRITER_H

#include "containers/pkcs12_fields.h"
#include "core/bytes.h"
#include "pkcs12.h"

namespace kx {
namespace p12 {

inline void put(unsigned char*& p, unsigned char b) { *p++ = b; }

inline void put_bytes(unsigned char*& p, const unsigned char* src, unsigned n) {
    copy(p, src, n);
    p += n;
}

inline void put_header(unsigned char*& p, unsigned char tag, unsigned short len) {
    put(p, tag);
    pkcs12_ber_code(&p, len);
}

// 06 09 1.2.840.113549.1.a.b
inline void put_rsa_oid(unsigned char*& p, unsigned char a, unsigned char b) {
    put_header(p, 0x06, 9);
    put_bytes(p, kStemRsa, sizeof kStemRsa);
    put(p, a);
    put(p, b);
}

// 06 06 1.2.643.2.2.a
inline void put_cp_oid(unsigned char*& p, unsigned char a) {
    put_header(p, 0x06, 6);
    put_bytes(p, kStemCp, sizeof kStemCp);
    put(p, a);
}

// 06 07 1.2.643.2.2.a.b
inline void put_cp_oid2(unsigned char*& p, const unsigned char* suffix) {
    put_header(p, 0x06, 7);
    put_bytes(p, kStemCp, sizeof kStemCp);
    put_bytes(p, suffix, 2);
}

// 06 0A 1.2.840.113549.1.12.3.n: the bag types of the early PKCS#12 drafts.
inline void put_bag_oid(unsigned char*& p, unsigned char n) {
    put_header(p, 0x06, 10);
    put_bytes(p, kStemRsa, sizeof kStemRsa);
    put_bytes(p, kSufBagTypes, 2);
    put(p, n);
}

inline void put_octets(unsigned char*& p, const unsigned char* src, unsigned short n) {
    put_header(p, 0x04, n);
    put_bytes(p, src, n);
}

// An INTEGER whose content is the value in base-128 (02 02 88 00 for 1024).
inline void put_count(unsigned char*& p, unsigned short v) {
    put_header(p, 0x02, pkcs12_ber_code(nullptr, v));
    pkcs12_ber_code(&p, v);
}

inline void put_small_int(unsigned char*& p, unsigned char v) {
    put_header(p, 0x02, 1);
    put(p, v);
}

}  // namespace p12
}  // namespace kx

#endif
