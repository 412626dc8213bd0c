#include "formats/gost.h"

#include <algorithm>

#include "GOST_28147_89.h"
#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"

namespace formats {

void wipe(void* p, size_t n) {
    volatile unsigned char* v = static_cast<volatile unsigned char*>(p);
    while (n--) *v++ = 0;
}

void check_iterations(long n, const char* what) {
    if (n < 1) throw Error(std::string(what) + ": iteration count " + std::to_string(n) + " is not positive");
    if (static_cast<unsigned long>(n) > kMaxIterations)
        throw Error(std::string(what) + ": iteration count " + std::to_string(n) + " is above the limit of " +
                        std::to_string(kMaxIterations),
                    kRefused);
}

namespace {

template <unsigned N>
type_uN<N>* as(unsigned char* p) {
    return reinterpret_cast<type_uN<N>*>(p);
}
unsigned char* mut(const unsigned char* p) { return const_cast<unsigned char*>(p); }

void need_key_len(size_t n) {
    // The library's HMAC takes key lengths below 256.
    if (n > 255) throw Error("passwords of more than 255 bytes are not supported", kRefused);
}

}  // namespace

Secret hmac(Hmac h, const unsigned char* key, size_t key_len, const unsigned char* data, size_t n) {
    need_key_len(key_len);
    unsigned char* k = mut(key);
    unsigned char kl = static_cast<unsigned char>(key_len);
    unsigned len = static_cast<unsigned>(n);
    Secret out(h == Hmac::streebog512 ? 64 : 32);
    if (h == Hmac::streebog512) GOST_34_11_2012_HMAC_512_bit(mut(data), len, k, kl, as<64>(out.data()));
    else if (h == Hmac::streebog256) GOST_34_11_2012_HMAC_256_bit(mut(data), len, k, kl, as<32>(out.data()));
    else GOST_34_11_94_HMAC(mut(data), len, k, kl, as<32>(out.data()));
    return out;
}

// The library's own PBKDF2 keeps four salt bytes and a 16-bit count (the
// containers' fixed form), so the general one is built on its HMACs.
Secret pbkdf2(Hmac h, const Bytes& password, const Bytes& salt, unsigned long iterations, size_t out_len) {
    need_key_len(password.size());
    Secret out;
    out.reserve(out_len + 64);
    Secret u, t;
    for (unsigned block = 1; out.size() < out_len; ++block) {
        Bytes s = salt;
        for (int shift = 24; shift >= 0; shift -= 8) s.push_back(static_cast<unsigned char>(block >> shift));
        u = hmac(h, password.data(), password.size(), s.data(), s.size());
        t = u;
        for (unsigned long i = 1; i < iterations; ++i) {
            u = hmac(h, password.data(), password.size(), u.data(), u.size());
            for (size_t j = 0; j < t.size(); ++j) t[j] ^= u[j];
        }
        out.insert(out.end(), t.begin(), t.end());
    }
    std::fill(out.begin() + static_cast<long>(out_len), out.end(), 0);
    out.resize(out_len);
    return out;
}

void cfb_meshed(bool decrypt, unsigned char* data, size_t n, const unsigned char key[32], const unsigned char iv[8],
                unsigned char sbox) {
    Secret k(key, key + 32);
    type_u64 syn;
    std::copy(iv, iv + 8, reinterpret_cast<unsigned char*>(&syn));
    for (size_t off = 0; off < n; off += 1024) {
        if (off) GOST_28147_89_key_mesh(as<32>(k.data()), &syn, sbox);
        unsigned len = static_cast<unsigned>(std::min<size_t>(1024, n - off));
        // The feedback after a full chunk is its last ciphertext block.
        type_u64 next = 0;
        if (!decrypt) {
            GOST_28147_89_Z_CFB(data + off, len, as<32>(k.data()), &syn, sbox);
            if (len == 1024) std::copy(data + off + 1016, data + off + 1024, reinterpret_cast<unsigned char*>(&next));
        } else {
            if (len == 1024) std::copy(data + off + 1016, data + off + 1024, reinterpret_cast<unsigned char*>(&next));
            GOST_28147_89_R_CFB(data + off, len, as<32>(k.data()), &syn, sbox);
        }
        syn = next;
    }
}

Secret kdf_2012_256(const Secret& key, const Bytes& label, const Bytes& seed) {
    Bytes in{1};
    in.insert(in.end(), label.begin(), label.end());
    in.push_back(0);
    in.insert(in.end(), seed.begin(), seed.end());
    in.push_back(1);
    in.push_back(0);
    Secret out(32);
    GOST_34_11_2012_HMAC_256_bit(in.data(), static_cast<unsigned>(in.size()), mut(key.data()),
                                 static_cast<unsigned char>(key.size()), as<32>(out.data()));
    return out;
}

Secret kek_diversify(const Secret& key, const unsigned char ukm[8], unsigned char sbox) {
    Secret k = key;
    for (int i = 0; i < 8; ++i) {
        unsigned s1 = 0, s2 = 0;
        for (int j = 0; j < 8; ++j) {
            unsigned w = static_cast<unsigned>(k[4 * j]) | static_cast<unsigned>(k[4 * j + 1]) << 8 |
                         static_cast<unsigned>(k[4 * j + 2]) << 16 | static_cast<unsigned>(k[4 * j + 3]) << 24;
            unsigned bit = 0u - (ukm[i] >> j & 1u);  // the UKM is public
            s1 += w & bit;
            s2 += w & ~bit;
        }
        type_u64 iv = static_cast<type_u64>(s1) | static_cast<type_u64>(s2) << 32;
        Secret next = k;
        GOST_28147_89_Z_CFB(next.data(), 32, as<32>(k.data()), &iv, sbox);
        k = next;
    }
    return k;
}

Bytes mac4(const unsigned char* data, size_t n, const Secret& key, const unsigned char* iv, unsigned char sbox) {
    type_u64 v = 0;
    if (iv) std::copy(iv, iv + 8, reinterpret_cast<unsigned char*>(&v));
    Secret k = key;
    type_u64 m = GOST_28147_89_MAC(mut(data), static_cast<unsigned>(n), as<32>(k.data()), &v, sbox);
    const unsigned char* b = reinterpret_cast<const unsigned char*>(&m);
    return Bytes(b, b + 4);
}

Secret csp_pbe_key(const Bytes& password_utf16, const Bytes& salt, unsigned long iterations) {
    Secret k = password_utf16;
    Secret in;
    in.reserve(std::max<size_t>(k.size(), 32) + salt.size() + 2);  // no reallocation leaves copies behind
    for (unsigned long i = 1; i <= iterations; ++i) {
        in = k;
        in.insert(in.end(), salt.begin(), salt.end());
        in.push_back(static_cast<unsigned char>(i >> 8));
        in.push_back(static_cast<unsigned char>(i));
        k.assign(32, 0);
        GOST_34_11_94_hash(in.data(), static_cast<unsigned>(in.size()), nullptr, as<32>(k.data()));
    }
    return k;
}

}  // namespace formats
