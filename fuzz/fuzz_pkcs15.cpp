// PKCS#15 containers of both generations. The first octet selects: bits 0-3
// the password length (the password follows), bit 4 the 2001 readers with and
// without the password check, bit 5 the 2012 readers, bit 6 the in-place
// renewals (which check password and AuthenticatedData first). The rest is
// the container, its outer length made to agree with it. The getters run on
// the container and on an exact copy of every SET, SEQUENCE and [0] element
// in it, each pointer they return staying inside what they were given.
#include "framing.h"
#include "pkcs15.h"

namespace {

void getters(const unsigned char* c, size_t n) {
    for (size_t i = 0; i + 2 <= n; ++i) {
        unsigned char t = c[i];
        if (t != 0x30 && t != 0x31 && t != 0xA0) continue;
        size_t e = der_extent(c + i, n - i);
        if (!e) continue;
        FuzzBuf el(c + i, e);
        if (t == 0x31) {
            pkcs15_CEK_t k = pkcs15_get_pkcs15_CEK(el.p());
            for (unsigned char* q : k.ptr) el.inside(q, 1);
        } else if (t == 0x30) {
            pkcs15_data_t d = pkcs15_get_pkcs15_data(el.p());
            el.inside(d.iv, 1);
            el.inside(d.content, 1);
        } else {
            el.inside(pkcs15_get_pkcs15_KEK(el.p()).salt, 1);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n < 1 || n > 4096) return 0;
    unsigned sel = d[0], pl = sel & 15;
    if (n < 1 + pl) return 0;
    FuzzBuf pw(d + 1, pl);
    std::vector<unsigned char> b(d + 1 + pl, d + n);
    if (!frame_der(b)) return 0;
    FuzzBuf f(b.data(), b.size());
    f.inside(pkcs15_get_pkcs15content(f.p()), 1);
    unsigned v = pkcs15_get_version(f.p());
    if (v > 2) abort();
    getters(f.p(), f.n());
    unsigned char pwl = (unsigned char)pl;
    if (sel & 0x10) {
        KORVEX_UN(32) key;
        unsigned char rnd[40];
        unsigned r[] = {pkcs15_get_key(f.p(), &key, pw.p(), pwl), pkcs15_get_key(f.p(), nullptr, pw.p(), pwl),
                        pkcs15_get_key_no_pass_chek(f.p(), &key, pw.p(), pwl),
                        pkcs15_get_rnd(f.p(), rnd, pw.p(), pwl), pkcs15_get_rnd_no_pass_chek(f.p(), rnd, pw.p(), pwl)};
        for (unsigned x : r)
            if (x != 0 && x != 30 && x != 32) abort();
        if (r[2] == 32 || r[4] == 32) abort();
    }
    if (sel & 0x20) {
        TSecretKey key;
        unsigned char rnd[40];
        unsigned r1 = pkcs15_get_key_2012(f.p(), &key, pw.p(), pwl);
        unsigned r2 = pkcs15_get_rnd_2012(f.p(), rnd, pw.p(), pwl);
        if ((r1 != 0 && r1 != 30) || (r2 != 0 && r2 != 30)) abort();
    }
    if (sel & 0x40) {
        fuzz_seed_generator();
        unsigned r = v == 2 ? pkcs15_update_2012(f.p(), pw.p(), pwl) : pkcs15_update(f.p(), pw.p(), pwl);
        if (r > 33 || (r != 0 && r < 30)) abort();
        // A renewed container still reads under the same password.
        if (r == 0 && v == 1 && pkcs15_get_key(f.p(), nullptr, pw.p(), pwl) != 0) abort();
    }
    return 0;
}
