// GOST R 34.10-2001 key pairs and public keys.
#include "GOST_34_10_2001.h"
#include "ec/ds_2012.h"
#include "ec/ops_2001.h"

using kx::ec::Ops256;
using kx::ec::bound_2001;

// d is drawn until non-zero after one conditional subtraction of q (every q
// here exceeds 2^255, so d ends in [1, q - 1]).
KORVEX_API unsigned char GOST_34_10_2001_gen_key_pair(type_uN<32>* d_out, type_uN<64>* Q_out, unsigned char set) {
    return kx::ec::ds::key_pair<Ops256>(d_out->b, Q_out->b, bound_2001(set));
}

// d is used as it is: not reduced, not checked.
KORVEX_API void GOST_34_10_2001_gen_open_key(type_uN<32>* d, type_uN<64>* Q_out, unsigned char set) {
    kx::ec::ds::open_key<Ops256>(d, Q_out->b, bound_2001(set));
}
