// Certificate signature checks and CMS signing and verification: OpenSSL's
// messages checked here, the library's own messages round-tripped, and the
// status codes.
#include <gtest/gtest.h>

#include "CMS.h"
#include "GOST_34_10_2001.h"
#include "GOST_34_11_94.h"
#include "PRNG.h"
#include "pki/pki_fixtures.h"
#include "x_509.h"

using namespace pkt;
using kt::from_hex;
using kt::to_hex;

namespace {

unsigned char* u(std::string& s) { return reinterpret_cast<unsigned char*>(&s[0]); }

type_uN<64>* sig64(unsigned char* p) { return reinterpret_cast<type_uN<64>*>(p); }

Bytes gost94(const Bytes& data) {
    type_uN<32> h;
    Bytes copy = data;
    GOST_34_11_94_hash(copy.data(), copy.size(), nullptr, &h);
    return Bytes(h.b, h.b + 32);
}

void seed() {
    Bytes s = kt::Rng(2024).bytes(40);
    ASSERT_EQ(PRNG_init(s.data()), 0);
}

// A signer block for the given texts, not yet signed.
Bytes block_of(std::string sig, std::string uns) {
    unsigned char* s = sig.empty() ? nullptr : u(sig);
    unsigned char* n = uns.empty() ? nullptr : u(uns);
    Bytes b(CMS_create_SignedAttr(s, sig.size(), n, uns.size(), nullptr, 0, nullptr));
    b.resize(CMS_create_SignedAttr(s, sig.size(), n, uns.size(), nullptr, 0, b.data()));
    return b;
}

Bytes message_of(Bytes& content, bool attached, Bytes& block, Bytes& cert, bool withCert) {
    unsigned char* c = attached ? content.data() : nullptr;
    unsigned cl = attached ? content.size() : 0;
    Bytes m(CMS_SignedData_create(c, cl, block.data(), block.size(), cert.data(), withCert, nullptr));
    EXPECT_EQ(CMS_SignedData_create(c, cl, block.data(), block.size(), cert.data(), withCert, m.data()), m.size());
    return m;
}

const std::string kSigningTime = "1.2.840.113549.1.9.5:" + base64(text(0x17, "261122120000Z"));

}  // namespace

TEST(X509Signature, FixtureChain) {
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
    CertFacts leaf = fixture_cert("leaf_xa");
    EXPECT_EQ(x_509_check_certificate(ca.der.data(), leaf.der.data()), 0u);
    EXPECT_EQ(x_509_check_certificate(nullptr, ca.der.data()), 0u);
}

TEST(X509Signature, Tampering) {
    CertFacts ca = fixture_cert("ca_a");
    x509_textbox t = x_509_get_textbox_of_cer(ca.der.data());
    struct Case {
        const char* what;
        size_t at;
        unsigned char x;
    } cases[] = {
        {"a time digit", static_cast<size_t>(t.not_before.ptr - ca.der.data()), 0x01},
        {"the last signature octet", ca.der.size() - 1, 0x01},
        {"the signature BIT STRING tag", ca.der.size() - 67, 0x07},  // 03 -> 04
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes bad = ca.der;
        bad[c.at] ^= c.x;
        EXPECT_EQ(x_509_check_certificate(bad.data(), nullptr), 0u);
    }
    // An issuer key whose parameter set is unknown.
    Bytes odd = ca.der;
    unsigned char* block = x_509_find_public_key_info_block(odd.data());
    for (unsigned char* p = block; p < block + 40; ++p)
        if (p[0] == 0x02 && p[1] == 0x23) { p[1] = 0x25; break; }  // 1.2.643.2.2.35.1 -> .37.1
    EXPECT_EQ(x_509_get_open_key_parametrs_ds(odd.data()), 0xFFFFFFFFu);
    EXPECT_EQ(x_509_check_certificate(ca.der.data(), odd.data()), 0u);
}

