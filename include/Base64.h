// Base64 (RFC 4648 alphabet, '=' padding) of caller buffers: no line breaks,
// no whitespace handling, no error reporting.
#ifndef KORVEX_BASE64_H
#define KORVEX_BASE64_H

#include "korvex_types.h"

// The alphabet character for v & 63.
KORVEX_API unsigned char Base64_code(unsigned char v);

// Encodes the 3 bytes at in as 4 characters at out.
KORVEX_API void Base64_code_block(unsigned char* in, unsigned char* out);

// Encodes len bytes; writes and returns 4 * ceil(len / 3) characters (no NUL).
KORVEX_API unsigned int Base64_code_msg(unsigned char* in, unsigned int len, unsigned char* out);

// The digit value 0..63 of c; 0xFFFFFFFF for '=' and for any byte outside
// the alphabet.
KORVEX_API unsigned int Base64_decode(unsigned char c);

// Decodes the 4 characters at in into 3 bytes at out; invalid characters
// count as 0xFF in the bit arithmetic. Returns 0.
KORVEX_API unsigned int Base64_decode_block(unsigned char* in, unsigned char* out);

// Decodes len characters (a multiple of 4) and returns the number of bytes
// they stand for. Writes 3 bytes for every group, the last one included, so
// out needs 3 * max(1, len / 4) bytes. For len below 5 the group at in[0..3]
// is decoded whatever len is (at least 4 characters are read).
KORVEX_API unsigned int Base64_decode_msg(unsigned char* in, unsigned int len, unsigned char* out);

#endif
