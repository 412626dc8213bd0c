// Bounded element reading on top of the DER header primitives.
#include "pki/der_walk.h"

#include "ASN1.h"

namespace kx {
namespace pki {

bool der_at(unsigned char* p, const unsigned char* limit, Der& e) {
    // The tag and the first length octet must be inside before the header
    // reader looks at them, the further length octets before the length
    // reader does.
    if (limit && !fits(p, 2, limit)) return false;
    unsigned int h = ASN1_header_legth(p);
    if (h == 0 || (limit && !fits(p, h, limit))) return false;
    unsigned int len = ASN1_get_block_length(p);
    if (limit && !fits(p + h, len, limit)) return false;
    e.tag = p;
    e.val = p + h;
    e.end = p + h + len;
    return true;
}

}  // namespace pki
}  // namespace kx
