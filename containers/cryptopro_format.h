// Internal to the CryptoPro container readers: file layout, the modulus of
// the mask arithmetic, the password-based key and the unmasking step.
#ifndef KORVEX_CONTAINERS_CRYPTOPRO_FORMAT_H
#define KORVEX_CONTAINERS_CRYPTOPRO_FORMAT_H

#include "korvex_types.h"

namespace kx {
namespace cryptopro {

// Primary-key file: 30 22 | 04 20 key1, or 30 44 | 04 20 key1 | 04 20 key2.
constexpr unsigned kKey1 = 4;
constexpr unsigned kKey2 = 38;
constexpr unsigned kOneKeyLen = 34;
constexpr unsigned kTwoKeysLen = 68;

// Masks file: 30 36 | 04 20 mask | 04 0C salt | 04 04 MAC of the salt.
constexpr unsigned kMask = 4;
constexpr unsigned kSalt = 38;
constexpr unsigned kSaltLen = 12;
constexpr unsigned kMac = 52;
constexpr unsigned kMasksLen = 54;

constexpr unsigned char kSelectorA = 2;  // CryptoPro-A S-box
constexpr unsigned char kSelectorZ = 7;  // id-tc26-gost-28147-param-Z

constexpr unsigned kMaxPassword = 12;
constexpr unsigned char kPasswordTooLong = 10;

// Validates the two files in the order the format defines (codes 2, 4, 3, 5,
// 6); on success *keys is 1 or 2.
unsigned char check_files(unsigned char* primary, unsigned char* masks, unsigned char selector, unsigned* keys);

// Key-encryption key from the password (at most 12 octets) and a 12-byte salt.
void derive_key(const unsigned char* password, unsigned password_len, const unsigned char* salt,
                type_uN<32>* key);

// out = mask^-1 * D(enciphered) mod q, the stored key in clear.
void unmask(const unsigned char* enciphered, type_uN<32>* kek, const unsigned char* mask, unsigned char selector,
            type_uN<32>* out);

// r = r mod q, for q the order of the CryptoPro-A curve (RFC 4357), which
// the format uses for its masks whatever curve the key lives on. Constant
// time, as are unmask and mask_mul.
void reduce_q(type_uN<32>* r);

// x (32 octets) = x * f mod q as the reference mul_mod computes it.
void mask_mul(unsigned char* x, const type_uN<32>* f);

}  // namespace cryptopro
}  // namespace kx

#endif
