// Attribute text, SET OF order, signer block, message layout and parsing.
#include <gtest/gtest.h>

#include <algorithm>

#include "CMS.h"
#include "pki/pki_fixtures.h"
#include "x_509.h"

using namespace pkt;
using kt::from_hex;
using kt::to_hex;

namespace {

const Bytes kFixed = from_hex(
    "3018 06092A864886F70D010903 310B 06092A864886F70D010702"
    "302F 06092A864886F70D010904 3122 0420" + std::string(64, '0'));
const Bytes kContentTypeAttr(kFixed.begin(), kFixed.begin() + 26);
const Bytes kDigestAttr(kFixed.begin() + 26, kFixed.end());
const Bytes kEmptySig = cat({from_hex("0440"), Bytes(64, 0)});
const Bytes kSignedDataOid = oid("2A864886F70D010702"), kVersion1 = from_hex("020101");
const Bytes kDigestAlg = from_hex("300A 06062A8503020209 0500"), kSigAlg = from_hex("300A 06062A8503020213 0500");
const Bytes kSigningTimeAttr = seq({oid("2A864886F70D010905"), set({text(0x17, "240101120000Z")})});
const std::string kSigningTime = item("1.2.840.113549.1.9.5", text(0x17, "240101120000Z"));

// A user attribute of exactly `size` octets: 1.2.3.4 with an OCTET STRING.
Bytes attribute_of_size(size_t size, unsigned char fill) {
    return seq({oid("2A0304"), set({tlv(0x04, Bytes(size - 2 - 5 - 2 - 2, fill))})});
}

std::string item_of_size(size_t size, unsigned char fill) {
    Bytes a = attribute_of_size(size, fill);
    return item("1.2.3.4", Bytes(a.begin() + 9, a.end()));
}

}  // namespace

TEST(CmsAttribute, ItemsAndLists) {
    struct Case { std::string text; Bytes der; };
    std::vector<Case> cases = {
        {kSigningTime, kSigningTimeAttr},  // signingTime (RFC 5652 11.3)
        // the value is inserted verbatim, whatever it holds; padding "="
        {item("1.2.643.100.1", {0x0C, 0x01, 0x41}), seq({oid("2A85036401"), set({from_hex("0C0141")})})},
        {item("1.2.643.100.1", {0x04, 0x00}), seq({oid("2A85036401"), set({from_hex("0400")})})},
        // long value: the headers grow to the 0x81 and 0x82 forms
        {item("1.2.3", tlv(0x04, Bytes(300, 0xEE))), seq({oid("2A03"), set({tlv(0x04, Bytes(300, 0xEE))})})},
        {item("1.2.3", tlv(0x04, Bytes(150, 0xEE))), seq({oid("2A03"), set({tlv(0x04, Bytes(150, 0xEE))})})},
    };
    // Items without ':', with an OID text that is not dotted decimal of two
    // arcs or more, or with no whole Base64 group give nothing; so do items
    // whose OID encoder would read dots past the OID text.
    for (const char* bad : {"1.2.3", "1.2.3:", "1.2.3:QQ", "1:QUFB", "1..2:QUFB", ".1.2:QUFB", "1.2.:QUFB", "1.a:QUFB",
                            ":QUFB", "1.2.3.4.5.6:...."})
        cases.push_back({bad, {}});
    for (Case& c : cases) {
        Bytes out(c.text.size() + 64, 0xCC);
        unsigned n = CMS_create_Attribute(u(c.text), c.text.size(), out.data());
        EXPECT_EQ(to_hex(out.data(), n), to_hex(c.der)) << c.text;
    }

    Bytes b = tlv(0x04, {1, 2, 3});
    std::string list = kSigningTime + "&" + item("1.2.3", b) + "&";  // a trailing '&' ends the list
    Bytes want = cat({kSigningTimeAttr, seq({oid("2A03"), set({b})})}), out(list.size() + 64);
    EXPECT_EQ(CMS_create_Attr(u(list), list.size(), out.data()), want.size());
    EXPECT_EQ(to_hex(out.data(), want.size()), to_hex(want));
    EXPECT_EQ(CMS_create_Attr(nullptr, 10, out.data()), 0u);
    EXPECT_EQ(CMS_create_Attr(u(list), 0, out.data()), 0u);
}

