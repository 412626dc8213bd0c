// The stored templates and algorithm choices of the two PKCS#15 container
// generations: 2001 (GOST R 34.11-94, CryptoPro-A, RFC 4357) and 2012
// (GOST R 34.11-2012 512-bit, id-tc26-gost-28147-param-Z, RFC 7836).
#include "containers/pkcs15_internal.h"
#include "containers/pkcs15_locate.h"

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "PRNG.h"
#include "core/bytes.h"
#include "pkcs5.h"

namespace kx {
namespace p15 {

namespace {

// Version 2 and the SET of one KEKRecipientInfo (RFC 5652 6.2.3): KEK
// identifier 1, key wrap 1.2.643.2.2.13.0 with the parameter set and UKM,
// then the 32-octet wrapped key with its 4-octet MAC (zeros here).
constexpr uint8_t kRecipient2001[94] = {
    0x02, 0x01, 0x02, 0x31, 0x59, 0xA2, 0x57, 0x02, 0x01, 0x04, 0x30, 0x06, 0x04, 0x04, 0x00, 0x00,
    0x00, 0x01, 0x30, 0x1E, 0x06, 0x07, 0x2A, 0x85, 0x03, 0x02, 0x02, 0x0D, 0x00, 0x30, 0x13, 0x06,
    0x07, 0x2A, 0x85, 0x03, 0x02, 0x02, 0x1F, 0x01, 0x04, 0x08, 0, 0, 0, 0, 0, 0,
    0, 0, 0x04, 0x2A, 0x30, 0x28, 0x04, 0x20, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0x04, 0x04, 0, 0, 0, 0};
constexpr uint8_t kRecipient2012[96] = {
    0x02, 0x01, 0x02, 0x31, 0x5B, 0xA2, 0x59, 0x02, 0x01, 0x04, 0x30, 0x06, 0x04, 0x04, 0x00, 0x00,
    0x00, 0x01, 0x30, 0x20, 0x06, 0x07, 0x2A, 0x85, 0x03, 0x02, 0x02, 0x0D, 0x00, 0x30, 0x15, 0x06,
    0x09, 0x2A, 0x85, 0x03, 0x07, 0x01, 0x02, 0x05, 0x01, 0x01, 0x04, 0x08, 0, 0, 0, 0,
    0, 0, 0, 0, 0x04, 0x2A, 0x30, 0x28, 0x04, 0x20, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x04, 0x04, 0, 0, 0, 0};

// id-data and the GOST 28147-89 content encryption algorithm with its
// parameters { IV (zeros here), parameter set }.
constexpr uint8_t kEncInfo2001[42] = {
    0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x01, 0x30, 0x1D, 0x06,
    0x06, 0x2A, 0x85, 0x03, 0x02, 0x02, 0x15, 0x30, 0x13, 0x04, 0x08, 0,    0,    0,
    0,    0,    0,    0,    0,    0x06, 0x07, 0x2A, 0x85, 0x03, 0x02, 0x02, 0x1F, 0x01};
constexpr uint8_t kEncInfo2012[44] = {
    0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x01, 0x30, 0x1F, 0x06, 0x06,
    0x2A, 0x85, 0x03, 0x02, 0x02, 0x15, 0x30, 0x15, 0x04, 0x08, 0,    0,    0,    0,    0,
    0,    0,    0,    0x06, 0x09, 0x2A, 0x85, 0x03, 0x07, 0x01, 0x02, 0x05, 0x01, 0x01};

// Token version 0 and the password key-management info (PKCS#15 PwdInfo):
// key identifier 1, PBKDF2 { salt (zeros here), 2000 iterations, key length
// 32, PRF }.
constexpr uint8_t kPwdHeader2001[81] = {
    0x02, 0x01, 0x00, 0xA0, 0x4C, 0x30, 0x4A, 0x04, 0x04, 0x00, 0x00, 0x00, 0x01, 0xA0, 0x42, 0x30,
    0x40, 0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 0x0C, 0x30, 0x33, 0x04, 0x20,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x02, 0x02, 0x07, 0xD0, 0x02, 0x01, 0x20, 0x30, 0x08, 0x06, 0x06, 0x2A, 0x85, 0x03, 0x02, 0x02,
    0x0A};
constexpr uint8_t kPwdHeader2012[83] = {
    0x02, 0x01, 0x00, 0xA0, 0x4E, 0x30, 0x4C, 0x04, 0x04, 0x00, 0x00, 0x00, 0x01, 0xA0, 0x44, 0x30,
    0x42, 0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 0x0C, 0x30, 0x35, 0x04, 0x20,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x02, 0x02, 0x07, 0xD0, 0x02, 0x01, 0x20, 0x30, 0x0A, 0x06, 0x08, 0x2A, 0x85, 0x03, 0x07, 0x01,
    0x01, 0x04, 0x02};

// macAlgorithm (HMAC) and [1] digestAlgorithm of the AuthenticatedData.
constexpr uint8_t kAdAlgs2001[20] = {0x30, 0x08, 0x06, 0x06, 0x2A, 0x85, 0x03, 0x02, 0x02, 0x0A,
                                     0xA1, 0x08, 0x06, 0x06, 0x2A, 0x85, 0x03, 0x02, 0x02, 0x09};
constexpr uint8_t kAdAlgs2012[24] = {0x30, 0x0A, 0x06, 0x08, 0x2A, 0x85, 0x03, 0x07, 0x01, 0x01, 0x04, 0x02,
                                     0xA1, 0x0A, 0x06, 0x08, 0x2A, 0x85, 0x03, 0x07, 0x01, 0x01, 0x02, 0x03};

// [2] authenticated attributes { contentType = PKCS#15 token, messageDigest
// (zeros here) } followed by the MAC OCTET STRING (zeros here); the lengths
// follow from the digest size d: 2d + 48 octets in all, attributes d + 46.
template <unsigned N>
struct Table {
    uint8_t b[N];
};
template <unsigned D>
constexpr Table<2 * D + 48> ad_suffix() {
    Table<2 * D + 48> t{};
    const uint8_t head[46] = {0xA2, D + 44, 0x30, 0x19, 0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D,
                              0x01, 0x09, 0x03, 0x31, 0x0C, 0x06, 0x0A, 0x2A, 0x86, 0x48, 0x86, 0xF7,
                              0x0D, 0x01, 0x0F, 0x03, 0x01, 0x30, D + 15, 0x06, 0x09, 0x2A, 0x86, 0x48,
                              0x86, 0xF7, 0x0D, 0x01, 0x09, 0x04, 0x31, D + 2,  0x04, D};
    for (unsigned i = 0; i < 46; ++i) t.b[i] = head[i];
    t.b[D + 46] = 0x04;
    t.b[D + 47] = D;
    return t;
}
constexpr Table<112> kAdSuffix2001 = ad_suffix<32>();
constexpr Table<176> kAdSuffix2012 = ad_suffix<64>();

// Every position in a generation follows from its templates; the two
// generations differ in the parameter-set OID (7 or 9 octets) and in the
// digest size D (32 or 64).
template <unsigned R, unsigned E, unsigned P, unsigned A, unsigned S>
constexpr Generation generation(bool gost2012, const uint8_t (&recipient)[R], const uint8_t (&enc_info)[E],
                                const uint8_t (&pwd_header)[P], const uint8_t (&ad_algs)[A], const Table<S>& suffix) {
    Generation g{};
    g.sbox = gost2012 ? 7 : 2;
    g.gost2012 = gost2012;
    g.recipient = recipient;
    g.recipient_len = R;
    // The recipient ends UKM(8), 04 2A 30 28 04 20, key(32), 04 04, MAC(4).
    g.ukm_at = R - 52;
    g.wrapped_at = g.ukm_at + 14;
    g.wrap_mac_at = g.wrapped_at + 34;
    g.enc_info = enc_info;
    g.enc_info_len = E;
    g.iv_at = 25;  // id-data(11), 30 L, OID(8), 30 L, 04 08
    g.pwd_header = pwd_header;
    g.pwd_header_len = P;
    g.salt_at = 32;  // behind 04 20
    g.ad_algs = ad_algs;
    g.ad_algs_len = A;
    g.ad_suffix = suffix.b;
    g.ad_suffix_len = S;
    g.digest_len = (S - 48) / 2;
    g.attrs_len = g.digest_len + 46;
    g.digest_at = 46;
    g.ad_mac_at = g.digest_len + 48;
    g.key_tag = gost2012 ? 0xBB : 0xBA;
    return g;
}

// The positions land on the value octets that the templates leave zero for
// them, right behind the headers that announce them.
constexpr bool fits(const Generation& g) {
    const uint8_t* r = g.recipient;
    return r[g.ukm_at - 2] == kTagOctets && r[g.ukm_at - 1] == 8 && r[g.wrapped_at - 2] == kTagOctets &&
           r[g.wrapped_at - 1] == 32 && r[g.wrap_mac_at - 2] == kTagOctets && r[g.wrap_mac_at - 1] == 4 &&
           g.enc_info[g.iv_at - 2] == kTagOctets && g.enc_info[g.iv_at - 1] == 8 && g.pwd_header[g.salt_at - 2] == kTagOctets &&
           g.pwd_header[g.salt_at - 1] == 32 && g.ad_suffix[g.digest_at - 2] == kTagOctets &&
           g.ad_suffix[g.digest_at - 1] == g.digest_len && g.ad_suffix[g.ad_mac_at - 2] == kTagOctets &&
           g.ad_suffix[g.ad_mac_at - 1] == g.digest_len && g.ad_suffix[1] + 2u == g.attrs_len;
}

}  // namespace

const uint8_t kTokenOid[12] = {0x06, 0x0A, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0F, 0x03, 0x01};

constexpr Generation g2001 = generation(false, kRecipient2001, kEncInfo2001, kPwdHeader2001, kAdAlgs2001, kAdSuffix2001);
constexpr Generation g2012 = generation(true, kRecipient2012, kEncInfo2012, kPwdHeader2012, kAdAlgs2012, kAdSuffix2012);
static_assert(fits(g2001) && fits(g2012), "template positions");

namespace {

// The fixed offsets of the 2001 form (pkcs15_locate.h), derived from the
// templates and the DER header rule for the 786-octet container that
// pkcs15_create_conteiner writes: random object attributes of 26 octets, key
// attributes of 31 (one usage-flag octet), a 32-octet key.
constexpr unsigned kRandomAttrsLen = 26, kKeyAttrsLen = 31;

// Where the A2 content of an object (object_len) starts.
constexpr uint64_t a2_at(uint64_t attrs, uint64_t env) {
    uint64_t i3 = attrs + wrapped(wrapped(env));
    return header_size(wrapped(wrapped(i3))) + header_size(wrapped(i3)) + header_size(i3) + attrs +
           header_size(wrapped(env)) + header_size(env);
}

struct Layout {
    uint64_t size, prefix, token, token_len, salt, random_base, random_value, key_base, attrs;
};

constexpr Layout layout_2001(const Generation& g) {
    uint64_t rnd = envelope_len(g, kRandomLen), key = envelope_len(g, 32);
    uint64_t objects = object_len(kRandomAttrsLen, rnd) + object_len(kKeyAttrsLen, key);
    uint64_t token_content = g.pwd_header_len + wrapped(objects);
    uint64_t token = wrapped(token_content);
    uint64_t content = sizeof kTokenOid + wrapped(wrapped(token));
    uint64_t inner = ad_prefix_len(g) + wrapped(content) + g.ad_suffix_len;
    Layout l{};
    l.size = wrapped(inner);
    l.prefix = header_size(inner);
    uint64_t content_at = l.prefix + ad_prefix_len(g);
    l.token = content_at + header_size(content) + sizeof kTokenOid + header_size(wrapped(token)) + header_size(token);
    l.token_len = token;
    l.salt = l.token + header_size(token_content) + g.salt_at;
    uint64_t first = l.token + header_size(token_content) + g.pwd_header_len + header_size(objects);
    l.random_base = first + a2_at(kRandomAttrsLen, rnd);
    l.random_value = l.random_base + g.recipient_len + header_size(g.enc_info_len + wrapped(wrapped(kRandomLen))) +
                     g.enc_info_len + header_size(wrapped(kRandomLen)) + header_size(kRandomLen);
    l.key_base = first + object_len(kRandomAttrsLen, rnd) + a2_at(kKeyAttrsLen, key);
    l.attrs = content_at + wrapped(content);
    return l;
}
constexpr Layout k2001 = layout_2001(g2001);
static_assert(k2001.size == kSize2001 && k2001.token == kToken2001 && k2001.token_len == kTokenLen2001 &&
                  k2001.salt == kSalt2001 && k2001.random_base == kRandomBase2001 &&
                  k2001.random_value == kRandomValue2001 && k2001.key_base == kKeyBase2001 &&
                  k2001.attrs == kAttrs2001 && k2001.prefix + g2001.ukm_at == kAdUkm2001 &&
                  k2001.prefix + g2001.wrapped_at == kAdMacKey2001 && k2001.prefix + g2001.wrap_mac_at == kAdMacKeyMac2001,
              "2001 offsets");

}  // namespace

void digest(const Generation& g, uint8_t* data, unsigned len, uint8_t* out) {
    if (g.gost2012)
        GOST_34_11_2012_hash_512_bit(data, len, reinterpret_cast<type_uN<64>*>(out));
    else
        GOST_34_11_94_hash(data, len, nullptr, reinterpret_cast<type_uN<32>*>(out));
}

void hmac(const Generation& g, uint8_t* data, unsigned len, uint8_t* key32, uint8_t* out) {
    if (g.gost2012)
        GOST_34_11_2012_HMAC_512_bit(data, len, key32, 32, reinterpret_cast<type_uN<64>*>(out));
    else
        GOST_34_11_94_HMAC(data, len, key32, 32, reinterpret_cast<type_uN<32>*>(out));
}

void derive_kek(const Generation& g, uint8_t* password, unsigned char passwordLen, uint8_t* salt,
                unsigned short iterations, type_uN<32>* kek) {
    if (g.gost2012)
        pkcs5_PBKDF2_2012(password, passwordLen, salt, iterations, kek);
    else
        pkcs5_PBKDF2(password, passwordLen, salt, iterations, kek);
}

bool draw(uint8_t* out32) { return PRNG_get(reinterpret_cast<type_uN<32>*>(out32)) == 0; }

}  // namespace p15
}  // namespace kx
