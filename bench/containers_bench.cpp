// Key-container reads per second: CryptoPro_conteiner_get (2000 iterations of
// GOST R 34.11-94 in the key derivation, 2 for an empty password, plus one
// public-key computation) and pkcs12_open_conteiner (PBKDF2 with 1024
// iterations, twice: MAC key and encipherment key).
#include <benchmark/benchmark.h>

#include <string>

#include "CryptoPro.h"
// Only the hex helpers of test_util.h are used; files are found from __FILE__.
#ifndef KORVEX_VECTORS_DIR
#define KORVEX_VECTORS_DIR ""
#endif
#include "common/test_util.h"
#include "pkcs12.h"

namespace {

// The vectors sit next to this file's folder: ../tests/vectors.
std::string vectors_dir() {
    std::string f = __FILE__;
    return f.substr(0, f.rfind('/')) + "/../tests/vectors";
}

kt::Bytes load(const std::string& rel) {
    std::ifstream in(vectors_dir() + "/" + rel, std::ios::binary);
    return kt::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

kt::Record record(const std::string& rel, const std::string& name) {
    std::ifstream in(vectors_dir() + "/" + rel);
    kt::Record cur;
    std::string line;
    while (std::getline(in, line)) {
        auto eq = line.find(" = ");
        if (eq == std::string::npos) {
            if (cur["name"] == name) return cur;
            cur.clear();
            continue;
        }
        cur[line.substr(0, eq)] = line.substr(eq + 3);
    }
    return cur;
}

void cryptopro_get(benchmark::State& st, const char* name) {
    kt::Record r = record("cryptopro/cryptopro.txt", name);
    kt::Bytes primary = kt::from_hex(r["primary"]), masks = kt::from_hex(r["masks"]),
              pw = kt::from_hex(r["password"]), cert = load("cryptopro/cert_d1_A.der"), mb(40);
    type_uN<32> key;
    for (auto _ : st) {
        unsigned char rc = CryptoPro_conteiner_get(primary.data(), masks.data(), cert.data(), mb.data(), &key,
                                                   pw.data(), static_cast<unsigned char>(pw.size()));
        if (rc != 0) st.SkipWithError("read failed");
        benchmark::DoNotOptimize(key);
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK_CAPTURE(cryptopro_get, password_8, "one_key")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(cryptopro_get, empty_password, "empty_password")->Unit(benchmark::kMillisecond);

void pkcs12_open(benchmark::State& st) {
    kt::Record r = record("pkcs12/pkcs12.txt", "basic");
    kt::Bytes c = kt::from_hex(r["container"]), pw = kt::from_hex(r["password"]), aux(40);
    type_uN<32> key;
    for (auto _ : st) {
        if (pkcs12_open_conteiner(&key, aux.data(), pw.data(), static_cast<unsigned char>(pw.size()), c.data()))
            st.SkipWithError("open failed");
        benchmark::DoNotOptimize(key);
    }
    st.SetItemsProcessed(st.iterations());
}
BENCHMARK(pkcs12_open)->Unit(benchmark::kMillisecond);

}  // namespace
