// CryptoPro container files: structure checks, the MAC of the salt, and the
// mask arithmetic modulo q on keys and masks, in constant time with the EC
// engine's field layer (ec/field.h); the results are those of the library's
// reference arithmetic (the exported div_mod / mul_mod), as said at each step.
#include "containers/cryptopro_format.h"

#include "ASN1.h"
#include "GOST_28147_89.h"
#include "core/bytes.h"
#include "core/ct_check.h"
#include "ec/curves_2001.h"
#include "ec/field.h"

namespace kx {
namespace cryptopro {
namespace {
using N = bn::Num<4>;
// The group order q of the CryptoPro-A curve (RFC 4357), which the format
// uses for its masks whatever curve the key lives on; Montgomery constants
// computed by the compiler.
constexpr fe::Mod<4> kQ = fe::make_mod<4>(ec::kCryptoProA.q);

N load_q(const unsigned char* p) { return bn::load<4>(p); }
}  // namespace

unsigned char check_files(unsigned char* primary, unsigned char* masks, unsigned char selector, unsigned* keys) {
    if (primary[0] != 0x30) return 2;
    unsigned len = ASN1_get_block_length(primary);
    if (len != kOneKeyLen && len != kTwoKeysLen) return 4;
    if (masks[0] != 0x30) return 3;
    if (ASN1_get_block_length(masks) != kMasksLen) return 5;
    type_uN<32> mask;
    copy(mask.b, masks + kMask, 32);
    type_u64 mac = GOST_28147_89_MAC(masks + kSalt, kSaltLen, &mask, nullptr, selector);
    wipe_obj(mask);
    ct::declassify(mac);  // checked against the MAC stored in clear beside it
    if (static_cast<uint32_t>(mac) != load32(masks + kMac)) return 6;
    *keys = len == kOneKeyLen ? 1 : 2;
    return 0;
}

// The reference steps: inv = div_mod(mask), which is (mask mod q)^-1 for
// mask != 0 mod q (a binary Euclid keeps its companions below q whatever the
// input) and 0 for mask = 0 or q; then mul_mod(inv, plain), exact for inv < q
// and any plain: inv * (plain mod q). mask, plain < 2^256 < 2q: one
// conditional subtraction reduces them. Fermat's inverse gives 0 for 0 too.
void unmask(const unsigned char* enciphered, type_uN<32>* kek, const unsigned char* mask, unsigned char selector,
            type_uN<32>* out) {
    type_uN<32> plain;
    copy(plain.b, enciphered, 32);
    GOST_28147_89_R_ECB(plain.b, 32, kek, selector);
    N m = load_q(mask), x = load_q(plain.b), inv;
    fe::reduce_once(m, 0, m, kQ.m);
    fe::to_mont(m, m, kQ);
    fe::inv(inv, m, kQ);         // mask^-1 in Montgomery form
    fe::reduce_once(x, 0, x, kQ.m);
    fe::mul(x, inv, x, kQ);      // the Montgomery factor cancels
    bn::store(out->b, x);
    wipe_obj(m);
    wipe_obj(x);
    wipe_obj(inv);
    wipe_obj(plain);
}

// r mod q: div_mod twice, (r mod q)^-1^-1, is r mod q (0 stays 0).
void reduce_q(type_uN<32>* r) {
    N x = load_q(r->b);
    fe::reduce_once(x, 0, x, kQ.m);
    bn::store(r->b, x);
    wipe_obj(x);
}

// x = mul_mod(x, f) step for step: x comes from a file and may exceed q,
// where the reference shift-and-add is no true product, so its doublings
// and masked additions are replayed over all 256 bits of f (the extra steps
// past f's top bit add nothing). fe::add selects exactly as add_mod does.
void mask_mul(unsigned char* x, const type_uN<32>* f) {
    N A = load_q(x), F = load_q(f->b), R{}, S;
    for (unsigned i = 0; i < 256; ++i) {
        fe::add(S, R, A, kQ.m);
        fe::select(R, fe::mask((F.w[i / 64] >> (i % 64)) & 1), S, R);
        fe::add(A, A, A, kQ.m);
    }
    bn::store(x, R);
    wipe_obj(A);
    wipe_obj(F);
    wipe_obj(R);
    wipe_obj(S);
}

}  // namespace cryptopro
}  // namespace kx
