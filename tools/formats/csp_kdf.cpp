#include "formats/csp_kdf.h"

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "formats/gost.h"

namespace formats {
namespace {

// The seed string of real containers (the one the library's own container
// format uses does not open them).
const char kSeed[] = "DENEFH028.760246785.IUEFHWUIO.EF";

Secret hash(const Secret& in, bool gost2012) {
    Secret out(32);
    Secret buf = in;  // the library takes a mutable buffer
    auto* o = reinterpret_cast<type_uN<32>*>(out.data());
    if (gost2012) GOST_34_11_2012_hash_256_bit(buf.data(), static_cast<unsigned>(buf.size()), o);
    else GOST_34_11_94_hash(buf.data(), static_cast<unsigned>(buf.size()), nullptr, o);
    return out;
}

void append(Secret& to, const unsigned char* p, size_t n) { to.insert(to.end(), p, p + n); }

// Without an early exit: the computed MAC is secret-derived.
bool equal4(const Bytes& computed, const Bytes& stored) {
    unsigned char diff = stored.size() == 4 ? 0 : 1;
    for (size_t i = 0; i < 4 && i < stored.size(); ++i) diff |= computed[i] ^ stored[i];
    return diff == 0;
}

}  // namespace

Secret csp_container_kek(const std::string& password, const Bytes& salt, bool gost2012) {
    const size_t pad = gost2012 ? 64 : 32;
    Secret wide(4 * password.size(), 0);
    for (size_t i = 0; i < password.size(); ++i) wide[4 * i] = static_cast<unsigned char>(password[i]);

    Secret in;
    in.reserve(2 * pad + 2 * 32 + salt.size() + wide.size());  // no reallocation leaves copies behind
    append(in, salt.data(), salt.size());
    append(in, wide.data(), wide.size());
    const Secret h0 = hash(in, gost2012);

    Secret m(pad, 0);
    for (size_t i = 0; i < 32; ++i) m[i] = static_cast<unsigned char>(kSeed[i]);
    const int rounds = password.empty() ? 2 : 2000;
    for (int r = 0; r < rounds; ++r) {
        in.clear();
        for (size_t i = 0; i < pad; ++i) in.push_back(m[i] ^ 0x36);
        append(in, h0.data(), 32);
        for (size_t i = 0; i < pad; ++i) in.push_back(m[i] ^ 0x5C);
        append(in, h0.data(), 32);
        Secret h = hash(in, gost2012);
        m.assign(pad, 0);
        for (size_t i = 0; i < 32; ++i) m[i] = h[i];
    }
    in.clear();
    for (size_t i = 0; i < 32; ++i) in.push_back(m[i] ^ 0x36);
    append(in, salt.data(), salt.size());
    for (size_t i = 0; i < 32; ++i) in.push_back(m[i] ^ 0x5C);
    append(in, wide.data(), wide.size());
    return hash(hash(in, gost2012), gost2012);
}

bool csp_password_matches(const std::string& password, const Bytes& fingerprint, const Bytes& hmac_password,
                          bool gost2012) {
    const Secret key = csp_container_kek(password, fingerprint, gost2012);
    const unsigned char zero[16] = {};
    return equal4(mac4(zero, sizeof zero, key, nullptr, gost2012 ? kSboxZ : kSboxA), hmac_password);
}

bool csp_mask_mac_matches(const Bytes& mask, const Bytes& salt, const Bytes& mac, bool gost2012) {
    if (mask.size() != 32 && mask.size() != 64) return false;
    const Secret key(mask.end() - 32, mask.end());
    return equal4(mac4(salt.data(), salt.size(), key, nullptr, gost2012 ? kSboxZ : kSboxA), mac);
}

namespace {
// The length of the DER value at p[0..n), header included; 0 when malformed.
size_t tlv_size(const unsigned char* p, size_t n) {
    if (n < 2) return 0;
    size_t len = p[1], hdr = 2;
    if (len & 0x80) {
        const size_t k = len & 0x7F;
        if (k == 0 || k > 3 || n < 2 + k) return 0;
        len = 0;
        for (size_t i = 0; i < k; ++i) len = len << 8 | p[2 + i];
        hdr += k;
    }
    return len <= n - hdr ? hdr + len : 0;
}
}  // namespace

bool csp_header_mac_matches(const Bytes& header, bool gost2012) {
    const size_t outer = tlv_size(header.data(), header.size());
    if (outer == 0 || header[0] != 0x30) return false;
    const size_t body = outer - (header[1] & 0x80 ? 2 + (header[1] & 0x7F) : 2);  // the outer content
    const unsigned char* p = header.data() + (outer - body);
    const size_t content = tlv_size(p, body);
    if (content == 0 || p[0] != 0x30 || body - content != 6 || p[content] != 0x04 || p[content + 1] != 4) return false;
    const Secret zero(32, 0);
    return equal4(mac4(p, content, zero, nullptr, gost2012 ? kSboxZ : kSboxA), Bytes(p + content + 2, p + content + 6));
}

}  // namespace formats
