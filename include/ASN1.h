// DER primitives: element headers and lengths, the element descriptor, the
// library's own copy/move/compare routines, BIT STRING bit reversal and the
// encoding of dotted-decimal OBJECT IDENTIFIER text.
//
// An element is addressed by a pointer to its tag byte. Only single-byte tags
// and definite lengths (short form, long form with 1..4 length octets) are
// understood. Nothing here checks buffer bounds: callers pass well-formed
// elements inside buffers they have sized.
#ifndef KORVEX_ASN1_H
#define KORVEX_ASN1_H

#include "korvex_types.h"

// Descriptor of one DER element.
typedef struct asn1_t {
    unsigned char* block;   // tag byte, start of the whole element
    unsigned short length;  // content length, low 16 bits of the encoded one
    unsigned char* value;   // first content octet: block + header length
    unsigned char* end;     // value + length (set by ASN1_get_sruct only)
} asn1_t;

// Tag plus length octets: 2..6; 0 for the indefinite form (0x80) and for
// long forms with 5 or more length octets (0x85..0xFF). Reads p[1] only.
KORVEX_API unsigned int ASN1_header_legth(unsigned char* p);

// Content length, big-endian from the length octets; 0 when the header is
// rejected (indistinguishable from an empty element).
KORVEX_API unsigned int ASN1_get_block_length(unsigned char* p);

// Writes the shortest DER length octets for len at p[1] onward (p[0] is left
// as it is) and returns the header length 2..6.
KORVEX_API unsigned int ASN1_set_block_length(unsigned char* p, unsigned int len);

// Writes tag at p[0], then the length octets; returns the header length.
KORVEX_API unsigned int ASN1_set_header(unsigned char* p, unsigned char tag, unsigned int len);

// Header length ASN1_set_header would write for len, except that len 0 gives
// 0 (while ASN1_set_block_length writes two bytes for it). Never size an
// empty element with this.
KORVEX_API unsigned int ASN1_calculate_len_of_hdr(unsigned int len);

// Fills all four fields of s from the element at p; returns 0.
KORVEX_API int ASN1_get_sruct(asn1_t* s, unsigned char* p);

// Writes tag and length octets at out and sets block, length and value of s.
// src is not read and no content is copied; end is not set. Returns 1.
KORVEX_API int ASN1_set_sruct(asn1_t* s, unsigned char* src, unsigned short len,
                              unsigned char tag, unsigned char* out);

// Copy routines, source first. ASN1_mem_copy copies ascending (byte 0
// first), so it closes a gap inside one buffer correctly; ASN1_mem_move
// copies descending (byte n-1 first), so it opens one correctly.
KORVEX_API void ASN1_mem_copy(unsigned char* src, unsigned char* dst, unsigned int n);
KORVEX_API void ASN1_mem_move(unsigned char* src, unsigned char* dst, unsigned int n);

// 0 when the n bytes are equal, 1 otherwise. Time depends on n only.
KORVEX_API int ASN1_mem_compare(unsigned char* a, unsigned char* b, unsigned int n);

// Full bit reversal of b (bit 0 <-> bit 7 ...): converts between BIT STRING
// numbering and flag values with bit 0 least significant.
KORVEX_API unsigned char ASN1_rotate_rigth_BIT_STRING_byte(unsigned char b);

// Decimal digits to an unsigned 32-bit value (wrapping). The first character
// is taken as a digit unchecked; reading stops at the next non-digit.
KORVEX_API unsigned int ASN1_code_ASCII_number_to_HEX(unsigned char* text);

// v as an OID sub-identifier (base 128, high bit on all but the last byte);
// returns the byte count 1..5.
KORVEX_API unsigned int ASN1_code_base128(unsigned int v, unsigned char* out);

// DER content octets (no tag, no length) of a dotted-decimal OID; returns
// their count, or 0 for a single arc. The scan reads one byte past
// text + textLen for every '.' after the first, and the last arc is read up
// to the first non-digit: the text must be followed by a non-digit and by
// (dots - 1) bytes that are not '.'. A terminating NUL ends the scan, so a
// NUL-terminated text is always fine.
KORVEX_API unsigned int ASN1_code_ASCII_OID_to_DER(unsigned char* text, unsigned char textLen,
                                                   unsigned char* out);

#endif
