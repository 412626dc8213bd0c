// Attribute text, SET OF order, signer block, message layout and parsing.
#include <gtest/gtest.h>

#include <cstring>

#include "CMS.h"
#include "pki/pki_fixtures.h"
#include "x_509.h"

using namespace pkt;
using kt::from_hex;
using kt::to_hex;

namespace {

unsigned char* u(std::string& s) { return reinterpret_cast<unsigned char*>(&s[0]); }

const Bytes kFixed = from_hex(
    "3018 06092A864886F70D010903 310B 06092A864886F70D010702"
    "302F 06092A864886F70D010904 3122 0420" + std::string(64, '0'));
const Bytes kContentTypeAttr(kFixed.begin(), kFixed.begin() + 26);
const Bytes kDigestAttr(kFixed.begin() + 26, kFixed.end());

// A user attribute of exactly `size` octets: 1.2.3.4 with an OCTET STRING.
Bytes attribute_of_size(size_t size, unsigned char fill) {
    size_t value = size - 2 - 5 - 2;  // SEQUENCE header, OID element, SET header
    return seq({oid("2A0304"), set({tlv(0x04, Bytes(value - 2, fill))})});
}

std::string item_of_size(size_t size, unsigned char fill) {
    Bytes a = attribute_of_size(size, fill);
    return item("1.2.3.4", Bytes(a.begin() + 9, a.end()));
}

// Sizes of the consecutive elements in [p, p + n).
std::vector<size_t> sizes(const unsigned char* p, size_t n) {
    std::vector<size_t> out;
    for (size_t at = 0; at < n; at += element_size(p + at)) out.push_back(element_size(p + at));
    return out;
}

}  // namespace

TEST(CmsAttribute, ItemToDer) {
    struct Case {
        std::string text;
        Bytes der;
    } cases[] = {
        // signingTime (RFC 5652 11.3)
        {item("1.2.840.113549.1.9.5", text(0x17, "240101120000Z")),
         seq({oid("2A864886F70D010905"), set({text(0x17, "240101120000Z")})})},
        // the value is inserted verbatim, whatever it holds; padding "="
        {item("1.2.643.100.1", {0x0C, 0x01, 0x41}), seq({oid("2A85036401"), set({from_hex("0C0141")})})},
        {item("1.2.643.100.1", {0x04, 0x00}), seq({oid("2A85036401"), set({from_hex("0400")})})},
        // long value: the headers grow to the 0x81 and 0x82 forms
        {item("1.2.3", tlv(0x04, Bytes(300, 0xEE))), seq({oid("2A03"), set({tlv(0x04, Bytes(300, 0xEE))})})},
        {item("1.2.3", tlv(0x04, Bytes(150, 0xEE))), seq({oid("2A03"), set({tlv(0x04, Bytes(150, 0xEE))})})},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.text);
        Bytes out(c.text.size() + 64, 0xCC);
        unsigned n = CMS_create_Attribute(u(c.text), c.text.size(), out.data());
        ASSERT_EQ(n, c.der.size());
        EXPECT_EQ(to_hex(out.data(), n), to_hex(c.der));
    }
}

TEST(CmsAttribute, ListsAndBadItems) {
    Bytes a = text(0x17, "240101120000Z"), b = tlv(0x04, {1, 2, 3});
    std::string list = item("1.2.840.113549.1.9.5", a) + "&" + item("1.2.3", b) + "&";
    Bytes want = cat({seq({oid("2A864886F70D010905"), set({a})}), seq({oid("2A03"), set({b})})});
    Bytes out(list.size() + 64);
    EXPECT_EQ(CMS_create_Attr(u(list), list.size(), out.data()), want.size());
    EXPECT_EQ(to_hex(out.data(), want.size()), to_hex(want));
    EXPECT_EQ(CMS_create_Attr(nullptr, 10, out.data()), 0u);
    EXPECT_EQ(CMS_create_Attr(u(list), 0, out.data()), 0u);

    // Items without ':', with an OID text that is not dotted decimal of two
    // arcs or more, or with no whole Base64 group give nothing; so do items
    // whose OID encoder would read dots past the OID text.
    for (std::string bad : {"1.2.3", "1.2.3:", "1.2.3:QQ", "1:QUFB", "1..2:QUFB", ".1.2:QUFB", "1.2.:QUFB", "1.a:QUFB",
                            ":QUFB", "1.2.3.4.5.6:...."}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(CMS_create_Attribute(u(bad), bad.size(), out.data()), 0u);
    }
}

