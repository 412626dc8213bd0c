// The library's own PKCS#12 (PFX) container: one GOST R 34.10-2001 private
// key and a 40-byte auxiliary block, always 372 bytes, every field at a fixed
// offset. Content enciphered with GOST 28147-89 in counter mode and guarded by
// HMAC GOST R 34.11-94, both under a PBKDF2 key (1024 iterations, 4-byte salt).
//
// Result codes of the container functions and of pkcs12_get_block/set_block:
//   0  success
//   2  MAC mismatch (wrong password or damaged container)
//   3  the deciphered content holds no valid key or auxiliary element
//   4  pkcs12_check_algorithm: an OID of unexpected length or content
//   5  structure: an unexpected tag
// Lengths inside the container are written base-128, 7 bits per octet (not
// DER): 369 is 82 71, the iteration count 1024 is 88 00.
#ifndef KORVEX_PKCS12_H
#define KORVEX_PKCS12_H

#include "korvex_types.h"

// Size of every container the library writes.
#define PKCS12_CONTEINER_SIZE 372

// Writes the 372-byte container into out (size is ignored). Always 0.
KORVEX_API unsigned char pkcs12_create_conteiner(unsigned char* out, unsigned short size,
                                                 KORVEX_UN(32)* private_key, unsigned char* aux40,
                                                 unsigned char* password, unsigned char password_len,
                                                 unsigned char* salt4, unsigned char* iv8);

// Checks the MAC and copies out the key and the auxiliary block; either output
// may be null. Writes nothing on any failure; the container is not changed.
KORVEX_API unsigned char pkcs12_open_conteiner(KORVEX_UN(32)* private_key, unsigned char* aux40,
                                               unsigned char* password, unsigned char password_len,
                                               unsigned char* container);

// Stores a new auxiliary block, re-enciphers and recomputes the MAC in place.
KORVEX_API unsigned char pkcs12_close_conteiner(unsigned char* aux40, unsigned char* password,
                                                unsigned char password_len, unsigned char* container);

// Re-enciphers and re-MACs the container under a new password, in place.
KORVEX_API unsigned char pkcs12_conteiner_change_pass(unsigned char* old_password, unsigned char old_len,
                                                      unsigned char* new_password, unsigned char new_len,
                                                      unsigned char* container);

// 0 when the stored MAC matches the password, 2 when not (5 when the MacData
// salt or count element has a wrong tag).
KORVEX_API unsigned char pkcs12_conteiner_check_MAC(unsigned char* password, unsigned char password_len,
                                                    unsigned char* container);

// Checks the fixed header up to the EncryptedContentInfo's contentType and
// leaves *p on the contentEncryptionAlgorithm (offset 60). 0 or 5.
KORVEX_API unsigned char pkcs12_check_header(unsigned char** p);

// Checks the PBES2 AlgorithmIdentifier at p: 0, 4 (OID) or 5 (tag).
KORVEX_API unsigned char pkcs12_check_algorithm(unsigned char* p);

// Copies the PBKDF2 salt (4 bytes) and iteration count of the container.
KORVEX_API void pkcs12_get_pbkdf2_par(unsigned char* salt4, unsigned short* iterations,
                                      unsigned char* container);

// Copy len bytes out of / into the content of the element whose tag is at
// buf + offset (tag 02, 04, 06 or 30, else 5). 0 on success.
KORVEX_API unsigned char pkcs12_get_block(unsigned char* buf, unsigned short offset, unsigned short len,
                                          unsigned char* out);
KORVEX_API unsigned char pkcs12_set_block(unsigned char* buf, unsigned short offset, unsigned short len,
                                          unsigned char* in);

// Base-128 writer: writes value at *p and advances *p; returns the octet count
// (1, 2 or 3). With p null only counts. Three octets start at 16513.
KORVEX_API unsigned char pkcs12_ber_code(unsigned char** p, unsigned short value);

// Base-128 reader: reads the number at *p and advances *p past it.
KORVEX_API unsigned int pkcs12_ber_decode(unsigned char** p);

// Copies len bytes front to back.
KORVEX_API void pkcs12_copy_data(unsigned char* dst, unsigned char* src, unsigned short len);

// Writers used by pkcs12_create_conteiner: the AuthenticatedSafe prologue
// (offsets 23-152) and the 152-byte SafeContents; both advance *p.
KORVEX_API unsigned char pkcs12_create_auth_safe_hdr(unsigned char** p, unsigned char* iv8,
                                                     unsigned char* salt4);
KORVEX_API void pkcs12_create_safe_contents(unsigned char** p, KORVEX_UN(32)* private_key,
                                            unsigned char* aux40);

#endif
