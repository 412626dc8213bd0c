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

Bytes spki(const std::string& paramOid, const Bytes& key) {
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
    Bytes key = spki("2A85030202 2301", Bytes(64, 0x11));
    Bytes tail;  // unique identifiers, extensions
    Bytes der() const { return cert_of(cat({version, serial, alg, kName, validity, kName, key, tail})); }
};

Bytes key_usage_ext(const Bytes& bits, bool critical = false) {
    Bytes crit = critical ? tlv(0x01, {0xFF}) : Bytes{};
    return tlv(0xA3, seq({seq({oid("2A864886F70D01090F"), tlv(0x04, {0x30, 0x00})}),  // another extension first
                          seq({oid("551D0F"), crit, tlv(0x04, tlv(0x03, bits))})}));
}

// Selectors by the parameter-set names OpenSSL prints: the 2001 selector
// and the 512-bit one.
std::pair<unsigned, unsigned> selectors_of(const std::string& paramset) {
    if (paramset.find("512 bit") != std::string::npos) return {0xFFFFFFFF, 1};  // TC26 paramSetA
    if (paramset.find("256 bit") != std::string::npos) return {0xFFFFFFFF, 0xFFFFFFFF};  // TC26 256-bit sets
    if (paramset.find("-A-") != std::string::npos || paramset.find("XchA") != std::string::npos) return {1, 0xFFFFFFFF};
    if (paramset.find("-B-") != std::string::npos) return {2, 0xFFFFFFFF};
    return {3, 0xFFFFFFFF};  // C and XchB
}

}  // namespace

TEST(X509Fixtures, PublicKeyParameterSetAndLength) {
    for (CertFacts& c : fixture_certs()) {
        SCOPED_TRACE(c.name);
        unsigned char* block = x_509_find_public_key_info_block(c.der.data());
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(block[0], 0x30);
        unsigned char* key = x_509_get_open_key(c.der.data());
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(to_hex(key, c.key.size()), to_hex(c.key));  // 64 or 128 octets
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(c.der.data()), selectors_of(c.paramset).first);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds_512bit(c.der.data()), selectors_of(c.paramset).second);
        EXPECT_EQ(x_509_get_certificate_length(c.der.data()), c.der.size());
        EXPECT_EQ(x_509_get_block_length(c.der.data()) + 4, c.der.size());  // all fixtures use the 0x82 form
    }
}

TEST(X509Fixtures, DisplayFields) {
    for (CertFacts& c : fixture_certs()) {
        SCOPED_TRACE(c.name);
        x509_textbox t = x_509_get_textbox_of_cer(c.der.data());
        if (!c.v3) {
            // The first child is skipped as if it were the version: the
            // walk lands on the subject and finds no times.
            EXPECT_EQ(t.serial_number.ptr, nullptr);
            EXPECT_EQ(t.not_before.ptr, nullptr);
            EXPECT_EQ(t.not_after.ptr, nullptr);
            continue;
        }
        EXPECT_EQ(to_hex(t.serial_number.ptr, t.serial_number.len), c.serial);
        EXPECT_EQ(as_string(t.not_before.ptr, t.not_before.len), c.not_before);
        if (c.not_after.size() == 15) {  // GeneralizedTime (after 2049) is not shown
            EXPECT_EQ(t.not_after.ptr, nullptr);
            EXPECT_EQ(t.not_after.len, 0);
        } else {
            EXPECT_EQ(as_string(t.not_after.ptr, t.not_after.len), c.not_after);
        }
    }
}

TEST(X509Fixtures, KeyUsage) {
    const std::map<std::string, unsigned> expected = {
        {"ca_a", 0x61},      // digitalSignature, keyCertSign, cRLSign
        {"leaf_b", 0x03},    // digitalSignature, nonRepudiation
        {"leaf_c", 0x0C},    // keyEncipherment, dataEncipherment (critical)
        {"leaf_xa", 0x05},   // digitalSignature, keyEncipherment
        {"leaf_xb", 0x110},  // keyAgreement, decipherOnly
        {"leaf_512a", 0x03},
        {"leaf_tc26a", 0x03},
        {"v1_a", 0},         // no extensions in v1
    };
    for (CertFacts& c : fixture_certs()) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(x_509_get_key_usage(c.der.data()), expected.at(c.name));
    }
}

