// X.509 accessors on certificates made by OpenSSL's GOST engine and on
// hand-made DER for the odd cases.
#include <gtest/gtest.h>

#include "pki/pki_fixtures.h"
#include "x_509.h"

using namespace pkt;
using kt::from_hex;
using kt::to_hex;

namespace {

const Bytes kName = seq({set({seq({oid("550406"), text(0x13, "RU")})}),
                         set({seq({oid("550403"), text(0x0C, "Hand Made")})})});

Bytes spki(const std::string& paramOid, const Bytes& key = Bytes(64, 0x11)) {
    return seq({seq({oid("2A85030202 13"), seq({oid(paramOid), oid("2A85030202 1E01")})}),
                tlv(0x03, cat({{0x00}, tlv(0x04, key)}))});
}

// A certificate with the given tbsCertificate children.
Bytes cert_of(const Bytes& tbsContent) {
    return seq({tlv(0x30, tbsContent), seq({oid("2A85030202 03")}), tlv(0x03, cat({{0x00}, Bytes(64, 0x5A)}))});
}

struct HandCert {
    Bytes version = tlv(0xA0, tlv(0x02, {0x02}));
    Bytes serial = tlv(0x02, {0x01, 0x23});
    Bytes alg = seq({oid("2A85030202 03")});
    Bytes validity = seq({text(0x17, "240101000000Z"), text(0x17, "340101000000Z")});
    Bytes subject = kName;
    Bytes key = spki("2A85030202 2301");
    Bytes tail;  // unique identifiers, extensions
    Bytes der() const { return cert_of(cat({version, serial, alg, kName, validity, subject, key, tail})); }
};

Bytes key_usage_ext(const Bytes& bits, bool critical = false) {
    Bytes crit = critical ? tlv(0x01, {0xFF}) : Bytes{};
    return tlv(0xA3, seq({seq({oid("2A864886F70D01090F"), tlv(0x04, {0x30, 0x00})}),  // another extension first
                          seq({oid("551D0F"), crit, tlv(0x04, tlv(0x03, bits))})}));
}

// The eight name slots in record order, as text.
std::vector<std::string> slots(const x509_name& n) {
    std::vector<std::string> out;
    for (const x509_name_entry& e : {n.country, n.organization, n.organizational_unit, n.dn_qualifier, n.state,
                                     n.common_name, n.serial_number, n.email})
        out.push_back(e.tag ? as_string(e.value, e.length) : "-");
    return out;
}

}  // namespace

