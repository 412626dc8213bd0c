// BIT STRING octets number their bits from the most significant one (X.690
// 8.6.2); flag words number them from the least significant one.
#include "ASN1.h"

KORVEX_API unsigned char ASN1_rotate_rigth_BIT_STRING_byte(unsigned char b) {
    unsigned int v = b;
    v = ((v & 0xF0u) >> 4) | ((v & 0x0Fu) << 4);
    v = ((v & 0xCCu) >> 2) | ((v & 0x33u) << 2);
    v = ((v & 0xAAu) >> 1) | ((v & 0x55u) << 1);
    return static_cast<unsigned char>(v);
}
