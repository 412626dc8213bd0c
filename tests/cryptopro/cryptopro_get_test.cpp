// Reading CryptoPro containers built by the test data script from known keys,
// masks, salts and passwords (its key derivation is independent of the
// library's), checked against certificates made by OpenSSL for those keys.
#include <gtest/gtest.h>

#include <algorithm>

#include "common/generator.h"
#include "cryptopro_fixture.h"

namespace {

using namespace cpt;

struct Out {
    Bytes key = Bytes(32, 0xA5), mask_block = Bytes(40, 0x5A);
    bool untouched() const { return key == Bytes(32, 0xA5) && mask_block == Bytes(40, 0x5A); }
};

unsigned char get(Container c, Bytes cert, Out& out, bool param_z = false) {
    return (param_z ? CryptoPro_conteiner_get_2012 : CryptoPro_conteiner_get)(
        c.primary.data(), c.masks.data(), cert.data(), out.mask_block.data(), k32(&out.key), c.password.data(),
        len(c.password));
}

unsigned char nopass(Container& c, Bytes pw, Bytes& mb, Bytes* k1 = nullptr, Bytes* k2 = nullptr) {
    return CryptoPro_conteiner_get_no_pass_chek(c.primary.data(), c.masks.data(), mb.data(), k32(k1), k32(k2),
                                                pw.data(), len(pw));
}

// The key output: the container's own, the other one, neither (an unmasked
// value that is not the key), or not written.
enum Want { OWN, OTHER, NEITHER, UNTOUCHED };

TEST(CryptoProGet, ReadsKnownContainersAndMismatches) {
    struct {
        const char *container, *cert = "cert_d1_A", *password = nullptr;  // null: the right one
        bool param_z = false;
        unsigned char code = 0;
        Want key = OWN;
    } table[] = {
        {"one_key"}, {"two_keys_match_first"}, {"two_keys_match_second"}, {"empty_password"}, {"twelve_chars"},
        {"param_z", "cert_d1_A", nullptr, true},
        // The masks are taken modulo the CryptoPro-A order whatever the curve.
        {"one_key", "cert_d1_B"}, {"one_key", "cert_d1_C"},
        // With two keys either one may be the certificate's.
        {"two_keys_match_first", "cert_d2_A", nullptr, false, 0, OTHER},
        {"two_keys_match_second", "cert_d2_A", nullptr, false, 0, OTHER},
        // Wrong passwords (the empty one, a full 12 characters; with two keys
        // both are tried) and a foreign certificate give 8, leaving the
        // unmasked value in the key and the mask block unwritten.
        {"one_key", "cert_d1_A", "12345679", false, 8, NEITHER}, {"one_key", "cert_d1_A", "1234567", false, 8, NEITHER},
        {"one_key", "cert_d1_A", "", false, 8, NEITHER}, {"one_key", "cert_d1_A", "123456789012", false, 8, NEITHER},
        {"two_keys_match_first", "cert_d1_A", "qwerty", false, 8, NEITHER}, {"one_key", "cert_d2_A", nullptr, false, 8},
        // Parameter set Z gives another MAC; a password of 13 is refused before any write.
        {"param_z", "cert_d1_A", nullptr, false, 6, UNTOUCHED}, {"one_key", "cert_d1_A", nullptr, true, 6, UNTOUCHED},
        {"twelve_chars", "cert_d1_A", "abcdefghijklm", false, CRYPTOPRO_ERR_PASSWORD_TOO_LONG, UNTOUCHED},
        {"twelve_chars", "cert_d1_A", "abcdefghijklm", true, CRYPTOPRO_ERR_PASSWORD_TOO_LONG, UNTOUCHED},
    };
    for (auto& t : table) {
        SCOPED_TRACE(std::string(t.container) + " " + t.cert + " " + (t.password ? t.password : "-"));
        Container c = container(t.container);
        if (t.password) c.password = str(t.password);
        Out out;
        EXPECT_EQ(t.code, get(c, certificate(t.cert), out, t.param_z));
        if (t.key == NEITHER) EXPECT_TRUE(out.key != Bytes(32, 0xA5) && out.key != c.key);
        else EXPECT_EQ(t.key == OWN ? c.key : t.key == OTHER ? c.other : Bytes(32, 0xA5), out.key);
        EXPECT_EQ(t.code ? Bytes(40, 0x5A) : c.mask_block, out.mask_block);
    }
}

// Structure codes: the readers write nothing, the update leaves both files.
TEST(CryptoProGet, StructureCodesLeaveOutputsUnchanged) {
    struct { bool in_masks; unsigned offset; unsigned char value, code; } table[] = {
        {false, 0, 0x31, 2}, {false, 1, 0x21, 4}, {false, 1, 0x23, 4}, {false, 1, 0x45, 4}, {false, 1, 0x00, 4},
        {true, 0, 0x31, 3},  {true, 1, 0x34, 5},  {true, 1, 0x35, 5},  {true, 1, 0x37, 5},
        // mask, salt, last salt octet, stored MAC
        {true, 4, 0x00, 6},  {true, 40, 0x00, 6}, {true, 45, 0x00, 6}, {true, 49, 0x00, 6}, {true, 52, 0x00, 6},
        {true, 55, 0x00, 6},
    };
    seed(3);
    for (bool z : {false, true}) {
        for (auto& t : table) {
            SCOPED_TRACE(t.offset);
            Container c = container(z ? "param_z" : "two_keys_match_first");
            Bytes& b = t.in_masks ? c.masks : c.primary;
            b[t.offset] = b[t.offset] == t.value ? static_cast<unsigned char>(t.value ^ 1) : t.value;
            Out out;
            EXPECT_EQ(t.code, get(c, certificate("cert_d1_A"), out, z));
            EXPECT_TRUE(out.untouched());
            if (z) continue;
            Container before = c;
            EXPECT_EQ(t.code, update(c));
            EXPECT_EQ(before.primary, c.primary);
            EXPECT_EQ(before.masks, c.masks);
        }
    }
    // Primary checked before masks; the certificate's parameter set before both.
    Container c = container("one_key");
    c.primary[0] = c.masks[0] = 0x04;
    Out out;
    EXPECT_EQ(2, get(c, certificate("cert_d1_A"), out));
    Bytes cert = certificate("cert_d1_A"), oid = kt::from_hex("2a850302022301");
    auto at = std::search(cert.begin(), cert.end(), oid.begin(), oid.end());
    ASSERT_NE(cert.end(), at);
    at[5] = 0x25;  // 1.2.643.2.2.37.1: not a signature parameter set
    EXPECT_EQ(7, get(c, cert, out));
    EXPECT_TRUE(out.untouched());
}

// The password-free reader copies the caller's buffers onto its results, so
// key1 keeps its content and key2 ends up zero; only the mask block is output.
TEST(CryptoProNoPassCheck, KeepsCallerKeysAndWritesMaskBlock) {
    for (const char* name : {"one_key", "two_keys_match_first"}) {
        Container c = container(name);
        for (Bytes pw : {c.password, str("wrong")}) {
            SCOPED_TRACE(name);
            Bytes k1(32, 0x11), k2(32, 0x22), mb(40, 0x33);
            EXPECT_EQ(0, nopass(c, pw, mb, &k1, &k2));
            EXPECT_EQ(Bytes(32, 0x11), k1);
            EXPECT_EQ(Bytes(32, 0x00), k2);
            EXPECT_EQ(kt::to_hex(c.mask_block), kt::to_hex(mb));
            EXPECT_EQ(0, nopass(c, pw, mb));
        }
    }
    // A structure code clears key2 first, a password over 12 octets is refused
    // before any write; the mask block is not written.
    struct { unsigned masks_off; const char* password; unsigned char code, key2; } refusals[] = {
        {52, nullptr, 6, 0x00}, {0, "1234567890123", CRYPTOPRO_ERR_PASSWORD_TOO_LONG, 0x22}};
    for (auto& r : refusals) {
        Container c = container("one_key");
        if (r.masks_off) c.masks[r.masks_off] ^= 1;
        Bytes k1(32, 0x11), k2(32, 0x22), mb(40, 0x33);
        EXPECT_EQ(r.code, nopass(c, r.password ? str(r.password) : c.password, mb, &k1, &k2));
        EXPECT_EQ(Bytes(32, r.key2), k2);
        EXPECT_EQ(Bytes(40, 0x33), mb);
    }
}

// The [5] element of the header file's inner SEQUENCE, where it is whole;
// null for a malformed header.
TEST(CryptoProCertificate, FindsTheFifthElement) {
    Bytes cert = certificate("cert_d1_A"), ver = tlv(0x02, {0x01}), name = tlv(0x04, Bytes(200, 'n'));
    Bytes tail = tlv(0x01, {0xFF}), el = tlv(0x85, cert), small = tlv(0x85, Bytes(10, 0xCC));
    auto header = [](const Bytes& inner) { return tlv(0x30, tlv(0x30, inner)); };
    struct { const char* name; Bytes header; bool found; } table[] = {
        {"first", header(cat({el, ver})), true}, {"middle", header(cat({ver, name, el, tail})), true},
        {"last", header(cat({ver, el})), true}, {"absent", header(cat({ver, name, tail})), false},
        {"outer not SEQUENCE", tlv(0x31, tlv(0x30, small)), false},
        {"inner not SEQUENCE", tlv(0x30, tlv(0x31, small)), false},
        {"inner empty", header({}), false}, {"outer empty", kt::from_hex("3000"), false},
        {"inner past outer", kt::from_hex("3005 3010 02010085"), false},
        {"element past inner", cat({kt::from_hex("300f 300d 0420"), Bytes(11, 0), small}), false},
        {"cert past inner", kt::from_hex("3006 3004 8505 0000"), false},
        {"bad length octet", kt::from_hex("3006 3004 0280 8500"), false},
        {"indefinite outer", kt::from_hex("3080 3004 8502 0000"), false},
    };
    for (auto& t : table) {
        SCOPED_TRACE(t.name);
        unsigned char* p = CryptoPro_conteiner_get_certificate(t.header.data());
        if (!t.found) {
            EXPECT_EQ(nullptr, p);
            continue;
        }
        ASSERT_EQ(&*std::search(t.header.begin(), t.header.end(), cert.begin(), cert.end()), p);
        // The pointer serves the reader as it is.
        Container c = container("two_keys_match_second");
        Out out;
        EXPECT_EQ(0, CryptoPro_conteiner_get(c.primary.data(), c.masks.data(), p, out.mask_block.data(),
                                             k32(&out.key), c.password.data(), len(c.password)));
        EXPECT_EQ(c.key, out.key);
    }
}

}  // namespace