TEST(X509Fixtures, Accessors) {
    // Per certificate as OpenSSL made it: the 2001 and 512-bit selectors of
    // its parameter set (X none), key usage, and the subject slots (country,
    // O, OU, dnQualifier, ST, CN, serialNumber, email; "-" absent).
    const unsigned X = 0xFFFFFFFF;
    struct Want { unsigned sel256, sel512, usage; std::vector<std::string> subject; };
    const std::map<std::string, Want> want = {
        {"ca_a", {1, X, 0x61, {"RU", "Korvex Test CA", "Certificates", "-", "Moscow", "Korvex Root A", "-", "ca@korvex.test"}}},
        {"leaf_b", {2, X, 0x03, {"RU", "Korvex", "Signing", "-", "-", "Signer B", "SN-0002", "-"}}},
        {"leaf_c", {3, X, 0x0C, {"RU", "Korvex", "-", "q1", "Tver", "Encryption C", "-", "-"}}},  // critical
        // XchA reads as A. Repeated attributes: the first commonName, the last emailAddress.
        {"leaf_xa", {1, X, 0x05, {"RU", "Korvex", "-", "-", "-", "First Name", "-", "last@korvex.test"}}},
        // XchB reads as C; keyAgreement, decipherOnly.
        {"leaf_xb", {3, X, 0x110, {"RU", "-", "-", "-", "-", "Exchange XB", "-", "-"}}},
        {"leaf_512a", {X, 1, 0x03, {"RU", "Korvex", "-", "-", "-", "Long Key 512", "-", "-"}}},  // TC26 paramSetA
        {"leaf_tc26a", {X, X, 0x03, {"RU", "Korvex", "-", "-", "-", "TC26 256 A", "-", "-"}}},  // TC26 256-bit set
        {"v1_a", {1, X, 0, {"RU", "-", "-", "-", "-", "Version One", "-", "-"}}},  // no extensions in v1
    };
    for (CertFacts& c : fixture_certs()) {
        SCOPED_TRACE(c.name);
        unsigned char* d = c.der.data();
        unsigned char* tbs = child(d, 0);
        // tbsCertificate children: [version,] serial, signature, issuer, validity, subject, key.
        EXPECT_EQ(x_509_find_public_key_info_block(d), child(tbs, c.v3 ? 6 : 5));
        unsigned char* key = x_509_get_open_key(d);
        ASSERT_NE(key, nullptr);  // also for v1
        EXPECT_EQ(to_hex(key, c.key.size()), to_hex(c.key));  // 64 or 128 octets
        const Want& w = want.at(c.name);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(d), w.sel256);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds_512bit(d), w.sel512);
        EXPECT_EQ(x_509_get_certificate_length(d), c.der.size());
        EXPECT_EQ(x_509_get_block_length(d) + 4, c.der.size());  // all fixtures use the 0x82 form
        EXPECT_EQ(x_509_get_key_usage(d), w.usage);
        x509_name subject = x_509_parse_Name_field(child(tbs, c.v3 ? 5 : 4));
        EXPECT_EQ(slots(subject), w.subject);
        EXPECT_EQ(subject.country.tag, 0x13);  // PrintableString
        if (subject.email.tag) { EXPECT_EQ(subject.email.tag, 0x16); }  // IA5String

        x509_textbox t = x_509_get_textbox_of_cer(d);
        x509_field_pointers f = x_509_get_field_pointers(d);
        if (!c.v3) {
            // Field pointers need the version; the textbox skips the first
            // child as if it were the version and finds no times.
            for (const x509_field_ref& r : {f.subject, f.serial_number, f.validity, f.issuer, t.serial_number,
                                            t.not_before, t.not_after})
                EXPECT_EQ(r.ptr, nullptr);
            continue;
        }
        EXPECT_EQ(to_hex(t.serial_number.ptr, t.serial_number.len), c.serial);
        EXPECT_EQ(as_string(t.not_before.ptr, t.not_before.len), c.not_before);
        if (c.not_after.size() == 15)  // GeneralizedTime (after 2049) is not shown
            EXPECT_TRUE(!t.not_after.ptr && !t.not_after.len);
        else
            EXPECT_EQ(as_string(t.not_after.ptr, t.not_after.len), c.not_after);
        const std::pair<x509_field_ref, int> fields[] = {{f.subject, 5}, {f.serial_number, 1}, {f.validity, 4}, {f.issuer, 3}};
        for (auto [r, n] : fields) {  // whole elements, in place
            EXPECT_EQ(r.ptr, child(tbs, n)) << n;
            EXPECT_EQ(r.len, element_size(child(tbs, n))) << n;
        }
        x509_name issuer = x_509_parse_Name_field(f.issuer.ptr);
        EXPECT_EQ(as_string(issuer.common_name.value, issuer.common_name.length), "Korvex Root A");  // all by the CA
    }
}

