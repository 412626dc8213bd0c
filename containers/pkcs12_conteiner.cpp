// PKCS#12 container operations: create, open, close, change password, MAC.
// One PBKDF2 key (HMAC GOST R 34.11-94) enciphers the SafeContents in counter
// mode and keys the HMAC over the AuthenticatedSafe.
#include "pkcs12.h"

#include "GOST_28147_89.h"
#include "GOST_34_11_94.h"
#include "containers/pkcs12_writer.h"
#include "core/bytes.h"
#include "pkcs5.h"

namespace {
using namespace kx;
using namespace kx::p12;

// Key from the password and the salt and count of the elements at the given
// offsets (the PBKDF2-params or the MacData). 0, or 5 for a bad element.
unsigned char derive_key(unsigned char* c, unsigned salt_at, unsigned iter_at, unsigned char* password,
                         unsigned char password_len, type_uN<32>* key) {
    unsigned char* salt = element_content(c, kSize, salt_at, 4);
    unsigned char* iter = element_content(c, kSize, iter_at, 1);
    if (!salt || !iter) return 5;
    unsigned n = number_octets(iter, kSize - static_cast<unsigned>(iter - c));
    if (n == 0) return 5;
    pkcs5_PBKDF2(password, password_len, salt, static_cast<unsigned short>(number_value(iter, n)), key);
    return 0;
}

// HMAC of the AuthenticatedSafe (offsets 23..304) under the MacData key.
unsigned char compute_mac(unsigned char* c, unsigned char* password, unsigned char password_len, type_uN<32>* mac) {
    type_uN<32> key;
    unsigned char r = derive_key(c, kMacSalt, kMacIter, password, password_len, &key);
    if (r == 0) GOST_34_11_94_HMAC(c + kAuthSafe, kAuthSafeLen, key.b, 32, mac);
    kx::wipe_obj(key);
    return r;
}

// Stores a fresh MAC into the MacData's value element: its tag must be one
// pkcs12_set_block takes (else 5, after the content has been written back).
// The MAC is compared at a fixed place, two octets behind that tag, and the
// length octet lies outside the MAC'd range, so a container may carry any
// octet there and still verify: the MAC is stored at that same fixed place,
// where a short length form puts it too, instead of behind a length read
// from the container that could send it past the MacData.
unsigned char store_mac(unsigned char* c, unsigned char* password, unsigned char password_len) {
    unsigned char tag = c[kMacValue];
    if (!accepted_tag(tag)) return 5;
    type_uN<32> mac;
    unsigned char r = compute_mac(c, password, password_len, &mac);
    if (r == 0) kx::copy(c + kMacValue + 2, mac.b, 32);
    kx::wipe_obj(mac);
    return r;
}

// Counter mode over the local 152-byte copy, IV from the container.
void ctr(unsigned char* plain, type_uN<32>* key, const unsigned char* iv8) {
    type_u64 iv;
    kx::copy(&iv, iv8, 8);
    GOST_28147_89_ZR_CTR(plain, kPlainLen, key, &iv, kCtrSelector);
}

// The deciphered SafeContents of a container whose MAC has been checked,
// with the encipherment key derived from password; 0 or 5.
struct Opened {
    type_uN<32> key;
    unsigned char* iv;
    unsigned char* content;
    unsigned char plain[kPlainLen];
};

unsigned char open_content(unsigned char* c, unsigned char* password, unsigned char password_len, Opened& o) {
    o.iv = element_content(c, kSize, kIv, 8);
    o.content = element_content(c, kSize, kContent, kPlainLen);
    if (!o.iv || !o.content) return 5;
    unsigned char r = derive_key(c, kSalt, kIter, password, password_len, &o.key);
    if (r) return r;
    kx::copy(o.plain, o.content, kPlainLen);
    ctr(o.plain, &o.key, o.iv);
    return 0;
}

// Enciphers the local copy under key and stores it in the container.
void seal_content(Opened& o, type_uN<32>* key) {
    ctr(o.plain, key, o.iv);
    kx::copy(o.content, o.plain, kPlainLen);
}

}  // namespace

