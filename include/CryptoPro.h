// CryptoPro key containers (GOST R 34.10-2001 keys): the primary-key file
// (one or two enciphered, masked keys), the masks file (mask, salt, MAC of the
// salt) and the header file (holding the owner's certificate), all passed as
// caller buffers. The key-encryption key comes from the password through the
// iterated GOST R 34.11-94 derivation of the container format.
//
// Result codes:
//   0  success
//   2  primary-key buffer does not start with a SEQUENCE
//   3  masks buffer does not start with a SEQUENCE
//   4  primary-key content length neither 34 nor 68
//   5  masks content length not 54
//   6  MAC of the salt does not match (damaged masks file)
//   7  the certificate's key parameter set is not recognised
//   8  the unmasked key does not match the certificate (wrong password or
//      foreign certificate)
//   9  CryptoPro_conteiner_update: the generator is not seeded
//  10  password longer than 12 characters; refused before anything is read
//      or written
#ifndef KORVEX_CRYPTOPRO_H
#define KORVEX_CRYPTOPRO_H

#include "korvex_types.h"

// Longest password the container format can widen (12 characters).
#define CRYPTOPRO_MAX_PASSWORD_LEN 12
// Code for a password longer than CRYPTOPRO_MAX_PASSWORD_LEN.
#define CRYPTOPRO_ERR_PASSWORD_TOO_LONG 10

// Reads the private key (little-endian) and the 40-byte mask block (mask, then
// the first 8 salt bytes), checking the key against the certificate.
KORVEX_API unsigned char CryptoPro_conteiner_get(unsigned char* primary, unsigned char* masks,
                                                 unsigned char* certificate, unsigned char* mask_block,
                                                 KORVEX_UN(32)* private_key, unsigned char* password,
                                                 unsigned char password_len);

// As CryptoPro_conteiner_get with GOST 28147-89 parameter set Z (selector 7)
// for the masks' MAC and for deciphering the keys.
KORVEX_API unsigned char CryptoPro_conteiner_get_2012(unsigned char* primary, unsigned char* masks,
                                                      unsigned char* certificate, unsigned char* mask_block,
                                                      KORVEX_UN(32)* private_key, unsigned char* password,
                                                      unsigned char password_len);

// Unmasks without a certificate (codes 7 and 8 never occur). key2, when not
// null, is cleared on entry. The unmasked keys are NOT delivered: for each
// non-null key pointer the caller's 32 bytes are copied onto the internal
// result (source first), so key1 keeps its content and key2 stays zero. This
// copy direction is part of the interface. The mask block is written.
KORVEX_API unsigned char CryptoPro_conteiner_get_no_pass_chek(unsigned char* primary, unsigned char* masks,
                                                              unsigned char* mask_block, KORVEX_UN(32)* key1,
                                                              KORVEX_UN(32)* key2, unsigned char* password,
                                                              unsigned char password_len);

// Address of the DER certificate inside the header file (the content of its
// [5] element), or null.
KORVEX_API unsigned char* CryptoPro_conteiner_get_certificate(unsigned char* header);

// Draws a new mask factor and salt, re-masks and re-enciphers the key(s) and
// rewrites the MAC, in place; the container keeps its key and password.
KORVEX_API unsigned char CryptoPro_conteiner_update(unsigned char* primary, unsigned char* masks,
                                                    unsigned char* password, unsigned char password_len);

#endif
