// Shared helpers of the certificate and message tests: building DER by hand,
// Base64 text for attribute items, signer blocks and messages, and the
// OpenSSL fixtures.
#ifndef KORVEX_TESTS_PKI_FIXTURES_H
#define KORVEX_TESTS_PKI_FIXTURES_H

#include <initializer_list>
#include <string>

#include "CMS.h"
#include "common/test_util.h"

namespace pkt {

using kt::Bytes;

inline Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

// DER element with the shortest definite length.
inline Bytes tlv(unsigned char tag, const Bytes& content) {
    Bytes len;
    for (size_t n = content.size(); n; n >>= 8) len.insert(len.begin(), static_cast<unsigned char>(n));
    if (content.size() < 0x80) len = {static_cast<unsigned char>(content.size())};
    else len.insert(len.begin(), static_cast<unsigned char>(0x80 | len.size()));
    return cat({{tag}, len, content});
}

inline Bytes seq(std::initializer_list<Bytes> parts) { return tlv(0x30, cat(parts)); }
inline Bytes set(std::initializer_list<Bytes> parts) { return tlv(0x31, cat(parts)); }
inline Bytes oid(const std::string& hex) { return tlv(0x06, kt::from_hex(hex)); }
inline Bytes text(unsigned char tag, const std::string& s) { return tlv(tag, Bytes(s.begin(), s.end())); }
inline Bytes str(const std::string& s) { return Bytes(s.begin(), s.end()); }
inline unsigned char* u(std::string& s) { return reinterpret_cast<unsigned char*>(&s[0]); }
inline std::string as_string(const unsigned char* p, size_t n) {
    return p ? std::string(reinterpret_cast<const char*>(p), n) : std::string();
}

// Header and whole size of the element at p (test-side reading).
inline size_t header_size(const unsigned char* p) { return p[1] < 0x80 ? 2 : 2 + (p[1] & 0x7F); }
inline size_t element_size(const unsigned char* p) {
    size_t h = header_size(p), n = p[1] < 0x80 ? p[1] : 0;
    for (size_t i = 2; i < h; ++i) n = n << 8 | p[i];
    return h + n;
}
// The n-th child (from 0) of the element at p.
inline unsigned char* child(unsigned char* p, int n) {
    unsigned char* c = p + header_size(p);
    for (int i = 0; i < n; ++i) c += element_size(c);
    return c;
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
