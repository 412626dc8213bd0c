// Renewal of a PKCS#15 container in place under the same password: fresh
// CEKs, IVs, UKMs, random value and AuthenticatedData MAC key, with digest and
// HMAC recomputed. All random octets are drawn before the container is
// touched, so a failing generator leaves it as it was.
#include "containers/pkcs15_locate.h"
#include "core/bytes.h"
#include "pkcs15.h"

namespace kx {
namespace p15 {

namespace {

// Draws n blocks of 32 octets; false (and wiped) on a generator failure.
bool draw_all(uint8_t (*r)[32], unsigned n) {
    for (unsigned i = 0; i < n; ++i)
        if (!draw(r[i])) {
            wipe(r, 32 * n);
            return false;
        }
    return true;
}

unsigned update_2001(uint8_t* c, uint8_t* password, unsigned char passwordLen) {
    const Generation& g = g2001;
    unsigned s = 0;
    // The last field written is the AuthenticatedData MAC, ending at 786 + s.
    unsigned rc = check_2001(c, kAttrs2001 + g.ad_suffix_len, true, s);
    if (rc != kOk) return rc;
    // r[0] MAC key, r[1] random-object CEK, r[2] key-object CEK, r[3] random
    // value, r[4] IV and UKM of both objects, r[5] UKM of the MAC key wrap.
    uint8_t r[6][32];
    if (!draw_all(r, 1)) return kNoRandom;
    type_uN<32> kek, cek;
    derive_kek(g, password, passwordLen, c + kSalt2001, kPbkdf2Iterations, &kek);
    Envelope key = envelope_2001(c, kKeyBase2001 + s, 32);
    Envelope rnd = envelope_2001(c, kRandomBase2001, kRandomLen);
    bool ok = unwrap_key(g, key.wrapped, &kek, key.ukm, key.wrap_mac, true, cek.b);
    wipe_obj(cek);
    if (!ok) rc = kWrongPassword;
    else if (!draw_all(r + 1, 5)) rc = kNoRandom;
    if (rc != kOk) {
        wipe(r, sizeof r);
        wipe_obj(kek);
        return rc;
    }
    decrypt_in_place(g, key, &kek);
    decrypt_in_place(g, rnd, &kek);
    // The first 32 octets of the random value are renewed, and the first
    // 32-bit word of the new value is counted up by one.
    uint8_t* value = c + kRandomValue2001;
    copy(value, r[3], 32);
    store32(value, load32(value) + 1);
    seal_envelope(g, rnd, &kek, r[1], r[4], r[4] + 8);
    seal_envelope(g, key, &kek, r[2], r[4] + 16, r[4] + 24);
    uint8_t* attrs = c + kAttrs2001 + s;
    // The update digests 532 + s octets from 142 + s. The token itself starts
    // at 142 in both sizes, so for the 787-octet form this range begins one
    // octet into the token and ends one octet past it; the readers never check
    // this digest, and containers updated this way are kept byte-compatible.
    AuthData ad = {c + kAdUkm2001,     c + kAdMacKey2001, c + kAdMacKeyMac2001,   c + kToken2001 + s,
                   kTokenLen2001 + s, attrs,             g.attrs_len,            attrs + g.digest_at,
                   attrs + g.ad_mac_at};
    seal_authdata(g, ad, &kek, r[0], r[5]);
    wipe(r, sizeof r);
    wipe_obj(kek);
    return kOk;
}

unsigned update_2012(uint8_t* c, uint8_t* password, unsigned char passwordLen) {
    const Generation& g = g2012;
    AuthData ad;
    Der kmi, kmi_key;
    Envelope rnd, key;
    if (!locate_authdata(g, c, ad) || walk_2012(c, false, kmi, rnd) != kOk || walk_2012(c, true, kmi_key, key) != kOk)
        return kMalformed;
    type_uN<32> kek;
    unsigned rc = kek_2012(kmi, password, passwordLen, &kek);
    if (rc != kOk) return rc;
    uint8_t mac_key[32], check[64];
    // The MAC of the wrapped MAC key is the password check.
    if (!unwrap_key(g, ad.wrapped, &kek, ad.ukm, ad.wrap_mac, true, mac_key)) {
        wipe_obj(kek);
        return kWrongPassword;
    }
    digest(g, ad.content, ad.content_len, check);
    bool intact = equal(check, ad.digest, g.digest_len);
    attrs_hmac(g, ad.attrs, ad.attrs_len, mac_key, check);
    intact = equal(check, ad.mac, g.digest_len) && intact;
    wipe(mac_key, sizeof mac_key);
    // r[0], r[1][0..7] new random value; r[1][8..15] IV, [16..23] UKM,
    // [24..31] UKM of the MAC key wrap; r[2] CEK; r[3] MAC key.
    uint8_t r[4][32];
    if (!intact) rc = kIntegrity;
    else if (!draw_all(r, 4)) rc = kNoRandom;
    if (rc != kOk) {
        wipe_obj(kek);
        return rc;
    }
    put_header(rnd.content, kTagOctets, kRandomLen);
    copy(rnd.content + 2, r[0], 32);
    copy(rnd.content + 34, r[1], 8);
    seal_envelope(g, rnd, &kek, r[2], r[1] + 8, r[1] + 16);
    seal_authdata(g, ad, &kek, r[3], r[1] + 24);
    wipe(r, sizeof r);
    wipe_obj(kek);
    return kOk;
}

}  // namespace

}  // namespace p15
}  // namespace kx

KORVEX_API unsigned int pkcs15_update(unsigned char* container, unsigned char* password, unsigned char passwordLen) {
    return kx::p15::update_2001(container, password, passwordLen);
}

KORVEX_API unsigned int pkcs15_update_2012(unsigned char* container, unsigned char* password,
                                           unsigned char passwordLen) {
    return kx::p15::update_2012(container, password, passwordLen);
}