TEST(X509Fixtures, FieldPointersAndNames) {
    CertFacts ca = fixture_cert("ca_a");
    for (CertFacts& c : fixture_certs()) {
        SCOPED_TRACE(c.name);
        x509_field_pointers f = x_509_get_field_pointers(c.der.data());
        if (!c.v3) {
            EXPECT_EQ(f.subject.ptr, nullptr);
            EXPECT_EQ(f.serial_number.ptr, nullptr);
            EXPECT_EQ(f.validity.ptr, nullptr);
            EXPECT_EQ(f.issuer.ptr, nullptr);
            EXPECT_NE(x_509_get_open_key(c.der.data()), nullptr);  // the key is still found
            continue;
        }
        ASSERT_NE(f.serial_number.ptr, nullptr);
        EXPECT_EQ(f.serial_number.ptr[0], 0x02);
        EXPECT_EQ(to_hex(f.serial_number.ptr + 2, f.serial_number.len - 2), c.serial);
        ASSERT_NE(f.validity.ptr, nullptr);
        EXPECT_EQ(f.validity.ptr[0], 0x30);
        EXPECT_EQ(f.issuer.ptr + f.issuer.len, f.validity.ptr);
        EXPECT_EQ(f.validity.ptr + f.validity.len, f.subject.ptr);
        // Every fixture is issued by the CA: its issuer equals the CA's subject.
        x509_field_pointers caf = x_509_get_field_pointers(ca.der.data());
        EXPECT_EQ(to_hex(f.issuer.ptr, f.issuer.len), to_hex(caf.subject.ptr, caf.subject.len));
        x509_name issuer = x_509_parse_Name_field(f.issuer.ptr);
        EXPECT_EQ(as_string(issuer.common_name.value, issuer.common_name.length), "Korvex Root A");
    }
}

TEST(X509Fixtures, NameShapes) {
    struct Want {
        std::string cert, country, org, unit, dnq, state, cn, serial, email;
    };
    const Want wants[] = {
        {"ca_a", "RU", "Korvex Test CA", "Certificates", "", "Moscow", "Korvex Root A", "", "ca@korvex.test"},
        {"leaf_b", "RU", "Korvex", "Signing", "", "", "Signer B", "SN-0002", ""},
        {"leaf_c", "RU", "Korvex", "", "q1", "Tver", "Encryption C", "", ""},
        // Repeated attributes: the first commonName, the last emailAddress.
        {"leaf_xa", "RU", "Korvex", "", "", "", "First Name", "", "last@korvex.test"},
        {"leaf_xb", "RU", "", "", "", "", "Exchange XB", "", ""},
        {"leaf_512a", "RU", "Korvex", "", "", "", "Long Key 512", "", ""},
        {"v1_a", "RU", "", "", "", "", "Version One", "", ""},
    };
    for (const Want& w : wants) {
        SCOPED_TRACE(w.cert);
        CertFacts c = fixture_cert(w.cert);
        // tbsCertificate children: [version,] serial, signature, issuer, validity, subject.
        unsigned char* subject = child(child(c.der.data(), 0), c.v3 ? 5 : 4);
        ASSERT_NE(subject, nullptr);
        x509_name n = x_509_parse_Name_field(subject);
        auto get = [](const x509_name_entry& e) { return as_string(e.value, e.length); };
        EXPECT_EQ(get(n.country), w.country);
        EXPECT_EQ(get(n.organization), w.org);
        EXPECT_EQ(get(n.organizational_unit), w.unit);
        EXPECT_EQ(get(n.dn_qualifier), w.dnq);
        EXPECT_EQ(get(n.state), w.state);
        EXPECT_EQ(get(n.common_name), w.cn);
        EXPECT_EQ(get(n.serial_number), w.serial);
        EXPECT_EQ(get(n.email), w.email);
        EXPECT_EQ(n.country.tag, 0x13);  // PrintableString
        if (!w.email.empty()) EXPECT_EQ(n.email.tag, 0x16);  // IA5String
        if (w.org.empty()) EXPECT_EQ(n.organization.tag, 0);
    }
}

