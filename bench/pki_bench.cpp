// Certificate access and CMS SignedData: accessors, certificate signature
// check, message parse, sign and verify.
#include <algorithm>
#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "CMS.h"
#include "PRNG.h"
#include "x_509.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes fixture(const std::string& name) {
    std::string src = __FILE__;
    std::string path = src.substr(0, src.rfind('/')) + "/../tests/vectors/pki/" + name;
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Private key of the fixture CA (little-endian), from tests/vectors/pki/certs.txt.
type_uN<32> ca_key() {
    std::string src = __FILE__;
    std::ifstream in(src.substr(0, src.rfind('/')) + "/../tests/vectors/pki/certs.txt");
    std::string line, hex;
    bool ca = false;
    while (std::getline(in, line)) {
        if (line == "name = ca_a") ca = true;
        if (ca && line.rfind("private = ", 0) == 0) { hex = line.substr(10); break; }
    }
    type_uN<32> k{};
    for (size_t i = 0; i < 32 && 2 * i + 1 < hex.size(); ++i) k.b[i] = static_cast<unsigned char>(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    return k;
}

void seed() {
    unsigned char s[40];
    for (int i = 0; i < 40; ++i) s[i] = static_cast<unsigned char>(i * 29 + 3);
    PRNG_init(s);
}

void BM_x509_display_fields(benchmark::State& st) {
    Bytes cert = fixture("ca_a.der");
    for (auto _ : st) {
        x509_field_pointers f = x_509_get_field_pointers(cert.data());
        benchmark::DoNotOptimize(x_509_parse_Name_field(f.subject.ptr));
        benchmark::DoNotOptimize(x_509_parse_Name_field(f.issuer.ptr));
        benchmark::DoNotOptimize(x_509_get_textbox_of_cer(cert.data()));
        benchmark::DoNotOptimize(x_509_get_key_usage(cert.data()));
        benchmark::DoNotOptimize(x_509_get_open_key(cert.data()));
        benchmark::DoNotOptimize(x_509_get_open_key_parametrs_ds(cert.data()));
    }
}
BENCHMARK(BM_x509_display_fields);

void BM_x509_check_certificate(benchmark::State& st) {
    Bytes ca = fixture("ca_a.der"), leaf = fixture("leaf_b.der");
    for (auto _ : st) benchmark::DoNotOptimize(x_509_check_certificate(leaf.data(), ca.data()));
}
BENCHMARK(BM_x509_check_certificate)->Unit(benchmark::kMillisecond);

void BM_cms_parse(benchmark::State& st) {
    Bytes msg = fixture("cms_openssl_ca_a.der");
    for (auto _ : st) benchmark::DoNotOptimize(CMS_SignedData_parse(msg.data()));
}
BENCHMARK(BM_cms_parse);

void BM_cms_verify_openssl_message(benchmark::State& st) {
    Bytes msg = fixture("cms_openssl_ca_a.der");
    for (auto _ : st) {
        cms_signed_data_t r = CMS_SignedData_parse(msg.data());
        benchmark::DoNotOptimize(CMS_SignedData_check(r.signed_attrs, nullptr, r.content, r.content_len,
                                                      r.certificate, reinterpret_cast<type_uN<64>*>(r.signature)));
    }
}
BENCHMARK(BM_cms_verify_openssl_message)->Unit(benchmark::kMillisecond);

// Builds, signs and wraps a message over `range` octets of content.
void BM_cms_sign(benchmark::State& st) {
    seed();
    Bytes cert = fixture("ca_a.der");
    type_uN<32> key = ca_key();
    Bytes content(static_cast<size_t>(st.range(0)), 0x5A);
    std::string attrs = "1.2.840.113549.1.9.5:Fw0yNjExMjIxMjAwMDBa";
    unsigned char* a = reinterpret_cast<unsigned char*>(&attrs[0]);
    Bytes block(CMS_create_SignedAttr(a, attrs.size(), nullptr, 0, nullptr, 0, nullptr));
    Bytes msg(content.size() + cert.size() + block.size() + 256);
    for (auto _ : st) {
        unsigned n = CMS_create_SignedAttr(a, attrs.size(), nullptr, 0, nullptr, 0, block.data());
        CMS_sig_SignedAttr(block.data(), content.data(), content.size(), &key);
        benchmark::DoNotOptimize(
            CMS_SignedData_create(content.data(), content.size(), block.data(), n, cert.data(), 1, msg.data()));
    }
    st.SetBytesProcessed(st.iterations() * st.range(0));
}
BENCHMARK(BM_cms_sign)->Arg(64)->Arg(1 << 16)->Unit(benchmark::kMillisecond);

void BM_cms_setof_sort(benchmark::State& st) {
    // 20 attributes of decreasing size: the worst order for the selection sort.
    Bytes run;
    for (int i = 20; i > 0; --i) {
        Bytes e{0x30, static_cast<unsigned char>(3 * i)};
        e.insert(e.end(), 3 * i, static_cast<unsigned char>(i));
        run.insert(run.end(), e.begin(), e.end());
    }
    Bytes work = run;
    for (auto _ : st) {
        std::copy(run.begin(), run.end(), work.begin());
        CMS_DER_SetOf_sort(work.data(), work.size());
        benchmark::DoNotOptimize(work.data());
    }
}
BENCHMARK(BM_cms_setof_sort);

}  // namespace