TEST(CmsAttribute, SortBySizeStable) {
    // Three user attributes of 40, 26 and 60 octets join the fixed 26
    // (contentType) and 49 (messageDigest).
    std::string text = item_of_size(40, 0x40) + "&" + item_of_size(26, 0x26) + "&" + item_of_size(60, 0x60);
    Bytes out(CMS_create_SignedAttr(u(text), text.size(), nullptr, 0, nullptr, 0, nullptr));
    EXPECT_EQ(out.size(), text.size() + 141);
    unsigned n = CMS_create_SignedAttr(u(text), text.size(), nullptr, 0, nullptr, 0, out.data());
    ASSERT_EQ(out[0], 0xA0);
    size_t h = header_size(out.data());
    size_t run = element_size(out.data()) - h;
    EXPECT_EQ(run, 26u + 26 + 40 + 49 + 60);
    EXPECT_EQ(sizes(out.data() + h, run), (std::vector<size_t>{26, 26, 40, 49, 60}));
    // contentType keeps its place in front of the user attribute of the same size.
    EXPECT_EQ(to_hex(out.data() + h, 26), to_hex(kContentTypeAttr));
    EXPECT_EQ(to_hex(out.data() + h + 26, 26), to_hex(attribute_of_size(26, 0x26)));
    EXPECT_EQ(to_hex(out.data() + h + 52, 40), to_hex(attribute_of_size(40, 0x40)));
    EXPECT_EQ(to_hex(out.data() + h + 92, 49), to_hex(kDigestAttr));
    EXPECT_EQ(to_hex(out.data() + h + 141, 60), to_hex(attribute_of_size(60, 0x60)));
    // Then the empty signature.
    EXPECT_EQ(n, h + run + 66);
    EXPECT_EQ(to_hex(out.data() + h + run, 66), "0440" + std::string(128, '0'));
}

TEST(CmsAttribute, SortRuns) {
    struct Case {
        std::vector<Bytes> in;
        std::vector<int> order;
    } cases[] = {
        {{tlv(0x04, Bytes(3, 1)), tlv(0x04, Bytes(1, 2)), tlv(0x04, Bytes(2, 3))}, {1, 2, 0}},
        {{tlv(0x04, Bytes(2, 1)), tlv(0x04, Bytes(2, 2)), tlv(0x04, Bytes(1, 3)), tlv(0x04, Bytes(2, 4))}, {2, 0, 1, 3}},
        // contents are not compared: DER's order would put 04 01 01 first
        {{tlv(0x04, {0x09}), tlv(0x04, {0x01})}, {0, 1}},
        {{tlv(0x04, Bytes(200, 1)), tlv(0x04, Bytes(127, 2)), tlv(0x04, Bytes(128, 3))}, {1, 2, 0}},
        {{}, {}},
    };
    for (Case& c : cases) {
        Bytes run, want;
        for (const Bytes& e : c.in) run.insert(run.end(), e.begin(), e.end());
        for (int i : c.order) want.insert(want.end(), c.in[i].begin(), c.in[i].end());
        CMS_DER_SetOf_sort(run.data(), run.size());
        EXPECT_EQ(to_hex(run), to_hex(want));
    }
}

