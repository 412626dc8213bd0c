/* A program that uses libKorvex through its installed headers and package.
   It is C and also compiles as C++ (main.cpp), so that both forms of the
   headers are checked. */
#include <korvex.h>

#include <stdio.h>
#include <string.h>

int main(void) {
    unsigned char msg[] = {'a', 'b', 'c'};
    KORVEX_UN(32) h;
    /* Streebog-256("abc"), as gost12sum prints it. */
    static const unsigned char want[32] = {0x4e, 0x29, 0x19, 0xcf, 0x13, 0x7e, 0xd4, 0x1e, 0xc4, 0xfb, 0x62,
                                           0x70, 0xc6, 0x18, 0x26, 0xcc, 0x4f, 0xff, 0xb6, 0x60, 0x34, 0x1e,
                                           0x0a, 0xf3, 0x68, 0x8c, 0xd0, 0x62, 0x6d, 0x23, 0xb4, 0x81};
    GOST_34_11_2012_hash_256_bit(msg, sizeof msg, &h);
    if (memcmp(h.b, want, 32) != 0) {
        puts("consumer: wrong digest");
        return 1;
    }
    puts("consumer: ok");
    return 0;
}
