// Internal to the PKCS#12 container: its fixed offsets, the OID stems, and
// bounded access to elements whose lengths use the container's base-128 form.
#ifndef KORVEX_CONTAINERS_PKCS12_FIELDS_H
#define KORVEX_CONTAINERS_PKCS12_FIELDS_H

#include "encoding/der.h"
#include "pkcs12.h"

namespace kx {
namespace p12 {

// Offsets of elements (their tag octet) in the 372-byte container.
constexpr unsigned kSize = 372;
constexpr unsigned kAuthSafe = 23;       // start of the MAC'd region
constexpr unsigned kAuthSafeLen = 282;   // offsets 23..304
constexpr unsigned kSalt = 90;           // PBKDF2-params salt, 04 04
constexpr unsigned kIter = 96;           // PBKDF2-params count, 02 02 88 00
constexpr unsigned kIv = 131;            // 04 08 + IV
constexpr unsigned kContent = 150;       // 04 81 18 + 152 enciphered octets
constexpr unsigned kMacValue = 328;      // 04 20 + HMAC
constexpr unsigned kMacSalt = 362;       // 04 04
constexpr unsigned kMacIter = 368;       // 02 02 88 00
constexpr unsigned kIterations = 1024;

// Offsets within the 152-byte SafeContents.
constexpr unsigned kPlainLen = 152;
constexpr unsigned kKeyField = 52;       // 04 20 + private key
constexpr unsigned kAuxField = 105;      // 04 28 + auxiliary block
constexpr unsigned kAuxLen = 40;

// Counter mode selector: maps to CryptoPro-A although the container names
// parameter set 1.2.643.2.2.31.0; existing containers depend on it.
constexpr unsigned char kCtrSelector = 2;

// 1.2.643.2.2 and 1.2.840.113549.1, the two stems every OID here starts with.
constexpr unsigned char kStemCp[5] = {0x2A, 0x85, 0x03, 0x02, 0x02};
constexpr unsigned char kStemRsa[7] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01};

// Suffix pairs shared by several OIDs of the container.
constexpr unsigned char kSufCipherParams[2] = {0x1F, 0x00};  // 1.2.643.2.2.31.0
constexpr unsigned char kSufHashParams[2] = {0x1E, 0x00};    // 1.2.643.2.2.30.0
constexpr unsigned char kSufCurveA[2] = {0x23, 0x01};        // 1.2.643.2.2.35.1
constexpr unsigned char kSufBagTypes[2] = {0x0C, 0x03};      // 1.2.840.113549.1.12.3

// Number of octets of the base-128 number at p (up to and including the
// first octet with the high bit clear), reading no further than limit octets;
// 0 when no terminating octet lies within the limit.
inline unsigned number_octets(const unsigned char* p, unsigned limit) {
    for (unsigned n = 0; n < limit; ++n)
        if (!(p[n] & 0x80)) return n + 1;
    return 0;
}

// Value of n base-128 octets, most significant group first.
inline unsigned number_value(const unsigned char* p, unsigned n) {
    unsigned v = 0;
    for (unsigned i = 0; i < n; ++i) v = (v << 7) | (p[i] & 0x7Fu);
    return v;
}

// The container's length form (pkcs12_ber_code) for the library's DER reader
// and writer: a base-128 number of at most three octets.
constexpr unsigned kMaxBerOctets = 3;
struct BerLength {
    static unsigned read(const uint8_t* q, size_t room, uint32_t& len) {
        unsigned n = number_octets(q, room < kMaxBerOctets ? static_cast<unsigned>(room) : kMaxBerOctets);
        if (n) len = number_value(q, n);
        return n;
    }
    // Every length the container writes is below 64 KiB.
    static unsigned put(uint8_t* q, uint32_t n) { return pkcs12_ber_code(&q, static_cast<unsigned short>(n)); }
};

inline bool accepted_tag(unsigned char t) { return t == kTagInt || t == kTagOctets || t == kTagOid || t == kTagSeq; }

// Content of the element whose tag is at buf + offset, when its tag is one of
// 02, 04, 06, 30 and len content octets fit before buf + size; else null. The
// length octets are skipped, their value is not compared with len.
inline unsigned char* element_content(unsigned char* buf, unsigned size, unsigned offset, unsigned len) {
    if (offset >= size || !accepted_tag(buf[offset])) return nullptr;
    unsigned n = number_octets(buf + offset + 1, size - offset - 1);
    if (n == 0 || len > size - offset - 1 - n) return nullptr;
    return buf + offset + 1 + n;
}

}  // namespace p12
}  // namespace kx

#endif