TEST(CmsAttribute, SignerBlockShapes) {
    // No attributes: exactly the empty signature.
    Bytes out(200, 0xCC);
    EXPECT_EQ(CMS_create_SignedAttr(nullptr, 0, nullptr, 0, nullptr, 0, nullptr), 66u);
    EXPECT_EQ(CMS_create_SignedAttr(nullptr, 0, nullptr, 0, nullptr, 0, out.data()), 66u);
    EXPECT_EQ(to_hex(out.data(), 66), "0440" + std::string(128, '0'));

    // Empty signed text: the fixed attributes still are not written.
    std::string empty;
    EXPECT_EQ(CMS_create_SignedAttr(u(empty), 0, nullptr, 0, nullptr, 0, out.data()), 66u);

    // Signed text given: 75 fixed octets, sorted: 26 then 49.
    std::string one = item("1.2.840.113549.1.9.5", text(0x17, "240101120000Z"));
    out.assign(one.size() + 141, 0xCC);
    unsigned n = CMS_create_SignedAttr(u(one), one.size(), nullptr, 0, nullptr, 0, out.data());
    Bytes st = seq({oid("2A864886F70D010905"), set({text(0x17, "240101120000Z")})});
    Bytes want = cat({tlv(0xA0, cat({kContentTypeAttr, st, kDigestAttr})),
                      from_hex("0440"), Bytes(64, 0)});
    ASSERT_EQ(n, want.size());
    EXPECT_EQ(to_hex(out.data(), n), to_hex(want));

    // Unsigned attributes keep the order given.
    std::string uns = item_of_size(40, 1) + "&" + item_of_size(26, 2);
    out.assign(CMS_create_SignedAttr(nullptr, 0, u(uns), uns.size(), nullptr, 0, nullptr), 0xCC);
    EXPECT_EQ(out.size(), 66 + uns.size());
    n = CMS_create_SignedAttr(nullptr, 0, u(uns), uns.size(), nullptr, 0, out.data());
    want = cat({from_hex("0440"), Bytes(64, 0), tlv(0xA1, cat({attribute_of_size(40, 1), attribute_of_size(26, 2)}))});
    ASSERT_EQ(n, want.size());
    EXPECT_EQ(to_hex(out.data(), n), to_hex(want));

    // Both.
    out.assign(CMS_create_SignedAttr(u(one), one.size(), u(uns), uns.size(), nullptr, 0, nullptr), 0xCC);
    EXPECT_EQ(out.size(), one.size() + 141 + uns.size());
    n = CMS_create_SignedAttr(u(one), one.size(), u(uns), uns.size(), nullptr, 0, out.data());
    EXPECT_EQ(out[0], 0xA0);
    EXPECT_EQ(out[element_size(out.data())], 0x04);
    EXPECT_EQ(out[element_size(out.data()) + 66], 0xA1);
    EXPECT_EQ(n, element_size(out.data()) + 66 + 2 + 66);
}

TEST(CmsAttribute, CheckTextAndBufferLength) {
    struct Case {
        std::string text;
        unsigned want;
    } cases[] = {
        {"", 0},
        {"1.2.840.113549.1.9.3:BgkqhkiG9w0BBwE=", 1},
        {"1.2.840.113549.1.9.4:BCA=", 2},
        {"1.2.840.113549.1.9.3:AAAA&1.2.840.113549.1.9.4:AAAA&1.2.840.113549.1.9.4:AAAA", 5},
        {"1.2.840.113549.1.9.5:AAAA&1.2.840.113549.1.9.30:AAAA&1.2.840.113549.1.9:AAAA", 0},
        {"1.2.840.113549.1.9.5:AAAA&1.2.840.113549.1.9.3:AAAA&", 1},
    };
    for (Case& c : cases) EXPECT_EQ(CMS_check_SignedAttr(u(c.text), c.text.size()), c.want) << c.text;
    EXPECT_EQ(CMS_check_SignedAttr(nullptr, 5), 0u);

    EXPECT_EQ(CMS_SignedAttr_buffer_len(0), 66u);
    EXPECT_EQ(CMS_SignedAttr_buffer_len(1), 142u);
    EXPECT_EQ(CMS_SignedAttr_buffer_len(65459), 65600u);
    EXPECT_EQ(CMS_SignedAttr_buffer_len(65460), 0u);
    EXPECT_EQ(CMS_SignedAttr_buffer_len(0xFFFFFFFFu), 140u);  // n + 75 wraps below the limit
}

