// Readers of the PKCS#15 container. The 2001 generation has a fixed layout
// (786 octets, 787 with two usage-flag octets) and is read at fixed offsets
// once its outer length is known to cover them; the 2012 generation is
// walked element by element.
#include "containers/pkcs15_locate.h"
#include "core/bytes.h"
#include "pkcs15.h"

namespace kx {
namespace p15 {

unsigned check_2001(uint8_t* c, unsigned need, bool shifted, unsigned& s) {
    Der outer, first;
    if (c == nullptr || c[0] != kTagSeq || !der_top(c, outer)) return kMalformed;
    if (!der_first(outer, kTagInt, first)) return kMalformed;
    size_t total = static_cast<size_t>(outer.end - c);
    s = total == kSize2001 + 1 ? 1 : 0;
    return total >= need + (shifted ? s : 0) ? kOk : kMalformed;
}

Envelope envelope_2001(uint8_t* c, unsigned base, unsigned value_len) {
    const Generation& g = g2001;
    uint8_t* info = c + base + g.recipient_len + 2;  // behind 30 L of the encrypted content info
    Envelope e = {c + base + g.ukm_at, c + base + g.wrapped_at, c + base + g.wrap_mac_at,
                  info + g.iv_at,      info + g.enc_info_len + 2, 2 + value_len};
    return e;
}

unsigned kek_2012(const Der& kmi, uint8_t* password, unsigned char passwordLen, type_uN<32>* kek) {
    fill(kek, 0, sizeof *kek);
    if (kmi.tag == nullptr) return kOk;  // no password info: the KEK stays zero
    pkcs15_KEK_t k = get_kek(kmi);
    Der salt;
    if (!der_at(k.salt, kmi.end, salt) || salt.len() != 32 || k.iterations == 0) return kMalformed;
    derive_kek(g2012, password, passwordLen, salt.val, static_cast<unsigned short>(k.iterations), kek);
    return kOk;
}

unsigned walk_2012(uint8_t* c, bool key_object, Der& kmi, Envelope& env) {
    DerCursor token;
    Der objects, a2;
    if (!token_span(c, token) || !objects_seq(token, kmi, objects)) return kMalformed;
    bool found = key_object ? find_object(objects, kTagCtx0, kTagCtx0, g2012.key_tag, a2)
                            : find_object(objects, tag_ctx(7), kTagCtx0, kTagCtx1, a2);
    if (!found || !locate_envelope(a2, env)) return kMalformed;
    unsigned n = env.content_len;
    bool ok = key_object ? (n == 2 + 32 || n == 2 + 64) : n == 2 + kRandomLen;
    return ok ? kOk : kMalformed;
}

namespace {

unsigned read_2001(uint8_t* c, bool key_object, uint8_t* out, uint8_t* password, unsigned char passwordLen,
                   bool check) {
    unsigned s = 0;
    unsigned base = key_object ? kKeyBase2001 : kRandomBase2001;
    unsigned len = key_object ? 32 : kRandomLen;
    // The encrypted value is the last field read: 674 + s for the key, 454
    // for the random value.
    unsigned need = base + g2001.recipient_len + 2 + g2001.enc_info_len + 2 + 2 + len;
    unsigned rc = check_2001(c, need, key_object, s);
    if (rc != kOk) return rc;
    Envelope env = envelope_2001(c, base + (key_object ? s : 0), len);
    type_uN<32> kek;
    derive_kek(g2001, password, passwordLen, c + kSalt2001, kPbkdf2Iterations, &kek);
    rc = open_envelope(g2001, env, &kek, check, out);
    wipe_obj(kek);
    return rc;
}

unsigned read_2012(uint8_t* c, bool key_object, uint8_t* out, uint8_t* password, unsigned char passwordLen) {
    Der kmi;
    Envelope env;
    unsigned rc = walk_2012(c, key_object, kmi, env);
    if (rc != kOk) return rc;
    type_uN<32> kek;
    rc = kek_2012(kmi, password, passwordLen, &kek);
    if (rc == kOk) rc = open_envelope(g2012, env, &kek, false, out);
    wipe_obj(kek);
    return rc;
}

}  // namespace

}  // namespace p15
}  // namespace kx

using kx::p15::read_2001;
using kx::p15::read_2012;

KORVEX_API unsigned int pkcs15_get_key(unsigned char* container, type_uN<32>* keyOut, unsigned char* password,
                                       unsigned char passwordLen) {
    return read_2001(container, true, keyOut ? keyOut->b : nullptr, password, passwordLen, true);
}

KORVEX_API unsigned int pkcs15_get_key_no_pass_chek(unsigned char* container, type_uN<32>* keyOut,
                                                    unsigned char* password, unsigned char passwordLen) {
    return read_2001(container, true, keyOut ? keyOut->b : nullptr, password, passwordLen, false);
}

KORVEX_API unsigned int pkcs15_get_rnd(unsigned char* container, unsigned char* rndOut, unsigned char* password,
                                       unsigned char passwordLen) {
    return read_2001(container, false, rndOut, password, passwordLen, true);
}

KORVEX_API unsigned int pkcs15_get_rnd_no_pass_chek(unsigned char* container, unsigned char* rndOut,
                                                    unsigned char* password, unsigned char passwordLen) {
    return read_2001(container, false, rndOut, password, passwordLen, false);
}

KORVEX_API unsigned int pkcs15_get_key_2012(unsigned char* container, TSecretKey* keyOut, unsigned char* password,
                                            unsigned char passwordLen) {
    // The key record is cleared first, so a 256-bit key leaves 32 zero octets.
    if (keyOut != nullptr) kx::fill(keyOut->b, 0, sizeof keyOut->b);
    return read_2012(container, true, keyOut ? keyOut->b : nullptr, password, passwordLen);
}

KORVEX_API unsigned int pkcs15_get_rnd_2012(unsigned char* container, unsigned char* rndOut, unsigned char* password,
                                            unsigned char passwordLen) {
    return read_2012(container, false, rndOut, password, passwordLen);
}
