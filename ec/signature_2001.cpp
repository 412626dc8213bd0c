// GOST R 34.10-2001 signatures. Internal layout: s in bytes 0..31, r in bytes
// 32..63, each little-endian; the exported layout (RFC 4490) reverses each
// half separately, giving s then r big-endian.
#include "GOST_34_10_2001.h"
#include "ec/ds_2012.h"
#include "ec/ops_2001.h"

using kx::ec::Ops256;
using kx::ec::bound_2001;

KORVEX_API void GOST_34_10_2001_rotate_DS_RFC4490(type_uN<64>* sig) { kx::ec::ds::rotate(sig->b); }

// k is used as drawn (not reduced mod q); k = 0 or s = 0 means another try.
KORVEX_API unsigned char GOST_34_10_2001_create_DS(type_uN<32>* hash, type_uN<32>* d, type_uN<64>* sig_out,
                                                   unsigned char set) {
    return kx::ec::ds::sign<Ops256>(hash, d, sig_out->b, bound_2001(set));
}

// An s or r out of [1, q - 1] returns 0 at once and leaves sig byte-reversed
// (callers rely on it); the public key is not validated.
KORVEX_API unsigned char GOST_34_10_2001_check_DS(type_uN<32>* hash, type_uN<64>* Q, type_uN<64>* sig,
                                                  unsigned char set) {
    return kx::ec::ds::verify<Ops256>(hash, Q->b, sig->b, bound_2001(set));
}