TEST(X509Hand, PublicKeyBlockAndSelectors) {
    // Where the block is found it is the tbsCertificate's seventh child; the
    // key needs BIT STRING { 00, OCTET STRING }, the selectors each step of
    // the walk to publicKeyParamSet, then the OID's prefix and next octet.
    const unsigned X = 0xFFFFFFFF;
    const Bytes key = tlv(0x03, cat({{0x00}, tlv(0x04, Bytes(64, 0x11))}));
    const Bytes alg = oid("2A85030202 13"), param = oid("2A85030202 2301");
    auto with = [](const Bytes& spki) { HandCert h; h.key = spki; return h.der(); };
    auto set_of = [&](const char* paramOid) { return with(spki(paramOid)); };
    HandCert h;
    Bytes tbsSet = h.der();
    tbsSet[header_size(tbsSet.data())] = 0x31;
    struct Case { const char* what; Bytes der; bool block, key; unsigned sel256, sel512; } cases[] = {
        {"test set", set_of("2A85030202 2300"), true, true, 0, X},
        {"CryptoPro-A", set_of("2A85030202 2301"), true, true, 1, X},
        {"CryptoPro-B", set_of("2A85030202 2302"), true, true, 2, X},
        {"CryptoPro-C", set_of("2A85030202 2303"), true, true, 3, X},
        {"XchA: the curve of A", set_of("2A85030202 2400"), true, true, 1, X},
        {"XchB: the curve of C", set_of("2A85030202 2401"), true, true, 3, X},
        {"any other exchange arc", set_of("2A85030202 2407"), true, true, 3, X},
        {"longer OID, same prefix: length not checked", set_of("2A85030202 230105"), true, true, 1, X},
        // The next octet is the tag 06 of the digest OID that follows.
        {"shorter OID with the prefix", set_of("2A85030202 23"), true, true, 6, X},
        {"1.2.643.2.2.34.1", set_of("2A85030202 2201"), true, true, X, X},
        {"TC26 512-bit paramSetA", set_of("2A8503070102010201"), true, true, X, 1},
        {"TC26 512-bit paramSetB", set_of("2A8503070102010202"), true, true, X, 2},
        {"TC26 512-bit test set", set_of("2A8503070102010200"), true, true, X, 0},
        {"key not in a BIT STRING", with(seq({seq({alg}), tlv(0x04, Bytes(64, 1))})), true, false, X, X},
        {"BIT STRING without OCTET STRING", with(seq({seq({alg}), tlv(0x03, cat({{0x00}, Bytes(64, 1)}))})), true, false, X, X},
        {"OCTET STRING overruns its BIT STRING", with(seq({seq({alg}), tlv(0x03, from_hex("0004400102"))})), true, false, X, X},
        {"algorithm without its OID", with(seq({seq({tlv(0x05, {}), seq({param})}), key})), true, true, X, X},
        {"NULL parameters", with(seq({seq({alg, tlv(0x05, {})}), key})), true, true, X, X},
        {"no parameters", with(seq({seq({alg}), key})), true, true, X, X},
        {"parameters not starting with an OID", with(seq({seq({alg, seq({tlv(0x02, {1}), param})}), key})), true, true, X, X},
        {"parameters in a SET", with(seq({seq({alg, set({param})}), key})), true, true, X, X},
        {"short OID at the end of its SEQUENCE", with(seq({seq({alg, seq({oid("2A8503020223")})}), key})), true, true, X, X},
        {"no SEQUENCE opening with one", cert_of(cat({h.version, h.serial, h.alg, kName, h.validity, kName})), false, false, X, X},
        {"not a SEQUENCE", from_hex("31 03 30 01 30"), false, false, X, X},
        {"empty tbsCertificate", from_hex("30 02 30 00"), false, false, X, X},
        {"a SET for tbsCertificate, holding a look-alike", from_hex("30 08 31 06 30 04 30 02 05 00"), false, false, X, X},
        {"tbsCertificate retagged as a SET", tbsSet, false, false, X, X},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.what);
        unsigned char* d = c.der.data();
        EXPECT_EQ(x_509_find_public_key_info_block(d), c.block ? child(child(d, 0), 6) : nullptr);
        EXPECT_EQ(x_509_get_open_key(d) != nullptr, c.key);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(d), c.sel256);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds_512bit(d), c.sel512);
    }
    EXPECT_EQ(x_509_find_public_key_info_block(nullptr), nullptr);
    // The other accessors insist on a tbsCertificate SEQUENCE too.
    EXPECT_EQ(x_509_get_field_pointers(tbsSet.data()).serial_number.ptr, nullptr);
    EXPECT_EQ(x_509_get_textbox_of_cer(tbsSet.data()).serial_number.ptr, nullptr);
    EXPECT_EQ(x_509_check_certificate(tbsSet.data(), nullptr), 0u);
}

