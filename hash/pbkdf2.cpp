// PBKDF2 (RFC 2898 5.2) as the key containers use it: one 32-byte block
// (index 1), a 4-byte salt, and a 16-bit iteration count counted down, so
// that 0 wraps to 65536 iterations.
#include "pkcs5.h"

#include "hash/hmac.h"

namespace {

template <class H>
void pbkdf2(const unsigned char* password, unsigned password_len, const unsigned char* salt, unsigned short iterations,
            unsigned char* out) {
    kx::hmac::Keyed<H> prf;
    kx::hmac::set_key(prf, password, password_len);
    unsigned char u[H::Out];
    unsigned char first[8] = {salt[0], salt[1], salt[2], salt[3], 0, 0, 0, 1};
    kx::hmac::mac(prf, first, 8, u);
    unsigned char t[32];
    kx::copy(t, u, 32);
    for (unsigned short left = static_cast<unsigned short>(iterations - 1); left; --left) {
        kx::hmac::mac(prf, u, H::Out, u);
        kx::xor_into(t, u, 32);
    }
    kx::copy(out, t, 32);
    kx::wipe(&prf, sizeof prf);
    kx::wipe(u, sizeof u);
    kx::wipe(t, sizeof t);
}

}  // namespace

KORVEX_API void pkcs5_PBKDF2(unsigned char* password, unsigned char password_len, unsigned char* salt,
                             unsigned short iterations, type_uN<32>* out) {
    pbkdf2<kx::hmac::Gost94>(password, password_len, salt, iterations, out->b);
}

KORVEX_API void pkcs5_PBKDF2_2012(unsigned char* password, unsigned char password_len, unsigned char* salt,
                                  unsigned short iterations, type_uN<32>* out) {
    pbkdf2<kx::hmac::Gost2012_512>(password, password_len, salt, iterations, out->b);
}