TEST(CmsVerify, OpenSslMessages) {
    Bytes content = kt::load_file("pki/content.bin");
    for (const char* signer : {"ca_a", "leaf_b"}) {
        SCOPED_TRACE(signer);
        Bytes msg = kt::load_file(std::string("pki/cms_openssl_") + signer + ".der");
        cms_signed_data_t r = CMS_SignedData_parse(msg.data());
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(to_hex(r.content, r.content_len), to_hex(content));
        EXPECT_EQ(to_hex(r.certificate, r.certificate_len), to_hex(fixture_cert(signer).der));
        ASSERT_NE(r.signed_attrs, nullptr);
        EXPECT_EQ(r.signer_id[0], 0x30);
        ASSERT_EQ(r.signature_len, 64u);
        EXPECT_EQ(CMS_SignedData_check(r.signed_attrs, nullptr, r.content, r.content_len, r.certificate,
                                       sig64(r.signature)), 5u);
        // The messageDigest attribute is the caller's to compare.
        unsigned char* md = CMS_SignedAttr_find_msg_digest_value_field(r.signed_attrs);
        ASSERT_NE(md, nullptr);
        EXPECT_EQ(to_hex(md, 32), to_hex(gost94(content)));
        Bytes digest = gost94(content);
        EXPECT_EQ(CMS_SignedData_check_hash(r.signed_attrs, nullptr, digest.data(), 32, r.certificate,
                                            sig64(r.signature)), 5u);
        // OpenSSL's contentType holds a bare OID.
        EXPECT_EQ(CMS_SignedAttr_MIME_type(r.signed_attrs).value, nullptr);

        // Any changed octet of the signed attributes: 6.
        for (size_t at : {size_t(5), size_t(r.signed_attrs_len / 2), size_t(r.signed_attrs_len - 1)}) {
            Bytes bad = msg;
            cms_signed_data_t b = CMS_SignedData_parse(bad.data());
            b.signed_attrs[at] ^= 0x01;
            EXPECT_EQ(CMS_SignedData_check(b.signed_attrs, nullptr, b.content, b.content_len, b.certificate,
                                           sig64(b.signature)), 6u) << at;
        }
        // Changed content with intact signed attributes still checks.
        Bytes bad = msg;
        cms_signed_data_t b = CMS_SignedData_parse(bad.data());
        b.content[0] ^= 0x20;
        EXPECT_EQ(CMS_SignedData_check(b.signed_attrs, nullptr, b.content, b.content_len, b.certificate,
                                       sig64(b.signature)), 5u);
        EXPECT_NE(to_hex(CMS_SignedAttr_find_msg_digest_value_field(b.signed_attrs), 32),
                  to_hex(gost94(Bytes(b.content, b.content + b.content_len))));
        // The message is left as it was.
        EXPECT_EQ(to_hex(msg), to_hex(kt::load_file(std::string("pki/cms_openssl_") + signer + ".der")));
    }
}

TEST(CmsSign, RoundTrips) {
    seed();
    CertFacts ca = fixture_cert("ca_a");
    Bytes content = str("The quick brown fox jumps over the lazy dog");
    struct Case {
        const char* what;
        std::string sig, uns;
        bool attached, withCert;
    } cases[] = {
        {"no attributes, attached, certificate", "", "", true, true},
        {"signed attributes, attached, certificate", kSigningTime, "", true, true},
        {"both attribute kinds, detached, certificate", kSigningTime, item("1.2.3.4", tlv(0x04, {1})), false, true},
        {"signed attributes, attached, no certificate", kSigningTime, "", true, false},
        {"unsigned only, detached, no certificate", "", item("1.2.3.4", tlv(0x04, {1})), false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes block = block_of(c.sig, c.uns);
        type_uN<32> key;
        std::copy(ca.priv.begin(), ca.priv.end(), key.b);
        ASSERT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), content.size(), &key), 0u);
        Bytes msg = message_of(content, c.attached, block, ca.der, c.withCert);
        cms_signed_data_t r = CMS_SignedData_parse(msg.data());
        ASSERT_EQ(r.status, 0);
        EXPECT_EQ(r.certificate != nullptr, c.withCert);
        EXPECT_EQ(r.content != nullptr, c.attached);
        EXPECT_EQ(r.signed_attrs != nullptr, !c.sig.empty());
        EXPECT_EQ(CMS_SignedData_check(r.signed_attrs, nullptr, content.data(), content.size(), ca.der.data(),
                                       sig64(r.signature)), 5u);
        if (r.signed_attrs) {
            EXPECT_EQ(to_hex(CMS_SignedAttr_find_msg_digest_value_field(r.signed_attrs), 32), to_hex(gost94(content)));
        }
        Bytes altered = content;
        altered[0] ^= 1;
        // Without signed attributes the signature covers the content itself.
        EXPECT_EQ(CMS_SignedData_check(r.signed_attrs, nullptr, altered.data(), altered.size(), ca.der.data(),
                                       sig64(r.signature)), r.signed_attrs ? 5u : 6u);
        Bytes digest = gost94(content);
        EXPECT_EQ(CMS_SignedData_check_hash(r.signed_attrs, nullptr, digest.data(), 32, ca.der.data(),
                                            sig64(r.signature)), 5u);
        if (r.signed_attrs) {
            // Only the signed attributes are verified: the data arguments may be absent.
            EXPECT_EQ(CMS_SignedData_check(r.signed_attrs, nullptr, nullptr, 0, ca.der.data(), sig64(r.signature)), 5u);
            EXPECT_EQ(CMS_SignedData_check_hash(r.signed_attrs, nullptr, nullptr, 0, ca.der.data(), sig64(r.signature)),
                      5u);
        }
        // Another key: 6.
        CertFacts other = fixture_cert("leaf_xa");
        EXPECT_EQ(CMS_SignedData_check(r.signed_attrs, nullptr, content.data(), content.size(), other.der.data(),
                                       sig64(r.signature)), 6u);
    }
}

