// The AuthenticatedData seal of a 2001 PKCS#15 container, checked by the
// program: the library's 2001 reader checks only the wrap of the key's CEK
// (the password), not the IV and the enciphered key behind it, so one flipped
// bit there would give another key without a word. The seal covers both: a
// GOST R 34.11-94 digest of the token in the messageDigest attribute, and an
// HMAC of the attributes under a MAC key wrapped with the password's KEK.
#include "containers.h"

#include "GOST_28147_89.h"
#include "GOST_34_11_94.h"
#include "pkcs5.h"

namespace cli {

namespace {

// The 2001 layout (786 octets; 787 with two usage-flag octets, s = 1).
constexpr size_t kSize = 786;
constexpr size_t kSalt = 178;         // PBKDF2 salt, 32 octets, 2000 iterations
constexpr size_t kMacKeyUkm = 46;     // UKM of the MAC key wrap (8)
constexpr size_t kMacKey = 60;        // wrapped MAC key (32)
constexpr size_t kMacKeyMac = 94;     // its 4-octet MAC
constexpr size_t kToken = 142;        // the encapsulated token, 532 + s octets
constexpr size_t kTokenLen = 532;
constexpr size_t kAttrs = 674;        // authenticated attributes (78 octets), + s
constexpr size_t kAttrsLen = 78;
constexpr size_t kDigestAt = 46;      // messageDigest value in the attributes
constexpr size_t kMacAt = 80;         // HMAC value behind the attributes (04 20 ...)
constexpr unsigned char kSbox = 2;    // CryptoPro-A

bool same(const unsigned char* a, const unsigned char* b, size_t n) {
    unsigned char d = 0;
    for (size_t i = 0; i < n; ++i) d |= a[i] ^ b[i];
    return d == 0;
}

bool digest_is(const Bytes& c, size_t at, size_t len, const unsigned char* want) {
    Bytes part(c.begin() + static_cast<long>(at), c.begin() + static_cast<long>(at + len));
    type_uN<32> h;
    GOST_34_11_94_hash(part.data(), static_cast<unsigned>(len), nullptr, &h);
    return same(h.b, want, 32);
}

}  // namespace

bool pkcs15_2001_sealed(const Bytes& c, const std::string& pw) {
    if (c.size() != kSize && c.size() != kSize + 1) return false;
    const size_t s = c.size() - kSize;
    const unsigned char* attrs = c.data() + kAttrs + s;
    if (attrs[0] != 0xA2 || attrs[1] != kAttrsLen - 2 || attrs[kMacAt - 2] != 0x04 || attrs[kMacAt - 1] != 32)
        return false;
    // The builder digests the token (532 + s octets from 142); the library's
    // update digests 532 + s octets from 142 + s. Both forms are in use.
    const unsigned char* md = attrs + kDigestAt;
    if (!digest_is(c, kToken, kTokenLen + s, md) && !(s && digest_is(c, kToken + s, kTokenLen + s, md))) return false;

    Bytes pwd(pw.begin(), pw.end()), salt(c.begin() + kSalt, c.begin() + kSalt + 32);
    type_uN<32> kek, mac_key;
    pkcs5_PBKDF2(pwd.data(), static_cast<unsigned char>(pwd.size()), salt.data(), 2000, &kek);
    wipe(pwd);
    unsigned char wrapped[44];  // UKM | enciphered key | MAC, as the key wrap of RFC 4357 lays it out
    std::copy(c.begin() + kMacKeyUkm, c.begin() + kMacKeyUkm + 8, wrapped);
    std::copy(c.begin() + kMacKey, c.begin() + kMacKey + 32, wrapped + 8);
    std::copy(c.begin() + kMacKeyMac, c.begin() + kMacKeyMac + 4, wrapped + 40);
    bool bad_wrap = GOST_28147_89_Key_Unwrap(wrapped, 0, &kek, &mac_key, kSbox);
    wipe(&kek, sizeof kek);
    Bytes a(attrs, attrs + kAttrsLen);
    a[0] = 0x82;  // the seal is taken with this tag in place of A2, as the library's builder does
    type_uN<32> mac;
    GOST_34_11_94_HMAC(a.data(), static_cast<unsigned>(a.size()), mac_key.b, 32, &mac);
    wipe(&mac_key, sizeof mac_key);
    return !bad_wrap && same(mac.b, attrs + kMacAt, 32);
}

}  // namespace cli
