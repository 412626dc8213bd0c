// Certificate signature checks and CMS signing and verification: OpenSSL's
// messages checked here, the library's own messages round-tripped, and the
// status codes.
#include <gtest/gtest.h>

#include "CMS.h"
#include "GOST_34_10_2001.h"
#include "GOST_34_11_94.h"
#include "common/generator.h"
#include "pki/pki_fixtures.h"
#include "x_509.h"

using namespace pkt;
using kt::from_hex;
using kt::to_hex;

namespace {

type_uN<64>* sig64(unsigned char* p) { return reinterpret_cast<type_uN<64>*>(p); }

unsigned check(unsigned char* attrs, unsigned char* data, unsigned len, unsigned char* cert, unsigned char* sig) {
    return CMS_SignedData_check(attrs, nullptr, data, len, cert, sig64(sig));
}
unsigned check_hash(unsigned char* attrs, unsigned char* digest, unsigned len, unsigned char* cert, unsigned char* sig) {
    return CMS_SignedData_check_hash(attrs, nullptr, digest, len, cert, sig64(sig));
}

Bytes gost94(Bytes data) {
    type_uN<32> h;
    GOST_34_11_94_hash(data.data(), data.size(), nullptr, &h);
    return Bytes(h.b, h.b + 32);
}

type_uN<32> key_of(const Bytes& priv) {
    type_uN<32> k;
    std::copy(priv.begin(), priv.end(), k.b);
    return k;
}

// The certificate with its 1.2.643.2.2.35.1 parameter OID octet at `at`
// (0 the 35 arc, 1 the last arc) replaced.
Bytes with_param_octet(Bytes cert, int at, unsigned char v) {
    unsigned char* spki = x_509_find_public_key_info_block(cert.data());
    for (unsigned char* p = spki; p < spki + 40; ++p)
        if (p[0] == 0x02 && p[1] == 0x23 && p[2] == 0x01) { p[1 + at] = v; return cert; }
    throw std::runtime_error("no CryptoPro-A parameter OID");
}

const std::string kSigningTime = "1.2.840.113549.1.9.5:" + base64(text(0x17, "261122120000Z"));

}  // namespace

TEST(X509Signature, FixtureChainAndTampering) {
    CertFacts ca = fixture_cert("ca_a");
    for (CertFacts& c : fixture_certs()) {
        SCOPED_TRACE(c.name);
        Bytes before = c.der;
        bool selfSigned = c.name == "ca_a" || c.name == "v1_a";
        EXPECT_EQ(x_509_check_certificate(c.der.data(), nullptr), selfSigned ? 1u : 0u);
        EXPECT_EQ(x_509_check_certificate(c.der.data(), ca.der.data()), c.name == "v1_a" ? 0u : 1u);
        EXPECT_EQ(c.der, before);  // never modified, also on failure
    }
    // The CA's certificate against a leaf's key.
    EXPECT_EQ(x_509_check_certificate(ca.der.data(), fixture_cert("leaf_xa").der.data()), 0u);
    EXPECT_EQ(x_509_check_certificate(nullptr, ca.der.data()), 0u);
    x509_textbox t = x_509_get_textbox_of_cer(ca.der.data());
    // A time digit, the last signature octet, the signature BIT STRING tag (03 -> 04).
    const std::pair<size_t, unsigned char> cases[] = {
        {static_cast<size_t>(t.not_before.ptr - ca.der.data()), 0x01}, {ca.der.size() - 1, 0x01}, {ca.der.size() - 67, 0x07}};
    for (auto [at, x] : cases) {
        Bytes bad = ca.der;
        bad[at] ^= x;
        EXPECT_EQ(x_509_check_certificate(bad.data(), nullptr), 0u) << at;
    }
}