TEST(X509Hand, ParameterSetSelectors) {
    struct Case {
        const char* oid;
        unsigned sel256, sel512;
    } cases[] = {
        {"2A85030202 2300", 0, 0xFFFFFFFF},        // test set
        {"2A85030202 2301", 1, 0xFFFFFFFF},        // CryptoPro-A
        {"2A85030202 2302", 2, 0xFFFFFFFF},        // CryptoPro-B
        {"2A85030202 2303", 3, 0xFFFFFFFF},        // CryptoPro-C
        {"2A85030202 2400", 1, 0xFFFFFFFF},        // XchA: the curve of A
        {"2A85030202 2401", 3, 0xFFFFFFFF},        // XchB: the curve of C
        {"2A85030202 2407", 3, 0xFFFFFFFF},        // any other exchange arc
        {"2A85030202 230105", 1, 0xFFFFFFFF},      // longer OID, same prefix: length not checked
        {"2A85030202 2201", 0xFFFFFFFF, 0xFFFFFFFF},
        {"2A8503070102010201", 0xFFFFFFFF, 1},     // TC26 512-bit paramSetA
        {"2A8503070102010202", 0xFFFFFFFF, 2},
        {"2A8503070102010200", 0xFFFFFFFF, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.oid);
        HandCert h;
        h.key = spki(c.oid, Bytes(64, 0x11));
        Bytes der = h.der();
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(der.data()), c.sel256);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds_512bit(der.data()), c.sel512);
    }
    // A shorter OID with the prefix reads its selector from the next octet
    // (here the tag 0x06 of the digest OID that follows).
    HandCert h;
    h.key = seq({seq({oid("2A85030202 13"), seq({oid("2A8503020223"), oid("2A85030202 1E01")})}),
                 tlv(0x03, cat({{0x00}, tlv(0x04, Bytes(64, 0x11))}))});
    Bytes der = h.der();
    EXPECT_EQ(x_509_get_open_key_parametrs_ds(der.data()), 6u);
    // The parameter OID at the very end of its SEQUENCE: nothing to read.
    h.key = seq({seq({oid("2A85030202 13"), seq({oid("2A8503020223")})}), tlv(0x03, cat({{0x00}, tlv(0x04, Bytes(64, 0x11))}))});
    der = h.der();
    EXPECT_EQ(x_509_get_open_key_parametrs_ds(der.data()), 0xFFFFFFFFu);
}

TEST(X509Hand, PublicKeyLayoutMismatches) {
    Bytes key(128);
    for (size_t i = 0; i < key.size(); ++i) key[i] = static_cast<unsigned char>(i);
    HandCert h;
    h.key = spki("2A8503070102010201", key);  // a 512-bit key is returned the same way
    Bytes der = h.der();
    ASSERT_NE(x_509_get_open_key(der.data()), nullptr);
    EXPECT_EQ(to_hex(x_509_get_open_key(der.data()), 128), to_hex(key));

    struct Case {
        const char* what;
        Bytes spki;
    } cases[] = {
        {"key not in a BIT STRING", seq({seq({oid("2A85030202 13")}), tlv(0x04, Bytes(64, 1))})},
        {"BIT STRING without OCTET STRING", seq({seq({oid("2A85030202 13")}), tlv(0x03, cat({{0x00}, Bytes(64, 1)}))})},
        {"OCTET STRING overruns the BIT STRING", seq({seq({oid("2A85030202 13")}), tlv(0x03, from_hex("00 04 40 01 02"))})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        HandCert bad;
        bad.key = c.spki;
        Bytes d = bad.der();
        EXPECT_NE(x_509_find_public_key_info_block(d.data()), nullptr);
        EXPECT_EQ(x_509_get_open_key(d.data()), nullptr);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(d.data()), 0xFFFFFFFFu);
    }
    // No SEQUENCE starting with a SEQUENCE among the tbsCertificate children.
    Bytes noKey = cert_of(cat({h.version, h.serial, h.alg, kName, h.validity, kName}));
    EXPECT_EQ(x_509_find_public_key_info_block(noKey.data()), nullptr);
    EXPECT_EQ(x_509_get_open_key(noKey.data()), nullptr);
    EXPECT_EQ(x_509_find_public_key_info_block(nullptr), nullptr);
    Bytes notSeq = from_hex("31 03 30 01 30");
    EXPECT_EQ(x_509_find_public_key_info_block(notSeq.data()), nullptr);
    Bytes emptyTbs = from_hex("30 02 30 00");
    EXPECT_EQ(x_509_find_public_key_info_block(emptyTbs.data()), nullptr);
}

