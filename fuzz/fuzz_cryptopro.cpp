// CryptoPro containers: the certificate finder on a framed header file, then
// the readers on primary and masks files with the certificate found. First
// octet: bit 0 two keys (primary of 70 octets, else 36), bit 1 the parameter
// set Z readers, bit 4 a password (its length in the second octet's low four
// bits, so the refusal of long passwords is reached too; without it the
// empty password keeps the derivation short). Then the password, the primary
// file, the 56-octet masks file (both with their outer length made to agree),
// and the header file, framed likewise. A container that opens is renewed in
// place and must give the same key again.
#include "CryptoPro.h"
#include "framing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n < 2 || n > 8192) return 0;
    unsigned sel = d[0], pl = sel & 0x10 ? d[1] & 15 : 0;
    size_t np = sel & 1 ? 70 : 36, nm = 56;
    if (n < 2 + pl + np + nm) return 0;
    const uint8_t* q = d + 2;
    FuzzBuf pw(q, pl);
    FuzzBuf primary(q + pl, np), masks(q + pl + np, nm);
    primary.b[1] = (unsigned char)(np - 2);
    masks.b[1] = (unsigned char)(nm - 2);
    std::vector<unsigned char> hb(q + pl + np + nm, d + n);
    if (!frame_der(hb)) return 0;
    FuzzBuf header(hb.data(), hb.size());
    unsigned char* cert = CryptoPro_conteiner_get_certificate(header.p());
    header.inside(cert, 1);
    unsigned char mask_block[40];
    KORVEX_UN(32) key, k1{}, k2;
    if (cert) {
        size_t e = der_extent(cert, size_t(header.p() + header.n() - cert));
        if (!e) return 0;
        FuzzBuf c(cert, e);
        unsigned char r = sel & 2 ? CryptoPro_conteiner_get_2012(primary.p(), masks.p(), c.p(), mask_block, &key,
                                                                 pw.p(), (unsigned char)pl)
                                  : CryptoPro_conteiner_get(primary.p(), masks.p(), c.p(), mask_block, &key,
                                                            pw.p(), (unsigned char)pl);
        if (r > 10 || r == 1 || r == 9) abort();
        if (pl > CRYPTOPRO_MAX_PASSWORD_LEN && r != CRYPTOPRO_ERR_PASSWORD_TOO_LONG) abort();
        if (r == 0 && !(sel & 2)) {
            // Renewal keeps key and password: the renewed files give the same key.
            fuzz_seed_generator();
            if (CryptoPro_conteiner_update(primary.p(), masks.p(), pw.p(), (unsigned char)pl) != 0) abort();
            KORVEX_UN(32) again;
            if (CryptoPro_conteiner_get(primary.p(), masks.p(), c.p(), mask_block, &again, pw.p(),
                                        (unsigned char)pl) != 0 ||
                std::memcmp(again.b, key.b, 32))
                abort();
        }
    }
    unsigned char r = CryptoPro_conteiner_get_no_pass_chek(primary.p(), masks.p(), mask_block, &k1, &k2, pw.p(),
                                                          (unsigned char)pl);
    if (r > 10 || r == 1 || r == 7 || r == 8 || r == 9) abort();
    return 0;
}
