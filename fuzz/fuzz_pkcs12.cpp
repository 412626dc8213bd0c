// The library's 372-octet PKCS#12 container: open, close (new auxiliary
// block) and change-password on exact copies, after the header and
// algorithm checks. First octet: bits 0-3 the
// password length (the password follows), bit 4 the author's mode: the
// fuzzed container gets small PBKDF2 counts, its SafeContents (octets
// 153..304, taken as plaintext) enciphered and the MAC over octets 23..304
// recomputed from the MacData salt with the public PBKDF2 and HMAC, as the
// container's author would, so the fuzzer reaches the code behind the MAC
// check (the MAC length octet at 329 is left as fuzzed: it lies outside the
// MAC'd range). A container that opens must open again after close and
// under the new password after a change.
#include "GOST_28147_89.h"
#include "GOST_34_11_94.h"
#include "framing.h"
#include "pkcs12.h"
#include "pkcs5.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n < 1) return 0;
    unsigned sel = d[0], pl = sel & 15;
    if (n < 1 + pl + PKCS12_CONTEINER_SIZE) return 0;
    FuzzBuf pw(d + 1, pl);
    unsigned char pwl = (unsigned char)pl;
    FuzzBuf c(d + 1 + pl, PKCS12_CONTEINER_SIZE);
    unsigned char* p = c.p();
    if (sel & 0x10) {
        // PBKDF2 counts 1..8 in the standard places (02 02 k 00), MacData
        // salt 04 04 at 362, MAC value 04 at 328.
        p[96] = 0x02, p[97] = 0x02, p[98] = 1 + (p[98] & 7);
        p[368] = 0x02, p[369] = 0x02, p[370] = 1 + (p[370] & 7);
        p[362] = 0x04, p[363] = 0x04, p[328] = 0x04;
        // The fuzzed SafeContents is the author's plaintext: enciphered in
        // counter mode (CryptoPro-A S-box, IV at 133) under the key of the
        // PBKDF2-params salt at 92.
        p[90] = 0x04, p[91] = 0x04, p[131] = 0x04, p[132] = 0x08;
        p[150] = 0x04, p[151] = 0x81, p[152] = 0x18;
        KORVEX_UN(32) key;
        type_u64 iv;
        std::memcpy(&iv, p + 133, 8);
        pkcs5_PBKDF2(pw.p(), pwl, p + 92, p[98], &key);
        GOST_28147_89_ZR_CTR(p + 153, 152, &key, &iv, 2);
        pkcs5_PBKDF2(pw.p(), pwl, p + 364, p[370], &key);
        GOST_34_11_94_HMAC(p + 23, 282, key.b, 32, reinterpret_cast<KORVEX_UN(32)*>(p + 330));
        if (pkcs12_conteiner_check_MAC(pw.p(), pwl, p) != 0) abort();
    }
    unsigned char* q = p;
    unsigned char h = pkcs12_check_header(&q);
    c.inside(q, 1);
    if (h != 0 && h != 5) abort();
    if (h == 0 && pkcs12_check_algorithm(q) > 5) abort();
    unsigned char salt[4];
    unsigned short it = 0;
    pkcs12_get_pbkdf2_par(salt, &it, p);
    // Counts up to the library's 1024 (88 00) only: keeps the fuzzer fast.
    for (unsigned at : {98u, 370u})
        if (!(sel & 0x10) && (p[at] > 0x88 || (p[at] == 0x88 && p[at + 1] != 0))) return 0;
    KORVEX_UN(32) key;
    unsigned char aux[40];
    unsigned char r = pkcs12_open_conteiner(&key, aux, pw.p(), pwl, p);
    if (r != 0 && r != 2 && r != 3 && r != 5) abort();
    if (r != 0) return 0;
    unsigned char aux2[40];
    for (int i = 0; i < 40; ++i) aux2[i] = (unsigned char)(aux[i] ^ 0x5A);
    r = pkcs12_close_conteiner(aux2, pw.p(), pwl, p);
    if (r != 0 && r != 5) abort();
    if (r == 0 && (pkcs12_open_conteiner(nullptr, aux, pw.p(), pwl, p) != 0 || std::memcmp(aux, aux2, 40))) abort();
    unsigned char npw[3] = {'n', 'e', 'w'};
    r = pkcs12_conteiner_change_pass(pw.p(), pwl, npw, 3, p);
    if (r != 0 && r != 2 && r != 5) abort();
    if (r == 0 && pkcs12_open_conteiner(nullptr, nullptr, npw, 3, p) != 0) abort();
    return 0;
}