TEST(CmsVerify, OpenSslMessages) {
    Bytes content = kt::load_file("pki/content.bin"), digest = gost94(content);
    for (const char* signer : {"ca_a", "leaf_b"}) {
        SCOPED_TRACE(signer);
        const Bytes msg = kt::load_file(std::string("pki/cms_openssl_") + signer + ".der");
        Bytes work = msg;
        cms_signed_data_t r = CMS_SignedData_parse(work.data());
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(to_hex(r.content, r.content_len), to_hex(content));
        EXPECT_EQ(to_hex(r.certificate, r.certificate_len), to_hex(fixture_cert(signer).der));
        ASSERT_NE(r.signed_attrs, nullptr);
        ASSERT_EQ(r.signature_len, 64u);
        EXPECT_EQ(check(r.signed_attrs, r.content, r.content_len, r.certificate, r.signature), 5u);
        EXPECT_EQ(check_hash(r.signed_attrs, digest.data(), 32, r.certificate, r.signature), 5u);
        // The messageDigest attribute is the caller's to compare.
        ASSERT_NE(CMS_SignedAttr_find_msg_digest_value_field(r.signed_attrs), nullptr);
        EXPECT_EQ(to_hex(CMS_SignedAttr_find_msg_digest_value_field(r.signed_attrs), 32), to_hex(digest));
        // OpenSSL's contentType holds a bare OID.
        EXPECT_EQ(CMS_SignedAttr_MIME_type(r.signed_attrs).value, nullptr);
        EXPECT_EQ(work, msg);  // the message is left as it was

        // Any changed octet of the signed attributes: 6.
        for (size_t at : {size_t(5), size_t(r.signed_attrs_len / 2), size_t(r.signed_attrs_len - 1)}) {
            r.signed_attrs[at] ^= 0x01;
            EXPECT_EQ(check(r.signed_attrs, r.content, r.content_len, r.certificate, r.signature), 6u) << at;
            r.signed_attrs[at] ^= 0x01;
        }
        // Changed content with intact signed attributes still checks.
        r.content[0] ^= 0x20;
        EXPECT_EQ(check(r.signed_attrs, r.content, r.content_len, r.certificate, r.signature), 5u);
    }
}

// Messages built and signed by the library, as checked by OpenSSL's GOST
// engine in tests/vectors/pki/interop.sh (results recorded in interop.txt).
TEST(CmsVerify, LibraryMessagesVerifiedByOpenSsl) {
    std::vector<kt::Record> records = kt::load_records("pki/interop.txt");
    ASSERT_EQ(records.size(), 12u);
    Bytes content = kt::load_file("pki/interop_content.bin");
    for (const kt::Record& r : records) {
        const std::string& name = r.at("name");
        SCOPED_TRACE(name);
        EXPECT_EQ(r.at("openssl"), "verified");
        Bytes msg = kt::load_file("pki/" + name + ".der");
        Bytes cert = fixture_cert(name.find("leaf_xa") != std::string::npos ? "leaf_xa" : "ca_a").der;
        cms_signed_data_t m = CMS_SignedData_parse(msg.data());
        ASSERT_EQ(m.status, 0);
        EXPECT_EQ(m.content != nullptr, name.find("detached") == std::string::npos);
        EXPECT_EQ(m.certificate != nullptr, name.find("nocert") == std::string::npos);
        EXPECT_EQ(check(m.signed_attrs, content.data(), content.size(), cert.data(), m.signature), 5u);
    }
}

