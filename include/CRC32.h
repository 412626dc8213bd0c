// CRC-32 of ISO-HDLC / IEEE 802.3 (reflected polynomial 0xEDB88320, initial
// register 0xFFFFFFFF, final complement), as used by zlib and gzip.
#ifndef KORVEX_CRC32_H
#define KORVEX_CRC32_H

#include "korvex_types.h"

// The CRC-32 of data, computed bit by bit.
KORVEX_API unsigned int CRC32_block(unsigned char* data, unsigned int len);

// The same value, computed with the byte-wise table.
KORVEX_API unsigned int CRC32_block_lookup(unsigned char* data, unsigned int len);

// Runs the raw register *reg over data: no initial value, no complement. Set
// *reg = 0xFFFFFFFF before the first piece and complement it after the last
// to get the CRC-32 of the whole stream. The result value carries no meaning;
// use *reg.
KORVEX_API unsigned int CRC32_stream(unsigned int* reg, unsigned char* data, unsigned int len);

#endif
