// The program's key formats against real CryptoPro files, OpenSSL-made PFX
// files (tests/vectors/formats/generate.sh) and the published intermediate
// values of CryptoPro's PFX key bag (../shared/samples/cryptopro/VECTORS.txt).
#include <gtest/gtest.h>

#include <functional>

#include "common/test_util.h"
#include "formats/csp_container.h"
#include "formats/csp_kdf.h"
#include "formats/gost.h"
#include "formats/modq.h"
#include "formats/pfx.h"
#include "GOST_28147_89.h"

namespace {

using formats::Bytes;

Bytes load(const std::string& name) { return kt::load_file("formats/" + name); }
Bytes h(const char* s) { return kt::from_hex(s); }
int code_of(const std::function<void()>& f) {
    try {
        f();
    } catch (const formats::Error& e) {
        return e.code;
    }
    return 0;
}
Bytes first_cert(const std::string& pem) { return formats::pem_decode_all(load(pem), "CERTIFICATE").at(0); }

struct KeyRow {
    const char* file;
    formats::Gen gen;
    const char* curve;  // short name
    const char* cert;
};
const KeyRow kKeys[] = {
    {"g2001.key.pem", formats::Gen::gost2001, "XA", "g2001.cert.pem"},
    {"g2012256.key.pem", formats::Gen::gost2012_256, "XA", "g2012256.cert.pem"},
    {"g2012512.key.pem", formats::Gen::gost2012_512, "512A", "g2012512.cert.pem"},
    {"pfx1.key.pem", formats::Gen::gost2012_256, "XA", "pfx1.certs.pem"},
};

// Keys written by get-cpcert / CryptoPro tools: read, matched against their
// certificates, and written back byte for byte.
TEST(Pkcs8, RealKeysRoundTripAndMatchTheirCertificates) {
    for (const KeyRow& r : kKeys) {
        SCOPED_TRACE(r.file);
        Bytes file = load(r.file);
        formats::PrivateKey k = formats::pkcs8_load(file);
        EXPECT_EQ(k.gen, r.gen);
        EXPECT_STREQ(k.curve().name, r.curve);
        EXPECT_NO_THROW(formats::check_against_cert(k, first_cert(r.cert)));
        formats::Secret pem = formats::pkcs8_pem(k);
        EXPECT_EQ(std::string(pem.begin(), pem.end()), std::string(file.begin(), file.end()));
        const char* other = r.gen == formats::Gen::gost2001 ? "g2012256.cert.pem" : "g2001.cert.pem";
        EXPECT_EQ(code_of([&] { formats::check_against_cert(k, first_cert(other)); }), 3);
    }
}

TEST(Pkcs8, OtherPrivateKeyFormsAndRefusals) {
    formats::PrivateKey k = formats::pkcs8_load(load("g2001.key.pem"));
    Bytes der = formats::pem_decode_all(load("g2001.key.pem"), "PRIVATE KEY").at(0);
    Bytes head(der.begin(), der.end() - 34);  // up to the OCTET STRING of the raw key
    Bytes le(k.d.begin(), k.d.end()), be(le.rbegin(), le.rend());
    auto with_key = [&](const Bytes& inner) {
        Bytes d = head;
        d.insert(d.end(), inner.begin(), inner.end());
        d[1] = static_cast<unsigned char>(d.size() - 2);
        return d;
    };
    auto wrap = [](unsigned char tag, Bytes v) {
        v.insert(v.begin(), {tag, static_cast<unsigned char>(v.size())});
        return v;
    };
    // An OCTET STRING or a big-endian INTEGER inside the octets (other tools' forms).
    Bytes int_be = be;
    if (int_be[0] & 0x80) int_be.insert(int_be.begin(), 0);
    for (const Bytes& inner : {wrap(4, wrap(4, le)), wrap(4, wrap(2, int_be))}) {
        Bytes d = with_key(inner);
        EXPECT_EQ(formats::pkcs8_decode(d.data(), d.size()).d, k.d);
    }
    struct Bad {
        Bytes file;
        int code;
    } bad[] = {
        {load("ossl-tc26a.key.pem"), 5},       {load("ossl-512c.key.pem"), 5},
        {with_key(wrap(4, Bytes(31, 1))), 4},  {with_key(wrap(4, Bytes(32, 0))), 4},
        {Bytes(der.begin(), der.end() - 1), 4}, {load("g2001.cert.pem"), 4},
    };
    for (const Bad& b : bad) EXPECT_EQ(code_of([&] { formats::public_key(formats::pkcs8_load(b.file)); }), b.code);
}

// TC26 256-bit paramSetB is the CryptoPro-A curve: the engine's public key.
TEST(Pkcs8, Tc26ParamSetBGivesTheEnginesPublicKey) {
    formats::PrivateKey k = formats::pkcs8_load(load("ossl-tc26b.key.pem"));
    Bytes hex = load("ossl-tc26b.pub.hex");
    EXPECT_EQ(formats::public_key(k), h(std::string(hex.begin(), hex.end()).c_str()));
}

struct PfxRow {
    const char* file;
    const char* pass;
    const char* key;   // the PEM the key must equal
    const char* cert;  // its certificate (first of the PEM)
    const char* kind;
};
const PfxRow kPfx[] = {
    {"pfx1.pfx", "12345", "pfx1.key.pem", "pfx1.certs.pem", "CryptoPro CSP"},
    {"ossl-g2001.pfx", "Test123", "g2001.key.pem", "g2001.cert.pem", "GOST PKCS#12"},
    {"ossl-g2012256.pfx", "Test123", "g2012256.key.pem", "g2012256.cert.pem", "GOST PKCS#12"},
    {"ossl-g2012512.pfx", "Test123", "g2012512.key.pem", "g2012512.cert.pem", "GOST PKCS#12"},
    {"ossl-mac256.pfx", "Test123", "g2012256.key.pem", "g2012256.cert.pem", "GOST PKCS#12"},
    {"ossl-rc2.pfx", "", "g2012256.key.pem", "g2012256.cert.pem", "GOST PKCS#12"},
};

TEST(Pfx, ReadsCryptoProAndOpenSslFiles) {
    for (const PfxRow& r : kPfx) {
        SCOPED_TRACE(r.file);
        formats::Pfx p = formats::pfx_read(load(r.file), r.pass);
        EXPECT_EQ(p.kind, r.kind);
        EXPECT_EQ(p.key.d, formats::pkcs8_load(load(r.key)).d);
        EXPECT_EQ(p.certs.at(0), first_cert(r.cert));
        EXPECT_EQ(code_of([&] { formats::pfx_read(load(r.file), "wrong"); }), 3);
    }
    EXPECT_EQ(formats::pfx_read(load("pfx1.pfx"), "12345").certs.size(), 2u);
}

TEST(Pfx, WritesWhatItReads) {
    for (const KeyRow& r : kKeys) {
        SCOPED_TRACE(r.file);
        formats::PrivateKey k = formats::pkcs8_load(load(r.file));
        Bytes pfx = formats::pfx_write(k, {first_cert(r.cert)}, "pw");
        formats::Pfx back = formats::pfx_read(pfx, "pw");
        EXPECT_EQ(back.key.d, k.d);
        EXPECT_EQ(back.key.curve_oid, k.curve_oid);
        EXPECT_EQ(code_of([&] { formats::pfx_read(pfx, "pW"); }), 3);
        EXPECT_EQ(code_of([&] { formats::pfx_write(k, {first_cert("g2012512.cert.pem")}, "pw"); }),
                  r.gen == formats::Gen::gost2012_512 ? 0 : 3);
    }
}

TEST(Pfx, RefusesAbsurdIterationCounts) {
    EXPECT_EQ(code_of([] { formats::pfx_read(load("ossl-iter.pfx"), "Test123"); }), 5);
}

// VECTORS.txt: CryptoPro's PFX key-bag steps (pfx1 and the 2001 vector).
TEST(Gost, CryptoProKeyBagSteps) {
    const char* pw = "1\0" "2\0" "3\0" "4\0" "5\0";
    formats::Secret k = formats::csp_pbe_key(Bytes(pw, pw + 10), h("d39a1bcb30bfc54826a8aa18ed566b54"), 2000);
    EXPECT_EQ(kt::to_hex(k), "423d932351ee9c3186311d3d619473825cca0cd1c3f172dfe7906206c008ac35");
    EXPECT_EQ(kt::to_hex(formats::kdf_2012_256(k, h("26bdb878"), h("7629c7feafc7671f"))),
              "58fa30084ec6af9317382c50a6c73c3594eb2ea0b8795c5986648a724f923271");
    formats::Secret k01 = h("c2bb428f981f30d8e623db786d9bd780e7d9f785a950211530142ae46fab8dce");
    Bytes ukm = h("fef0268e68e6a7ea");
    formats::Secret kek = formats::kek_diversify(k01, ukm.data(), formats::kSboxA);
    EXPECT_EQ(kt::to_hex(kek), "b1d42e71edbd096257f35e6862f4f945f8f949ea1916807e95c9208f8b95165e");
    Bytes cek = h("7987275594a59f491e62f636f794bdd49a5cd547e0d901df3ad58da9effc2657");
    GOST_28147_89_R_ECB(cek.data(), 32, reinterpret_cast<type_uN<32>*>(kek.data()), formats::kSboxA);
    EXPECT_EQ(kt::to_hex(cek), "31967658c0647acdbd2c8a8d55cc031803208d94292c16221f68d9d7caa5d73e");
    EXPECT_EQ(kt::to_hex(formats::mac4(cek.data(), 32, kek, ukm.data(), formats::kSboxA)), "68369e8a");
}

// OpenSSL's gost89 cipher (CFB with key meshing) on 10000 bytes, both ways.
TEST(Gost, MeshedCfbMatchesOpenSsl) {
    Bytes plain = kt::load_file("tools/pattern.bin"), ct = kt::load_file("tools/pattern.gost89");
    Bytes key = h("0123456789abcdef0123456789abcdeffedcba9876543210fedcba9876543210"), iv = h("0102030405060708");
    Bytes x = plain;
    formats::cfb_meshed(false, x.data(), x.size(), key.data(), iv.data(), formats::kSboxA);
    EXPECT_EQ(x, ct);
    formats::cfb_meshed(true, x.data(), x.size(), key.data(), iv.data(), formats::kSboxA);
    EXPECT_EQ(x, plain);
}

}  // namespace

