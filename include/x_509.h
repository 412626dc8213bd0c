// Read-only access to DER X.509 certificates (RFC 5280) carrying GOST keys:
// the subject public key and its parameter set, the certificate signature
// (GOST R 34.10-2001 over GOST R 34.11-94), and the fields a user interface
// shows. Nothing is copied: every result points into the caller's buffer and
// lives as long as it does.
//
// Certificates are walked positionally by the X.509 v3 layout. The outermost
// element is trusted to lie in the caller's buffer; no inner element is read
// past the end of the element containing it (an overrun fails like a tag
// mismatch).
#ifndef KORVEX_X_509_H
#define KORVEX_X_509_H

#include <stdint.h>

#include "korvex_types.h"

// A field of the certificate: pointer and length.
typedef struct x509_field_ref {
    unsigned char* ptr;
    uint16_t len;
} x509_field_ref;

// One attribute of a Name. tag 0 means not present.
typedef struct x509_name_entry {
    uint8_t tag;            // ASN.1 string type of the value (0x13, 0x0C, 0x16, ...)
    uint8_t length;         // content length of the value, low 8 bits
    unsigned char* value;   // content octets of the value
} x509_name_entry;

// The attributes picked out of a Name. The seven short attributes keep their
// first occurrence; emailAddress keeps its last.
typedef struct x509_name {
    x509_name_entry country;              // 2.5.4.6
    x509_name_entry organization;         // 2.5.4.10
    x509_name_entry organizational_unit;  // 2.5.4.11
    x509_name_entry dn_qualifier;         // 2.5.4.46
    x509_name_entry state;                // 2.5.4.8
    x509_name_entry common_name;          // 2.5.4.3
    x509_name_entry serial_number;        // 2.5.4.5
    x509_name_entry email;                // 1.2.840.113549.1.9.1
} x509_name;

// Whole elements (tag byte, header plus content length, low 16 bits).
typedef struct x509_field_pointers {
    x509_field_ref subject;
    x509_field_ref serial_number;
    x509_field_ref validity;
    x509_field_ref issuer;
} x509_field_pointers;

// Content octets: the serial number INTEGER and the two UTCTime texts.
typedef struct x509_textbox {
    x509_field_ref serial_number;
    x509_field_ref not_before;
    x509_field_ref not_after;
} x509_textbox;

// The subjectPublicKeyInfo element: the first tbsCertificate child that is a
// SEQUENCE starting with a SEQUENCE. Null when there is none.
KORVEX_API unsigned char* x_509_find_public_key_info_block(unsigned char* cert);

// The public key octets as stored (64 for 256-bit keys, 128 for 512-bit
// keys), inside the OCTET STRING wrapped in subjectPublicKeyInfo's BIT
// STRING; null when the layout does not match.
KORVEX_API unsigned char* x_509_get_open_key(unsigned char* cert);

// Curve selector of a 256-bit key: the last arc of 1.2.643.2.2.35.x (0..3),
// 1 for 1.2.643.2.2.36.0 (XchA), 3 for any other 1.2.643.2.2.36.x (XchB);
// 0xFFFFFFFF otherwise.
KORVEX_API unsigned int x_509_get_open_key_parametrs_ds(unsigned char* cert);

// Curve selector of a 512-bit key: the last arc of 1.2.643.7.1.2.1.2.x, or
// 0xFFFFFFFF.
KORVEX_API unsigned int x_509_get_open_key_parametrs_ds_512bit(unsigned char* cert);

// Content length of the element at p in a limited form: short form as is,
// 0x82 form as its 16-bit value; the 0x81 form reads its octet and the next
// one (the first content octet) as a 16-bit value; other forms give 0. Meant
// for elements of 256 octets or more.
KORVEX_API unsigned int x_509_get_block_length(unsigned char* p);

// Verifies cert's signature with the key of issuerCert, or with cert's own
// key when issuerCert is null (self-signed). Returns 1 for a valid signature,
// 0 otherwise.
KORVEX_API unsigned int x_509_check_certificate(unsigned char* cert, unsigned char* issuerCert);

// Size of the whole certificate element (header plus content), or 0.
KORVEX_API unsigned int x_509_get_certificate_length(unsigned char* cert);

// Picks the known attributes out of a Name (issuer or subject element).
KORVEX_API x509_name x_509_parse_Name_field(unsigned char* name);

// Subject, serialNumber, validity and issuer elements; an empty record for a
// certificate without the explicit version field.
KORVEX_API x509_field_pointers x_509_get_field_pointers(unsigned char* cert);

// keyUsage flags with bit 0 = digitalSignature ... bit 8 = decipherOnly, or 0
// when the certificate is not v3 or has no keyUsage extension.
KORVEX_API unsigned int x_509_get_key_usage(unsigned char* cert);

// serialNumber and the validity times (UTCTime only).
KORVEX_API x509_textbox x_509_get_textbox_of_cer(unsigned char* cert);

#endif
