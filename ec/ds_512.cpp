// GOST R 34.10-2012 with 512-bit curves: keys, signatures in the TC26 layout
// of this library, and the VKO key agreement of RFC 7836 with the 512-bit
// GOST R 34.11-2012 hash.
#include "GOST_34_10_2012.h"
#include "GOST_34_11_2012.h"
#include "ec/ds_2012.h"
#include "ec/ops_2012.h"

using kx::ec::Ops512;
using kx::ec::bound_2012;

KORVEX_API void GOST_34_10_2012_rotate_DS_TC26(type_uN<128>* sig) { kx::ec::ds::rotate(sig->b); }

KORVEX_API unsigned char GOST_34_10_2012_512_gen_key_pair(type_uN<64>* d_out, type_uN<128>* Q_out, unsigned char set) {
    return kx::ec::ds::key_pair<Ops512>(d_out->b, Q_out->b, bound_2012(set));
}

KORVEX_API void GOST_34_10_2012_512_gen_open_key(type_uN<64>* d, type_uN<128>* Q_out, unsigned char set) {
    kx::ec::ds::open_key<Ops512>(d, Q_out->b, bound_2012(set));
}

KORVEX_API unsigned char GOST_34_10_2012_create_DS_512_bit(type_uN<64>* hash, type_uN<64>* d, type_uN<128>* sig_out,
                                                           unsigned char set) {
    return kx::ec::ds::sign<Ops512>(hash, d, sig_out->b, bound_2012(set));
}

KORVEX_API unsigned char GOST_34_10_2012_check_DS_512_bit(type_uN<64>* hash, type_uN<128>* Q, type_uN<128>* sig,
                                                          unsigned char set) {
    return kx::ec::ds::verify<Ops512>(hash, Q->b, sig->b, bound_2012(set));
}

KORVEX_API void GOST_34_10_2012_VKO_512(type_uN<64>* out, type_uN<64>* ukm, type_uN<64>* d, type_uN<128>* Q,
                                        unsigned char set) {
    // A missing or zero UKM means 1 (RFC 7836 section 4.3).
    Ops512::N t = kx::bn::from_u64<8>(1);
    if (ukm) {  // selected under a mask: the UKM is secret
        Ops512::N u = kx::bn::load<8>(ukm);
        kx::fe::select(t, kx::fe::zero_mask(u), t, u);
        kx::wipe_obj(u);
    }
    type_uN<128> K;
    kx::ec::ds::vko_point<Ops512>(K.b, t, d, Q->b, bound_2012(set));
    GOST_34_11_2012_hash_512_bit(K.b, sizeof K.b, out);
    kx::wipe_obj(K);
}