TEST(CmsAttribute, FindDigestAndMimeType) {
    std::string one = item("1.2.840.113549.1.9.5", text(0x17, "240101120000Z"));
    Bytes block(one.size() + 141);
    CMS_create_SignedAttr(u(one), one.size(), nullptr, 0, nullptr, 0, block.data());
    unsigned char* md = CMS_SignedAttr_find_msg_digest_value_field(block.data());
    ASSERT_NE(md, nullptr);
    EXPECT_EQ(to_hex(md - 2, 2), "0420");
    EXPECT_EQ(md + 32, block.data() + element_size(block.data()));

    Bytes mdAttr = seq({oid("2A864886F70D010904"), set({tlv(0x04, Bytes(32, 7))})});
    struct Case {
        const char* what;
        Bytes attrs;
        int offset;  // of the value in attrs, -1 for none
    } cases[] = {
        {"second attribute", tlv(0xA0, cat({seq({oid("2A03"), set({tlv(0x04, {1})})}), mdAttr})), 2 + 11 + 2 + 15},
        {"not [0]", tlv(0x31, mdAttr), -1},
        {"child not a SEQUENCE", tlv(0xA0, cat({set({}), mdAttr})), -1},
        {"digest of 31 octets", tlv(0xA0, seq({oid("2A864886F70D010904"), set({tlv(0x04, Bytes(31, 7))})})), -1},
        {"digest of 33 octets", tlv(0xA0, seq({oid("2A864886F70D010904"), set({tlv(0x04, Bytes(33, 7))})})), -1},
        {"other OID", tlv(0xA0, seq({oid("2A864886F70D010903"), set({tlv(0x04, Bytes(32, 7))})})), -1},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.what);
        unsigned char* p = CMS_SignedAttr_find_msg_digest_value_field(c.attrs.data());
        if (c.offset < 0) EXPECT_EQ(p, nullptr);
        else EXPECT_EQ(p, c.attrs.data() + c.offset);
    }

    // contentType whose value holds (OID, OCTET STRING type text).
    Bytes mime = seq({oid("2A864886F70D010903"), set({seq({oid("2A864886F70D010701"), text(0x04, "text/plain")})})});
    Bytes attrs = tlv(0xA0, cat({mdAttr, mime}));
    cms_mime_type_t m = CMS_SignedAttr_MIME_type(attrs.data());
    EXPECT_EQ(as_string(m.value, m.length), "text/plain");
    EXPECT_EQ(m.length, 10u);
    // The library's own contentType holds a bare OID: no type text.
    m = CMS_SignedAttr_MIME_type(block.data());
    EXPECT_EQ(m.value, nullptr);
    EXPECT_EQ(m.length, 0u);
    Bytes noCt = tlv(0xA0, mdAttr);
    m = CMS_SignedAttr_MIME_type(noCt.data());
    EXPECT_EQ(m.value, nullptr);
    Bytes empty = from_hex("A0 00");
    EXPECT_EQ(CMS_SignedAttr_MIME_type(empty.data()).value, nullptr);
}