TEST(CmsSign, RoundTrips) {
    // Signed from the content or from its digest (the message then carries
    // the digest-entry block), by the CA (CryptoPro-A) or by leaf_xa (XchA:
    // the curve signing always uses); each checked against the other's key.
    kt::seed(2024);
    CertFacts certs[] = {fixture_cert("ca_a"), fixture_cert("leaf_xa")};
    Bytes content = str("The quick brown fox jumps over the lazy dog"), digest = gost94(content), altered = content;
    altered[0] ^= 1;
    type_uN<32> d = key_of(digest);
    const std::string uns = item("1.2.3.4", tlv(0x04, {1}));
    struct Case { std::string sig, uns; bool attached, withCert, viaDigest; int signer; } cases[] = {
        {"", "", true, true, false, 0},        {kSigningTime, "", true, true, false, 0},
        {kSigningTime, uns, false, true, false, 0}, {kSigningTime, "", true, false, false, 0},
        {"", uns, false, false, false, 0},     {kSigningTime, uns, false, false, true, 1},
        {"", "", true, true, true, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sig + " | " + c.uns + " | " + std::to_string(c.attached) + std::to_string(c.withCert) +
                     std::to_string(c.viaDigest) + std::to_string(c.signer));
        CertFacts &cert = certs[c.signer], &other = certs[1 - c.signer];
        type_uN<32> key = key_of(cert.priv);
        Bytes block = block_of(c.sig, c.uns), twin = block;
        ASSERT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), content.size(), &key), 0u);
        ASSERT_EQ(CMS_sig_SignedAttr_hash(twin.data(), &d, &key), 0u);
        // The same block apart from the random signature.
        size_t sigAt = (block[0] == 0xA0 ? element_size(block.data()) : 0) + 2;
        Bytes same = twin;
        std::copy(block.begin() + sigAt, block.begin() + sigAt + 64, same.begin() + sigAt);
        EXPECT_EQ(to_hex(same), to_hex(block));
        Bytes msg = message_of(content, c.attached, c.viaDigest ? twin : block, cert.der, c.withCert);
        cms_signed_data_t r = CMS_SignedData_parse(msg.data());
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.certificate != nullptr, c.withCert);
        EXPECT_EQ(r.content != nullptr, c.attached);
        EXPECT_EQ(r.signed_attrs != nullptr, !c.sig.empty());
        unsigned char* a = r.signed_attrs;
        EXPECT_EQ(check(a, content.data(), content.size(), cert.der.data(), r.signature), 5u);
        EXPECT_EQ(check_hash(a, digest.data(), 32, cert.der.data(), r.signature), 5u);
        // Without signed attributes the signature covers the content itself.
        EXPECT_EQ(check(a, altered.data(), altered.size(), cert.der.data(), r.signature), a ? 5u : 6u);
        EXPECT_EQ(check(a, content.data(), content.size(), other.der.data(), r.signature), 6u);
        if (!a) continue;
        EXPECT_EQ(to_hex(CMS_SignedAttr_find_msg_digest_value_field(a), 32), to_hex(digest));
        // Only the signed attributes are verified: the data arguments may be absent.
        EXPECT_EQ(check(a, nullptr, 0, cert.der.data(), r.signature), 5u);
        EXPECT_EQ(check_hash(a, nullptr, 0, cert.der.data(), r.signature), 5u);
    }
}

TEST(CmsSign, CurveIsAlwaysCryptoProA) {
    kt::seed(2024);
    // A key on CryptoPro-B signs on curve A: its certificate (B) rejects it.
    CertFacts b = fixture_cert("leaf_b");
    Bytes content = str("x"), block = block_of("", "");
    type_uN<32> key = key_of(b.priv), h = key_of(gost94(content));
    ASSERT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), 1, &key), 0u);
    EXPECT_EQ(check(nullptr, content.data(), 1, b.der.data(), block.data() + 2), 6u);
    type_uN<64> sig, qa;
    std::copy(block.begin() + 2, block.end(), sig.b);
    GOST_34_10_2001_gen_open_key(&key, &qa, 1);
    EXPECT_EQ(GOST_34_10_2001_check_DS(&h, &qa, &sig, 1), 1);
}

