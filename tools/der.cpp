// The program's DER writer and reader on libcrypto's generic ASN.1
// primitives (through tools/formats/ossl).
#include "der.h"

#include <algorithm>
#include <ctime>

#include "formats/ossl.h"

namespace der {

namespace {

// formats::Error (exit 4 on bad input) as the program's error.
template <class F>
auto guarded(F f) -> decltype(f()) {
    try {
        return f();
    } catch (const formats::Error& e) {
        throw cli::Error(e.what(), e.code);
    }
}

}  // namespace

Bytes tlv(unsigned char tag, const Bytes& content) {
    // The tag octet as given: class and constructed bits included.
    return formats::der(tag & 0x1F, content, (tag & 0x20) != 0, tag & 0xC0);
}

Bytes cat(const std::vector<Bytes>& parts) {
    Bytes out;
    for (auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

Bytes seq(const std::vector<Bytes>& items) { return tlv(0x30, cat(items)); }
Bytes set(const std::vector<Bytes>& items) { return tlv(0x31, cat(items)); }
Bytes oid(const std::string& dotted) {
    return guarded([&] { return formats::der_oid(dotted.c_str()); });
}

Bytes integer_be(Bytes m) {
    size_t i = 0;
    while (i + 1 < m.size() && m[i] == 0) ++i;
    m.erase(m.begin(), m.begin() + static_cast<long>(i));
    if (m.empty()) m.push_back(0);
    if (m[0] & 0x80) m.insert(m.begin(), 0);
    return tlv(0x02, m);
}

Bytes integer(unsigned long v) { return formats::der_int(static_cast<long>(v)); }
Bytes octets(const Bytes& v) { return tlv(0x04, v); }
Bytes bits(const Bytes& v) {
    Bytes c(v.size() + 1, 0);  // no unused bits
    std::copy(v.begin(), v.end(), c.begin() + 1);
    return tlv(0x03, c);
}
Bytes null() { return Bytes{0x05, 0x00}; }
Bytes utf8(const std::string& s) { return tlv(0x0C, Bytes(s.begin(), s.end())); }
Bytes printable(const std::string& s) { return tlv(0x13, Bytes(s.begin(), s.end())); }
Bytes ia5(const std::string& s) { return tlv(0x16, Bytes(s.begin(), s.end())); }

Bytes utc_time(long long t) {
    std::time_t tt = static_cast<std::time_t>(t);
    std::tm tm{};
    gmtime_r(&tt, &tm);
    char buf[32];
    std::strftime(buf, sizeof buf, "%y%m%d%H%M%SZ", &tm);
    std::string s(buf);
    return tlv(0x17, Bytes(s.begin(), s.end()));
}

Elem read(const unsigned char* p, const unsigned char* limit) {
    return guarded([&] {
        const unsigned char* cur = p;
        formats::Tlv t = formats::tlv_at(cur, limit, "DER");
        Elem e;
        e.p = p;
        e.tag = p[0];
        e.hdr = static_cast<size_t>(t.p - p);
        e.len = static_cast<size_t>(t.len);
        return e;
    });
}

std::vector<Elem> children(const Elem& e) {
    std::vector<Elem> out;
    const unsigned char* p = e.content();
    while (p < e.end()) {
        Elem c = read(p, e.end());
        out.push_back(c);
        p = c.end();
    }
    return out;
}

std::string oid_text(const Elem& e) {
    return guarded([&] {
        formats::Tlv t;
        t.start = e.p;
        t.p = e.content();
        t.len = static_cast<long>(e.len);
        t.tag = e.tag & 0x1F;
        return formats::tlv_oid(t, "OID");
    });
}

}  // namespace der