// Container KEKs of real CSP containers, from ../shared/samples/cryptopro/VECTORS.txt
// (kov-serg_get-cpcert, password '1'): masks.key salts and the header's
// public-key fingerprints (password-check key), one row per generation.
TEST(CspContainer, PasswordKdfOfEveryGeneration) {
    struct Row { const char* salt; bool g2012; const char* kek; } rows[] = {
        {"bbe074586f1385f07221f5f6", false, "ffc614555770fb63504fc509b1d212d34decf972e6e33bdc9ac87ff8b69b34e1"},
        {"91e604e1730a0b4b", false, "f13c9ce893fc9226c022ff5b8f44f4f0f55c9a720205e6b15219b2138121b7e2"},
        {"bb43a4057f3652f786d5d020", true, "2e168a02b3a0b2bc09c833bc4cccd496eb8e56be6db9b73f9c50d38b2cfec589"},
        {"22ded110fefd4ede", true, "85298f413c7e4349732992c9153aa7a464fc3a4e2789be8ed20cf35047dac1c5"},
        {"79f7c43b9e9223fe7425fc52", true, "ebae849b09d3fe00f4f0527852ae244f2d1f753422092030564b47fde5de4c23"},
        {"281b22ff6d4525f7", true, "02c97fb8741f0346dfcd29f0686dab0386fba12daf57a22b2981af4fbb65609f"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(kt::to_hex(formats::csp_container_kek("1", h(r.salt), r.g2012)), r.kek) << r.salt;
    // header.key's hmacPassword: right password, wrong password, damaged value.
    struct Check { const char* fp; const char* mac; bool g2012; } checks[] = {
        {"91e604e1730a0b4b", "d70f43d3", false},
        {"22ded110fefd4ede", "1a52b832", true},
        {"281b22ff6d4525f7", "98a7659b", true},
    };
    for (const Check& c : checks) {
        EXPECT_TRUE(formats::csp_password_matches("1", h(c.fp), h(c.mac), c.g2012)) << c.fp;
        EXPECT_FALSE(formats::csp_password_matches("2", h(c.fp), h(c.mac), c.g2012)) << c.fp;
        EXPECT_FALSE(formats::csp_password_matches("1", h(c.fp), h("00000000"), c.g2012)) << c.fp;
    }
    // masks.key's MAC (S-box A, Z, and Z over the upper half of a 64-byte mask); a flipped salt fails.
    struct Mask { const char* mask; const char* salt; const char* mac; bool g2012; } masks[] = {
        {"e3523b1edde1334735b25b04dde191594edc3ad25bea1fe7d9f444c22fe9b672", "bbe074586f1385f07221f5f6", "285a2833", false},
        {"977f17bf89b6e572a1bbccb91a8e24f3e9c57c54951e13d30531efef01380bdc", "bb43a4057f3652f786d5d020", "8d9e4813", true},
        {"e2c7a458907c78b8b1c029f5271d0e835850f997e23f41242f5bdb10045f86c2"
         "93e4741727052d6c596dca1ea8324a0059f7c3f8add41d0ba6027db25335ab77", "79f7c43b9e9223fe7425fc52", "e047e55c", true},
    };
    for (const Mask& m : masks) {
        EXPECT_TRUE(formats::csp_mask_mac_matches(h(m.mask), h(m.salt), h(m.mac), m.g2012)) << m.salt;
        Bytes salt = h(m.salt);
        salt[0] ^= 1;
        EXPECT_FALSE(formats::csp_mask_mac_matches(h(m.mask), salt, h(m.mac), m.g2012)) << m.salt;
    }
    // header.key of each generation: intact, one flipped octet, truncated.
    for (const char* g : {"g2001", "g2012256", "g2012512"}) {
        Bytes hd = load(std::string("csp/") + g + ".000/header.key");
        const bool g2012 = std::string(g) != "g2001";
        EXPECT_TRUE(formats::csp_header_mac_matches(hd, g2012)) << g;
        hd[100] ^= 1;
        EXPECT_FALSE(formats::csp_header_mac_matches(hd, g2012)) << g;
        hd.resize(hd.size() / 2);
        EXPECT_FALSE(formats::csp_header_mac_matches(hd, g2012)) << g;
    }
}

// Taking the mask off: d = x * mask^-1 mod q, both copies of every
// generation (VECTORS.txt: ECB-decrypted key, mask, d; little-endian).
TEST(CspContainer, UnmaskingModuloTheCurveOrder) {
    struct Row { const char* x; const char* mask; const char* curve; const char* d; } rows[] = {
        {"06caf40483649d91a4a8ab5e5c7480333bdcf1078e6cf0874ce28fa672e770f2",
         "e3523b1edde1334735b25b04dde191594edc3ad25bea1fe7d9f444c22fe9b672", "1.2.643.2.2.36.0",
         "b52cb428dc96e1a8a8842cb221c7f1565afdd4cc41403fbc11442d28680c89b1"},
        {"5d0aa5767673b29279b176dab0cfcbae22c93b82e23572e6396f476a87298d24",
         "15e30a8a523ade6b7528cb54f5d604327236db4a14f0d6eaeeea7237881f7e76", "1.2.643.2.2.36.0",
         "b52cb428dc96e1a8a8842cb221c7f1565afdd4cc41403fbc11442d28680c89b1"},
        {"f5875fcfedbad203ae70603cfb4c00659c0d2f10218250492e46f5e9cb5a322e",
         "977f17bf89b6e572a1bbccb91a8e24f3e9c57c54951e13d30531efef01380bdc", "1.2.643.2.2.36.0",
         "3cfc260415ec96566791cfdd388245882db0f0fc41c05eb24aed208560bf586c"},
        {"c21b4cbb10891d5c01393f37bf2aea558d74fbb2a6d89e9ddd9d4d301eb3f1b6df2b5680c7ddfe514ce99bc93f43a8c8c54000532118bf50ec975ae95c12d32c",
         "e2c7a458907c78b8b1c029f5271d0e835850f997e23f41242f5bdb10045f86c293e4741727052d6c596dca1ea8324a0059f7c3f8add41d0ba6027db25335ab77",
         "1.2.643.7.1.2.1.2.1",
         "5c61ceef14fe82c86ef33e07a9be66d79d542c1f44aa8a4b1d0bc1d42892c06b7e9be81460e909fe6e6cc77b4c174a1107b90359a2f8c960f866d405499624a6"},
        {"ebd8b00f3a5439fb9514d0bdcf35fab63cc765678147647e9a6720d8aa87722d421e200bdb9b21f866bda32dee6f26a79203965094dcc239856ace91a212e821",
         "bec8b74f73eddcdc4efbc634b2d8bf8fea2de878434a065491741a64206c7044de21e743fd8e63546b31c790825c41e059da707c7717fb143968ef84388b0700",
         "1.2.643.7.1.2.1.2.1",
         "5c61ceef14fe82c86ef33e07a9be66d79d542c1f44aa8a4b1d0bc1d42892c06b7e9be81460e909fe6e6cc77b4c174a1107b90359a2f8c960f866d405499624a6"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(kt::to_hex(formats::mul_inverse_mod(h(r.x), h(r.mask), formats::curve_order(r.curve))), r.d) << r.x;
}

// Whole folders: the key get-cpcert wrote, byte for byte, and header.key's
// certificate; the first copy opens.
TEST(CspContainer, ReadsEveryGeneration) {
    for (const char* g : {"g2001", "g2012256", "g2012512"}) {
        const std::string dir = std::string(KORVEX_VECTORS_DIR) + "/formats/csp/" + g + ".000";
        formats::CspKey k = formats::csp_read(dir, "1", {});
        formats::Secret pem = formats::pkcs8_pem(k.key);
        EXPECT_EQ(Bytes(pem.begin(), pem.end()), load(std::string(g) + ".key.pem")) << g;
        EXPECT_EQ(k.cert, first_cert(std::string(g) + ".cert.pem")) << g;
        EXPECT_EQ(k.which, "primary") << g;
        EXPECT_EQ(formats::csp_header(dir).name, g);
    }
}
