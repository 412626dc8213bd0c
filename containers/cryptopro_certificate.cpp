// Locating the owner's certificate in a CryptoPro header file:
// 30 { 30 { ..., [5] certificate, ... } }.
#include "CryptoPro.h"

#include <stdint.h>

#include "ASN1.h"

namespace {
constexpr unsigned char kCertificateTag = 0x85;

// Header and total size of the element at p, which must lie within room
// bytes; false when the length is malformed or the element runs past room.
bool element_size(unsigned char* p, uint64_t room, unsigned* header, uint64_t* total) {
    if (room < 2) return false;
    unsigned h = ASN1_header_legth(p);
    if (h == 0 || h > room) return false;
    uint64_t t = static_cast<uint64_t>(h) + ASN1_get_block_length(p);
    if (t > room) return false;
    *header = h;
    *total = t;
    return true;
}
}  // namespace

KORVEX_API unsigned char* CryptoPro_conteiner_get_certificate(unsigned char* header) {
    if (header[0] != 0x30) return nullptr;
    unsigned h = ASN1_header_legth(header);
    if (h == 0) return nullptr;
    uint64_t outer = ASN1_get_block_length(header);
    unsigned char* inner = header + h;
    unsigned ih;
    uint64_t inner_total;
    if (!element_size(inner, outer, &ih, &inner_total) || inner[0] != 0x30) return nullptr;
    uint64_t remaining = inner_total - ih;
    if (remaining == 0) return nullptr;

    unsigned char* p = inner + ih;
    for (;;) {
        unsigned eh;
        uint64_t total;
        if (!element_size(p, remaining, &eh, &total)) return nullptr;
        if (p[0] == kCertificateTag) return p + eh;
        remaining -= total;
        if (remaining == 0) return nullptr;
        p += total;
    }
}
