// Internal pieces shared by the PKCS#15 container code: the two generations'
// templates and algorithms, walks of the token, key wrapping, enveloping
// and the AuthenticatedData seal. Not part of the public interface.
#ifndef KORVEX_CONTAINERS_PKCS15_INTERNAL_H
#define KORVEX_CONTAINERS_PKCS15_INTERNAL_H

#include <stddef.h>
#include <stdint.h>

#include "encoding/der.h"
#include "korvex_types.h"
#include "pkcs15.h"

namespace kx {
namespace p15 {

// Codes of the container functions.
enum : unsigned int { kOk = 0, kMalformed = 30, kIntegrity = 31, kWrongPassword = 32, kNoRandom = 33 };

// Everything that differs between the 2001 and 2012 generations.
struct Generation {
    unsigned char sbox;          // GOST 28147-89 parameter set: 2 CryptoPro-A, 7 param-Z
    bool gost2012;               // hashes: GOST R 34.11-94 or GOST R 34.11-2012 512-bit
    const uint8_t* recipient;    // version + recipient SET of one KEK recipient
    unsigned recipient_len;      // 94 / 96
    unsigned ukm_at, wrapped_at, wrap_mac_at;  // positions in the recipient template
    const uint8_t* enc_info;     // contentType + contentEncryptionAlgorithm
    unsigned enc_info_len;       // 42 / 44
    unsigned iv_at;              // 25
    const uint8_t* pwd_header;   // version + PBKDF2 key-management info
    unsigned pwd_header_len;     // 81 / 83
    unsigned salt_at;            // 32
    const uint8_t* ad_algs;      // macAlgorithm and digestAlgorithm of the AuthenticatedData
    unsigned ad_algs_len;        // 20 / 24
    const uint8_t* ad_suffix;    // authenticated attributes + MAC OCTET STRING
    unsigned ad_suffix_len;      // 112 / 176
    unsigned attrs_len;          // 78 / 110
    unsigned digest_at;          // 46
    unsigned digest_len;         // 32 / 64 (also the HMAC length)
    unsigned ad_mac_at;          // 80 / 112
    uint8_t key_tag;             // 0xBA / 0xBB
};
extern const Generation g2001;
extern const Generation g2012;

// Version 0, the recipient SET, macAlgorithm, digestAlgorithm.
constexpr unsigned ad_prefix_len(const Generation& g) { return g.recipient_len + g.ad_algs_len; }

// Content-type element of the PKCS#15 token (1.2.840.113549.1.15.3.1).
extern const uint8_t kTokenOid[12];
constexpr unsigned kPbkdf2Iterations = 2000;

// ---- Algorithms of a generation --------------------------------------------
void digest(const Generation& g, uint8_t* data, unsigned len, uint8_t* out);
void hmac(const Generation& g, uint8_t* data, unsigned len, uint8_t* key32, uint8_t* out);
void derive_kek(const Generation& g, uint8_t* password, unsigned char passwordLen, uint8_t* salt,
                unsigned short iterations, type_uN<32>* kek);
// 32 random octets; false when the generator is not seeded.
bool draw(uint8_t* out32);

// ---- DER (encoding/der.h) -------------------------------------------------
// Moves n octets from src to dst; the ranges may overlap.
void move(uint8_t* dst, const uint8_t* src, unsigned n);

// Walks of the token. token: a cursor over the token's children behind its
// version.
bool token_span(uint8_t* container, DerCursor& token);
// The SEQUENCE of objects behind the optional key-management [0] element;
// kmi receives that [0] element when present (kmi.tag null otherwise).
bool objects_seq(DerCursor token, Der& kmi, Der& objects);
// The A2 element holding the enveloped value of the object tagged
// t1 { t2 { t3 { ..., A1 { A2 } } } } inside the objects SEQUENCE.
bool find_object(const Der& objects, uint8_t t1, uint8_t t2, uint8_t t3, Der& a2);

// Bounded forms of the exported getters.
pkcs15_CEK_t get_cek(const Der& set);
pkcs15_data_t get_data(const Der& seq);
pkcs15_KEK_t get_kek(const Der& a0);

// ---- Enveloped objects ------------------------------------------------------
// Where the fields of one enveloped value lie (value octets, no headers).
struct Envelope {
    uint8_t* ukm;        // 8
    uint8_t* wrapped;    // 32, encrypted CEK
    uint8_t* wrap_mac;   // 4
    uint8_t* iv;         // 8
    uint8_t* content;    // encrypted OCTET STRING element
    unsigned content_len;
};
// Reads the fields of the enveloped value inside an A2 element; false when
// anything is missing or of the wrong size.
bool locate_envelope(const Der& a2, Envelope& env);

// GOST 28147-89 key wrap of RFC 4357 (no diversification): MAC of the plain
// key under kek with the UKM as IV (low 4 octets), then ECB under kek.
void wrap_key(const Generation& g, const uint8_t* key32, type_uN<32>* kek, const uint8_t* ukm8, uint8_t* wrapped32,
              uint8_t* mac4);
// Unwraps into key32; false when check is set and the MAC does not match (key32
// is then wiped).
bool unwrap_key(const Generation& g, const uint8_t* wrapped32, type_uN<32>* kek, const uint8_t* ukm8,
                const uint8_t* mac4, bool check, uint8_t* key32);

// Opens an enveloped value: 0 ok or 32 on a MAC mismatch when check is set.
// With out non-null the value (content length minus its 2-octet header) is
// written there.
unsigned open_envelope(const Generation& g, const Envelope& env, type_uN<32>* kek, bool check, uint8_t* out);
// Decrypts the content in place (the OCTET STRING element becomes plain).
void decrypt_in_place(const Generation& g, const Envelope& env, type_uN<32>* kek);
// Seals an envelope whose content lies in plain text: stores iv and ukm,
// encrypts the content under cek, wraps cek.
void seal_envelope(const Generation& g, const Envelope& env, type_uN<32>* kek, uint8_t* cek32, const uint8_t* iv8,
                   const uint8_t* ukm8);

// Size of an enveloped value of len octets: recipient, 30 { enc_info,
// 80 { 04 { value } } }. The same sums give the 2001 form's fixed offsets at
// compile time (pkcs15_generation.cpp).
constexpr uint64_t envelope_len(const Generation& g, uint64_t len) {
    return g.recipient_len + wrapped(g.enc_info_len + wrapped(wrapped(len)));
}
// Size of an object t1 { t2 { t3 { attributes, A1 { A2 { envelope } } } } }.
constexpr uint64_t object_len(uint64_t attrs, uint64_t env) {
    return wrapped(wrapped(wrapped(attrs + wrapped(wrapped(env)))));
}
unsigned envelope_size(const Generation& g, unsigned len);
// pkcs15_content_create for a generation.
unsigned envelope(const Generation& g, uint8_t* data, unsigned len, type_uN<32>* kek, uint8_t* out);

// ---- AuthenticatedData ------------------------------------------------------
struct AuthData {
    uint8_t* ukm;        // 8, UKM of the MAC key wrap
    uint8_t* wrapped;    // 32, encrypted MAC key
    uint8_t* wrap_mac;   // 4
    uint8_t* content;    // encapsulated OCTET STRING value
    unsigned content_len;
    uint8_t* attrs;      // authenticated attributes element (tag 0xA2)
    unsigned attrs_len;  // whole element
    uint8_t* digest;     // messageDigest value, digest_len octets
    uint8_t* mac;        // MAC value, digest_len octets
};
// Locates the parts of an AuthenticatedData by walking it.
bool locate_authdata(const Generation& g, uint8_t* container, AuthData& ad);
// HMAC of the attributes with their tag taken as 0x82 (implicit [2] of the
// SET OF), as computed by this library's builders.
void attrs_hmac(const Generation& g, uint8_t* attrs, unsigned attrs_len, uint8_t* mac_key32, uint8_t* out);
// Wraps mac_key under kek with ukm, recomputes digest and HMAC.
void seal_authdata(const Generation& g, const AuthData& ad, type_uN<32>* kek, uint8_t* mac_key32,
                   const uint8_t* ukm8);
// CMS_AuthenticatedData_pkcs15_create for a generation.
unsigned authdata(const Generation& g, uint8_t* content, unsigned len, type_uN<32>* kek, uint8_t* out);

// ---- Containers -------------------------------------------------------------
// Key-object attributes for X.509 KeyUsage bits; mapped false keeps the
// one-octet flags 00 of pkcs15_create_conteiner. Returns their length, 31 or 32.
unsigned key_attributes(bool mapped, unsigned short usage, uint8_t* out);
unsigned create(const Generation& g, uint8_t* out, const uint8_t* key, unsigned keyLen, uint8_t* rnd,
                uint8_t* password, unsigned char passwordLen, bool mapped, unsigned short usage);

}  // namespace p15
}  // namespace kx

#endif