TEST(CmsSign, DigestEntryMatchesContentEntry) {
    seed();
    CertFacts xa = fixture_cert("leaf_xa");  // XchA: the CryptoPro-A curve signing always uses
    Bytes content = str("digest given by the caller");
    Bytes digest = gost94(content);
    type_uN<32> key, d;
    std::copy(xa.priv.begin(), xa.priv.end(), key.b);
    std::copy(digest.begin(), digest.end(), d.b);
    for (std::string attrs : {kSigningTime, std::string()}) {
        Bytes a = block_of(attrs, ""), b = block_of(attrs, "");
        ASSERT_EQ(CMS_sig_SignedAttr(a.data(), content.data(), content.size(), &key), 0u);
        ASSERT_EQ(CMS_sig_SignedAttr_hash(b.data(), &d, &key), 0u);
        size_t sigAt = a.size() - 64;
        // Same block apart from the random signature.
        EXPECT_EQ(to_hex(a.data(), sigAt), to_hex(b.data(), sigAt));
        Bytes msg = message_of(content, false, b, xa.der, false);
        cms_signed_data_t r = CMS_SignedData_parse(msg.data());
        EXPECT_EQ(CMS_SignedData_check_hash(r.signed_attrs, nullptr, digest.data(), 32, xa.der.data(),
                                            sig64(r.signature)), 5u);
        EXPECT_EQ(CMS_SignedData_check(r.signed_attrs, nullptr, content.data(), content.size(), xa.der.data(),
                                       sig64(r.signature)), 5u);
    }
}

TEST(CmsSign, CurveIsAlwaysCryptoProA) {
    seed();
    // A key on CryptoPro-B signs on curve A: its certificate (B) rejects it.
    CertFacts b = fixture_cert("leaf_b");
    Bytes content = str("x");
    Bytes block = block_of("", "");
    type_uN<32> key;
    std::copy(b.priv.begin(), b.priv.end(), key.b);
    ASSERT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), 1, &key), 0u);
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), 1, b.der.data(), sig64(block.data() + 2)), 6u);
    type_uN<32> h;
    GOST_34_11_94_hash(content.data(), 1, nullptr, &h);
    type_uN<64> sig;
    std::copy(block.begin() + 2, block.end(), sig.b);
    type_uN<64> qa;
    GOST_34_10_2001_gen_open_key(&key, &qa, 1);
    EXPECT_EQ(GOST_34_10_2001_check_DS(&h, &qa, &sig, 1), 1);
}

TEST(CmsSign, FormatErrors) {
    seed();
    type_uN<32> key{};
    key.b[0] = 7;
    Bytes content = str("x");
    Bytes notBlock = from_hex("30 00");
    EXPECT_EQ(CMS_sig_SignedAttr(notBlock.data(), content.data(), 1, &key), 2u);
    EXPECT_EQ(CMS_sig_SignedAttr(nullptr, content.data(), 1, &key), 2u);
    // [0] without a messageDigest attribute.
    Bytes noDigest = cat({tlv(0xA0, seq({oid("2A03"), set({tlv(0x04, {1})})})), from_hex("0440"), Bytes(64, 0)});
    EXPECT_EQ(CMS_sig_SignedAttr(noDigest.data(), content.data(), 1, &key), 2u);
    // The signature element must be an OCTET STRING or hold 64 octets.
    Bytes block = block_of(kSigningTime, "");
    size_t sigAt = block.size() - 66;
    Bytes wrong = block;
    wrong[sigAt] = 0x05;  // tag changed, length still 64: accepted
    EXPECT_EQ(CMS_sig_SignedAttr(wrong.data(), content.data(), 1, &key), 0u);
    wrong = block;
    wrong[sigAt] = 0x05;
    wrong[sigAt + 1] = 0x3F;
    EXPECT_EQ(CMS_sig_SignedAttr(wrong.data(), content.data(), 1, &key), 2u);
    // The digest has been stored before the failure.
    EXPECT_EQ(to_hex(CMS_SignedAttr_find_msg_digest_value_field(wrong.data()), 32), to_hex(gost94(content)));
    Bytes d(32, 1);
    EXPECT_EQ(CMS_sig_SignedAttr_hash(notBlock.data(), reinterpret_cast<type_uN<32>*>(d.data()), &key), 2u);
}