TEST(CmsMessage, LayoutAndParse) {
    CertFacts ca = fixture_cert("ca_a");
    std::string one = item("1.2.840.113549.1.9.5", text(0x17, "240101120000Z"));
    Bytes block(one.size() + 141);
    unsigned blockLen = CMS_create_SignedAttr(u(one), one.size(), nullptr, 0, nullptr, 0, block.data());
    block.resize(blockLen);
    block[blockLen - 1] = 0x77;  // recognisable signature octet
    Bytes content = str("hello, GOST");
    x509_field_pointers f = x_509_get_field_pointers(ca.der.data());

    for (bool attached : {true, false}) {
        for (unsigned char withCert : {0, 1}) {
            SCOPED_TRACE(std::to_string(attached) + "/" + std::to_string(withCert));
            unsigned char* c = attached ? content.data() : nullptr;
            unsigned cl = attached ? content.size() : 0;
            unsigned size = CMS_SignedData_create(c, cl, block.data(), blockLen, ca.der.data(), withCert, nullptr);
            ASSERT_GT(size, 0u);
            Bytes msg(size);
            EXPECT_EQ(CMS_SignedData_create(c, cl, block.data(), blockLen, ca.der.data(), withCert, msg.data()), size);
            EXPECT_EQ(element_size(msg.data()), size);

            // ContentInfo { signedData, [0] SignedData { 1, {gost94}, encap, [certs], signerInfos } }
            unsigned char* sd = child(child(msg.data(), 1), 0);
            EXPECT_EQ(to_hex(child(sd, 0), 3), "020101");
            EXPECT_EQ(to_hex(child(sd, 1), 14), "310c300a06062a8503020209" "0500");
            unsigned char* encap = child(sd, 2);
            if (attached)
                EXPECT_EQ(to_hex(encap, element_size(encap)),
                          to_hex(seq({oid("2A864886F70D010702"), tlv(0xA0, tlv(0x04, content))})));
            else
                EXPECT_EQ(to_hex(encap, element_size(encap)), "300b06092a864886f70d010702");
            unsigned char* sis = child(sd, withCert ? 4 : 3);
            EXPECT_EQ(sis[0], 0x31);
            unsigned char* si = child(sis, 0);
            EXPECT_EQ(to_hex(child(si, 1), element_size(child(si, 1))),
                      to_hex(tlv(0x30, cat({Bytes(f.issuer.ptr, f.issuer.ptr + f.issuer.len),
                                            Bytes(f.serial_number.ptr, f.serial_number.ptr + f.serial_number.len)}))));
            EXPECT_EQ(to_hex(child(si, 4), 12), "300a06062a85030202130500");

            cms_signed_data_t r = CMS_SignedData_parse(msg.data());
            EXPECT_EQ(r.status, 0);
            EXPECT_EQ(as_string(r.content, r.content_len), attached ? "hello, GOST" : "");
            if (withCert) {
                EXPECT_EQ(r.certificate_len, ca.der.size());
                EXPECT_EQ(to_hex(r.certificate, r.certificate_len), to_hex(ca.der));
            } else {
                EXPECT_EQ(r.certificate, nullptr);
            }
            EXPECT_EQ(to_hex(r.signed_attrs, r.signed_attrs_len), to_hex(block.data(), element_size(block.data())));
            EXPECT_EQ(r.signer_id, child(si, 1));
            ASSERT_EQ(r.signature_len, 64u);
            EXPECT_EQ(r.signature[63], 0x77);
        }
    }

    // Without signed attributes the SignerInfo has no [0].
    Bytes bare(66, 0);
    bare[0] = 0x04, bare[1] = 0x40;
    Bytes msg(CMS_SignedData_create(content.data(), content.size(), bare.data(), 66, ca.der.data(), 1, nullptr));
    CMS_SignedData_create(content.data(), content.size(), bare.data(), 66, ca.der.data(), 1, msg.data());
    cms_signed_data_t r = CMS_SignedData_parse(msg.data());
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.signed_attrs, nullptr);
    EXPECT_EQ(r.signature_len, 64u);
    EXPECT_EQ(r.signature + 64, msg.data() + msg.size());
}

TEST(CmsMessage, CreateRejects) {
    Bytes bare(66, 0);
    bare[0] = 0x04, bare[1] = 0x40;
    Bytes content = str("x");
    CertFacts v1 = fixture_cert("v1_a");
    // A certificate without the explicit version field cannot name the signer.
    EXPECT_EQ(CMS_SignedData_create(content.data(), 1, bare.data(), 66, v1.der.data(), 1, nullptr), 0u);
    EXPECT_EQ(CMS_SignedData_create(content.data(), 1, bare.data(), 66, nullptr, 1, nullptr), 0u);
    // Empty serial number or issuer.
    Bytes noSerial = seq({seq({tlv(0xA0, tlv(0x02, {2})), tlv(0x02, {}), seq({}), seq({set({})})})});
    EXPECT_EQ(CMS_SignedData_create(content.data(), 1, bare.data(), 66, noSerial.data(), 1, nullptr), 0u);
    Bytes noIssuer = seq({seq({tlv(0xA0, tlv(0x02, {2})), tlv(0x02, {1}), seq({}), seq({})})});
    EXPECT_EQ(CMS_SignedData_create(content.data(), 1, bare.data(), 66, noIssuer.data(), 1, nullptr), 0u);
    Bytes ok = seq({seq({tlv(0xA0, tlv(0x02, {2})), tlv(0x02, {1}), seq({}), seq({set({})})})});
    EXPECT_GT(CMS_SignedData_create(content.data(), 1, bare.data(), 66, ok.data(), 1, nullptr), 0u);
    EXPECT_EQ(CMS_SignedData_create(nullptr, 1, bare.data(), 66, ok.data(), 1, nullptr), 0u);
}