KORVEX_API unsigned char pkcs12_create_conteiner(unsigned char* out, unsigned short /*size*/,
                                                 type_uN<32>* private_key, unsigned char* aux40,
                                                 unsigned char* password, unsigned char password_len,
                                                 unsigned char* salt4, unsigned char* iv8) {
    Writer w{out};
    w.header(kTagSeq, 369);               // PFX
    put_small_int(w, 3);
    w.header(kTagSeq, 296);               // ContentInfo
    put_rsa_oid(w, 0x07, 0x01);           // data
    w.header(kTagOctets, kAuthSafeLen);
    pkcs12_create_auth_safe_hdr(&w.p, iv8, salt4);
    pkcs12_create_safe_contents(&w.p, private_key, aux40);

    // The encipherment and MAC keys share salt and count, hence are equal.
    type_uN<32> key;
    pkcs5_PBKDF2(password, password_len, salt4, kIterations, &key);
    ctr(out + kContent + 3, &key, iv8);

    w.header(kTagSeq, 65);                // MacData
    w.header(kTagSeq, 53);                // DigestInfo
    w.header(kTagSeq, 17);
    put_cp_oid(w, 0x0A);                  // HMAC GOST R 34.11-94
    put_cp_oid2(w, kSufHashParams);
    w.header(kTagOctets, 32);
    GOST_34_11_94_HMAC(out + kAuthSafe, kAuthSafeLen, key.b, 32, reinterpret_cast<type_uN<32>*>(w.p));
    w.p += 32;
    put_octets(w, salt4, 4);
    put_count(w, kIterations);
    kx::wipe_obj(key);
    return 0;
}

KORVEX_API unsigned char pkcs12_conteiner_check_MAC(unsigned char* password, unsigned char password_len,
                                                    unsigned char* container) {
    type_uN<32> mac;
    unsigned char r = compute_mac(container, password, password_len, &mac);
    if (r) return r;
    return kx::equal(mac.b, container + kMacValue + 2, 32) ? 0 : 2;
}

KORVEX_API unsigned char pkcs12_open_conteiner(type_uN<32>* private_key, unsigned char* aux40,
                                               unsigned char* password, unsigned char password_len,
                                               unsigned char* container) {
    unsigned char r = pkcs12_conteiner_check_MAC(password, password_len, container);
    if (r) return r;
    Opened o;
    r = open_content(container, password, password_len, o);
    if (r == 0) {
        unsigned char* key = element_content(o.plain, kPlainLen, kKeyField, 32);
        unsigned char* aux = element_content(o.plain, kPlainLen, kAuxField, kAuxLen);
        if (!key || !aux) {
            r = 3;
        } else {
            if (private_key) kx::copy(private_key->b, key, 32);
            if (aux40) kx::copy(aux40, aux, kAuxLen);
        }
        ctr(o.plain, &o.key, o.iv);  // no plaintext stays behind
    }
    kx::wipe_obj(o);
    return r;
}

KORVEX_API unsigned char pkcs12_close_conteiner(unsigned char* aux40, unsigned char* password,
                                                unsigned char password_len, unsigned char* container) {
    unsigned char r = pkcs12_conteiner_check_MAC(password, password_len, container);
    if (r) return r;
    Opened o;
    r = open_content(container, password, password_len, o);
    if (r == 0) {
        unsigned char* aux = element_content(o.plain, kPlainLen, kAuxField, kAuxLen);
        if (!aux) {
            r = 3;
        } else {
            kx::copy(aux, aux40, kAuxLen);
            seal_content(o, &o.key);
            r = store_mac(container, password, password_len);
        }
    }
    kx::wipe_obj(o);
    return r;
}

KORVEX_API unsigned char pkcs12_conteiner_change_pass(unsigned char* old_password, unsigned char old_len,
                                                      unsigned char* new_password, unsigned char new_len,
                                                      unsigned char* container) {
    unsigned char r = pkcs12_conteiner_check_MAC(old_password, old_len, container);
    if (r) return r;
    Opened o;
    r = open_content(container, old_password, old_len, o);
    if (r == 0) {
        type_uN<32> key;
        r = derive_key(container, kSalt, kIter, new_password, new_len, &key);
        if (r == 0) {
            seal_content(o, &key);
            r = store_mac(container, new_password, new_len);
        }
        kx::wipe_obj(key);
    }
    kx::wipe_obj(o);
    return r;
}

KORVEX_API void pkcs12_get_pbkdf2_par(unsigned char* salt4, unsigned short* iterations, unsigned char* container) {
    unsigned char* salt = element_content(container, kSize, kSalt, 4);
    unsigned char* iter = element_content(container, kSize, kIter, 1);
    if (salt) kx::copy(salt4, salt, 4);
    if (iter) {
        unsigned n = number_octets(iter, kSize - static_cast<unsigned>(iter - container));
        if (n) *iterations = static_cast<unsigned short>(number_value(iter, n));
    }
}
