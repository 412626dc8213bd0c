// Hostile PKCS#12 containers under AddressSanitizer: every octet of a
// 372-byte container (in an exactly sized heap buffer) replaced in turn. The
// functions must stay inside the container, answer 0, 2, 3, 4 or 5, and open
// must write nothing unless it succeeds.
#include <gtest/gtest.h>

#include <memory>

#include "common/buffers.h"
#include "pkcs12.h"

namespace {

using namespace kt;

const kt::Record kRef = kt::load_records("pkcs12/pkcs12.txt").at(0);
Bytes ref(const char* field) { return kt::from_hex(kRef.at(field)); }
Bytes pw = ref("password"), box = ref("container");
const unsigned char n = static_cast<unsigned char>(pw.size());

bool in(unsigned char r, std::initializer_list<unsigned char> codes) {
    return std::find(codes.begin(), codes.end(), r) != codes.end();
}

TEST(Pkcs12Hostile, EveryOctetReplaced) {
    for (unsigned off = 0; off < box.size(); ++off) {
        for (unsigned char v : {0x00, 0x01, 0x7F, 0x80, 0x81, 0xFF}) {
            Bytes b = box;
            b[off] = v;
            Exact buf(b);
            unsigned char* p = buf.get();
            unsigned char r = pkcs12_check_header(&p);
            EXPECT_TRUE(in(r, {0, 5})) << off;
            EXPECT_EQ(r == 0 ? buf.get() + 60 : buf.get(), p) << off;
            EXPECT_TRUE(in(pkcs12_check_algorithm(buf.get() + 60), {0, 4, 5})) << off;
            unsigned char salt[4];
            unsigned short it = 0;
            pkcs12_get_pbkdf2_par(salt, &it, buf.get());

            // The container functions, for the octets the MAC does not cover
            // (a sample inside it: every change there is a MAC mismatch).
            // Octets 370-371 hold the MAC iteration count: covered below.
            bool in_mac = off >= 23 && off < 305;
            if (off >= 370 || (in_mac && off % 11) || !in(v, {0x00, 0x80, 0xFF}) || box[off] == v) continue;
            Bytes key(32, 0xA5), aux(40, 0x5A), q = {'q'};
            r = pkcs12_open_conteiner(reinterpret_cast<type_uN<32>*>(key.data()), aux.data(), pw.data(), n,
                                      buf.get());
            EXPECT_TRUE(in(r, {0, 2, 3, 5})) << off;
            EXPECT_EQ(r ? Bytes(32, 0xA5) : ref("key"), key) << off;
            EXPECT_EQ(r ? Bytes(40, 0x5A) : ref("aux"), aux) << off;
            EXPECT_TRUE(std::equal(b.begin(), b.end(), buf.get())) << off;  // open changes nothing
            EXPECT_TRUE(in(pkcs12_conteiner_check_MAC(pw.data(), n, buf.get()), {0, 2, 5})) << off;
            if (in_mac) continue;
            EXPECT_TRUE(in(pkcs12_close_conteiner(aux.data(), pw.data(), n, buf.get()), {0, 2, 5})) << off;
            buf = Exact(b);
            EXPECT_TRUE(in(pkcs12_conteiner_change_pass(pw.data(), n, q.data(), 1, buf.get()), {0, 2, 5})) << off;
        }
    }
}

TEST(Pkcs12Hostile, BaseRunsRunningOffTheEnd) {
    for (unsigned char last : {0x80, 0xFF}) {
        Bytes b = box;
        b[371] = last;  // the MAC count's base-128 run no longer ends inside the container
        Exact buf(b);
        Bytes key(32, 0xA5);
        EXPECT_EQ(5, pkcs12_open_conteiner(reinterpret_cast<type_uN<32>*>(key.data()), nullptr, pw.data(), n,
                                           buf.get()));
        EXPECT_EQ(Bytes(32, 0xA5), key);
        unsigned short it = 7;
        unsigned char salt[4];
        pkcs12_get_pbkdf2_par(salt, &it, buf.get());
        EXPECT_EQ(1024, it);  // the PBKDF2-params count is intact
    }
    Bytes b = box;
    b[98] = b[99] = 0x88;  // PBKDF2-params count now runs on into the prf element
    Exact buf(b);
    unsigned short it = 0;
    unsigned char salt[4];
    pkcs12_get_pbkdf2_par(salt, &it, buf.get());
    Exact run(Bytes(255, 0xFF));
    unsigned char* p = run.get();
    pkcs12_ber_decode(&p);
    EXPECT_EQ(run.get() + 255, p);
}

}  // namespace
