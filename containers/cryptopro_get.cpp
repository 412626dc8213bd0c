// Reading a CryptoPro key container: derive the key-encryption key, decipher
// and unmask the stored key(s), and confirm against the owner's certificate.
#include "CryptoPro.h"

#include "ASN1.h"
#include "GOST_34_10_2001.h"
#include "containers/cryptopro_format.h"
#include "core/bytes.h"
#include "pki/x509_key.h"
#include "x_509.h"

namespace {
using namespace kx::cryptopro;

// Mask block: the mask, then the first 8 salt bytes.
void write_mask_block(unsigned char* masks, unsigned char* mask_block) {
    kx::copy(mask_block, masks + kMask, 32);
    kx::copy(mask_block + 32, masks + kSalt, 8);
}

// Selector of the certificate's key, or false when unknown (low octet 0xFF).
bool certificate_selector(unsigned char* certificate, unsigned char* selector) {
    unsigned s = x_509_get_open_key_parametrs_ds(certificate);
    if ((s & 0xFF) == 0xFF) return false;
    *selector = static_cast<unsigned char>(s);
    return true;
}

// A certificate whose key holds fewer than 64 octets matches nothing (its
// octets are not read past the key).
bool matches_certificate(type_uN<32>* d, unsigned char* certificate, unsigned char selector) {
    kx::Der stored;
    if (!kx::pki::public_key_octets(certificate, stored) || stored.len() < 64) return false;
    type_uN<64> pub;
    GOST_34_10_2001_gen_open_key(d, &pub, selector);
    bool same = ASN1_mem_compare(pub.b, stored.val, 64) == 0;
    kx::wipe_obj(pub);
    return same;
}

unsigned char get_checked(unsigned char* primary, unsigned char* masks, unsigned char* certificate,
                          unsigned char* mask_block, type_uN<32>* private_key, unsigned char* password,
                          unsigned char password_len, unsigned char cipher_selector) {
    if (password_len > kMaxPassword) return kPasswordTooLong;
    unsigned char curve;
    if (!certificate_selector(certificate, &curve)) return 7;
    unsigned keys;
    unsigned char r = check_files(primary, masks, cipher_selector, &keys);
    if (r) return r;

    type_uN<32> kek;
    derive_key(password, password_len, masks + kSalt, &kek);
    unmask(primary + kKey1, &kek, masks + kMask, cipher_selector, private_key);
    r = 0;
    if (!matches_certificate(private_key, certificate, curve)) {
        // The first key is the signature key or, with two keys, possibly the
        // exchange key; try the second.
        if (keys == 1) {
            r = 8;
        } else {
            unmask(primary + kKey2, &kek, masks + kMask, cipher_selector, private_key);
            if (!certificate_selector(certificate, &curve)) r = 7;
            else if (!matches_certificate(private_key, certificate, curve)) r = 8;
        }
    }
    kx::wipe_obj(kek);
    if (r == 0) write_mask_block(masks, mask_block);
    return r;
}

}  // namespace

KORVEX_API unsigned char CryptoPro_conteiner_get(unsigned char* primary, unsigned char* masks,
                                                 unsigned char* certificate, unsigned char* mask_block,
                                                 type_uN<32>* private_key, unsigned char* password,
                                                 unsigned char password_len) {
    return get_checked(primary, masks, certificate, mask_block, private_key, password, password_len, kSelectorA);
}

KORVEX_API unsigned char CryptoPro_conteiner_get_2012(unsigned char* primary, unsigned char* masks,
                                                      unsigned char* certificate, unsigned char* mask_block,
                                                      type_uN<32>* private_key, unsigned char* password,
                                                      unsigned char password_len) {
    return get_checked(primary, masks, certificate, mask_block, private_key, password, password_len, kSelectorZ);
}

KORVEX_API unsigned char CryptoPro_conteiner_get_no_pass_chek(unsigned char* primary, unsigned char* masks,
                                                              unsigned char* mask_block, type_uN<32>* key1,
                                                              type_uN<32>* key2, unsigned char* password,
                                                              unsigned char password_len) {
    if (password_len > kMaxPassword) return kPasswordTooLong;
    if (key2) kx::fill(key2->b, 0, 32);
    unsigned keys;
    unsigned char r = check_files(primary, masks, kSelectorA, &keys);
    if (r) return r;

    type_uN<32> kek, d1, d2;
    kx::fill(d2.b, 0, 32);
    derive_key(password, password_len, masks + kSalt, &kek);
    unmask(primary + kKey1, &kek, masks + kMask, kSelectorA, &d1);
    if (keys == 2) unmask(primary + kKey2, &kek, masks + kMask, kSelectorA, &d2);
    // Source first: the caller's buffers are copied onto the results, so the
    // keys are never handed out. Applications rely on this direction.
    if (key1) ASN1_mem_copy(key1->b, d1.b, 32);
    if (key2) ASN1_mem_copy(key2->b, d2.b, 32);
    write_mask_block(masks, mask_block);
    kx::wipe_obj(kek);
    kx::wipe_obj(d1);
    kx::wipe_obj(d2);
    return 0;
}
