// Enveloped values of the PKCS#15 container: a CMS EnvelopedData body
// (RFC 5652) with one KEK recipient, the CEK wrapped by the GOST 28147-89 key
// wrap of RFC 4357 and the content encrypted in CFB mode (RFC 4357 2.1).
#include "GOST_28147_89.h"
#include "containers/pkcs15_internal.h"
#include "core/bytes.h"

namespace kx {
namespace p15 {

namespace {

// The library's own blocks travel as little-endian 64-bit numbers; fields of
// a container may sit at any alignment, so they are copied out first.
type_u64 block_of(const uint8_t* p8) { return load64(p8); }

// Low 32 bits of the 64-bit MAC value, in memory order (RFC 4357 6.1 keeps
// the first four octets of the MAC).
void mac4(const Generation& g, const uint8_t* key32, type_uN<32>* kek, const uint8_t* ukm8, uint8_t* out4) {
    type_u64 iv = block_of(ukm8);
    uint8_t tmp[32];
    copy(tmp, key32, 32);
    type_u64 m = GOST_28147_89_MAC(tmp, 32, kek, &iv, g.sbox);
    wipe(tmp, sizeof tmp);
    uint8_t b[8];
    store64(b, m);
    copy(out4, b, 4);
}

}  // namespace

void wrap_key(const Generation& g, const uint8_t* key32, type_uN<32>* kek, const uint8_t* ukm8, uint8_t* wrapped32,
              uint8_t* mac_out) {
    mac4(g, key32, kek, ukm8, mac_out);
    move(wrapped32, key32, 32);
    GOST_28147_89_Z_ECB(wrapped32, 32, kek, g.sbox);
}

bool unwrap_key(const Generation& g, const uint8_t* wrapped32, type_uN<32>* kek, const uint8_t* ukm8,
                const uint8_t* mac_in, bool check, uint8_t* key32) {
    move(key32, wrapped32, 32);
    GOST_28147_89_R_ECB(key32, 32, kek, g.sbox);
    if (!check) return true;
    uint8_t m[4];
    mac4(g, key32, kek, ukm8, m);
    if (equal(m, mac_in, 4)) return true;
    wipe(key32, 32);
    return false;
}

unsigned open_envelope(const Generation& g, const Envelope& env, type_uN<32>* kek, bool check, uint8_t* out) {
    type_uN<32> cek;
    if (!unwrap_key(g, env.wrapped, kek, env.ukm, env.wrap_mac, check, cek.b)) return kWrongPassword;
    if (out != nullptr) {
        uint8_t buf[2 + 64 + 6];  // the largest value read: a 512-bit key (42 for the random value)
        unsigned n = env.content_len <= sizeof buf ? env.content_len : sizeof buf;
        copy(buf, env.content, n);
        type_u64 iv = block_of(env.iv);
        GOST_28147_89_R_CFB(buf, n, &cek, &iv, g.sbox);
        if (n > 2) copy(out, buf + 2, n - 2);
        wipe(buf, sizeof buf);
    }
    wipe_obj(cek);
    return kOk;
}

void decrypt_in_place(const Generation& g, const Envelope& env, type_uN<32>* kek) {
    type_uN<32> cek;
    unwrap_key(g, env.wrapped, kek, env.ukm, env.wrap_mac, false, cek.b);
    type_u64 iv = block_of(env.iv);
    GOST_28147_89_R_CFB(env.content, env.content_len, &cek, &iv, g.sbox);
    wipe_obj(cek);
}

void seal_envelope(const Generation& g, const Envelope& env, type_uN<32>* kek, uint8_t* cek32, const uint8_t* iv8,
                   const uint8_t* ukm8) {
    copy(env.iv, iv8, 8);
    copy(env.ukm, ukm8, 8);
    type_u64 iv = block_of(iv8);
    GOST_28147_89_Z_CFB(env.content, env.content_len, reinterpret_cast<type_uN<32>*>(cek32), &iv, g.sbox);
    wrap_key(g, cek32, kek, ukm8, env.wrapped, env.wrap_mac);
}

unsigned envelope_size(const Generation& g, unsigned len) {
    uint64_t total = envelope_len(g, len);
    return total > kMaxSize ? 0 : static_cast<unsigned>(total);
}

unsigned envelope(const Generation& g, uint8_t* data, unsigned len, type_uN<32>* kek, uint8_t* out) {
    unsigned total = envelope_size(g, len);
    if (total == 0 || out == nullptr) return total;
    // CEK, then a block whose octets 0..7 are the IV and 8..15 the UKM.
    uint8_t cek[32], blk[32];
    if (!draw(cek) || !draw(blk)) {
        wipe(cek, sizeof cek);
        return 0;
    }
    unsigned element_len = len + header_size(len);                       // 04 L value
    unsigned info_len = g.enc_info_len + element_len + header_size(element_len);  // 30 L content
    uint8_t* info = out + g.recipient_len;
    uint8_t* tpl = info + header_size(info_len);
    uint8_t* element = tpl + g.enc_info_len + header_size(element_len);
    // The value goes in first: it may lie at out itself.
    move(element + header_size(len), data, len);
    put_header(element, kTagOctets, len);
    put_header(tpl + g.enc_info_len, tag_ctx_prim(0), element_len);
    copy(tpl, g.enc_info, g.enc_info_len);
    put_header(info, kTagSeq, info_len);
    copy(out, g.recipient, g.recipient_len);
    Envelope env = {out + g.ukm_at,  out + g.wrapped_at, out + g.wrap_mac_at,
                    tpl + g.iv_at, element,           element_len};
    seal_envelope(g, env, kek, cek, blk, blk + 8);
    wipe(cek, sizeof cek);
    wipe(blk, sizeof blk);
    return total;
}

}  // namespace p15
}  // namespace kx

KORVEX_API unsigned int pkcs15_content_create(unsigned char* data, unsigned int len, type_uN<32>* kek,
                                              unsigned int /*reserved*/, unsigned char* out) {
    return kx::p15::envelope(kx::p15::g2001, data, len, kek, out);
}

KORVEX_API unsigned int pkcs15_content_create_2012(unsigned char* data, unsigned int len, type_uN<32>* kek,
                                                   unsigned int /*reserved*/, unsigned char* out) {
    return kx::p15::envelope(kx::p15::g2012, data, len, kek, out);
}