TEST(X509Hand, LimitedLengthReader) {
    struct Case {
        const char* der;
        unsigned len;
    } cases[] = {
        {"30 05", 5},
        {"30 7F", 127},
        {"30 81 C8 AB", 0xC8AB},  // 0x81 form: the first content octet becomes the low byte
        {"30 82 01 00", 256},
        {"30 82 FF FF", 65535},
        {"30 83 01 00 00", 0},
        {"30 84 00 01 00 00", 0},
        {"30 80", 0},
        {"30 85 00 00 00 00 01", 0},
    };
    for (const Case& c : cases) {
        Bytes b = from_hex(c.der);
        EXPECT_EQ(x_509_get_block_length(b.data()), c.len) << c.der;
    }
    EXPECT_EQ(x_509_get_certificate_length(nullptr), 0u);
    Bytes b = from_hex("31 03 01 01 00");
    EXPECT_EQ(x_509_get_certificate_length(b.data()), 0u);
    b = from_hex("30 83 01 00 00");
    EXPECT_EQ(x_509_get_certificate_length(b.data()), 65536u + 5);
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
    auto get = [](const x509_name_entry& e) { return as_string(e.value, e.length); };
    EXPECT_EQ(get(n.common_name), "first cn");
    EXPECT_EQ(get(n.email), "b@x");
    EXPECT_EQ(get(n.organization), "org");
    EXPECT_EQ(get(n.organizational_unit), "unit");
    EXPECT_EQ(n.state.tag, 0);
    EXPECT_EQ(get(n.dn_qualifier), "dnq");
    EXPECT_EQ(get(n.serial_number), "0042");
    EXPECT_EQ(n.country.tag, 0);
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
    EXPECT_EQ(get(n.common_name), "Z");

    for (const char* bad : {"31 00", "30 00"}) {
        Bytes b = from_hex(bad);
        n = x_509_parse_Name_field(b.data());
        EXPECT_EQ(n.country.tag | n.common_name.tag | n.email.tag, 0) << bad;
    }
    n = x_509_parse_Name_field(nullptr);
    EXPECT_EQ(n.common_name.value, nullptr);
}

