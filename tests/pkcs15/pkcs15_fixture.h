// Helpers of the PKCS#15 tests: generator seeding, fixed inputs, walks of
// the containers, and an outside re-computation of the key wraps and of
// the AuthenticatedData digest and HMAC with the exported primitives.
#ifndef KORVEX_TESTS_PKCS15_FIXTURE_H
#define KORVEX_TESTS_PKCS15_FIXTURE_H

#include <cstring>
#include <string>
#include <vector>

#include "common/buffers.h"
#include "common/der.h"
#include "common/generator.h"
#include "korvex.h"

namespace kt {

inline Bytes password() { return Bytes{'p', 'a', 's', 's', 'w', 'o', 'r', 'd', '1', '2', '3'}; }
inline Bytes wrong_password() { return Bytes{'p', 'a', 's', 's', 'w', 'o', 'r', 'd', '1', '2', '4'}; }

inline type_uN<32> key32(const unsigned char* p) {
    type_uN<32> k;
    std::memcpy(k.b, p, 32);
    return k;
}

// Unwraps 32 octets with the cipher subsystem's RFC 4357 key unwrap; false
// when its MAC does not match.
inline bool unwrap(const unsigned char* ukm, const unsigned char* enc, const unsigned char* mac, type_uN<32> kek,
                   unsigned char sbox, type_uN<32>& cek) {
    unsigned char w[44];
    std::memcpy(w, ukm, 8), std::memcpy(w + 8, enc, 32), std::memcpy(w + 40, mac, 4);
    return !GOST_28147_89_Key_Unwrap(w, 0, &kek, &cek, sbox);
}

// Value positions of the one KEK recipient of a recipient SET:
// SET { [2] { INTEGER 4, kekid, alg { OID, params { OID, UKM } }, OCTET STRING { SEQ { enc, mac } } } }
struct Recipient {
    size_t ukm = 0, wrapped = 0, wrap_mac = 0;
};
inline Recipient recipient(const Bytes& c, const Der& set) {
    auto kekri = children(c, children(c, set).at(0));
    auto wrapped = children(c, children(c, kekri.at(3)).at(0));
    return {children(c, children(c, kekri.at(2)).at(1)).at(1).value(), wrapped.at(0).value(), wrapped.at(1).value()};
}

// Parts of an AuthenticatedData as found by walking it.
struct AdParts : Recipient {
    Der recipients, content_os, attrs, mac;
    size_t digest = 0;
};
inline AdParts ad_parts(const Bytes& c) {
    AdParts p;
    auto top = children(c, der(c, 0));
    p.recipients = top.at(1);
    static_cast<Recipient&>(p) = recipient(c, p.recipients);
    size_t i = top.at(3).tag == 0xA1 ? 4 : 3;
    p.content_os = children(c, children(c, top.at(i)).at(1)).at(0);
    p.attrs = top.at(i + 1);
    p.mac = top.at(i + 2);
    p.digest = children(c, children(c, children(c, p.attrs).at(1)).at(1)).at(0).value();
    return p;
}

// Token parts, found by walking from the token's version: the salt value and
// the enveloped objects (0 the random object, 1 the key object).
inline size_t token_at(const Bytes& c) {
    return pkcs15_get_pkcs15content(const_cast<unsigned char*>(c.data())) - c.data();
}
inline size_t salt_at(const Bytes& c) {
    return pkcs15_get_pkcs15_KEK(const_cast<unsigned char*>(c.data()) + token_at(c)).salt + 2 - c.data();
}
struct ObjParts : Recipient {
    size_t iv = 0;
    Der content;  // encrypted OCTET STRING element, tag 0x80
};
inline ObjParts object_parts(const Bytes& c, int which) {
    Der objects = der(c, token_at(c));  // behind the password info [0], when present
    if (objects.tag == 0xA0) objects = der(c, objects.end());
    // t1 { t2 { t3 { attributes, A1 { A2 { version, SET, info } } } } }
    Der o = children(c, objects).at(which);
    Der a1 = children(c, children(c, children(c, o).at(0)).at(0)).back();
    auto body = children(c, children(c, a1).at(0));
    ObjParts p;
    static_cast<Recipient&>(p) = recipient(c, body.at(1));
    auto info = children(c, body.at(2));  // id-data, alg { OID, { IV, set } }, [0]
    p.iv = children(c, children(c, info.at(1)).at(1)).at(0).value();
    p.content = info.at(2);
    return p;
}

// Opens an object by hand under kek, without the MAC check: the octets
// behind the 2-octet header of the decrypted OCTET STRING.
inline Bytes open_by_hand(const Bytes& c, int which, type_uN<32> kek, unsigned char sbox) {
    ObjParts p = object_parts(c, which);
    type_uN<32> cek = key32(&c[p.wrapped]);
    GOST_28147_89_R_ECB(cek.b, 32, &kek, sbox);
    Bytes plain(c.begin() + p.content.value(), c.begin() + p.content.end());
    type_u64 iv;
    std::memcpy(&iv, &c[p.iv], 8);
    GOST_28147_89_R_CFB(plain.data(), (unsigned)plain.size(), &cek, &iv, sbox);
    return Bytes(plain.begin() + 2, plain.end());
}

// GOST R 34.11-94 or GOST R 34.11-2012 512-bit of data; with a key, the HMAC.
inline Bytes hash(bool g2012, Bytes data, const type_uN<32>* key = nullptr) {
    type_uN<64> h;
    type_uN<32> h32;
    unsigned n = (unsigned)data.size();
    unsigned char* k = key ? const_cast<unsigned char*>(key->b) : nullptr;
    if (g2012) {
        if (key) GOST_34_11_2012_HMAC_512_bit(data.data(), n, k, 32, &h);
        else GOST_34_11_2012_hash_512_bit(data.data(), n, &h);
        return Bytes(h.b, h.b + 64);
    }
    if (key) GOST_34_11_94_HMAC(data.data(), n, k, 32, &h32);
    else GOST_34_11_94_hash(data.data(), n, nullptr, &h32);
    return Bytes(h32.b, h32.b + 32);
}

// Result of checking an AuthenticatedData from outside: the MAC key's wrap
// MAC, the messageDigest, and which first octet of the attributes gives the
// stored HMAC: 0x82, the stored 0xA2, or the SET OF tag of RFC 5652 9.2
// (0 for none).
struct AdCheck {
    bool key_mac = false, digest = false;
    unsigned char hmac_tag = 0;
    bool ok() const { return key_mac && digest && hmac_tag == 0x82; }
};
inline AdCheck check_ad(const Bytes& c, type_uN<32> kek, bool g2012) {
    AdCheck r;
    AdParts p = ad_parts(c);
    type_uN<32> mk;
    r.key_mac = unwrap(&c[p.ukm], &c[p.wrapped], &c[p.wrap_mac], kek, g2012 ? 7 : 2, mk);
    r.digest = hash(g2012, Bytes(c.begin() + p.content_os.value(), c.begin() + p.content_os.end())) ==
               Bytes(c.begin() + p.digest, c.begin() + p.digest + (g2012 ? 64 : 32));
    Bytes attrs(c.begin() + p.attrs.at, c.begin() + p.attrs.end());
    for (unsigned char tag : {0x82, 0xA2, 0x31})
        if (attrs[0] = tag, hash(g2012, attrs, &mk) == Bytes(c.begin() + p.mac.value(), c.begin() + p.mac.end()))
            r.hmac_tag = tag;
    return r;
}

inline type_uN<32> kek_of(bool g2012, Bytes pwd, const unsigned char* salt, unsigned short iterations = 2000) {
    type_uN<32> k;
    Bytes s(salt, salt + 32);
    (g2012 ? pkcs5_PBKDF2_2012 : pkcs5_PBKDF2)(pwd.data(), (unsigned char)pwd.size(), s.data(), iterations, &k);
    return k;
}

// Fixed inputs of the containers: runs of octets first, first + step, ...
inline Bytes ramp(size_t n, int first, int step = 1) {
    Bytes r(n);
    for (size_t i = 0; i < n; ++i) r[i] = (unsigned char)(first + step * i);
    return r;
}
inline type_uN<32> sample_key() { return key32(ramp(32, 0x10).data()); }
inline Bytes sample_rnd() { return ramp(40, 0xA0); }
inline TSecretKey sample_key_2012() {
    TSecretKey k;
    Bytes r = ramp(64, 0x40, 3);
    std::memcpy(k.b, r.data(), 64);
    return k;
}
// A container built after a size query; empty unless both calls agree.
template <class Build>
Bytes built(Build f) {
    Bytes c(f(nullptr));
    return !c.empty() && f(c.data()) == c.size() ? c : Bytes();
}
inline Bytes make_2001(unsigned short usage, bool mapped = true, Bytes pwd = password()) {
    type_uN<32> key = sample_key();
    Bytes rnd = sample_rnd();
    return built([&](unsigned char* o) {
        return mapped ? pkcs15_create_conteiner_new(o, &key, rnd.data(), pwd.data(), (unsigned char)pwd.size(), usage)
                      : pkcs15_create_conteiner(o, &key, rnd.data(), pwd.data(), (unsigned char)pwd.size());
    });
}
inline Bytes make_2012(unsigned char kind, unsigned short usage = 0, Bytes pwd = password()) {
    TSecretKey key = sample_key_2012();
    Bytes rnd = sample_rnd();
    return built([&](unsigned char* o) {
        return pkcs15_create_conteiner_2012(o, &key, rnd.data(), usage, pwd.data(), (unsigned char)pwd.size(), kind);
    });
}

}  // namespace kt

#endif
