// Reading CryptoPro containers built by the test data script from known keys,
// masks, salts and passwords (its key derivation is independent of the
// library's), checked against certificates made by OpenSSL for those keys.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "CryptoPro.h"
#include "cryptopro_fixture.h"

namespace {

using cpt::Bytes;
using cpt::Container;

struct Out {
    Bytes key = Bytes(32, 0xA5);
    Bytes mask_block = Bytes(40, 0x5A);
};

unsigned char get(Container c, Bytes cert, Out& out, bool param_z = false) {
    auto f = param_z ? CryptoPro_conteiner_get_2012 : CryptoPro_conteiner_get;
    return f(c.primary.data(), c.masks.data(), cert.data(), out.mask_block.data(),
             reinterpret_cast<type_uN<32>*>(out.key.data()), c.password.data(),
             static_cast<unsigned char>(c.password.size()));
}

Bytes str(const char* s) { return Bytes(s, s + std::char_traits<char>::length(s)); }

TEST(CryptoProGet, ReadsKnownContainers) {
    struct {
        const char* container;
        const char* cert;
        bool param_z;
        bool expect_other;  // the matching key is the foreign one
    } table[] = {
        {"one_key", "cert_d1_A", false, false},
        {"two_keys_match_first", "cert_d1_A", false, false},
        {"two_keys_match_second", "cert_d1_A", false, false},
        {"empty_password", "cert_d1_A", false, false},
        {"twelve_chars", "cert_d1_A", false, false},
        {"param_z", "cert_d1_A", true, false},
        // The masks are taken modulo the CryptoPro-A order whatever the curve.
        {"one_key", "cert_d1_B", false, false},
        {"one_key", "cert_d1_C", false, false},
        // With two keys either one may be the certificate's.
        {"two_keys_match_first", "cert_d2_A", false, true},
        {"two_keys_match_second", "cert_d2_A", false, true},
    };
    for (auto& t : table) {
        SCOPED_TRACE(std::string(t.container) + " " + t.cert);
        Container c = cpt::container(t.container);
        Bytes primary = c.primary, masks = c.masks;
        Out out;
        ASSERT_EQ(0, get(c, cpt::certificate(t.cert), out, t.param_z));
        EXPECT_EQ(kt::to_hex(t.expect_other ? c.other : c.key), kt::to_hex(out.key));
        EXPECT_EQ(kt::to_hex(c.mask_block), kt::to_hex(out.mask_block));
    }
}

// Wrong passwords (including the empty one and a full 12 characters) and a
// foreign certificate; with two keys both are tried.
TEST(CryptoProGet, MismatchGives8LeavingTheWrongKey) {
    struct {
        const char* container;
        const char* password;  // null: the right one
        const char* cert;
    } table[] = {
        {"one_key", "12345679", "cert_d1_A"}, {"one_key", "1234567", "cert_d1_A"},
        {"one_key", "", "cert_d1_A"},         {"one_key", "123456789012", "cert_d1_A"},
        {"two_keys_match_first", "qwerty", "cert_d1_A"},
        {"one_key", nullptr, "cert_d2_A"},
    };
    for (auto& t : table) {
        SCOPED_TRACE(std::string(t.container) + " " + (t.password ? t.password : "-") + " " + t.cert);
        Container c = cpt::container(t.container);
        if (t.password) c.password = str(t.password);
        Out out;
        EXPECT_EQ(8, get(c, cpt::certificate(t.cert), out));
        // The unmasked value is left in the key (the container's own with the
        // right password); the mask block is not written.
        if (t.password) {
            EXPECT_NE(Bytes(32, 0xA5), out.key);
            EXPECT_NE(c.key, out.key);
        } else {
            EXPECT_EQ(c.key, out.key);
        }
        EXPECT_EQ(Bytes(40, 0x5A), out.mask_block);
    }
}

TEST(CryptoProGet, ParameterSetZIsAnotherMac) {
    Out out;
    EXPECT_EQ(6, get(cpt::container("param_z"), cpt::certificate("cert_d1_A"), out, false));
    EXPECT_EQ(6, get(cpt::container("one_key"), cpt::certificate("cert_d1_A"), out, true));
    EXPECT_EQ(Bytes(32, 0xA5), out.key);
}

TEST(CryptoProGet, StructureCodesLeaveOutputsUnchanged) {
    struct {
        bool in_masks;
        unsigned offset;
        unsigned char value;
        unsigned char code;
    } table[] = {
        {false, 0, 0x31, 2}, {false, 1, 0x23, 4}, {false, 1, 0x45, 4}, {false, 1, 0x00, 4},
        {true, 0, 0x31, 3},  {true, 1, 0x35, 5},  {true, 1, 0x37, 5},
        {true, 4, 0x00, 6},   // mask
        {true, 40, 0x00, 6},  // salt
        {true, 49, 0x00, 6},  // last salt octet
        {true, 52, 0x00, 6},  // stored MAC
        {true, 55, 0x00, 6},
    };
    for (bool z : {false, true}) {
        for (auto& t : table) {
            SCOPED_TRACE(t.offset);
            Container c = cpt::container(z ? "param_z" : "two_keys_match_first");
            Bytes& b = t.in_masks ? c.masks : c.primary;
            b[t.offset] = b[t.offset] == t.value ? static_cast<unsigned char>(t.value ^ 1) : t.value;
            Out out;
            EXPECT_EQ(t.code, get(c, cpt::certificate("cert_d1_A"), out, z));
            EXPECT_EQ(Bytes(32, 0xA5), out.key);
            EXPECT_EQ(Bytes(40, 0x5A), out.mask_block);
        }
    }
    // Primary checked before masks.
    Container c = cpt::container("one_key");
    c.primary[0] = 0x04;
    c.masks[0] = 0x04;
    Out out;
    EXPECT_EQ(2, get(c, cpt::certificate("cert_d1_A"), out));
}

TEST(CryptoProGet, UnknownParameterSetGives7First) {
    Bytes cert = cpt::certificate("cert_d1_A");
    Bytes oid = kt::from_hex("2a850302022301");
    auto at = std::search(cert.begin(), cert.end(), oid.begin(), oid.end());
    ASSERT_NE(cert.end(), at);
    at[5] = 0x25;  // 1.2.643.2.2.37.1: not a signature parameter set
    Container c = cpt::container("one_key");
    c.primary[0] = 0x31;  // the certificate is looked at before the files
    Out out;
    EXPECT_EQ(7, get(c, cert, out));
    EXPECT_EQ(Bytes(32, 0xA5), out.key);
    EXPECT_EQ(Bytes(40, 0x5A), out.mask_block);
}

TEST(CryptoProGet, PasswordLongerThan12IsRefusedBeforeAnyWrite) {
    Container c = cpt::container("twelve_chars");
    c.password.push_back('m');
    Bytes primary = c.primary, masks = c.masks;
    Out out;
    EXPECT_EQ(CRYPTOPRO_ERR_PASSWORD_TOO_LONG, get(c, cpt::certificate("cert_d1_A"), out));
    EXPECT_EQ(CRYPTOPRO_ERR_PASSWORD_TOO_LONG, get(c, cpt::certificate("cert_d1_A"), out, true));
    EXPECT_EQ(Bytes(32, 0xA5), out.key);
    EXPECT_EQ(Bytes(40, 0x5A), out.mask_block);

    Bytes k1(32, 0x11), k2(32, 0x22), mb(40, 0x33);
    EXPECT_EQ(CRYPTOPRO_ERR_PASSWORD_TOO_LONG,
              CryptoPro_conteiner_get_no_pass_chek(c.primary.data(), c.masks.data(), mb.data(),
                                                   reinterpret_cast<type_uN<32>*>(k1.data()),
                                                   reinterpret_cast<type_uN<32>*>(k2.data()), c.password.data(), 13));
    EXPECT_EQ(Bytes(32, 0x22), k2);
    EXPECT_EQ(Bytes(40, 0x33), mb);
    EXPECT_EQ(CRYPTOPRO_ERR_PASSWORD_TOO_LONG,
              CryptoPro_conteiner_update(c.primary.data(), c.masks.data(), c.password.data(), 255));
    EXPECT_EQ(primary, c.primary);
    EXPECT_EQ(masks, c.masks);
}

// The password-free reader copies the caller's buffers onto its results, so
// key1 keeps its content and key2 ends up zero; only the mask block is output.
TEST(CryptoProNoPassCheck, KeepsCallerKeysAndWritesMaskBlock) {
    for (const char* name : {"one_key", "two_keys_match_first"}) {
        for (Bytes pw : {cpt::container(name).password, str("wrong")}) {
            SCOPED_TRACE(name);
            Container c = cpt::container(name);
            Bytes k1(32, 0x11), k2(32, 0x22), mb(40, 0x33);
            EXPECT_EQ(0, CryptoPro_conteiner_get_no_pass_chek(
                             c.primary.data(), c.masks.data(), mb.data(), reinterpret_cast<type_uN<32>*>(k1.data()),
                             reinterpret_cast<type_uN<32>*>(k2.data()), pw.data(),
                             static_cast<unsigned char>(pw.size())));
            EXPECT_EQ(Bytes(32, 0x11), k1);
            EXPECT_EQ(Bytes(32, 0x00), k2);
            EXPECT_EQ(kt::to_hex(c.mask_block), kt::to_hex(mb));
            EXPECT_EQ(0, CryptoPro_conteiner_get_no_pass_chek(c.primary.data(), c.masks.data(), mb.data(), nullptr,
                                                             nullptr, pw.data(),
                                                             static_cast<unsigned char>(pw.size())));
        }
    }
}

TEST(CryptoProNoPassCheck, StructureCodesClearKey2First) {
    Container c = cpt::container("one_key");
    c.masks[52] ^= 1;
    Bytes k2(32, 0x22), mb(40, 0x33);
    EXPECT_EQ(6, CryptoPro_conteiner_get_no_pass_chek(c.primary.data(), c.masks.data(), mb.data(), nullptr,
                                                     reinterpret_cast<type_uN<32>*>(k2.data()), c.password.data(),
                                                     static_cast<unsigned char>(c.password.size())));
    EXPECT_EQ(Bytes(32, 0), k2);
    EXPECT_EQ(Bytes(40, 0x33), mb);
    c = cpt::container("one_key");
    c.primary[0] = 0;
    EXPECT_EQ(2, CryptoPro_conteiner_get_no_pass_chek(c.primary.data(), c.masks.data(), mb.data(), nullptr, nullptr,
                                                     c.password.data(), 8));
    c = cpt::container("one_key");
    c.masks[1] = 0;
    EXPECT_EQ(5, CryptoPro_conteiner_get_no_pass_chek(c.primary.data(), c.masks.data(), mb.data(), nullptr, nullptr,
                                                     c.password.data(), 8));
}

TEST(CryptoProCertificate, FindsTheFifthElement) {
    Bytes cert = cpt::certificate("cert_d1_A");
    Bytes ver = cpt::tlv(0x02, {0x01}), name = cpt::tlv(0x04, Bytes(200, 'n')), tail = cpt::tlv(0x01, {0xFF});
    Bytes cert_el = cpt::tlv(0x85, cert);
    struct {
        const char* name;
        Bytes inner;
        long cert_at;  // offset of the certificate in inner, or -1
    } table[] = {
        {"first", cpt::cat({cert_el, ver}), 4},
        {"middle", cpt::cat({ver, name, cert_el, tail}), static_cast<long>(ver.size() + name.size() + 4)},
        {"last", cpt::cat({ver, cert_el}), static_cast<long>(ver.size() + 4)},
        {"absent", cpt::cat({ver, name, tail}), -1},
    };
    for (auto& t : table) {
        SCOPED_TRACE(t.name);
        Bytes header = cpt::tlv(0x30, cpt::tlv(0x30, t.inner));
        unsigned char* p = CryptoPro_conteiner_get_certificate(header.data());
        size_t inner_at = header.size() - t.inner.size();
        if (t.cert_at < 0) {
            EXPECT_EQ(nullptr, p);
        } else {
            ASSERT_EQ(header.data() + inner_at + t.cert_at, p);
            EXPECT_EQ(0, std::memcmp(p, cert.data(), cert.size()));
        }
        if (std::string(t.name) == "middle") {  // the pointer serves the reader as it is
            Container c = cpt::container("two_keys_match_second");
            Out out;
            EXPECT_EQ(0, CryptoPro_conteiner_get(c.primary.data(), c.masks.data(), p, out.mask_block.data(),
                                                 reinterpret_cast<type_uN<32>*>(out.key.data()), c.password.data(),
                                                 static_cast<unsigned char>(c.password.size())));
            EXPECT_EQ(c.key, out.key);
        }
    }
}

TEST(CryptoProCertificate, MalformedHeadersGiveNull) {
    Bytes el = cpt::tlv(0x85, Bytes(10, 0xCC));
    struct {
        const char* name;
        Bytes header;
    } table[] = {
        {"outer not SEQUENCE", cpt::tlv(0x31, cpt::tlv(0x30, el))},
        {"inner not SEQUENCE", cpt::tlv(0x30, cpt::tlv(0x31, el))},
        {"inner empty", cpt::tlv(0x30, cpt::tlv(0x30, {}))},
        {"outer empty", kt::from_hex("3000")},
        // An inner length running past its parent.
        {"inner past outer", kt::from_hex("3005 3010 02010085")},
        // An element running past the inner SEQUENCE.
        {"element past inner", cpt::cat({kt::from_hex("300f 300d 0420"), Bytes(11, 0), el})},
        {"cert past inner", kt::from_hex("3006 3004 8505 0000")},
        {"bad length octet", kt::from_hex("3006 3004 0280 8500")},
        {"indefinite outer", kt::from_hex("3080 3004 8502 0000")},
    };
    for (auto& t : table) {
        EXPECT_EQ(nullptr, CryptoPro_conteiner_get_certificate(t.header.data())) << t.name;
    }
}

}  // namespace
