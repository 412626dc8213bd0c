// OpenSSL's GOST engine (GOST R 34.10-2012 on CryptoPro-A and paramSetA) in the same run as the library's benchmarks: key pairs,
// signatures over a ready digest, verifications and VKO (key derivation) per
// second. Skipped with an error when the engine does not load.
#ifdef KORVEX_HAVE_OPENSSL
#include <benchmark/benchmark.h>
#define OPENSSL_SUPPRESS_DEPRECATED  // the GOST engine is reached through the ENGINE interface
#include <openssl/engine.h>
#include <openssl/evp.h>

namespace {

ENGINE* engine() {
    static ENGINE* e = [] {
        ENGINE_load_builtin_engines();
        ENGINE* g = ENGINE_by_id("gost");
        if (g && !ENGINE_init(g)) g = nullptr;
        if (g) ENGINE_set_default(g, ENGINE_METHOD_ALL);
        return g;
    }();
    return e;
}

// 256: id-GostR3410-2001-CryptoPro-A-ParamSet; 512: id-tc26-gost-3410-12-512-paramSetA.
EVP_PKEY* keygen(int bits) {
    const char* name = bits == 256 ? "gost2012_256" : "gost2012_512";
    ENGINE* e = engine();
    const EVP_PKEY_ASN1_METHOD* m = e ? EVP_PKEY_asn1_find_str(&e, name, -1) : nullptr;
    int id = 0;
    if (m) EVP_PKEY_asn1_get0_info(&id, nullptr, nullptr, nullptr, nullptr, m);
    EVP_PKEY_CTX* c = id ? EVP_PKEY_CTX_new_id(id, engine()) : nullptr;
    EVP_PKEY* k = nullptr;
    if (c && EVP_PKEY_keygen_init(c) > 0 && EVP_PKEY_CTX_ctrl_str(c, "paramset", "A") > 0) EVP_PKEY_keygen(c, &k);
    EVP_PKEY_CTX_free(c);
    return k;
}

struct Peer {
    EVP_PKEY *k = nullptr, *k2 = nullptr;
    unsigned char digest[64], sig[128];
    size_t len, siglen = sizeof sig;
    explicit Peer(int bits) : len(bits / 8) {
        for (size_t i = 0; i < len; ++i) digest[i] = static_cast<unsigned char>(i * 29 + 3);
        if (!engine()) return;
        k = keygen(bits);
        k2 = keygen(bits);
        if (k) sign();
    }
    ~Peer() {
        EVP_PKEY_free(k);
        EVP_PKEY_free(k2);
    }
    bool sign() {
        EVP_PKEY_CTX* c = EVP_PKEY_CTX_new(k, nullptr);
        siglen = sizeof sig;
        bool ok = c && EVP_PKEY_sign_init(c) > 0 && EVP_PKEY_sign(c, sig, &siglen, digest, len) > 0;
        EVP_PKEY_CTX_free(c);
        return ok;
    }
    bool verify() {
        EVP_PKEY_CTX* c = EVP_PKEY_CTX_new(k, nullptr);
        bool ok = c && EVP_PKEY_verify_init(c) > 0 && EVP_PKEY_verify(c, sig, siglen, digest, len) == 1;
        EVP_PKEY_CTX_free(c);
        return ok;
    }
    bool derive() {
        EVP_PKEY_CTX* c = EVP_PKEY_CTX_new(k, nullptr);
        unsigned char out[64];
        size_t n = sizeof out;
        unsigned char ukm[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        bool ok = c && EVP_PKEY_derive_init(c) > 0 && EVP_PKEY_derive_set_peer(c, k2) > 0 &&
                  EVP_PKEY_CTX_ctrl(c, -1, EVP_PKEY_OP_DERIVE, EVP_PKEY_CTRL_SET_IV, 8, ukm) > 0 &&
                  EVP_PKEY_derive(c, out, &n) > 0;
        EVP_PKEY_CTX_free(c);
        return ok;
    }
};

void BM_OpenSSLGost_KeyPair(benchmark::State& st) {
    Peer p(static_cast<int>(st.range(0)));
    if (!p.k) return st.SkipWithError("GOST engine not available");
    for (auto _ : st) EVP_PKEY_free(keygen(static_cast<int>(st.range(0))));
    st.SetItemsProcessed(st.iterations());
}
void BM_OpenSSLGost_Sign(benchmark::State& st) {
    Peer p(static_cast<int>(st.range(0)));
    if (!p.k) return st.SkipWithError("GOST engine not available");
    for (auto _ : st)
        if (!p.sign()) st.SkipWithError("sign failed");
    st.SetItemsProcessed(st.iterations());
}
void BM_OpenSSLGost_Verify(benchmark::State& st) {
    Peer p(static_cast<int>(st.range(0)));
    if (!p.k) return st.SkipWithError("GOST engine not available");
    for (auto _ : st)
        if (!p.verify()) st.SkipWithError("signature rejected");
    st.SetItemsProcessed(st.iterations());
}
void BM_OpenSSLGost_VKO(benchmark::State& st) {
    Peer p(static_cast<int>(st.range(0)));
    if (!p.k) return st.SkipWithError("GOST engine not available");
    for (auto _ : st)
        if (!p.derive()) st.SkipWithError("derive failed");
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_OpenSSLGost_KeyPair)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSSLGost_Sign)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSSLGost_Verify)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenSSLGost_VKO)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);

}  // namespace
#endif
