// Creation of the PKCS#15 container, both generations: the token (password
// info, random object, private key object) inside the content, sealed by the
// AuthenticatedData. Sizes are known in advance, so the token is written
// front to back and the AuthenticatedData moves it into place.
#include "containers/pkcs15_locate.h"
#include "core/bytes.h"
#include "pkcs15.h"

namespace kx {
namespace p15 {

namespace {

// CommonObjectAttributes of the random object: label, flags private|modifiable.
constexpr uint8_t kRandomAttrs[26] = {0x30, 0x18, 0x0C, 0x12, 'R', 'a', 'n', 'd', 'o', 'm', ' ', 'I', 'n',
                                      'i',  't',  ' ',  'V',  'e', 'c', 't', 'o', 'r', 0x03, 0x02, 0x06, 0xC0};
// Label and flags of the private key object; the key attributes follow.
constexpr uint8_t kKeyLabel[19] = {0x30, 0x11, 0x0C, 0x0B, 'P', 'r', 'i', 'v', 'a', 't',
                                   'e',  ' ',  'K',  'e',  'y', 0x03, 0x02, 0x07, 0x80};

// X.509 KeyUsage bits (first octet of the BIT STRING).
enum : unsigned {
    kDigitalSignature = 0x80,
    kNonRepudiation = 0x40,
    kKeyEncipherment = 0x20,
    kDataEncipherment = 0x10,
    kKeyAgreement = 0x08,
    kKeyCertSign = 0x04,
    kCrlSign = 0x02
};
// PKCS#15 KeyUsageFlags, first octet: decrypt, sign|signRecover, unwrap;
// second octet: derive, nonRepudiation.
enum : uint8_t { kDecrypt = 0x40, kSign = 0x30, kUnwrap = 0x04, kDerive = 0x80, kNonRep = 0x40 };

// Writes one object at p; returns the position behind it, null when the
// generator fails.
uint8_t* write_object(const Generation& g, uint8_t* p, const uint8_t tags[3], const uint8_t* attrs, unsigned attrs_len,
                      const uint8_t* data, unsigned len, type_uN<32>* kek) {
    unsigned env = envelope_size(g, len);
    unsigned a1 = wrapped(env);
    unsigned i3 = attrs_len + wrapped(a1);
    unsigned i2 = wrapped(i3);
    p += put_header(p, tags[0], wrapped(i2));
    p += put_header(p, tags[1], i2);
    p += put_header(p, tags[2], i3);
    copy(p, attrs, attrs_len);
    p += attrs_len;
    p += put_header(p, kTagCtx1, a1);
    p += put_header(p, kTagCtx2, env);
    if (envelope(g, const_cast<uint8_t*>(data), len, kek, p) == 0) return nullptr;
    return p + env;
}

}  // namespace

unsigned key_attributes(bool mapped, unsigned short usage, uint8_t* out) {
    copy(out, kKeyLabel, sizeof kKeyLabel);
    uint8_t* a = out + sizeof kKeyLabel;
    const uint8_t id[6] = {0x04, 0x04, 0x00, 0x00, 0x00, 0x02};  // key identifier 2
    unsigned u = usage == 0 ? 0xFF : usage;
    uint8_t f1 = 0, f2 = 0, unused = 6;
    if (mapped && (u & (kNonRepudiation | kKeyAgreement))) {
        unused = (u & kNonRepudiation) ? 6 : 7;
        if (u & kNonRepudiation) f2 |= kNonRep;
        if (u & kKeyAgreement) f2 |= kDerive;
        if (u & (kDigitalSignature | kKeyCertSign | kCrlSign)) f1 |= kSign;
        if (u & kDataEncipherment) f1 |= kDecrypt;
        if (u & kKeyEncipherment) f1 |= kUnwrap;
        const uint8_t tail[13] = {0x30, 0x0B, id[0], id[1], id[2], id[3], id[4], id[5], 0x03, 0x03, unused, f1, f2};
        copy(a, tail, sizeof tail);
        return sizeof kKeyLabel + sizeof tail;
    }
    if (mapped) {
        // One flag octet; the unused-bit count of the last flag set stands.
        if (u & kDataEncipherment) f1 |= kDecrypt, unused = 6;
        if (u & (kDigitalSignature | kKeyCertSign | kCrlSign)) f1 |= kSign, unused = 4;
        if (u & kKeyEncipherment) f1 |= kUnwrap, unused = 2;
    }
    const uint8_t tail[12] = {0x30, 0x0A, id[0], id[1], id[2], id[3], id[4], id[5], 0x03, 0x02, unused, f1};
    copy(a, tail, sizeof tail);
    return sizeof kKeyLabel + sizeof tail;
}

unsigned create(const Generation& g, uint8_t* out, const uint8_t* key, unsigned keyLen, uint8_t* rnd,
                uint8_t* password, unsigned char passwordLen, bool mapped, unsigned short usage) {
    uint8_t attrs[32];
    unsigned attrs_len = key_attributes(mapped, usage, attrs);
    unsigned both = object_len(sizeof kRandomAttrs, envelope_size(g, kRandomLen)) +
                    object_len(attrs_len, envelope_size(g, keyLen));
    unsigned objects = wrapped(both);
    unsigned token = wrapped(g.pwd_header_len + objects);
    unsigned octets = wrapped(token);
    unsigned a0 = wrapped(octets);
    unsigned content = wrapped(sizeof kTokenOid + a0);
    if (out == nullptr) return authdata(g, nullptr, content, nullptr, nullptr);
    if (key == nullptr || rnd == nullptr) return 0;

    uint8_t salt[32];
    if (!draw(salt)) return 0;
    uint8_t* p = out;
    p += put_header(p, kTagSeq, sizeof kTokenOid + a0);
    copy(p, kTokenOid, sizeof kTokenOid);
    p += sizeof kTokenOid;
    p += put_header(p, kTagCtx0, octets);
    p += put_header(p, kTagOctets, token);
    p += put_header(p, kTagSeq, g.pwd_header_len + objects);
    copy(p, g.pwd_header, g.pwd_header_len);
    copy(p + g.salt_at, salt, sizeof salt);
    type_uN<32> kek;
    derive_kek(g, password, passwordLen, p + g.salt_at, kPbkdf2Iterations, &kek);
    p += g.pwd_header_len;
    p += put_header(p, kTagSeq, both);
    static constexpr uint8_t kRandomTags[3] = {tag_ctx(7), kTagCtx0, kTagCtx1};
    const uint8_t keyTags[3] = {kTagCtx0, kTagCtx0, g.key_tag};
    p = write_object(g, p, kRandomTags, kRandomAttrs, sizeof kRandomAttrs, rnd, kRandomLen, &kek);
    if (p != nullptr) p = write_object(g, p, keyTags, attrs, attrs_len, key, keyLen, &kek);
    unsigned size = p == nullptr ? 0 : authdata(g, out, content, &kek, out);
    wipe_obj(kek);
    return size;
}

}  // namespace p15
}  // namespace kx

KORVEX_API unsigned int pkcs15_create_conteiner(unsigned char* out, type_uN<32>* key, unsigned char* rnd,
                                                unsigned char* password, unsigned char passwordLen) {
    return kx::p15::create(kx::p15::g2001, out, key ? key->b : nullptr, 32, rnd, password, passwordLen, false, 0);
}

KORVEX_API unsigned int pkcs15_create_conteiner_new(unsigned char* out, type_uN<32>* key, unsigned char* rnd,
                                                    unsigned char* password, unsigned char passwordLen,
                                                    unsigned short usage) {
    return kx::p15::create(kx::p15::g2001, out, key ? key->b : nullptr, 32, rnd, password, passwordLen, true, usage);
}

KORVEX_API unsigned int pkcs15_create_conteiner_2012(unsigned char* out, TSecretKey* key, unsigned char* rnd,
                                                     unsigned short usage, unsigned char* password,
                                                     unsigned char passwordLen, unsigned char keyKind) {
    if (keyKind != 1 && keyKind != 2) return 0;
    return kx::p15::create(kx::p15::g2012, out, key ? key->b : nullptr, keyKind == 1 ? 32 : 64, rnd, password,
                           passwordLen, true, usage);
}
