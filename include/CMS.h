// CMS SignedData (RFC 5652) with GOST R 34.11-94 digests and GOST R 34.10-2001
// signatures: one signer identified by issuer and serial number, optional
// embedded certificate, signed and unsigned attributes given as text.
//
// Attribute text: a dotted OID, ':', the Base64 of the DER attribute value;
// several attributes are joined by '&'.
//
// Builders follow the two-call pattern (null output: size only). Results
// that point into a message are pointers into the caller's buffer.
#ifndef KORVEX_CMS_H
#define KORVEX_CMS_H

#include <stdint.h>

#include "korvex_types.h"

// Where the parts of a SignedData message lie.
typedef struct cms_signed_data_t {
    uint8_t status;                  // 0 parsed completely, 1 otherwise
    unsigned char* certificate;      // first embedded certificate, or null
    uint32_t certificate_len;        // its whole size
    unsigned char* content;          // encapsulated content octets, or null (detached)
    uint32_t content_len;
    unsigned char* signed_attrs;     // the SignerInfo's [0] element, or null
    uint32_t signed_attrs_len;       // its whole size
    unsigned char* signer_id;        // IssuerAndSerialNumber element
    uint32_t signer_id_len;          // its whole size
    unsigned char* signature;        // signature octets
    uint32_t signature_len;
} cms_signed_data_t;

// Content and length of an OCTET STRING found in the signed attributes.
typedef struct cms_mime_type_t {
    unsigned char* value;
    unsigned int length;
} cms_mime_type_t;

// Signer block: [0] signed attributes (the fixed contentType and
// messageDigest plus the text's, ordered by encoded size, equal sizes in the
// order written), the 64-octet signature OCTET STRING, [1] unsigned
// attributes in the order given. Either text may be null or empty; items that
// are not "dotted.decimal.OID:Base64" are left out. Returns the block size;
// with a null out, a size bound for the output buffer: the text lengths plus
// 141 (66 without signed text), or the exact size when that is larger.
// reserved and reservedFlag are not used.
KORVEX_API unsigned int CMS_create_SignedAttr(unsigned char* signedText, unsigned int signedLen,
                                              unsigned char* unsignedText, unsigned int unsignedLen,
                                              unsigned char* reserved, unsigned char reservedFlag,
                                              unsigned char* out);

// Output size bound of CMS_create_SignedAttr for a signed attribute text of n
// characters and no unsigned text, taken from the text length alone; 0 when
// the attributes would not fit. Items shorter than their DER (tiny OIDs and
// values, e.g. "1.2.3:AAAA") can exceed it: CMS_create_SignedAttr with a null
// output looks at the items and never answers less than the block needs.
KORVEX_API unsigned int CMS_SignedAttr_buffer_len(unsigned int n);

// Attribute SEQUENCEs of an '&'-joined text, one after another; returns the
// octets written (0 for null or empty text).
KORVEX_API unsigned int CMS_create_Attr(unsigned char* text, unsigned int len, unsigned char* out);

// One Attribute SEQUENCE from "OID:Base64"; returns the octets written. The
// Base64 decoding works in out, which needs room for the decoded groups.
KORVEX_API unsigned int CMS_create_Attribute(unsigned char* text, unsigned int len, unsigned char* out);

// Sorts a run of len octets of consecutive DER elements in place by whole
// encoded size, smallest first, keeping the order of equal sizes.
KORVEX_API void CMS_DER_SetOf_sort(unsigned char* p, unsigned int len);

// Number of contentType items plus twice the number of messageDigest items
// in an attribute text (these attributes are always added by the library).
KORVEX_API unsigned int CMS_check_SignedAttr(unsigned char* text, unsigned int len);

// The 32 octets of the messageDigest value inside a [0] element, or null.
KORVEX_API unsigned char* CMS_SignedAttr_find_msg_digest_value_field(unsigned char* signedAttrs);

// The OCTET STRING held in the value of the contentType attribute, or
// (null, 0).
KORVEX_API cms_mime_type_t CMS_SignedAttr_MIME_type(unsigned char* signedAttrs);

// Fills the messageDigest attribute and the signature of a signer block.
// The signature always uses the CryptoPro-A curve. 0 signed, 1 generator
// failure, 2 format error.
KORVEX_API unsigned int CMS_sig_SignedAttr(unsigned char* block, unsigned char* content,
                                           unsigned int contentLen, KORVEX_UN(32)* key);

// As CMS_sig_SignedAttr with the GOST R 34.11-94 digest of the content given.
KORVEX_API unsigned int CMS_sig_SignedAttr_hash(unsigned char* block, KORVEX_UN(32)* digest,
                                                KORVEX_UN(32)* key);

// Builds the ContentInfo: content (null for a detached signature), signer
// block, the signer's certificate (embedded when includeCert is non-zero).
// Returns the message size (also with null out), 0 on error, and 0 when the
// size would not fit in 32 bits.
KORVEX_API unsigned int CMS_SignedData_create(unsigned char* content, unsigned int contentLen,
                                              unsigned char* block, unsigned int blockLen,
                                              unsigned char* cert, unsigned char includeCert,
                                              unsigned char* out);

// Locates the parts of a SignedData ContentInfo.
KORVEX_API cms_signed_data_t CMS_SignedData_parse(unsigned char* msg);

// Verifies a signer's signature with the certificate's key: 5 valid,
// 6 invalid, 3 no usable key in cert, 4 no data. With signed attributes the
// messageDigest value is not compared with the content; callers check it
// through CMS_SignedAttr_find_msg_digest_value_field.
KORVEX_API unsigned int CMS_SignedData_check(unsigned char* signedAttrs, unsigned char* reserved,
                                             unsigned char* content, unsigned int contentLen,
                                             unsigned char* cert, KORVEX_UN(64)* signature);

// As CMS_SignedData_check with the content digest (32 octets) given.
KORVEX_API unsigned int CMS_SignedData_check_hash(unsigned char* signedAttrs, unsigned char* reserved,
                                                  unsigned char* digest, unsigned int digestLen,
                                                  unsigned char* cert, KORVEX_UN(64)* signature);

// CMS AuthenticatedData around the PKCS#15 content (SEQUENCE { OID, [0] {
// OCTET STRING } }, len octets already lying at out, moved up in place): one
// KEK recipient carrying the random MAC key, HMAC over the authenticated
// attributes, digest of the content. GOST R 34.11-94 / CryptoPro-A, or
// GOST R 34.11-2012 512-bit / param-Z for _2012. Returns the size (also with
// null out); 0 on a malformed content or generator failure, and 0 when the
// size would not fit in 32 bits.
KORVEX_API unsigned int CMS_AuthenticatedData_pkcs15_create(unsigned char* content, unsigned int len,
                                                            KORVEX_UN(32)* kek, unsigned int reserved,
                                                            unsigned char* out);
KORVEX_API unsigned int CMS_AuthenticatedData_pkcs15_create_2012(unsigned char* content, unsigned int len,
                                                                 KORVEX_UN(32)* kek, unsigned int reserved,
                                                                 unsigned char* out);

#endif
