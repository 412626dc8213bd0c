// PKCS#12 structure helpers: the base-128 coder with its 16513 threshold,
// element access by offset, the writers, and the header and algorithm checks.
#include <gtest/gtest.h>

#include <set>

#include "common/test_util.h"
#include "pkcs12.h"

namespace {

using kt::Bytes;

Bytes container() { return kt::from_hex(kt::load_records("pkcs12/pkcs12.txt").at(0).at("container")); }

TEST(Pkcs12Ber, CodeAndDecode) {
    struct { unsigned short value; const char* octets; } table[] = {
        {0, "00"}, {1, "01"}, {127, "7f"}, {128, "8100"}, {369, "8271"}, {1024, "8800"}, {16383, "ff7f"},
        {16384, "0000"}, {16385, "0001"}, {16512, "0100"}, {16513, "818101"}, {32768, "828000"}, {65535, "83ff7f"},
    };
    for (auto& t : table) {
        SCOPED_TRACE(t.value);
        unsigned char buf[4] = {0xEE, 0xEE, 0xEE, 0xEE}, *p = buf;
        unsigned char n = pkcs12_ber_code(&p, t.value);
        EXPECT_EQ(t.octets, kt::to_hex(buf, n));
        EXPECT_EQ(buf + n, p);
        EXPECT_EQ(n, pkcs12_ber_code(nullptr, t.value));
        EXPECT_EQ(0xEE, buf[n]);
        // The reader inverts the writer except in the 16384..16512 overlap.
        if (t.value >= 16384 && t.value <= 16512) continue;
        p = buf;
        EXPECT_EQ(t.value, pkcs12_ber_decode(&p));
        EXPECT_EQ(buf + n, p);
    }
    // The reader stops at the first octet with the high bit clear; the
    // writer's overflow form for 16384 reads back as 0.
    struct { const char* octets; unsigned value, used; } reads[] = {{"8181817f55", 0x2040FF, 4}, {"0000", 0, 1}};
    for (auto& r : reads) {
        Bytes b = kt::from_hex(r.octets);
        unsigned char* p = b.data();
        EXPECT_EQ(r.value, pkcs12_ber_decode(&p));
        EXPECT_EQ(b.data() + r.used, p);
    }
}

TEST(Pkcs12Blocks, GetAndSetByElementOffset) {
    Bytes c = container();
    // 131: the IV; 150: long-form length 81 18 skipped; 90: len not compared with the element's.
    for (auto t : {std::pair<unsigned short, unsigned short>{131, 8}, {150, 4}, {90, 6}}) {
        unsigned char out[8];
        EXPECT_EQ(0, pkcs12_get_block(c.data(), t.first, t.second, out));
        EXPECT_EQ(kt::to_hex(c.data() + t.first + (t.first == 150 ? 3 : 2), t.second), kt::to_hex(out, t.second));
    }
    unsigned char salt[4] = {9, 8, 7, 6};
    EXPECT_EQ(0, pkcs12_set_block(c.data(), 90, 4, salt));
    EXPECT_EQ("09080706", kt::to_hex(c.data() + 92, 4));
    // Tags 02, 06, 30 are accepted as well as 04; others give 5.
    for (unsigned char tag = 0; tag < 0xFF; ++tag) {
        Bytes b = {tag, 0x01, 0x42};
        unsigned char out = 0, in = 0x99;
        bool ok = tag == 0x02 || tag == 0x04 || tag == 0x06 || tag == 0x30;
        EXPECT_EQ(ok ? 0 : 5, pkcs12_get_block(b.data(), 0, 1, &out)) << int(tag);
        EXPECT_EQ(ok ? 0x42 : 0, out);
        EXPECT_EQ(ok ? 0 : 5, pkcs12_set_block(b.data(), 0, 1, &in));
        EXPECT_EQ(ok ? 0x99 : 0x42, b[2]);
    }
    // pkcs12_copy_data runs front to back, so an overlapping copy smears.
    Bytes b = kt::from_hex("0102030405060708");
    pkcs12_copy_data(b.data() + 1, b.data(), 6);
    EXPECT_EQ("0101010101010108", kt::to_hex(b));
}

TEST(Pkcs12Writers, AdvanceOverTheirParts) {
    Bytes c = container(), buf(200, 0);
    unsigned char* p = buf.data();
    EXPECT_EQ(2, pkcs12_create_auth_safe_hdr(&p, c.data() + 133, c.data() + 92));
    ASSERT_EQ(130, p - buf.data());
    EXPECT_EQ(kt::to_hex(c.data() + 23, 130), kt::to_hex(buf.data(), 130));
    type_uN<32> key;
    for (int i = 0; i < 32; ++i) key.b[i] = static_cast<unsigned char>(i);
    Bytes aux(40, 0xAB);
    p = buf.data();
    pkcs12_create_safe_contents(&p, &key, aux.data());
    ASSERT_EQ(152, p - buf.data());
    EXPECT_EQ("308110305106", kt::to_hex(buf.data(), 6));
    EXPECT_EQ(kt::to_hex(key.b, 32), kt::to_hex(buf.data() + 54, 32));
    EXPECT_EQ(kt::to_hex(aux), kt::to_hex(buf.data() + 107, 40));
    EXPECT_EQ("0505050505", kt::to_hex(buf.data() + 147, 5));
}

TEST(Pkcs12Checks, HeaderAndAlgorithmCodes) {
    Bytes good = container();
    unsigned char* p = good.data();
    EXPECT_EQ(0, pkcs12_check_header(&p));
    EXPECT_EQ(good.data() + 60, p);
    // The header check stops at the algorithm and rejects its tags, the two
    // versions and the three contentType OIDs.
    for (unsigned off = 0; off < 60; ++off) {
        bool oid = (off >= 9 && off < 20) || (off >= 29 && off < 40) || off >= 49;
        if (!oid && !std::set<unsigned>{0, 3, 4, 5, 6, 20, 23, 26, 40, 43, 44, 45, 46}.count(off)) continue;
        Bytes c = good;
        c[off] ^= 0x40;
        p = c.data();
        EXPECT_EQ(5, pkcs12_check_header(&p)) << off;
        EXPECT_EQ(c.data(), p) << off;
    }

    // The algorithm check, from offset 60. A value above FF sets two octets.
    struct { unsigned offset, value; unsigned char code; } table[] = {
        {0, 0, 0},  // unchanged
        // Wrong length or content: PBES2 OID length, PBES2 -> 1.2.840.113549.1.5.14, PBKDF2 -> PBES2, last octet
        // of 1.2.643.2.2.10, hash parameters 30.0 -> 30.1, GOST 28147-89 OID, 31.0 -> 31.1.
        {63, 0x08, 4}, {72, 0x0E, 4}, {87, 0x0D, 4}, {109, 0x0B, 4}, {118, 0x01, 4}, {128, 0x16, 4}, {149, 0x01, 4},
        // Wrong tag: AlgorithmIdentifier, PBES2 OID, salt, count, prf SEQUENCE, prf OID, IV, parameter-set OID.
        {60, 0x31, 5}, {62, 0x04, 5}, {90, 0x05, 5}, {96, 0x04, 5}, {100, 0x31, 5}, {102, 0x04, 5}, {131, 0x02, 5},
        {141, 0x04, 5},
        // SEQUENCE lengths are stepped over, never compared.
        {61, 0x10, 0}, {74, 0x00, 0}, {101, 0x7F, 0},
        // An OID length run longer than any the container writes is a wrong length too, not a wrong tag.
        {63, 0x89AA, 4},
    };
    for (auto& t : table) {
        Bytes c = good;
        unsigned off = t.offset;
        if (t.value > 0xFF) c[off++] = static_cast<unsigned char>(t.value >> 8);
        if (off) c[off] = static_cast<unsigned char>(t.value);
        EXPECT_EQ(t.code, pkcs12_check_algorithm(c.data() + 60)) << t.offset;
    }
    // Salt of 8 octets and a keyLength INTEGER after the count are accepted.
    Bytes alg = kt::from_hex(
        "3060 06092a864886f70d01050d 3053 3032 06092a864886f70d01050c 3025 0408 0102030405060708 02028800 020120"
        "3011 06062a850302020a 06072a850302021e00 301d 06062a8503020215 3013 0408 1122334455667788"
        "06072a850302021f00");
    EXPECT_EQ(0, pkcs12_check_algorithm(alg.data()));
}

}  // namespace