TEST(X509Hand, KeyUsageRules) {
    struct Case {
        const char* what;
        Bytes version, tail;
        unsigned want;
    } cases[] = {
        {"03 02 05 A0", tlv(0xA0, tlv(0x02, {2})), key_usage_ext(from_hex("05 A0")), 0x05},
        {"critical flag", tlv(0xA0, tlv(0x02, {2})), key_usage_ext(from_hex("07 80"), true), 0x01},
        {"unused bits not applied", tlv(0xA0, tlv(0x02, {2})), key_usage_ext(from_hex("07 FF 80")), 0x1FF},
        {"unique identifiers skipped", tlv(0xA0, tlv(0x02, {2})),
         cat({tlv(0x81, {0x00, 0xAA}), tlv(0x82, {0x00, 0xBB}), key_usage_ext(from_hex("01 06"))}), 0x60},
        {"subject identifier only", tlv(0xA0, tlv(0x02, {2})), cat({tlv(0x82, {0x00}), key_usage_ext(from_hex("00 08"))}), 0x10},
        {"identifiers in the wrong order", tlv(0xA0, tlv(0x02, {2})),
         cat({tlv(0x82, {0x00}), tlv(0x81, {0x00}), key_usage_ext(from_hex("00 80"))}), 0},
        {"version 2", tlv(0xA0, tlv(0x02, {1})), key_usage_ext(from_hex("05 A0")), 0},
        {"no keyUsage", tlv(0xA0, tlv(0x02, {2})), tlv(0xA3, seq({seq({oid("551D13"), tlv(0x04, {0x30, 0x00})})})), 0},
        {"all bits clear", tlv(0xA0, tlv(0x02, {2})), key_usage_ext(from_hex("00 00")), 0},
        {"no extensions", tlv(0xA0, tlv(0x02, {2})), Bytes{}, 0},
        {"extension not a SEQUENCE", tlv(0xA0, tlv(0x02, {2})),
         tlv(0xA3, seq({tlv(0x31, {0x06, 0x00}), seq({oid("551D0F"), tlv(0x04, tlv(0x03, {0x05, 0xA0}))})})), 0},
        {"value not an OCTET STRING", tlv(0xA0, tlv(0x02, {2})),
         tlv(0xA3, seq({seq({oid("551D0F"), tlv(0x03, {0x05, 0xA0})})})), 0},
        {"empty BIT STRING", tlv(0xA0, tlv(0x02, {2})), tlv(0xA3, seq({seq({oid("551D0F"), tlv(0x04, {0x03, 0x00})})})), 0},
        // The octet count L - 1 is taken in 8 bits: 256 octets count as none,
        // 257 as one.
        {"257-octet BIT STRING", tlv(0xA0, tlv(0x02, {2})), key_usage_ext(cat({{0x00}, Bytes(256, 0xFF)})), 0},
        {"258-octet BIT STRING", tlv(0xA0, tlv(0x02, {2})), key_usage_ext(cat({{0x00}, Bytes(257, 0x80)})), 0x01},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        HandCert h;
        h.version = c.version;
        h.tail = c.tail;
        Bytes der = h.der();
        EXPECT_EQ(x_509_get_key_usage(der.data()), c.want);
    }
}

TEST(X509Hand, FieldPointersAndTextbox) {
    HandCert h;
    Bytes der = h.der();
    x509_field_pointers f = x_509_get_field_pointers(der.data());
    ASSERT_NE(f.serial_number.ptr, nullptr);
    EXPECT_EQ(to_hex(f.serial_number.ptr, f.serial_number.len), "02020123");
    EXPECT_EQ(to_hex(f.issuer.ptr, f.issuer.len), to_hex(kName));
    EXPECT_EQ(to_hex(f.validity.ptr, f.validity.len), to_hex(h.validity));
    EXPECT_EQ(to_hex(f.subject.ptr, f.subject.len), to_hex(kName));
    x509_textbox t = x_509_get_textbox_of_cer(der.data());
    EXPECT_EQ(to_hex(t.serial_number.ptr, t.serial_number.len), "0123");
    EXPECT_EQ(as_string(t.not_before.ptr, t.not_before.len), "240101000000Z");
    EXPECT_EQ(as_string(t.not_after.ptr, t.not_after.len), "340101000000Z");

    // The walk stops at the first mismatch and keeps what it has.
    HandCert stop;
    stop.validity = tlv(0x31, {});
    der = stop.der();
    f = x_509_get_field_pointers(der.data());
    EXPECT_NE(f.serial_number.ptr, nullptr);
    EXPECT_NE(f.issuer.ptr, nullptr);
    EXPECT_EQ(f.validity.ptr, nullptr);
    EXPECT_EQ(f.subject.ptr, nullptr);

    // GeneralizedTime is not accepted, in either position.
    HandCert gen;
    gen.validity = seq({text(0x18, "20500101000000Z"), text(0x17, "340101000000Z")});
    der = gen.der();
    t = x_509_get_textbox_of_cer(der.data());
    EXPECT_NE(t.serial_number.ptr, nullptr);
    EXPECT_EQ(t.not_before.ptr, nullptr);
    EXPECT_EQ(t.not_after.ptr, nullptr);

    // The version field is skipped unconditionally; a serial number that is
    // not an INTEGER is not recorded, the times are still found.
    HandCert noInt;
    noInt.serial = tlv(0x04, {0x01});
    der = noInt.der();
    t = x_509_get_textbox_of_cer(der.data());
    EXPECT_EQ(t.serial_number.ptr, nullptr);
    EXPECT_EQ(as_string(t.not_before.ptr, t.not_before.len), "240101000000Z");
    f = x_509_get_field_pointers(der.data());
    EXPECT_EQ(f.serial_number.ptr, nullptr);
}