TEST(CmsSign, GeneratorNotSeeded) {
    unsigned char* state = PRNG_get_RAND_ptr();
    Bytes saved(state, state + 40);
    std::fill(state, state + 40, 0);
    type_uN<32> key{};
    key.b[0] = 7;
    Bytes content = str("x");
    Bytes block = block_of(kSigningTime, "");
    EXPECT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), 1, &key), 1u);
    std::copy(saved.begin(), saved.end(), state);
}

TEST(CmsVerify, Codes) {
    seed();
    CertFacts ca = fixture_cert("ca_a");
    Bytes content = str("codes");
    Bytes block = block_of("", "");
    type_uN<32> key;
    std::copy(ca.priv.begin(), ca.priv.end(), key.b);
    ASSERT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), content.size(), &key), 0u);
    type_uN<64>* sig = sig64(block.data() + 2);
    Bytes digest = gost94(content);

    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), ca.der.data(), sig), 5u);
    // No data without signed attributes.
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, nullptr, 5, ca.der.data(), sig), 4u);
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), 0, ca.der.data(), sig), 4u);
    for (unsigned len : {0u, 31u, 33u, 64u})
        EXPECT_EQ(CMS_SignedData_check_hash(nullptr, nullptr, digest.data(), len, ca.der.data(), sig), 4u) << len;
    EXPECT_EQ(CMS_SignedData_check_hash(nullptr, nullptr, nullptr, 32, ca.der.data(), sig), 4u);
    EXPECT_EQ(CMS_SignedData_check_hash(nullptr, nullptr, digest.data(), 32, ca.der.data(), sig), 5u);
    // No usable key: no certificate, a v1-less garbage, an unknown parameter set.
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), nullptr, sig), 3u);
    Bytes junk = from_hex("30 03 02 01 01");
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), junk.data(), sig), 3u);
    Bytes odd = ca.der;
    unsigned char* spki = x_509_find_public_key_info_block(odd.data());
    for (unsigned char* p = spki; p < spki + 40; ++p)
        if (p[0] == 0x02 && p[1] == 0x23) { p[1] = 0x25; break; }
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), odd.data(), sig), 3u);
    // "No data" is decided before the key.
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, nullptr, 0, nullptr, sig), 4u);
    // A zero signature is invalid and the caller's buffer is not changed.
    Bytes zero(64, 0);
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), ca.der.data(), sig64(zero.data())), 6u);
    EXPECT_EQ(zero, Bytes(64, 0));
    Bytes reversedS(block.begin() + 2, block.end());
    reversedS[0] ^= 0x80;
    Bytes keep = reversedS;
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), ca.der.data(), sig64(reversedS.data())), 6u);
    EXPECT_EQ(reversedS, keep);
}

TEST(CmsVerify, SelectorLowByte255IsNoKey) {
    // Only a selector whose low byte is 255 means "no usable key"; 254 is an
    // ordinary selector (the test curve), so the signature is merely invalid.
    seed();
    CertFacts ca = fixture_cert("ca_a");
    Bytes content = str("selector");
    Bytes block = block_of("", "");
    type_uN<32> key;
    std::copy(ca.priv.begin(), ca.priv.end(), key.b);
    ASSERT_EQ(CMS_sig_SignedAttr(block.data(), content.data(), content.size(), &key), 0u);
    struct Case {
        unsigned char arc;
        unsigned cms, x509;
    } cases[] = {{0x01, 5, 1}, {0xFE, 6, 0}, {0xFF, 3, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.arc));
        Bytes cert = ca.der;
        unsigned char* spki = x_509_find_public_key_info_block(cert.data());
        unsigned char* arc = nullptr;
        for (unsigned char* p = spki; p < spki + 40 && !arc; ++p)
            if (p[0] == 0x02 && p[1] == 0x23 && p[2] == 0x01) arc = p + 2;  // 1.2.643.2.2.35.1
        ASSERT_NE(arc, nullptr);
        *arc = c.arc;
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(cert.data()), c.arc);
        EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), cert.data(),
                                       sig64(block.data() + 2)), c.cms);
        // The CA's own certificate checked with the altered key certificate.
        EXPECT_EQ(x_509_check_certificate(ca.der.data(), cert.data()), c.x509);
    }
    // A 512-bit key certificate offers no GOST R 34.10-2001 key.
    CertFacts long512 = fixture_cert("leaf_512a");
    EXPECT_EQ(CMS_SignedData_check(nullptr, nullptr, content.data(), content.size(), long512.der.data(),
                                   sig64(block.data() + 2)), 3u);
    EXPECT_EQ(x_509_check_certificate(ca.der.data(), long512.der.data()), 0u);
}
