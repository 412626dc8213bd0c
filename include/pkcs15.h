// PKCS#15 private-key containers protected by a password (PBKDF2 key
// derivation, GOST 28147-89 key wrap of RFC 4357, CMS EnvelopedData bodies),
// wrapped in a CMS AuthenticatedData. Two generations:
//   2001: GOST R 34.11-94 PRF and digest, CryptoPro-A cipher parameters, a
//         GOST R 34.10-2001 key; fixed layout of 786 or 787 octets read at
//         fixed offsets.
//   2012: GOST R 34.11-2012 (512-bit) PRF and digest, tc26 param-Z cipher
//         parameters, a 256- or 512-bit key; read by walking the DER.
//
// Codes: 0 ok, 30 malformed container, 31 AuthenticatedData integrity
// mismatch, 32 wrong password, 33 random generator failure. Builders follow
// the two-call pattern: a null output gives the size. Creation and update
// draw from the library's generator (seed it with PRNG_init first) and must
// be serialised by the caller; readers are reentrant.
#ifndef KORVEX_PKCS15_H
#define KORVEX_PKCS15_H

#include "korvex_types.h"

// Secret key of the 2012 functions: a 256-bit key in b[0..31], a 512-bit key
// in all 64 octets.
typedef struct TSecretKey {
    unsigned char b[64];
} TSecretKey;

// Pointers into a recipient-info SET (tag 0x31), null when not found.
enum {
    PKCS15_CEK_KEKID = 0,  // content of the KEK identifier SEQUENCE
    PKCS15_CEK_UKM = 1,    // UKM OCTET STRING element (04 08 ...)
    PKCS15_CEK_ENC = 2,    // encrypted CEK OCTET STRING element (04 20 ...)
    PKCS15_CEK_MAC = 3     // CEK MAC OCTET STRING element (04 04 ...)
};
typedef struct pkcs15_CEK_t {
    unsigned char* ptr[4];
} pkcs15_CEK_t;

// Pointers into an encrypted content info SEQUENCE, null when not found.
typedef struct pkcs15_data_t {
    unsigned char* iv;       // IV OCTET STRING element (04 08 ...)
    unsigned char* content;  // encrypted content element, tag 0x80
} pkcs15_data_t;

// PBKDF2 parameters of the password header's [0] element.
typedef struct pkcs15_KEK_t {
    unsigned char* salt;      // salt OCTET STRING element, null when not found
    unsigned int iterations;  // iteration count, 0 when not found
} pkcs15_KEK_t;

// ---- Enveloped content (CMS EnvelopedData body, one KEK recipient) -------

// Envelopes len octets of data under a fresh random CEK wrapped with kek.
// Returns the octets written (also with null out); 0 on generator failure,
// and 0 when the size would not fit in 32 bits. reserved is not used.
KORVEX_API unsigned int pkcs15_content_create(unsigned char* data, unsigned int len, KORVEX_UN(32)* kek,
                                              unsigned int reserved, unsigned char* out);
KORVEX_API unsigned int pkcs15_content_create_2012(unsigned char* data, unsigned int len, KORVEX_UN(32)* kek,
                                                   unsigned int reserved, unsigned char* out);

// ---- 2001 container -------------------------------------------------------

// Builds the 786-octet container of a 32-octet key and a 40-octet random
// value. Returns the size (also with null out), 0 on failure.
KORVEX_API unsigned int pkcs15_create_conteiner(unsigned char* out, KORVEX_UN(32)* key, unsigned char* rnd,
                                                unsigned char* password, unsigned char passwordLen);

// As pkcs15_create_conteiner with X.509 KeyUsage bits (0 means 255) turned
// into the key's PKCS#15 usage flags; 787 octets when the flags need two
// octets (nonRepudiation or keyAgreement).
KORVEX_API unsigned int pkcs15_create_conteiner_new(unsigned char* out, KORVEX_UN(32)* key, unsigned char* rnd,
                                                    unsigned char* password, unsigned char passwordLen,
                                                    unsigned short usage);

// Key and random value readers: 0 ok, 30 not a container, 32 wrong password.
// A null output only checks the password. The _no_pass_chek variants skip
// the check and never return 32.
KORVEX_API unsigned int pkcs15_get_key(unsigned char* container, KORVEX_UN(32)* keyOut, unsigned char* password,
                                       unsigned char passwordLen);
KORVEX_API unsigned int pkcs15_get_key_no_pass_chek(unsigned char* container, KORVEX_UN(32)* keyOut,
                                                    unsigned char* password, unsigned char passwordLen);
KORVEX_API unsigned int pkcs15_get_rnd(unsigned char* container, unsigned char* rndOut, unsigned char* password,
                                       unsigned char passwordLen);
KORVEX_API unsigned int pkcs15_get_rnd_no_pass_chek(unsigned char* container, unsigned char* rndOut,
                                                    unsigned char* password, unsigned char passwordLen);

// Renews CEKs, IVs, UKMs, the MAC key and the random value in place, keeping
// key and password: 0 ok, 30, 32, 33. The new random value's first 32-bit
// word (little-endian) is the drawn one plus 1. The AuthenticatedData digest
// is taken over 532 + s octets from offset 142 + s (s = 1 for 787 octets), so
// in the 787-octet form it covers a range one octet past the token's start.
KORVEX_API unsigned int pkcs15_update(unsigned char* container, unsigned char* password, unsigned char passwordLen);

// ---- Getters (both generations) -------------------------------------------
// Each walk stays inside the element it is given, whose extent is taken from
// its own header: the buffer must hold that whole element.

// The token's first element after its version INTEGER, or null.
KORVEX_API unsigned char* pkcs15_get_pkcs15content(unsigned char* container);
// 1 for a 2001 key object (0xBA), 2 for a 2012 one (0xBB), 0 otherwise.
KORVEX_API unsigned int pkcs15_get_version(unsigned char* container);
KORVEX_API pkcs15_CEK_t pkcs15_get_pkcs15_CEK(unsigned char* p);
KORVEX_API pkcs15_data_t pkcs15_get_pkcs15_data(unsigned char* p);
KORVEX_API pkcs15_KEK_t pkcs15_get_pkcs15_KEK(unsigned char* p);

// ---- 2012 container -------------------------------------------------------

// keyKind 1: 256-bit key (key->b[0..31]), 2: 512-bit key; any other value
// gives 0. Returns the size (also with null out), 0 on failure.
KORVEX_API unsigned int pkcs15_create_conteiner_2012(unsigned char* out, TSecretKey* key, unsigned char* rnd,
                                                     unsigned short usage, unsigned char* password,
                                                     unsigned char passwordLen, unsigned char keyKind);

// Readers: 0 ok, 30 malformed. They do not detect a wrong password. keyOut is
// zeroed first; a 256-bit key fills its first 32 octets.
KORVEX_API unsigned int pkcs15_get_key_2012(unsigned char* container, TSecretKey* keyOut, unsigned char* password,
                                            unsigned char passwordLen);
KORVEX_API unsigned int pkcs15_get_rnd_2012(unsigned char* container, unsigned char* rndOut,
                                            unsigned char* password, unsigned char passwordLen);

// Checks password and AuthenticatedData, then renews the random object and
// the MAC key: 0 ok, 30, 31, 32, 33.
KORVEX_API unsigned int pkcs15_update_2012(unsigned char* container, unsigned char* password,
                                           unsigned char passwordLen);

#endif