TEST(CmsMessage, ParseStopsAtFirstMismatch) {
    CertFacts ca = fixture_cert("ca_a");
    Bytes msg = kt::load_file("pki/cms_openssl_ca_a.der");
    cms_signed_data_t good = CMS_SignedData_parse(msg.data());
    ASSERT_EQ(good.status, 0);
    struct Case {
        const char* what;
        size_t at;
        unsigned char value;
        bool content, cert, sid;
    } cases[] = {
        {"outer tag", 0, 0x31, false, false, false},
        {"contentType OID", 14, 0x01, false, false, false},  // last octet of 1.2.840.113549.1.7.2
        {"signature tag", static_cast<size_t>(good.signature - msg.data() - 2), 0x03, true, true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes bad = msg;
        bad[c.at] = c.value;
        cms_signed_data_t r = CMS_SignedData_parse(bad.data());
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(r.content != nullptr, c.content);
        EXPECT_EQ(r.certificate != nullptr, c.cert);
        EXPECT_EQ(r.signer_id != nullptr, c.sid);
        EXPECT_EQ(r.signature, nullptr);
    }
    EXPECT_EQ(CMS_SignedData_parse(nullptr).status, 1);
}

TEST(CmsAttribute, SizeBoundCoversTinyItems) {
    // Text-based bound: text + 141. Items whose DER is longer than their
    // text ("1.2.3:AAAA" is 10 characters, 11 octets) and the [0] header
    // would overrun it: the bound never answers less than the block needs.
    struct Case {
        std::string sig, uns;
    } cases[] = {
        {"1.2.3:AAAA", ""},
        {"1.2.3:AAAA&1.2.3:AAAA&1.2.3:AAAA&1.2.3:AAAA", "1.2.3:AAAA&1.2.3:AAAA"},
        {"", "1.2.3:AAAA"},
        {"1.2:AA==", ""},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.sig + " | " + c.uns);
        unsigned char* s = c.sig.empty() ? nullptr : u(c.sig);
        unsigned char* n = c.uns.empty() ? nullptr : u(c.uns);
        unsigned bound = CMS_create_SignedAttr(s, c.sig.size(), n, c.uns.size(), nullptr, 0, nullptr);
        Bytes out(bound + 64, 0xCC);
        unsigned written = CMS_create_SignedAttr(s, c.sig.size(), n, c.uns.size(), nullptr, 0, out.data());
        EXPECT_LE(written, bound);
        EXPECT_GE(bound, (c.sig.empty() ? 66 : c.sig.size() + 141) + c.uns.size());
        for (size_t i = bound; i < out.size(); ++i) ASSERT_EQ(out[i], 0xCC) << i;  // nothing beyond
    }
}