TEST(CmsAttribute, SortRuns) {
    struct Case { std::vector<Bytes> in; std::vector<int> order; };
    std::vector<Case> cases_random, cases = {
        {{tlv(0x04, Bytes(3, 1)), tlv(0x04, Bytes(1, 2)), tlv(0x04, Bytes(2, 3))}, {1, 2, 0}},
        {{tlv(0x04, Bytes(2, 1)), tlv(0x04, Bytes(2, 2)), tlv(0x04, Bytes(1, 3)), tlv(0x04, Bytes(2, 4))}, {2, 0, 1, 3}},
        // contents are not compared: DER's order would put 04 01 01 first
        {{tlv(0x04, {0x09}), tlv(0x04, {0x01})}, {0, 1}},
        {{tlv(0x04, Bytes(200, 1)), tlv(0x04, Bytes(127, 2)), tlv(0x04, Bytes(128, 3))}, {1, 2, 0}},
        {{}, {}},
    };
    // Random runs, up to 4,000 elements of a few sizes (equal sizes keep
    // their order), against a stable sort of the element list.
    kt::Rng rng(69);
    for (unsigned n : {2u, 3u, 7u, 64u, 333u, 4000u}) {
        Case c;
        for (unsigned i = 0; i < n; ++i) c.in.push_back(tlv(0x04, Bytes(rng.below(n < 64 ? 4 : 300), (unsigned char)i)));
        for (unsigned i = 0; i < n; ++i) c.order.push_back((int)i);
        std::stable_sort(c.order.begin(), c.order.end(), [&](int x, int y) { return c.in[x].size() < c.in[y].size(); });
        cases_random.push_back(c);
    }
    cases.insert(cases.end(), cases_random.begin(), cases_random.end());
    for (Case& c : cases) {
        Bytes run, want;
        for (const Bytes& e : c.in) run.insert(run.end(), e.begin(), e.end());
        for (int i : c.order) want.insert(want.end(), c.in[i].begin(), c.in[i].end());
        CMS_DER_SetOf_sort(run.data(), run.size());
        EXPECT_EQ(to_hex(run), to_hex(want));
    }
}

TEST(CmsAttribute, SignerBlockShapesAndSizeBound) {
    // The null-output size is text based: (signed + 141, or 66) + unsigned.
    // Items whose DER is longer than their text ("1.2.3:AAAA" is 10
    // characters, 11 octets) and the [0]/[1] headers would overrun it, so it
    // may be larger, but never less than what is written. Signed attributes
    // are ordered by whole size, equal sizes as written: user attributes of
    // 40, 26 and 60 octets join the fixed 26 (contentType) and 49
    // (messageDigest), contentType staying in front of the user attribute of
    // its size. DER (X.690 11.6) would put that user attribute (30 18 06 03
    // ...) first; OpenSSL verifies the attributes as received and accepts the
    // library's order (interop.txt, korvex_*_sort_example_*). Unsigned
    // attributes keep the order given.
    const std::string sorted = item_of_size(40, 0x40) + "&" + item_of_size(26, 0x26) + "&" + item_of_size(60, 0x60);
    const std::string uns = item_of_size(40, 1) + "&" + item_of_size(26, 2);
    const Bytes a0 = tlv(0xA0, cat({kContentTypeAttr, kSigningTimeAttr, kDigestAttr}));
    const Bytes a1 = tlv(0xA1, cat({attribute_of_size(40, 1), attribute_of_size(26, 2)}));
    // want empty: only the bound is checked.
    struct Case { std::string sig, uns; Bytes want; } cases[] = {
        {"", "", kEmptySig},
        {kSigningTime, "", cat({a0, kEmptySig})},
        {sorted, "", cat({tlv(0xA0, cat({kContentTypeAttr, attribute_of_size(26, 0x26), attribute_of_size(40, 0x40),
                                        kDigestAttr, attribute_of_size(60, 0x60)})), kEmptySig})},
        {"", uns, cat({kEmptySig, a1})},
        {kSigningTime, uns, cat({a0, kEmptySig, a1})},
        {"1.2.3:AAAA", "", {}},
        {"1.2.3:AAAA&1.2.3:AAAA&1.2.3:AAAA&1.2.3:AAAA", "1.2.3:AAAA&1.2.3:AAAA", {}},
        {"", "1.2.3:AAAA", {}},
        {"1.2:AA==", "", {}},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.sig + " | " + c.uns);
        unsigned char* s = c.sig.empty() ? nullptr : u(c.sig);
        unsigned char* n = c.uns.empty() ? nullptr : u(c.uns);
        size_t formula = (c.sig.empty() ? 66 : c.sig.size() + 141) + c.uns.size();
        unsigned bound = CMS_create_SignedAttr(s, c.sig.size(), n, c.uns.size(), nullptr, 0, nullptr);
        Bytes out(bound + 64, 0xCC);
        unsigned written = CMS_create_SignedAttr(s, c.sig.size(), n, c.uns.size(), nullptr, 0, out.data());
        EXPECT_LE(written, bound);
        EXPECT_GE(bound, formula);
        for (size_t i = bound; i < out.size(); ++i) ASSERT_EQ(out[i], 0xCC) << i;  // nothing beyond
        if (c.want.empty()) continue;
        EXPECT_EQ(bound, formula);
        EXPECT_EQ(to_hex(out.data(), written), to_hex(c.want));
    }
    // Empty signed text: the fixed attributes still are not written.
    std::string empty;
    Bytes out(100);
    EXPECT_EQ(CMS_create_SignedAttr(u(empty), 0, nullptr, 0, nullptr, 0, out.data()), 66u);
}

