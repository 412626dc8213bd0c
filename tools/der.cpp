#include "der.h"

#include <algorithm>
#include <ctime>

#include "ASN1.h"

namespace der {

Bytes tlv(unsigned char tag, const Bytes& content) {
    Bytes out(6 + content.size());
    unsigned h = ASN1_set_header(out.data(), tag, static_cast<unsigned>(content.size()));
    std::copy(content.begin(), content.end(), out.begin() + h);
    out.resize(h + content.size());
    return out;
}

Bytes cat(const std::vector<Bytes>& parts) {
    Bytes out;
    for (auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

Bytes seq(const std::vector<Bytes>& items) { return tlv(0x30, cat(items)); }
Bytes set(const std::vector<Bytes>& items) { return tlv(0x31, cat(items)); }

Bytes oid(const std::string& dotted) {
    // The encoder may look a few bytes past the text for its end; a NUL
    // terminated copy with slack keeps that inside our buffer.
    std::string text = dotted + std::string(16, '\0');
    Bytes out(64);
    unsigned n = ASN1_code_ASCII_OID_to_DER(reinterpret_cast<unsigned char*>(text.data()),
                                            static_cast<unsigned char>(dotted.size()), out.data());
    if (n == 0) throw cli::Error("cannot encode OID " + dotted);
    out.resize(n);
    return tlv(0x06, out);
}

Bytes integer_be(Bytes m) {
    size_t i = 0;
    while (i + 1 < m.size() && m[i] == 0) ++i;
    m.erase(m.begin(), m.begin() + static_cast<long>(i));
    if (m.empty()) m.push_back(0);
    if (m[0] & 0x80) m.insert(m.begin(), 0);
    return tlv(0x02, m);
}

Bytes integer(unsigned long v) {
    Bytes m;
    for (int s = 56; s >= 0; s -= 8) m.push_back(static_cast<unsigned char>(v >> s));
    return integer_be(m);
}

Bytes octets(const Bytes& v) { return tlv(0x04, v); }
Bytes bits(const Bytes& v) {
    Bytes c{0};
    c.insert(c.end(), v.begin(), v.end());
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
    if (!p || p + 2 > limit) throw cli::Error("truncated DER");
    Elem e;
    e.p = p;
    e.tag = p[0];
    e.hdr = ASN1_header_legth(const_cast<unsigned char*>(p));
    if (e.hdr == 0 || p + e.hdr > limit) throw cli::Error("bad DER length");
    e.len = ASN1_get_block_length(const_cast<unsigned char*>(p));
    if (e.len > static_cast<size_t>(limit - p) - e.hdr) throw cli::Error("DER element runs past its parent");
    return e;
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
    std::string s;
    unsigned long v = 0;
    bool first = true;
    for (size_t i = 0; i < e.len; ++i) {
        unsigned char b = e.content()[i];
        v = v << 7 | (b & 0x7F);
        if (b & 0x80) continue;
        if (first) {
            unsigned long a = v < 40 ? 0 : v < 80 ? 1 : 2;
            s = std::to_string(a) + "." + std::to_string(v - 40 * a);
            first = false;
        } else {
            s += "." + std::to_string(v);
        }
        v = 0;
    }
    return s;
}

}  // namespace der