TEST(X509Hand, LimitedLengthReader) {
    struct Case { const char* der; unsigned len; } cases[] = {
        {"30 05", 5}, {"30 7F", 127},
        {"30 81 C8 AB", 0xC8AB},  // 0x81 form: the first content octet becomes the low byte
        {"30 82 01 00", 256}, {"30 82 FF FF", 65535}, {"30 83 01 00 00", 0}, {"30 84 00 01 00 00", 0},
        {"30 80", 0}, {"30 85 00 00 00 00 01", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(x_509_get_block_length(from_hex(c.der).data()), c.len) << c.der;
    EXPECT_EQ(x_509_get_certificate_length(nullptr), 0u);
    EXPECT_EQ(x_509_get_certificate_length(from_hex("31 03 01 01 00").data()), 0u);
    EXPECT_EQ(x_509_get_certificate_length(from_hex("30 83 01 00 00").data()), 65536u + 5);
}

TEST(X509Hand, NameRules) {
    auto rdn = [](const std::string& type, const Bytes& value) { return set({seq({oid(type), value})}); };
    Bytes name = seq({
        rdn("550403", text(0x0C, "first cn")),
        rdn("2A864886F70D010901", text(0x16, "a@x")),
        rdn("550403", text(0x0C, "second cn")),
        rdn("55040A", text(0x0C, "org")),
        rdn("2A864886F70D010901", text(0x16, "b@x")),
        rdn("550409", text(0x0C, "street is not kept")),
        rdn("2A864886F70D010902", text(0x16, "unstructuredName is not kept")),
        tlv(0x31, seq({tlv(0x02, {0x01}), text(0x0C, "type not an OID")})),
        // Only the first attribute of a multi-valued RDN is looked at.
        set({seq({oid("55040B"), text(0x0C, "unit")}), seq({oid("550408"), text(0x0C, "ignored state")})}),
        rdn("55042E", text(0x13, "dnq")),
        rdn("550405", text(0x13, "0042")),
    });
    x509_name n = x_509_parse_Name_field(name.data());
    EXPECT_EQ(slots(n), (std::vector<std::string>{"-", "org", "unit", "dnq", "-", "first cn", "0042", "b@x"}));
    EXPECT_EQ(n.common_name.tag, 0x0C);
    EXPECT_EQ(n.serial_number.tag, 0x13);

    // The value's length is kept in 8 bits.
    Bytes longName = seq({rdn("550403", text(0x0C, std::string(300, 'x')))});
    n = x_509_parse_Name_field(longName.data());
    EXPECT_EQ(n.common_name.length, 300 % 256);
    EXPECT_EQ(n.common_name.value, longName.data() + 4 + 4 + 4 + 5 + 4);

    // After a match the later types are compared at the value: a value whose
    // first octets read 55 04 03 also fills commonName from what follows.
    Bytes odd = from_hex("30 0F 31 0D 30 0B 06 03 55 04 06 55 04 03 13 01 5A");
    n = x_509_parse_Name_field(odd.data());
    EXPECT_EQ(n.country.tag, 0x55);
    EXPECT_EQ(n.country.length, 4);
    EXPECT_EQ(n.common_name.tag, 0x13);
    EXPECT_EQ(as_string(n.common_name.value, n.common_name.length), "Z");

    for (const char* bad : {"31 00", "30 00"})
        EXPECT_EQ(slots(x_509_parse_Name_field(from_hex(bad).data())), std::vector<std::string>(8, "-")) << bad;
    EXPECT_EQ(x_509_parse_Name_field(nullptr).common_name.value, nullptr);
}

TEST(X509Hand, KeyUsageRules) {
    struct Case { const char* what; unsigned char version; Bytes tail; unsigned want; } cases[] = {
        {"03 02 05 A0", 2, key_usage_ext(from_hex("05 A0")), 0x05},
        {"critical flag", 2, key_usage_ext(from_hex("07 80"), true), 0x01},
        {"unused bits not applied", 2, key_usage_ext(from_hex("07 FF 80")), 0x1FF},
        {"unique identifiers skipped", 2, cat({tlv(0x81, {0, 0xAA}), tlv(0x82, {0, 0xBB}), key_usage_ext(from_hex("01 06"))}), 0x60},
        {"subject identifier only", 2, cat({tlv(0x82, {0x00}), key_usage_ext(from_hex("00 08"))}), 0x10},
        {"identifiers in the wrong order", 2, cat({tlv(0x82, {0}), tlv(0x81, {0}), key_usage_ext(from_hex("00 80"))}), 0},
        {"version 2", 1, key_usage_ext(from_hex("05 A0")), 0},
        {"no keyUsage", 2, tlv(0xA3, seq({seq({oid("551D13"), tlv(0x04, {0x30, 0x00})})})), 0},
        {"all bits clear", 2, key_usage_ext(from_hex("00 00")), 0},
        {"no extensions", 2, Bytes{}, 0},
        {"extension not a SEQUENCE", 2,
         tlv(0xA3, seq({tlv(0x31, {0x06, 0x00}), seq({oid("551D0F"), tlv(0x04, tlv(0x03, {0x05, 0xA0}))})})), 0},
        {"value not an OCTET STRING", 2, tlv(0xA3, seq({seq({oid("551D0F"), tlv(0x03, {0x05, 0xA0})})})), 0},
        {"empty BIT STRING", 2, tlv(0xA3, seq({seq({oid("551D0F"), tlv(0x04, {0x03, 0x00})})})), 0},
        // The octet count L - 1 is taken in 8 bits: 256 octets count as none, 257 as one.
        {"257-octet BIT STRING", 2, key_usage_ext(cat({{0x00}, Bytes(256, 0xFF)})), 0},
        {"258-octet BIT STRING", 2, key_usage_ext(cat({{0x00}, Bytes(257, 0x80)})), 0x01},
    };
    for (const Case& c : cases) {
        HandCert h;
        h.version = tlv(0xA0, tlv(0x02, {c.version}));
        h.tail = c.tail;
        EXPECT_EQ(x_509_get_key_usage(h.der().data()), c.want) << c.what;
    }
}

TEST(X509Hand, FieldPointersAndTextbox) {
    // Field pointers: whole elements; textbox: content octets. "-" not
    // recorded; each walk stops at its first mismatch and keeps what it has.
    auto got = [](const x509_field_ref& r) { return r.ptr ? to_hex(r.ptr, r.len) : std::string("-"); };
    const Bytes utc = HandCert().validity, gen = seq({text(0x18, "20500101000000Z"), text(0x17, "340101000000Z")});
    const std::string nameHex = to_hex(kName), from = to_hex(str("240101000000Z")), to = to_hex(str("340101000000Z"));
    struct Case {
        const char* what;
        Bytes serial, validity;
        std::vector<std::string> fields, textbox;  // serial, issuer, validity, subject; serial, notBefore, notAfter
    } cases[] = {
        {"well formed", tlv(0x02, {1, 0x23}), utc, {"02020123", nameHex, to_hex(utc), nameHex}, {"0123", from, to}},
        {"validity not a SEQUENCE", tlv(0x02, {1, 0x23}), tlv(0x31, {}), {"02020123", nameHex, "-", "-"}, {"0123", "-", "-"}},
        // GeneralizedTime is not accepted (leaf_c has one as notAfter).
        {"GeneralizedTime", tlv(0x02, {1, 0x23}), gen, {"02020123", nameHex, to_hex(gen), nameHex}, {"0123", "-", "-"}},
        // The textbox skips the version unconditionally and finds the times
        // without a serial number.
        {"serial number not an INTEGER", tlv(0x04, {1}), utc, {"-", "-", "-", "-"}, {"-", from, to}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        HandCert h;
        h.serial = c.serial;
        h.validity = c.validity;
        Bytes der = h.der();
        x509_field_pointers f = x_509_get_field_pointers(der.data());
        x509_textbox t = x_509_get_textbox_of_cer(der.data());
        EXPECT_EQ((std::vector<std::string>{got(f.serial_number), got(f.issuer), got(f.validity), got(f.subject)}), c.fields);
        EXPECT_EQ((std::vector<std::string>{got(t.serial_number), got(t.not_before), got(t.not_after)}), c.textbox);
    }
}

TEST(X509Hand, LargeCertificateLengths) {
    // A subject of 70000 octets: field sizes keep their low 16 bits, the
    // certificate length is the full 32-bit size, and the limited reader
    // gives 0 for the 0x83 form.
    HandCert h;
    h.subject = seq({set({seq({oid("550403"), text(0x0C, std::string(70000, 'n'))})})});
    Bytes der = h.der();
    x509_field_pointers f = x_509_get_field_pointers(der.data());
    ASSERT_NE(f.subject.ptr, nullptr);
    EXPECT_EQ(f.subject.len, h.subject.size() % 65536);
    EXPECT_EQ(to_hex(f.subject.ptr, 16), to_hex(h.subject.data(), 16));
    EXPECT_EQ(x_509_get_certificate_length(der.data()), der.size());
    EXPECT_EQ(der[1], 0x83);
    EXPECT_EQ(x_509_get_block_length(der.data()), 0u);
    x509_name n = x_509_parse_Name_field(f.subject.ptr);
    EXPECT_EQ(n.common_name.length, 70000 % 256);
    EXPECT_EQ(n.common_name.value[0], 'n');
    EXPECT_NE(x_509_get_open_key(der.data()), nullptr);
}
