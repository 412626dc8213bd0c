// Shared helpers of the certificate and message tests: building DER by hand,
// Base64 text for attribute items, signer blocks and messages, and the
// OpenSSL fixtures.
#ifndef KORVEX_TESTS_PKI_FIXTURES_H
#define KORVEX_TESTS_PKI_FIXTURES_H

#include <initializer_list>
#include <string>

#include "CMS.h"
#include "common/buffers.h"
#include "common/der.h"

namespace pkt {

using namespace kt;

inline Bytes text(unsigned char tag, const std::string& s) { return tlv(tag, Bytes(s.begin(), s.end())); }
inline unsigned char* u(std::string& s) { return reinterpret_cast<unsigned char*>(&s[0]); }
inline std::string as_string(const unsigned char* p, size_t n) {
    return p ? std::string(reinterpret_cast<const char*>(p), n) : std::string();
}

inline std::string base64(const Bytes& b) {
    static const char* a = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string s;
    for (size_t i = 0; i < b.size(); i += 3) {
        unsigned v = b[i] << 16 | (i + 1 < b.size() ? b[i + 1] << 8 : 0) | (i + 2 < b.size() ? b[i + 2] : 0);
        s += {a[v >> 18 & 63], a[v >> 12 & 63], i + 1 < b.size() ? a[v >> 6 & 63] : '=', i + 2 < b.size() ? a[v & 63] : '='};
    }
    return s;
}

// "OID:Base64" attribute item.
inline std::string item(const std::string& dotted, const Bytes& value) { return dotted + ":" + base64(value); }

// An unsigned signer block for the given texts (empty text passed as null),
// through the two-call sizing.
inline Bytes block_of(std::string sig, std::string uns) {
    unsigned char* s = sig.empty() ? nullptr : u(sig);
    unsigned char* n = uns.empty() ? nullptr : u(uns);
    Bytes b(CMS_create_SignedAttr(s, sig.size(), n, uns.size(), nullptr, 0, nullptr));
    b.resize(CMS_create_SignedAttr(s, sig.size(), n, uns.size(), nullptr, 0, b.data()));
    return b;
}

// A message around the block; the size call and the writing call must agree.
inline Bytes message_of(Bytes& content, bool attached, Bytes& block, Bytes& cert, bool withCert) {
    unsigned char* c = attached ? content.data() : nullptr;
    unsigned cl = attached ? content.size() : 0;
    Bytes m(CMS_SignedData_create(c, cl, block.data(), block.size(), cert.data(), withCert, nullptr));
    if (CMS_SignedData_create(c, cl, block.data(), block.size(), cert.data(), withCert, m.data()) != m.size())
        throw std::runtime_error("CMS_SignedData_create: sizes differ");
    return m;
}

struct CertFacts {
    std::string name, serial, not_before, not_after;
    bool v3;
    Bytes der, key, priv;
};

inline std::vector<CertFacts> fixture_certs() {
    std::vector<CertFacts> out;
    for (kt::Record& r : kt::load_records("pki/certs.txt"))
        out.push_back({r["name"], r["serial"], r["not_before"], r["not_after"], r["version3"] == "1",
                       kt::load_file("pki/" + r["name"] + ".der"), kt::from_hex(r["key"]), kt::from_hex(r["private"])});
    return out;
}

inline CertFacts fixture_cert(const std::string& name) {
    for (const CertFacts& c : fixture_certs())
        if (c.name == name) return c;
    throw std::runtime_error("no fixture " + name);
}

}  // namespace pkt

#endif
