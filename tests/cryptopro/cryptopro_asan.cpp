// Hostile CryptoPro files under AddressSanitizer, each in an exactly sized
// heap buffer: truncated and corrupted primary-key and masks files, and
// header files whose inner lengths run past their parents.
#include <gtest/gtest.h>

#include <memory>

#include "CryptoPro.h"
#include "cryptopro_fixture.h"

namespace {

using cpt::Bytes;
using cpt::Container;

std::unique_ptr<unsigned char[]> exact(const Bytes& b) {
    std::unique_ptr<unsigned char[]> p(new unsigned char[b.size()]);
    std::copy(b.begin(), b.end(), p.get());
    return p;
}

unsigned char get(const Bytes& primary, const Bytes& masks, const Bytes& password) {
    auto pr = exact(primary), ma = exact(masks), cert = exact(cpt::certificate("cert_d1_A")), pw = exact(password);
    Bytes mb(40), key(32);
    return CryptoPro_conteiner_get(pr.get(), ma.get(), cert.get(), mb.data(),
                                   reinterpret_cast<type_uN<32>*>(key.data()), pw.get(),
                                   static_cast<unsigned char>(password.size()));
}

// A file cut to n octets whose SEQUENCE length says so.
Bytes truncated(const Bytes& file, size_t n) {
    Bytes b(file.begin(), file.begin() + n);
    b[1] = static_cast<unsigned char>(n - 2);
    return b;
}

// Every reader and the update, on files cut short with a consistent length.
TEST(CryptoProHostile, TruncatedFilesAreRejectedBeforeFixedOffsets) {
    Container c = cpt::container("two_keys_match_first");
    auto all = [&](const Bytes& primary, const Bytes& masks, unsigned char code, size_t n) {
        EXPECT_EQ(code, get(primary, masks, c.password)) << n;
        auto pr = exact(primary), ma = exact(masks), pw = exact(c.password);
        unsigned char len = static_cast<unsigned char>(c.password.size());
        Bytes mb(40);
        EXPECT_EQ(code, CryptoPro_conteiner_get_no_pass_chek(pr.get(), ma.get(), mb.data(), nullptr, nullptr,
                                                            pw.get(), len)) << n;
        EXPECT_EQ(code, CryptoPro_conteiner_update(pr.get(), ma.get(), pw.get(), len)) << n;
    };
    for (size_t n = 2; n < c.primary.size(); ++n) {
        if (n == 36) continue;  // a well-formed one-key file
        all(truncated(c.primary, n), c.masks, 4, n);
    }
    for (size_t n = 2; n < c.masks.size(); ++n) all(c.primary, truncated(c.masks, n), 5, n);
    // Long-form lengths with the same count are read at the same offsets.
    all(kt::from_hex("308100"), c.masks, 4, 0);
    all(kt::from_hex("3080"), c.masks, 4, 0);
    all(c.primary, kt::from_hex("3080"), 5, 0);
    all(kt::from_hex("04"), c.masks, 2, 0);
    all(c.primary, kt::from_hex("04"), 3, 0);
}

TEST(CryptoProHostile, CorruptedOctets) {
    Container c = cpt::container("two_keys_match_first");
    for (size_t off = 0; off < c.masks.size(); ++off) {
        for (unsigned char v : {0x00, 0x80, 0xFF}) {
            Bytes m = c.masks;
            if (m[off] == v) continue;
            m[off] = v;
            unsigned char r = get(c.primary, m, c.password);
            // Inner tags and lengths are at fixed offsets and not read.
            bool inner = off == 2 || off == 3 || off == 36 || off == 37 || off == 50 || off == 51;
            EXPECT_TRUE(inner ? r == 0 : r >= 3 && r <= 6) << off << " " << int(r);
        }
    }
    // The header octets of the primary file, and a sample of key octets
    // (each of those costs a full key derivation).
    for (size_t off : {0, 1, 2, 3, 4, 20, 35, 36, 37, 38, 69}) {
        for (unsigned char v : {0x00, 0xFF}) {
            Bytes p = c.primary;
            p[off] = v;
            unsigned char r = get(p, c.masks, c.password);
            EXPECT_TRUE(r == 0 || r == 2 || r == 4 || r == 8) << off;
        }
    }
}

unsigned char* find(const Bytes& header, std::unique_ptr<unsigned char[]>& buf) {
    buf = exact(header);
    return CryptoPro_conteiner_get_certificate(buf.get());
}

TEST(CryptoProHostile, HeaderWithEveryOctetCorrupted) {
    Bytes cert = cpt::certificate("cert_d1_A");
    Bytes header = cpt::tlv(0x30, cpt::tlv(0x30, cpt::cat({cpt::tlv(0x02, {0}), cpt::tlv(0x04, Bytes(130, 7)),
                                                            cpt::tlv(0x85, cert)})));
    for (size_t off = 4; off < header.size(); ++off) {  // the outer header stays consistent with the buffer
        for (unsigned char v : {0x00, 0x02, 0x30, 0x7F, 0x80, 0x81, 0x82, 0x84, 0x85, 0xFF}) {
            Bytes h = header;
            h[off] = v;
            std::unique_ptr<unsigned char[]> buf;
            unsigned char* p = find(h, buf);
            if (p) {
                EXPECT_GE(p, buf.get() + 6) << off;
                EXPECT_LE(p, buf.get() + h.size()) << off;
            }
        }
    }
}

TEST(CryptoProHostile, RandomHeaders) {
    kt::Rng rng(2024);
    const unsigned char pool[] = {0x30, 0x85, 0x81, 0x82, 0x83, 0x84, 0x80, 0x02, 0x04, 0x00, 0x01, 0x05, 0x7F};
    for (int i = 0; i < 20000; ++i) {
        size_t n = 1 + rng.below(60);
        Bytes body(n);
        for (auto& b : body) b = rng.below(3) ? pool[rng.below(sizeof pool)] : static_cast<unsigned char>(rng.next());
        Bytes header = cpt::tlv(0x30, body);
        std::unique_ptr<unsigned char[]> buf;
        unsigned char* p = find(header, buf);
        if (p) EXPECT_LE(p, buf.get() + header.size());
    }
}

}  // namespace
