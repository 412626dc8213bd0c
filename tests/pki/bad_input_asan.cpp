// Truncated and length-corrupted certificates and messages under
// AddressSanitizer: the outermost element is framed to match its buffer
// exactly, so any read outside an element's parent is reported. Every buffer
// handed to the library is a fresh Bytes copy, allocated to its exact size.
#include <gtest/gtest.h>

#include <functional>

#include "CMS.h"
#include "pki/pki_fixtures.h"
#include "x_509.h"

using namespace pkt;

namespace {

Bytes content_of(const Bytes& der) { return Bytes(der.begin() + header_size(der.data()), der.end()); }

void touch_certificate(Bytes c, bool verify) {
    unsigned char* p = c.data();
    x_509_find_public_key_info_block(p);
    x_509_get_open_key(p);
    x_509_get_open_key_parametrs_ds(p);
    x_509_get_open_key_parametrs_ds_512bit(p);
    x_509_get_certificate_length(p);
    x509_field_pointers f = x_509_get_field_pointers(p);
    if (f.subject.ptr) x_509_parse_Name_field(f.subject.ptr);
    if (f.issuer.ptr) x_509_parse_Name_field(f.issuer.ptr);
    x_509_get_key_usage(p);
    x_509_get_textbox_of_cer(p);
    if (verify) x_509_check_certificate(p, nullptr);

    Bytes block = block_of("", "");
    unsigned char content[3] = {1, 2, 3};
    if (unsigned n = CMS_SignedData_create(content, 3, block.data(), 66, p, 1, nullptr)) {
        Bytes msg(n);
        EXPECT_EQ(CMS_SignedData_create(content, 3, block.data(), 66, p, 1, msg.data()), n);
    }
}

void touch_message(Bytes m, Bytes cert, bool verify) {
    cms_signed_data_t r = CMS_SignedData_parse(m.data());
    if (r.signed_attrs) {
        CMS_SignedAttr_find_msg_digest_value_field(r.signed_attrs);
        CMS_SignedAttr_MIME_type(r.signed_attrs);
        Bytes run = content_of(Bytes(r.signed_attrs, r.signed_attrs + r.signed_attrs_len));
        CMS_DER_SetOf_sort(run.data(), run.size());
    }
    if (r.certificate) touch_certificate(Bytes(r.certificate, r.certificate + r.certificate_len), false);
    if (verify && r.signature && r.signature_len >= 64)
        CMS_SignedData_check(r.signed_attrs, nullptr, r.content, r.content_len, cert.data(),
                             reinterpret_cast<type_uN<64>*>(r.signature));
}

// Every prefix of the content, reframed; then every octet replaced by
// length-like values, the outer header kept.
void hostile(const Bytes& der, const std::function<void(const Bytes&, bool)>& touch) {
    Bytes content = content_of(der);
    for (size_t t = 0; t < content.size(); ++t)
        touch(tlv(der[0], Bytes(content.begin(), content.begin() + t)), t % 16 == 0);
    size_t h = header_size(der.data());
    for (size_t i = 0; i < content.size(); ++i) {
        for (unsigned v : {0x00u, 0x01u, 0x7Fu, 0x80u, 0x81u, 0x82u, 0x83u, 0x84u, 0xFFu, content[i] + 1u,
                           content[i] + 0x40u}) {
            Bytes bad = der;
            bad[h + i] = static_cast<unsigned char>(v);
            touch(bad, false);
        }
    }
}

std::vector<Bytes> messages() {
    std::vector<Bytes> out = {kt::load_file("pki/cms_openssl_ca_a.der"), kt::load_file("pki/cms_openssl_leaf_b.der")};
    // Also messages laid out by the library, with both attribute kinds (the
    // signature is left empty: only the layout matters here).
    CertFacts ca = fixture_cert("ca_a");
    std::string sig = item("1.2.840.113549.1.9.5", text(0x17, "240101120000Z")) + "&" +
                      item("1.2.3.4", seq({oid("2A03"), text(0x04, "text/plain")}));
    Bytes block = block_of(sig, item("1.2.3.5", tlv(0x04, Bytes(20, 9)))), content = str("content");
    for (bool attached : {true, false}) out.push_back(message_of(content, attached, block, ca.der, true));
    return out;
}

}  // namespace

TEST(BadInputAsan, Certificates) {
    for (CertFacts& c : fixture_certs()) {
        SCOPED_TRACE(c.name);
        hostile(c.der, touch_certificate);
    }
}

TEST(BadInputAsan, Messages) {
    CertFacts ca = fixture_cert("ca_a");
    auto touch = [&](const Bytes& m, bool verify) { touch_message(m, ca.der, verify); };
    for (Bytes& m : messages()) hostile(m, touch);
}

TEST(BadInputAsan, AttributeTexts) {
    // Random texts over the characters that matter to the item syntax, in
    // exact-size buffers; the output buffer is exactly the announced size.
    const std::string alphabet = "0123456789..::&&==AQZaz+/";
    kt::Rng rng(77);
    int withUserAttrs = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string sig, uns;
        for (unsigned n = rng.below(60); n; --n) sig += alphabet[rng.below(alphabet.size())];
        for (unsigned n = rng.below(30); n; --n) uns += alphabet[rng.below(alphabet.size())];
        if (round % 3 == 0) sig = "1.2.840.113549.1.9.5:" + sig.substr(0, sig.size() / 4 * 4);
        Bytes s(sig.begin(), sig.end()), u(uns.begin(), uns.end());
        unsigned char* sp = sig.empty() ? nullptr : s.data();
        unsigned char* up = uns.empty() ? nullptr : u.data();
        unsigned bound = CMS_create_SignedAttr(sp, sig.size(), up, uns.size(), nullptr, 0, nullptr);
        Bytes out(bound);
        unsigned n = CMS_create_SignedAttr(sp, sig.size(), up, uns.size(), nullptr, 0, out.data());
        ASSERT_LE(n, bound) << sig << " | " << uns;
        if (n > 66 + 2 + 75 + 2) ++withUserAttrs;
        CMS_check_SignedAttr(sp, sig.size());
        CMS_SignedAttr_find_msg_digest_value_field(out.data());
        CMS_SignedAttr_MIME_type(out.data());
    }
    EXPECT_GT(withUserAttrs, 1000);  // the texts do reach the encoders
}