TEST(CmsAttribute, CheckTextAndBufferLength) {
    struct Case { std::string text; unsigned want; } cases[] = {
        {"", 0},
        {"1.2.840.113549.1.9.3:BgkqhkiG9w0BBwE=", 1},
        {"1.2.840.113549.1.9.4:BCA=", 2},
        {"1.2.840.113549.1.9.3:AAAA&1.2.840.113549.1.9.4:AAAA&1.2.840.113549.1.9.4:AAAA", 5},
        {"1.2.840.113549.1.9.5:AAAA&1.2.840.113549.1.9.30:AAAA&1.2.840.113549.1.9:AAAA", 0},
        {"1.2.840.113549.1.9.5:AAAA&1.2.840.113549.1.9.3:AAAA&", 1},
    };
    for (Case& c : cases) EXPECT_EQ(CMS_check_SignedAttr(u(c.text), c.text.size()), c.want) << c.text;
    EXPECT_EQ(CMS_check_SignedAttr(nullptr, 5), 0u);

    // n + 75 wraps below the limit for 0xFFFFFFFF.
    const std::pair<unsigned, unsigned> lens[] = {{0, 66}, {1, 142}, {65459, 65600}, {65460, 0}, {0xFFFFFFFFu, 140}};
    for (auto [n, want] : lens) EXPECT_EQ(CMS_SignedAttr_buffer_len(n), want) << n;
}

TEST(CmsAttribute, FindDigestAndMimeType) {
    Bytes block = block_of(kSigningTime, "");
    Bytes mdAttr = seq({oid("2A864886F70D010904"), set({tlv(0x04, Bytes(32, 7))})});
    auto md_of = [](const char* oidHex, size_t n) { return tlv(0xA0, seq({oid(oidHex), set({tlv(0x04, Bytes(n, 7))})})); };
    // offset: of the value in attrs, -1 for none.
    struct Case { const char* what; Bytes attrs; int offset; } cases[] = {
        {"the library's block", block, int(element_size(block.data())) - 32},  // the last attribute
        {"second attribute", tlv(0xA0, cat({seq({oid("2A03"), set({tlv(0x04, {1})})}), mdAttr})), 2 + 11 + 2 + 15},
        {"not [0]", tlv(0x31, mdAttr), -1},
        {"child not a SEQUENCE", tlv(0xA0, cat({set({}), mdAttr})), -1},
        {"digest of 31 octets", md_of("2A864886F70D010904", 31), -1},
        {"digest of 33 octets", md_of("2A864886F70D010904", 33), -1},
        {"other OID", md_of("2A864886F70D010903", 32), -1},
    };
    for (Case& c : cases)
        EXPECT_EQ(CMS_SignedAttr_find_msg_digest_value_field(c.attrs.data()),
                  c.offset < 0 ? nullptr : c.attrs.data() + c.offset) << c.what;

    // contentType whose value holds (OID, OCTET STRING type text).
    Bytes mime = seq({oid("2A864886F70D010903"), set({seq({oid("2A864886F70D010701"), text(0x04, "text/plain")})})});
    Bytes attrs = tlv(0xA0, cat({mdAttr, mime}));
    cms_mime_type_t m = CMS_SignedAttr_MIME_type(attrs.data());
    EXPECT_EQ(as_string(m.value, m.length), "text/plain");
    // The library's own contentType holds a bare OID: no type text; no
    // contentType or no attributes at all give none either.
    Bytes noCt = tlv(0xA0, mdAttr), empty = from_hex("A0 00");
    for (Bytes* b : {&block, &noCt, &empty}) {
        m = CMS_SignedAttr_MIME_type(b->data());
        EXPECT_TRUE(!m.value && !m.length);
    }
}

