// Constant-time check of GOST R 34.10 keys, signatures and VKO, and of the
// CryptoPro containers' mask arithmetic, under valgrind
// memcheck: private keys, the generator state and UKMs are marked undefined,
// so any branch or memory address that depends on them is reported. Only the
// library's loop tests on drawn values (d = 0, r = 0, s = 0) declare
// themselves public. With --leak the program also makes one secret-indexed
// load, which must be reported.
#include <valgrind/memcheck.h>

#include <cstring>
#include <initializer_list>

#include "CryptoPro.h"
#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "PRNG.h"

namespace {

template <class T>
void secret(T& v) { VALGRIND_MAKE_MEM_UNDEFINED(&v, sizeof v); }
template <class T>
void declassify(T& v) { VALGRIND_MAKE_MEM_DEFINED(&v, sizeof v); }

volatile unsigned char g_sink;
const unsigned char kLeakTable[16] = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8, 9, 7, 9, 3};

// A CryptoPro container (tests/vectors/cryptopro/cryptopro.txt, one_key).
unsigned char hex(char c) { return static_cast<unsigned char>(c <= '9' ? c - '0' : c - 'a' + 10); }
template <unsigned L>
void unhex(unsigned char (&out)[L], const char* s) {
    for (unsigned i = 0; i < L; ++i) out[i] = static_cast<unsigned char>(hex(s[2 * i]) << 4 | hex(s[2 * i + 1]));
}

// The container's mask arithmetic: the enciphered key, the mask and the
// password secret (the structure, salt and MAC are public).
int cryptopro() {
    unsigned char primary[36], masks[56], password[8] = {'1', '2', '3', '4', '5', '6', '7', '8'}, block[40];
    unhex(primary, "302204200b03517c60ab8b6d26229a2c08233b6b6bef8f8239e1a15245d0cfc26bd49999");
    unhex(masks, "303604209e7d5c3b1a0f8d6e4c2a1b7f5d3e9c6a28f4b0d1c7a5936e14082f7b9e3c5a1d040ca1b2c3d4e5f607"
                 "18293a4b5c0404f9d6d4a1");
    VALGRIND_MAKE_MEM_UNDEFINED(primary + 4, 32);
    VALGRIND_MAKE_MEM_UNDEFINED(masks + 4, 32);
    VALGRIND_MAKE_MEM_UNDEFINED(password, sizeof password);
    int bad = CryptoPro_conteiner_get_no_pass_chek(primary, masks, block, nullptr, nullptr, password, 8);
    bad |= CryptoPro_conteiner_update(primary, masks, password, 8);
    return bad;
}

template <class T>
void fill(T& v, unsigned salt) {
    for (unsigned i = 0; i < sizeof v.b; ++i) v.b[i] = static_cast<unsigned char>(i * 29 + salt);
}

}  // namespace

int main(int argc, char** argv) {
    const bool leak = argc > 1 && std::strcmp(argv[1], "--leak") == 0;
    unsigned char seed[40];
    for (unsigned i = 0; i < 40; ++i) seed[i] = static_cast<unsigned char>(i * 13 + 1);
    if (PRNG_init(seed) != 0) return 2;
    VALGRIND_MAKE_MEM_UNDEFINED(PRNG_get_RAND_ptr(), 40);
    int bad = 0;
    for (unsigned char set : {1, 2, 3, 0}) {
        type_uN<32> d, h, out;
        type_uN<64> Q, peer, sig;
        unsigned long long ukm = 0x0123456789ABCDEFull + set;
        fill(h, set);
        bad |= GOST_34_10_2001_gen_key_pair(&d, &Q, set);
        GOST_34_10_2001_gen_open_key(&d, &peer, set);  // a public key for the VKO
        declassify(peer);
        declassify(Q);
        fill(d, set + 7);
        secret(d);
        secret(ukm);
        GOST_34_10_2001_gen_open_key(&d, &Q, set);
        bad |= GOST_34_10_2001_create_DS(&h, &d, &sig, set);
        GOST_34_10_2001_VKO(&out, &ukm, &d, &peer, set);
        GOST_34_10_2012_VKO_256(&out, &ukm, &d, &peer, set);
        if (leak) g_sink = kLeakTable[d.b[0] & 15];
        declassify(sig);
        declassify(Q);
        bad |= GOST_34_10_2001_check_DS(&h, &Q, &sig, set) != 1;
    }
    for (unsigned char set : {1, 2}) {
        type_uN<64> d, h, out, ukm;
        type_uN<128> Q, peer, sig;
        fill(h, set);
        fill(ukm, set + 3);
        bad |= GOST_34_10_2012_512_gen_key_pair(&d, &Q, set);
        GOST_34_10_2012_512_gen_open_key(&d, &peer, set);
        declassify(peer);
        fill(d, set + 9);
        secret(d);
        secret(ukm);
        GOST_34_10_2012_512_gen_open_key(&d, &Q, set);
        bad |= GOST_34_10_2012_create_DS_512_bit(&h, &d, &sig, set);
        GOST_34_10_2012_VKO_512(&out, &ukm, &d, &peer, set);
        declassify(sig);
        declassify(Q);
        bad |= GOST_34_10_2012_check_DS_512_bit(&h, &Q, &sig, set) != 1;
    }
    bad |= cryptopro();
    declassify(bad);
    return bad ? 3 : 0;
}
