// Messages built and signed by the library, as checked by OpenSSL's GOST
// engine in tests/vectors/pki/interop.sh (results recorded in interop.txt).
#include <gtest/gtest.h>

#include "CMS.h"
#include "pki/pki_fixtures.h"

using namespace pkt;

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
