// Nettle's gostdsa (gc256b = CryptoPro-A, gc512a = paramSetA) in the same run
// as the library's benchmarks: key pairs, signatures, verifications and VKO
// per second. Built when Nettle's development files are found.
#ifdef KORVEX_HAVE_NETTLE
#include <benchmark/benchmark.h>
#include <nettle/dsa.h>
#include <nettle/ecc-curve.h>
#include <nettle/ecc.h>
#include <nettle/ecdsa.h>
#include <nettle/gostdsa.h>
#include <nettle/knuth-lfib.h>

namespace {

const ecc_curve* curve(int bits) { return bits == 256 ? nettle_get_gost_gc256b() : nettle_get_gost_gc512a(); }

struct NettleKeys {
    knuth_lfib_ctx rng;
    ecc_point pub;
    ecc_scalar key;
    dsa_signature sig;
    uint8_t digest[64];
    size_t len;
    explicit NettleKeys(int bits) : len(bits / 8) {
        knuth_lfib_init(&rng, 17);
        ecc_point_init(&pub, curve(bits));
        ecc_scalar_init(&key, curve(bits));
        dsa_signature_init(&sig);
        ecdsa_generate_keypair(&pub, &key, &rng, reinterpret_cast<nettle_random_func*>(knuth_lfib_random));
        for (size_t i = 0; i < len; ++i) digest[i] = static_cast<uint8_t>(i * 29 + 3);
        sign();
    }
    ~NettleKeys() {
        ecc_point_clear(&pub);
        ecc_scalar_clear(&key);
        dsa_signature_clear(&sig);
    }
    void sign() { gostdsa_sign(&key, &rng, reinterpret_cast<nettle_random_func*>(knuth_lfib_random), len, digest, &sig); }
};

void BM_Nettle_KeyPair(benchmark::State& st) {
    NettleKeys k(static_cast<int>(st.range(0)));
    for (auto _ : st)
        ecdsa_generate_keypair(&k.pub, &k.key, &k.rng, reinterpret_cast<nettle_random_func*>(knuth_lfib_random));
    st.SetItemsProcessed(st.iterations());
}
void BM_Nettle_Sign(benchmark::State& st) {
    NettleKeys k(static_cast<int>(st.range(0)));
    for (auto _ : st) k.sign();
    st.SetItemsProcessed(st.iterations());
}
void BM_Nettle_Verify(benchmark::State& st) {
    NettleKeys k(static_cast<int>(st.range(0)));
    for (auto _ : st)
        if (!gostdsa_verify(&k.pub, k.len, k.digest, &k.sig)) st.SkipWithError("signature rejected");
    st.SetItemsProcessed(st.iterations());
}
void BM_Nettle_VKO(benchmark::State& st) {
    NettleKeys k(static_cast<int>(st.range(0)));
    uint8_t ukm[8] = {1, 2, 3, 4, 5, 6, 7, 8}, out[128];
    for (auto _ : st) {
        gostdsa_vko(&k.key, &k.pub, sizeof ukm, ukm, out);
        benchmark::DoNotOptimize(out);
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(BM_Nettle_KeyPair)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Nettle_Sign)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Nettle_Verify)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Nettle_VKO)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);

}  // namespace
#endif
