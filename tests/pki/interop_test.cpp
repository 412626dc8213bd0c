// Messages built and signed by the library, as checked by OpenSSL's GOST
// engine in tests/vectors/pki/interop.sh (results recorded in interop.txt).
#include <gtest/gtest.h>

#include <algorithm>

#include "CMS.h"
#include "pki/pki_fixtures.h"

using namespace pkt;
using kt::to_hex;

TEST(CmsInterop, LibraryMessagesVerifiedByOpenSsl) {
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
        EXPECT_EQ(CMS_SignedData_check(m.signed_attrs, nullptr, content.data(), content.size(), cert.data(),
                                       reinterpret_cast<type_uN<64>*>(m.signature)), 5u);
    }
}

TEST(CmsInterop, SizeOrderIsNotDerOrderYetOpenSslAccepts) {
    // The library orders the signed attributes by size, keeping equal sizes in
    // the order written. DER (X.690 11.6) would sort the user attribute of 26
    // octets (OID 1.2.3.4, 30 18 06 03 ...) before contentType (30 18 06 09
    // ...). OpenSSL verifies the attributes as received and accepts the
    // message: interop.txt records "verified" for it.
    Bytes msg = kt::load_file("pki/korvex_ca_a_sort_example_attached_cert.der");
    cms_signed_data_t m = CMS_SignedData_parse(msg.data());
    ASSERT_NE(m.signed_attrs, nullptr);
    std::vector<Bytes> attrs;
    for (unsigned char* p = m.signed_attrs + header_size(m.signed_attrs); p < m.signed_attrs + m.signed_attrs_len;
         p += element_size(p))
        attrs.emplace_back(p, p + element_size(p));
    std::vector<size_t> sizes;
    for (const Bytes& a : attrs) sizes.push_back(a.size());
    EXPECT_EQ(sizes, (std::vector<size_t>{26, 26, 40, 49, 60}));
    EXPECT_EQ(to_hex(attrs[0].data(), 13), "301806092a864886f70d010903");  // contentType first
    std::vector<Bytes> der = attrs;
    std::sort(der.begin(), der.end());
    EXPECT_NE(der, attrs);
    EXPECT_EQ(der[0], attrs[1]);
    for (const kt::Record& r : kt::load_records("pki/interop.txt"))
        if (r.at("name") == "korvex_ca_a_sort_example_attached_cert") EXPECT_EQ(r.at("openssl"), "verified");
}