TEST(CmsMessage, LayoutAndParse) {
    // ContentInfo { signedData, [0] SignedData { 1, {gost94}, encap, [0] cert,
    // { SignerInfo { 1, issuer and serial, gost94, [0] attrs, gost2001, signature, [1] attrs } } } }
    CertFacts ca = fixture_cert("ca_a");
    Bytes content = str("hello, GOST");
    x509_field_pointers f = x_509_get_field_pointers(ca.der.data());
    const Bytes sid = tlv(0x30, cat({Bytes(f.issuer.ptr, f.issuer.ptr + f.issuer.len),
                                     Bytes(f.serial_number.ptr, f.serial_number.ptr + f.serial_number.len)}));
    for (Bytes block : {block_of(kSigningTime, ""), block_of("", ""), block_of(kSigningTime, item_of_size(30, 1))}) {
        size_t attrsLen = block[0] == 0xA0 ? element_size(block.data()) : 0;
        block[attrsLen + 65] = 0x77;  // recognisable signature octet
        const Bytes attrs(block.begin(), block.begin() + attrsLen), rest(block.begin() + attrsLen, block.end());
        for (bool attached : {true, false}) {
            for (bool withCert : {false, true}) {
                SCOPED_TRACE(std::to_string(attrsLen) + "/" + std::to_string(rest.size()) + "/" +
                             std::to_string(attached) + "/" + std::to_string(withCert));
                Bytes msg = message_of(content, attached, block, ca.der, withCert);
                Bytes encap = attached ? seq({kSignedDataOid, tlv(0xA0, tlv(0x04, content))}) : seq({kSignedDataOid});
                Bytes want = seq({kSignedDataOid, tlv(0xA0, seq({kVersion1, set({kDigestAlg}), encap,
                                                                withCert ? tlv(0xA0, ca.der) : Bytes{},
                                                                set({seq({kVersion1, sid, kDigestAlg, attrs, kSigAlg, rest})})}))});
                EXPECT_EQ(to_hex(msg), to_hex(want));

                cms_signed_data_t r = CMS_SignedData_parse(msg.data());
                EXPECT_EQ(r.status, 0);
                EXPECT_EQ(as_string(r.content, r.content_len), attached ? "hello, GOST" : "");
                if (withCert) EXPECT_EQ(to_hex(r.certificate, r.certificate_len), to_hex(ca.der));
                else EXPECT_EQ(r.certificate, nullptr);
                if (attrsLen) EXPECT_EQ(to_hex(r.signed_attrs, r.signed_attrs_len), to_hex(attrs));
                else EXPECT_EQ(r.signed_attrs, nullptr);
                EXPECT_EQ(to_hex(r.signer_id, r.signer_id_len), to_hex(sid));
                ASSERT_EQ(r.signature_len, 64u);
                EXPECT_EQ(r.signature[63], 0x77);
            }
        }
    }
}

TEST(CmsMessage, CreateRejects) {
    Bytes bare = block_of("", ""), content = str("x");
    auto size = [&](unsigned char* c, Bytes cert) {
        return CMS_SignedData_create(c, 1, bare.data(), 66, cert.data(), 1, nullptr);
    };
    // A certificate without the explicit version field cannot name the signer.
    EXPECT_EQ(size(content.data(), fixture_cert("v1_a").der), 0u);
    EXPECT_EQ(CMS_SignedData_create(content.data(), 1, bare.data(), 66, nullptr, 1, nullptr), 0u);
    // Empty serial number or issuer.
    EXPECT_EQ(size(content.data(), seq({seq({tlv(0xA0, tlv(0x02, {2})), tlv(0x02, {}), seq({}), seq({set({})})})})), 0u);
    EXPECT_EQ(size(content.data(), seq({seq({tlv(0xA0, tlv(0x02, {2})), tlv(0x02, {1}), seq({}), seq({})})})), 0u);
    Bytes ok = seq({seq({tlv(0xA0, tlv(0x02, {2})), tlv(0x02, {1}), seq({}), seq({set({})})})});
    EXPECT_GT(size(content.data(), ok), 0u);
    EXPECT_EQ(size(nullptr, ok), 0u);
    // A size past 2^32 - 1 is refused, not wrapped (the content is not read).
    for (unsigned n : {0xFFFFFFF0u, 0xFFFFFFFFu})
        EXPECT_EQ(CMS_SignedData_create(content.data(), n, bare.data(), 66, ok.data(), 1, nullptr), 0u) << n;
}

