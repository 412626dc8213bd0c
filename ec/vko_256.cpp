// VKO key agreement on the 256-bit curves: RFC 4357 (GOST R 34.11-94) and
// RFC 7836 (GOST R 34.11-2012, 256 bits). K = (ukm * d mod q) * Q; the key is
// the hash of K.x || K.y, each little-endian. All four curves have cofactor
// 1, so no cofactor multiplication is applied.
#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "ec/ds_2012.h"
#include "ec/ops_2001.h"

using kx::ec::Ops256;

KORVEX_API void GOST_34_10_2001_VKO(type_uN<32>* out, unsigned long long* ukm, type_uN<32>* d, type_uN<64>* Q,
                                    unsigned char set) {
    type_uN<64> K;
    kx::ec::ds::vko_point<Ops256>(K.b, kx::bn::from_u64<4>(kx::load64(ukm)), d, Q->b, kx::ec::bound_2001(set));
    GOST_34_11_94_hash(K.b, sizeof K.b, nullptr, out);
    kx::wipe_obj(K);
}

// A null ukm means 1; a zero ukm is used as it is (K = infinity).
KORVEX_API void GOST_34_10_2012_VKO_256(type_uN<32>* out, unsigned long long* ukm, type_uN<32>* d, type_uN<64>* Q,
                                        unsigned char set) {
    type_uN<64> K;
    kx::ec::ds::vko_point<Ops256>(K.b, kx::bn::from_u64<4>(ukm ? kx::load64(ukm) : 1), d, Q->b,
                                  kx::ec::bound_2001(set));
    GOST_34_11_2012_hash_256_bit(K.b, sizeof K.b, out);
    kx::wipe_obj(K);
}