TEST(CmsMessage, ParseOptionalAndMissingParts) {
    CertFacts ca = fixture_cert("ca_a");
    const Bytes gost94 = seq({oid("2A85030202 09"), tlv(0x05, {})});
    const Bytes sid = seq({seq({set({})}), tlv(0x02, {0x05})});
    const Bytes attrs = tlv(0xA0, seq({oid("2A864886F70D010904"), set({tlv(0x04, Bytes(32, 3))})}));
    const Bytes sigAlg = seq({oid("2A85030202 13"), tlv(0x05, {})});
    const Bytes sig = tlv(0x04, Bytes(64, 0x66));
    const Bytes encap = seq({oid("2A864886F70D010701"), tlv(0xA0, tlv(0x04, str("data")))});
    struct Case {
        const char* what;
        Bytes digestAlg, encap, certs, crls, signerInfo;
        int status;
        bool content, cert, sid, attrs, sig;
    } cases[] = {
        {"certificates and crls", gost94, encap, tlv(0xA0, ca.der), tlv(0xA1, seq({})),
         seq({tlv(0x02, {1}), sid, gost94, attrs, sigAlg, sig}), 0, true, true, true, true, true},
        {"crls only", gost94, encap, {}, tlv(0xA1, seq({})), seq({tlv(0x02, {1}), sid, gost94, attrs, sigAlg, sig}),
         0, true, false, true, true, true},
        // Only a SEQUENCE as the first certificate is taken.
        {"first certificate of another kind", gost94, encap, tlv(0xA0, cat({tlv(0xA1, {}), ca.der})), {},
         seq({tlv(0x02, {1}), sid, gost94, attrs, sigAlg, sig}), 0, true, false, true, true, true},
        {"no eContent", gost94, seq({oid("2A864886F70D010701")}), {}, {},
         seq({tlv(0x02, {1}), sid, gost94, attrs, sigAlg, sig}), 0, false, false, true, true, true},
        {"eContent not an OCTET STRING", gost94, seq({oid("2A864886F70D010701"), tlv(0xA0, tlv(0x24, {}))}), {}, {},
         seq({tlv(0x02, {1}), sid, gost94, sigAlg, sig}), 0, false, false, true, false, true},
        {"no signed attributes", gost94, encap, {}, {}, seq({tlv(0x02, {1}), sid, gost94, sigAlg, sig}), 0, true, false,
         true, false, true},
        // GOST R 34.11-2012 (256) is not the digest this library signs with.
        {"other digest algorithm", seq({oid("2A85030701010202")}), encap, tlv(0xA0, ca.der), {},
         seq({tlv(0x02, {1}), sid, gost94, attrs, sigAlg, sig}), 1, false, false, false, false, false},
        {"encapContentInfo without OID", gost94, seq({tlv(0xA0, tlv(0x04, str("data")))}), {}, {},
         seq({tlv(0x02, {1}), sid, gost94, sigAlg, sig}), 1, false, false, false, false, false},
        // A subjectKeyIdentifier signer ([0]) is not read.
        {"signer by key identifier", gost94, encap, tlv(0xA0, ca.der), {},
         seq({tlv(0x02, {3}), tlv(0x80, {1, 2}), gost94, sigAlg, sig}), 1, true, true, false, false, false},
        {"no signatureAlgorithm", gost94, encap, {}, {}, seq({tlv(0x02, {1}), sid, gost94, attrs, sig}), 1, true, false,
         true, true, false},
        {"signature not an OCTET STRING", gost94, encap, {}, {},
         seq({tlv(0x02, {1}), sid, gost94, attrs, sigAlg, tlv(0x03, Bytes(65, 0))}), 1, true, false, true, true, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes msg = seq({oid("2A864886F70D010702"),
                         tlv(0xA0, seq({tlv(0x02, {1}), set({c.digestAlg}), c.encap, c.certs, c.crls, set({c.signerInfo})}))});
        cms_signed_data_t r = CMS_SignedData_parse(msg.data());
        EXPECT_EQ(r.status, c.status);
        EXPECT_EQ(r.content != nullptr, c.content);
        if (c.content) EXPECT_EQ(as_string(r.content, r.content_len), "data");
        EXPECT_EQ(r.certificate != nullptr, c.cert);
        if (c.cert) EXPECT_EQ(to_hex(r.certificate, r.certificate_len), to_hex(ca.der));
        EXPECT_EQ(r.signer_id != nullptr, c.sid);
        if (c.sid) EXPECT_EQ(to_hex(r.signer_id, r.signer_id_len), to_hex(sid));
        EXPECT_EQ(r.signed_attrs != nullptr, c.attrs);
        if (c.attrs) EXPECT_EQ(to_hex(r.signed_attrs, r.signed_attrs_len), to_hex(attrs));
        EXPECT_EQ(r.signature != nullptr, c.sig);
        if (c.sig) EXPECT_EQ(to_hex(r.signature, r.signature_len), to_hex(Bytes(64, 0x66)));
    }
}
