// Hostile CryptoPro files under AddressSanitizer, each in an exactly sized
// heap buffer: truncated and corrupted primary-key and masks files, and
// header files whose inner lengths run past their parents.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "cryptopro_fixture.h"

namespace {

using namespace cpt;

const Container kRef = container("two_keys_match_first");

unsigned char get(const Bytes& primary, const Bytes& masks, const Bytes& certificate_der = certificate("cert_d1_A")) {
    Exact pr(primary), ma(masks), cert(certificate_der), pw(kRef.password);
    Bytes mb(40), key(32);
    return CryptoPro_conteiner_get(pr.get(), ma.get(), cert.get(), mb.data(), k32(&key), pw.get(),
                                   len(kRef.password));
}

// Every reader and the update, on files cut short with a consistent length.
void all(const Bytes& primary, const Bytes& masks, unsigned char code, size_t n) {
    EXPECT_EQ(code, get(primary, masks)) << n;
    Exact pr(primary), ma(masks), pw(kRef.password);
    Bytes mb(40);
    unsigned char l = len(kRef.password);
    EXPECT_EQ(code, CryptoPro_conteiner_get_no_pass_chek(pr.get(), ma.get(), mb.data(), nullptr, nullptr, pw.get(), l))
        << n;
    EXPECT_EQ(code, CryptoPro_conteiner_update(pr.get(), ma.get(), pw.get(), l)) << n;
}

// A file cut to n octets whose SEQUENCE length says so.
Bytes truncated(const Bytes& file, size_t n) {
    Bytes b(file.begin(), file.begin() + n);
    b[1] = static_cast<unsigned char>(n - 2);
    return b;
}

TEST(CryptoProHostile, TruncatedFilesAreRejectedBeforeFixedOffsets) {
    for (size_t n = 2; n < kRef.primary.size(); ++n)
        if (n != 36) all(truncated(kRef.primary, n), kRef.masks, 4, n);  // 36: a well-formed one-key file
    for (size_t n = 2; n < kRef.masks.size(); ++n) all(kRef.primary, truncated(kRef.masks, n), 5, n);
    // Long-form lengths with the same count are read at the same offsets.
    all(kt::from_hex("308100"), kRef.masks, 4, 0);
    all(kt::from_hex("3080"), kRef.masks, 4, 0);
    all(kRef.primary, kt::from_hex("3080"), 5, 0);
    all(kt::from_hex("04"), kRef.masks, 2, 0);
    all(kRef.primary, kt::from_hex("04"), 3, 0);
}

TEST(CryptoProHostile, CorruptedOctets) {
    for (size_t off = 0; off < kRef.masks.size(); ++off) {
        for (unsigned char v : {0x00, 0x80, 0xFF}) {
            Bytes m = kRef.masks;
            if (m[off] == v) continue;
            m[off] = v;
            unsigned char r = get(kRef.primary, m);
            // Inner tags and lengths are at fixed offsets and not read.
            bool inner = off == 2 || off == 3 || off == 36 || off == 37 || off == 50 || off == 51;
            EXPECT_TRUE(inner ? r == 0 : r >= 3 && r <= 6) << off << " " << int(r);
        }
    }
    // The header octets of the primary file, and a sample of key octets
    // (each of those costs a full key derivation).
    for (size_t off : {0, 1, 2, 3, 4, 20, 35, 36, 37, 38, 69}) {
        for (unsigned char v : {0x00, 0xFF}) {
            Bytes p = kRef.primary;
            p[off] = v;
            unsigned char r = get(p, kRef.masks);
            EXPECT_TRUE(r == 0 || r == 2 || r == 4 || r == 8) << off;
        }
    }
}

// The owner's certificate with its key OCTET STRING cut to 32 octets (the
// rest stays in the BIT STRING): it matches nothing, and only 32 key octets
// are read.
TEST(CryptoProHostile, ShortCertificateKeyMatchesNothing) {
    Bytes cert = certificate("cert_d1_A"), head = kt::from_hex("0343000440");
    auto at = std::search(cert.begin(), cert.end(), head.begin(), head.end());
    ASSERT_NE(at, cert.end());
    at[4] = 0x20;
    EXPECT_EQ(8, get(kRef.primary, kRef.masks, cert));
}

// A found certificate lies inside the header buffer.
void find(const Bytes& header, size_t min) {
    Exact buf(header);
    unsigned char* p = CryptoPro_conteiner_get_certificate(buf.get());
    if (p) { EXPECT_TRUE(p >= buf.get() + min && p <= buf.get() + header.size()) << kt::to_hex(header); }
}

TEST(CryptoProHostile, HeaderWithEveryOctetCorrupted) {
    Bytes header = tlv(0x30, tlv(0x30, cat({tlv(0x02, {0}), tlv(0x04, Bytes(130, 7)),
                                            tlv(0x85, certificate("cert_d1_A"))})));
    for (size_t off = 4; off < header.size(); ++off) {  // the outer header stays consistent with the buffer
        for (unsigned char v : {0x00, 0x02, 0x30, 0x7F, 0x80, 0x81, 0x82, 0x84, 0x85, 0xFF}) {
            Bytes h = header;
            h[off] = v;
            find(h, 6);
        }
    }
    kt::Rng rng(2024);
    const unsigned char pool[] = {0x30, 0x85, 0x81, 0x82, 0x83, 0x84, 0x80, 0x02, 0x04, 0x00, 0x01, 0x05, 0x7F};
    for (int i = 0; i < 20000; ++i) {
        Bytes body(1 + rng.below(60));
        for (auto& b : body) b = rng.below(3) ? pool[rng.below(sizeof pool)] : static_cast<unsigned char>(rng.next());
        find(tlv(0x30, body), 0);
    }
}

}  // namespace