TEST(CmsSign, FormatErrorsAndGenerator) {
    kt::seed(2024);
    type_uN<32> key{};
    key.b[0] = 7;
    Bytes content = str("x"), notBlock = from_hex("30 00");
    EXPECT_EQ(CMS_sig_SignedAttr(notBlock.data(), content.data(), 1, &key), 2u);
    EXPECT_EQ(CMS_sig_SignedAttr(nullptr, content.data(), 1, &key), 2u);
    EXPECT_EQ(CMS_sig_SignedAttr_hash(notBlock.data(), &key, &key), 2u);
    // [0] without a messageDigest attribute.
    Bytes noDigest = cat({tlv(0xA0, seq({oid("2A03"), set({tlv(0x04, {1})})})), from_hex("0440"), Bytes(64, 0)});
    EXPECT_EQ(CMS_sig_SignedAttr(noDigest.data(), content.data(), 1, &key), 2u);
    // The signature element: any tag with 64 octets behind a two-octet
    // header takes the signature; nothing is written past the element.
    Bytes block = block_of(kSigningTime, ""), wrong;
    size_t sigAt = block.size() - 66;
    const struct { const char* header; size_t len; unsigned rc; } heads[] = {
        {"0540", 64, 0}, {"053F", 63, 2}, {"0400", 0, 2}, {"048140", 64, 2}};
    for (const auto& h : heads) {
        Bytes head = from_hex(h.header);
        wrong = Bytes(block.begin(), block.begin() + sigAt);
        wrong.insert(wrong.end(), head.begin(), head.end());
        wrong.resize(wrong.size() + h.len + 8, 0xEE);
        Bytes before = wrong;
        EXPECT_EQ(CMS_sig_SignedAttr(wrong.data(), content.data(), 1, &key), h.rc) << h.header;
        EXPECT_TRUE(std::equal(wrong.end() - 8, wrong.end(), before.end() - 8)) << h.header;
    }
    // The digest has been stored before the failure.
    EXPECT_EQ(to_hex(CMS_SignedAttr_find_msg_digest_value_field(wrong.data()), 32), to_hex(gost94(content)));

    // Generator not seeded: 1.
    kt::unseed();
    EXPECT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), 1, &key), 1u);
}

TEST(CmsVerify, Codes) {
    kt::seed(2024);
    CertFacts ca = fixture_cert("ca_a");
    Bytes content = str("codes"), digest = gost94(content), block = block_of("", "");
    type_uN<32> key = key_of(ca.priv);
    ASSERT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), content.size(), &key), 0u);
    unsigned char* sig = block.data() + 2;
    unsigned char* cert = ca.der.data();

    // No data without signed attributes; decided before the key.
    EXPECT_EQ(check(nullptr, nullptr, 5, cert, sig), 4u);
    EXPECT_EQ(check(nullptr, content.data(), 0, cert, sig), 4u);
    EXPECT_EQ(check(nullptr, nullptr, 0, nullptr, sig), 4u);
    for (unsigned len : {0u, 31u, 33u, 64u}) EXPECT_EQ(check_hash(nullptr, digest.data(), len, cert, sig), 4u) << len;
    EXPECT_EQ(check_hash(nullptr, nullptr, 32, cert, sig), 4u);
    // No usable key: no certificate, garbage, a 512-bit key.
    EXPECT_EQ(check(nullptr, content.data(), content.size(), nullptr, sig), 3u);
    EXPECT_EQ(check(nullptr, content.data(), content.size(), from_hex("30 03 02 01 01").data(), sig), 3u);
    CertFacts long512 = fixture_cert("leaf_512a");
    EXPECT_EQ(check(nullptr, content.data(), content.size(), long512.der.data(), sig), 3u);
    EXPECT_EQ(x_509_check_certificate(cert, long512.der.data()), 0u);
    // A zero or altered signature is invalid and the caller's buffer is not changed.
    for (Bytes s : {Bytes(64, 0), cat({{static_cast<unsigned char>(sig[0] ^ 0x80)}, Bytes(sig + 1, sig + 64)})}) {
        Bytes keep = s;
        EXPECT_EQ(check(nullptr, content.data(), content.size(), cert, s.data()), 6u);
        EXPECT_EQ(s, keep);
    }

    // Only a selector whose low byte is 255 means "no usable key", whether
    // 0xFFFFFFFF (1.2.643.2.2.37.1, unknown prefix) or 255 (last arc 255);
    // 254 is an ordinary selector (the test curve): merely invalid.
    // x509: the CA's own certificate checked with the altered key.
    struct Case { int at; unsigned char v; unsigned sel, cms, x509; } cases[] = {
        {1, 0x01, 1, 5, 1}, {1, 0xFE, 0xFE, 6, 0}, {1, 0xFF, 0xFF, 3, 0}, {0, 0x25, 0xFFFFFFFF, 3, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.v));
        Bytes odd = with_param_octet(ca.der, c.at, c.v);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(odd.data()), c.sel);
        EXPECT_EQ(check(nullptr, content.data(), content.size(), odd.data(), sig), c.cms);
        EXPECT_EQ(x_509_check_certificate(cert, odd.data()), c.x509);
    }
}
