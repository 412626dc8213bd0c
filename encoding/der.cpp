// The bounded element read under every DER walk of the library, compiled
// once.
#include "encoding/der.h"

namespace kx {

bool der_at(uint8_t* p, const uint8_t* limit, Der& e) { return element_at<DerLength>(p, limit, e); }

}  // namespace kx