TEST(CmsMessage, ParseOptionalAndMissingParts) {
    CertFacts ca = fixture_cert("ca_a");
    const Bytes sid = seq({seq({set({})}), tlv(0x02, {0x05})});
    const Bytes attrs = tlv(0xA0, seq({oid("2A864886F70D010904"), set({tlv(0x04, Bytes(32, 3))})}));
    const Bytes sig = tlv(0x04, Bytes(64, 0x66));
    const Bytes encap = seq({oid("2A864886F70D010701"), tlv(0xA0, tlv(0x04, str("data")))});
    const Bytes si = seq({kVersion1, sid, kDigestAlg, attrs, kSigAlg, sig});
    const Bytes siBare = seq({kVersion1, sid, kDigestAlg, kSigAlg, sig});
    struct Case {
        const char* what;
        Bytes digestAlg, encap, certs, crls, signerInfo;
        int status;
        const char* found;  // content, certificate, signer_id, signed_attrs, signature
    } cases[] = {
        {"certificates and crls", kDigestAlg, encap, tlv(0xA0, ca.der), tlv(0xA1, seq({})), si, 0, "11111"},
        {"crls only", kDigestAlg, encap, {}, tlv(0xA1, seq({})), si, 0, "10111"},
        // Only a SEQUENCE as the first certificate is taken.
        {"first certificate of another kind", kDigestAlg, encap, tlv(0xA0, cat({tlv(0xA1, {}), ca.der})), {}, si, 0, "10111"},
        {"no eContent", kDigestAlg, seq({oid("2A864886F70D010701")}), {}, {}, si, 0, "00111"},
        {"eContent not an OCTET STRING", kDigestAlg, seq({oid("2A864886F70D010701"), tlv(0xA0, tlv(0x24, {}))}), {}, {},
         siBare, 0, "00101"},
        {"no signed attributes", kDigestAlg, encap, {}, {}, siBare, 0, "10101"},
        // GOST R 34.11-2012 (256) is not the digest this library signs with.
        {"other digest algorithm", seq({oid("2A85030701010202")}), encap, tlv(0xA0, ca.der), {}, si, 1, "00000"},
        {"encapContentInfo without OID", kDigestAlg, seq({tlv(0xA0, tlv(0x04, str("data")))}), {}, {}, siBare, 1, "00000"},
        // A subjectKeyIdentifier signer ([0]) is not read.
        {"signer by key identifier", kDigestAlg, encap, tlv(0xA0, ca.der), {},
         seq({tlv(0x02, {3}), tlv(0x80, {1, 2}), kDigestAlg, kSigAlg, sig}), 1, "11000"},
        {"no signatureAlgorithm", kDigestAlg, encap, {}, {}, seq({kVersion1, sid, kDigestAlg, attrs, sig}), 1, "10110"},
        {"signature not an OCTET STRING", kDigestAlg, encap, {}, {},
         seq({kVersion1, sid, kDigestAlg, attrs, kSigAlg, tlv(0x03, Bytes(65, 0))}), 1, "10110"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes msg = seq({kSignedDataOid,
                         tlv(0xA0, seq({kVersion1, set({c.digestAlg}), c.encap, c.certs, c.crls, set({c.signerInfo})}))});
        cms_signed_data_t r = CMS_SignedData_parse(msg.data());
        EXPECT_EQ(r.status, c.status);
        auto got = [](const unsigned char* p, size_t n) { return p ? to_hex(p, n) : std::string("-"); };
        auto want = [&](int i, const Bytes& b) { return c.found[i] == '1' ? to_hex(b) : std::string("-"); };
        EXPECT_EQ(got(r.content, r.content_len), want(0, str("data")));
        EXPECT_EQ(got(r.certificate, r.certificate_len), want(1, ca.der));
        EXPECT_EQ(got(r.signer_id, r.signer_id_len), want(2, sid));
        EXPECT_EQ(got(r.signed_attrs, r.signed_attrs_len), want(3, attrs));
        EXPECT_EQ(got(r.signature, r.signature_len), want(4, Bytes(64, 0x66)));
    }
    // The outer tag and the contentType OID (its last octet) come first.
    Bytes msg = kt::load_file("pki/cms_openssl_ca_a.der");
    for (size_t at : {0, 14}) {
        Bytes bad = msg;
        bad[at] ^= 0x01;
        cms_signed_data_t r = CMS_SignedData_parse(bad.data());
        EXPECT_EQ(r.status, 1);
        EXPECT_TRUE(!r.content && !r.certificate && !r.signer_id && !r.signature) << at;
    }
    EXPECT_EQ(CMS_SignedData_parse(nullptr).status, 1);
}