TEST(X509Hand, ParameterSetWalkMismatches) {
    // Each step of the walk to publicKeyParamSet must find its tag; the key
    // itself does not depend on the parameters.
    const Bytes key = tlv(0x03, cat({{0x00}, tlv(0x04, Bytes(64, 0x11))}));
    const Bytes alg = oid("2A85030202 13"), param = oid("2A85030202 2301");
    struct Case {
        const char* what;
        Bytes spki;
    } cases[] = {
        {"algorithm without its OID", seq({seq({tlv(0x05, {}), seq({param})}), key})},
        {"NULL parameters", seq({seq({alg, tlv(0x05, {})}), key})},
        {"no parameters", seq({seq({alg}), key})},
        {"parameters not starting with an OID", seq({seq({alg, seq({tlv(0x02, {1}), param})}), key})},
        {"parameters in a SET", seq({seq({alg, set({param})}), key})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        HandCert h;
        h.key = c.spki;
        Bytes der = h.der();
        EXPECT_EQ(x_509_find_public_key_info_block(der.data()), child(child(der.data(), 0), 6));
        EXPECT_NE(x_509_get_open_key(der.data()), nullptr);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds(der.data()), 0xFFFFFFFFu);
        EXPECT_EQ(x_509_get_open_key_parametrs_ds_512bit(der.data()), 0xFFFFFFFFu);
    }
}

TEST(X509Hand, TbsCertificateMustBeASequence) {
    // A SET in place of tbsCertificate that holds what looks like a
    // subjectPublicKeyInfo: nothing is found inside it.
    Bytes der = from_hex("30 08 31 06 30 04 30 02 05 00");
    EXPECT_EQ(x_509_find_public_key_info_block(der.data()), nullptr);
    EXPECT_EQ(x_509_get_open_key_parametrs_ds(der.data()), 0xFFFFFFFFu);
    HandCert h;
    Bytes good = h.der();
    good[header_size(good.data())] = 0x31;
    EXPECT_EQ(x_509_find_public_key_info_block(good.data()), nullptr);
    EXPECT_EQ(x_509_get_field_pointers(good.data()).serial_number.ptr, nullptr);
    EXPECT_EQ(x_509_get_textbox_of_cer(good.data()).serial_number.ptr, nullptr);
    EXPECT_EQ(x_509_check_certificate(good.data(), nullptr), 0u);
}

TEST(X509Hand, LargeCertificateLengths) {
    // A subject of 70000 octets: field sizes keep their low 16 bits, the
    // certificate length is the full 32-bit size, and the limited reader
    // gives 0 for the 0x83 form.
    HandCert h;
    Bytes subject = seq({set({seq({oid("550403"), text(0x0C, std::string(70000, 'n'))})})});
    Bytes der = cert_of(cat({h.version, h.serial, h.alg, kName, h.validity, subject, h.key}));
    x509_field_pointers f = x_509_get_field_pointers(der.data());
    ASSERT_NE(f.subject.ptr, nullptr);
    EXPECT_EQ(f.subject.len, subject.size() % 65536);
    EXPECT_EQ(to_hex(f.subject.ptr, 16), to_hex(subject.data(), 16));
    EXPECT_EQ(x_509_get_certificate_length(der.data()), der.size());
    EXPECT_EQ(der[1], 0x83);
    EXPECT_EQ(x_509_get_block_length(der.data()), 0u);
    x509_name n = x_509_parse_Name_field(f.subject.ptr);
    EXPECT_EQ(n.common_name.length, 70000 % 256);
    EXPECT_EQ(n.common_name.value[0], 'n');
    EXPECT_NE(x_509_get_open_key(der.data()), nullptr);
}
