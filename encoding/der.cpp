// The bounded element read under every DER walk of the library.
#include "encoding/der.h"

namespace kx {

bool der_at(uint8_t* p, const uint8_t* limit, Der& e) {
    // The tag and the first length octet must be inside before the header
    // is looked at, the further length octets before they are read.
    if (p == nullptr || (limit && !fits(p, 2, limit))) return false;
    unsigned h = header_at(p);
    if (h == 0 || (limit && !fits(p, h, limit))) return false;
    uint32_t len = length_at(p, h);
    if (limit && !fits(p + h, len, limit)) return false;
    e.tag = p;
    e.val = p + h;
    e.end = p + h + len;
    return true;
}

}  // namespace kx
