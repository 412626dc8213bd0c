// A program that uses libKorvex through its installed headers and package.
#include <korvex.h>

#include <cstdio>
#include <cstring>

int main() {
    unsigned char msg[] = {'a', 'b', 'c'};
    type_uN<32> h;
    GOST_34_11_2012_hash_256_bit(msg, sizeof msg, &h);
    // Streebog-256("abc"), as gost12sum prints it.
    static const unsigned char want[32] = {0x4e, 0x29, 0x19, 0xcf, 0x13, 0x7e, 0xd4, 0x1e, 0xc4, 0xfb, 0x62,
                                           0x70, 0xc6, 0x18, 0x26, 0xcc, 0x4f, 0xff, 0xb6, 0x60, 0x34, 0x1e,
                                           0x0a, 0xf3, 0x68, 0x8c, 0xd0, 0x62, 0x6d, 0x23, 0xb4, 0x81};
    if (std::memcmp(h.b, want, 32) != 0) {
        std::puts("consumer: wrong digest");
        return 1;
    }
    std::puts("consumer: ok");
    return 0;
}
