// CryptoPro container files: structure checks, the MAC of the salt, and the
// unmasking of a stored key modulo q.
#include "containers/cryptopro_format.h"

#include "ASN1.h"
#include "GOST_28147_89.h"
#include "GOST_34_10_2001.h"
#include "core/bytes.h"

namespace kx {
namespace cryptopro {
namespace {
// Low half of q = 2^256 - 2^128 + 0x6C611070995AD10045841B09B761B893,
// little-endian; the high half is all ones.
constexpr unsigned char kOrderLow[16] = {0x93, 0xB8, 0x61, 0xB7, 0x09, 0x1B, 0x84, 0x45,
                                         0x00, 0xD1, 0x5A, 0x99, 0x70, 0x10, 0x61, 0x6C};
}  // namespace

void order_q(type_uN<32>* q) {
    copy(q->b, kOrderLow, 16);
    fill(q->b + 16, 0xFF, 16);
}

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
    if (static_cast<uint32_t>(mac) != load32(masks + kMac)) return 6;
    *keys = len == kOneKeyLen ? 1 : 2;
    return 0;
}

void unmask(const unsigned char* enciphered, type_uN<32>* kek, const unsigned char* mask, unsigned char selector,
            type_uN<32>* out) {
    type_uN<32> q, inv, plain;
    order_q(&q);
    copy(plain.b, enciphered, 32);
    GOST_28147_89_R_ECB(plain.b, 32, kek, selector);
    copy(inv.b, mask, 32);
    GOST_34_10_2001_div_mod_p_256_bit(&inv, nullptr, &q);
    GOST_34_10_2001_mul_mod_p_256_bit(out, &inv, &plain, &q);
    wipe_obj(inv);
    wipe_obj(plain);
}

}  // namespace cryptopro
}  // namespace kx
