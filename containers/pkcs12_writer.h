// Internal to the PKCS#12 container: the library's DER writer on the
// container's own length form (BerLength), and writers of its elements.
#ifndef KORVEX_CONTAINERS_PKCS12_WRITER_H
#define KORVEX_CONTAINERS_PKCS12_WRITER_H

#include "containers/pkcs12_fields.h"
#include "encoding/der.h"
#include "pkcs12.h"

namespace kx {
namespace p12 {

using Writer = SizedWriter<BerLength>;

// 06 09 1.2.840.113549.1.a.b
inline void put_rsa_oid(Writer& w, uint8_t a, uint8_t b) {
    w.header(kTagOid, 9);
    w.bytes(kStemRsa, sizeof kStemRsa);
    w.byte(a);
    w.byte(b);
}

// 06 06 1.2.643.2.2.a
inline void put_cp_oid(Writer& w, uint8_t a) {
    w.header(kTagOid, 6);
    w.bytes(kStemCp, sizeof kStemCp);
    w.byte(a);
}

// 06 07 1.2.643.2.2.a.b
inline void put_cp_oid2(Writer& w, const uint8_t* suffix) {
    w.header(kTagOid, 7);
    w.bytes(kStemCp, sizeof kStemCp);
    w.bytes(suffix, 2);
}

// 06 0A 1.2.840.113549.1.12.3.n: the bag types of the early PKCS#12 drafts.
inline void put_bag_oid(Writer& w, uint8_t n) {
    w.header(kTagOid, 10);
    w.bytes(kStemRsa, sizeof kStemRsa);
    w.bytes(kSufBagTypes, 2);
    w.byte(n);
}

inline void put_octets(Writer& w, const uint8_t* src, unsigned short n) {
    w.header(kTagOctets, n);
    w.bytes(src, n);
}

// An INTEGER whose content is the value in base-128 (02 02 88 00 for 1024).
inline void put_count(Writer& w, unsigned short v) {
    w.header(kTagInt, pkcs12_ber_code(nullptr, v));
    w.p += BerLength::put(w.p, v);
}

inline void put_small_int(Writer& w, uint8_t v) {
    w.header(kTagInt, 1);
    w.byte(v);
}

}  // namespace p12
}  // namespace kx

#endif
