// Hostile PKCS#12 containers under AddressSanitizer: every octet of a
// 372-byte container (in an exactly sized heap buffer) replaced in turn. The
// functions must stay inside the container, answer 0, 2, 3, 4 or 5, and open
// must write nothing unless it succeeds.
#include <gtest/gtest.h>

#include <memory>

#include "common/test_util.h"
#include "pkcs12.h"

namespace {

using kt::Bytes;

struct Case {
    Bytes key, aux, password, container;
};

Case reference() {
    auto r = kt::load_records("pkcs12/pkcs12.txt").at(0);
    return {kt::from_hex(r.at("key")), kt::from_hex(r.at("aux")), kt::from_hex(r.at("password")),
            kt::from_hex(r.at("container"))};
}

// A heap copy with nothing after it, so that any over-read is caught.
std::unique_ptr<unsigned char[]> exact(const Bytes& b) {
    std::unique_ptr<unsigned char[]> p(new unsigned char[b.size()]);
    std::copy(b.begin(), b.end(), p.get());
    return p;
}

const unsigned char kValues[] = {0x00, 0x01, 0x7F, 0x80, 0x81, 0xFF};

TEST(Pkcs12Hostile, StructureChecksOnEveryOctet) {
    Case c = reference();
    for (unsigned off = 0; off < c.container.size(); ++off) {
        for (unsigned char v : kValues) {
            Bytes b = c.container;
            b[off] = v;
            auto buf = exact(b);
            unsigned char* p = buf.get();
            unsigned char r = pkcs12_check_header(&p);
            EXPECT_TRUE(r == 0 || r == 5) << off;
            EXPECT_EQ(r == 0 ? buf.get() + 60 : buf.get(), p) << off;
            r = pkcs12_check_algorithm(buf.get() + 60);
            EXPECT_TRUE(r == 0 || r == 4 || r == 5) << off;
            unsigned char salt[4];
            unsigned short it = 0;
            pkcs12_get_pbkdf2_par(salt, &it, buf.get());
        }
    }
}

TEST(Pkcs12Hostile, ContainerFunctionsOnEveryOctet) {
    Case c = reference();
    unsigned char* pw = c.password.data();
    unsigned char n = static_cast<unsigned char>(c.password.size());
    for (unsigned off = 0; off < c.container.size(); ++off) {
        // Octets 370-371 hold the MAC iteration count: covered below.
        if (off == 370 || off == 371) continue;
        // Inside the MAC'd region every change is a MAC mismatch: a sample will do.
        bool in_mac = off >= 23 && off < 305;
        if (in_mac && off % 11) continue;
        for (unsigned char v : {0x00, 0x80, 0xFF}) {
            Bytes b = c.container;
            if (b[off] == v) continue;
            b[off] = v;
            auto buf = exact(b);
            Bytes key(32, 0xA5), aux(40, 0x5A);
            unsigned char r =
                pkcs12_open_conteiner(reinterpret_cast<type_uN<32>*>(key.data()), aux.data(), pw, n, buf.get());
            EXPECT_TRUE(r == 0 || r == 2 || r == 3 || r == 5) << off;
            if (r == 0) {
                EXPECT_EQ(c.key, key) << off;
                EXPECT_EQ(c.aux, aux) << off;
            } else {
                EXPECT_EQ(Bytes(32, 0xA5), key) << off;
                EXPECT_EQ(Bytes(40, 0x5A), aux) << off;
            }
            EXPECT_TRUE(std::equal(b.begin(), b.end(), buf.get())) << off;  // open changes nothing
            r = pkcs12_conteiner_check_MAC(pw, n, buf.get());
            EXPECT_TRUE(r == 0 || r == 2 || r == 5) << off;
            if (in_mac) continue;
            Bytes q = {'q'};
            r = pkcs12_close_conteiner(aux.data(), pw, n, buf.get());
            EXPECT_TRUE(r == 0 || r == 2 || r == 5) << off;
            auto buf2 = exact(b);
            r = pkcs12_conteiner_change_pass(pw, n, q.data(), 1, buf2.get());
            EXPECT_TRUE(r == 0 || r == 2 || r == 5) << off;
        }
    }
}

TEST(Pkcs12Hostile, MacIterationCountRunningOffTheEnd) {
    Case c = reference();
    for (unsigned char last : {0x80, 0xFF}) {
        Bytes b = c.container;
        b[371] = last;  // the count's base-128 run no longer ends inside the container
        auto buf = exact(b);
        Bytes key(32, 0xA5);
        EXPECT_EQ(5, pkcs12_open_conteiner(reinterpret_cast<type_uN<32>*>(key.data()), nullptr, c.password.data(),
                                           static_cast<unsigned char>(c.password.size()), buf.get()));
        EXPECT_EQ(Bytes(32, 0xA5), key);
        unsigned short it = 7;
        unsigned char salt[4];
        pkcs12_get_pbkdf2_par(salt, &it, buf.get());
        EXPECT_EQ(1024, it);  // the PBKDF2-params count is intact
    }
    Bytes b = c.container;
    b[98] = 0x88;
    b[99] = 0x88;  // PBKDF2-params count now runs on into the prf element
    auto buf = exact(b);
    unsigned short it = 0;
    unsigned char salt[4];
    pkcs12_get_pbkdf2_par(salt, &it, buf.get());
}

TEST(Pkcs12Hostile, DecodeOfTheLongestRun) {
    Bytes run(255, 0xFF);
    auto buf = exact(run);
    unsigned char* p = buf.get();
    pkcs12_ber_decode(&p);
    EXPECT_EQ(buf.get() + 255, p);
}

}  // namespace
