#include "digest.h"

#include <cstdio>
#include <unistd.h>

namespace cli {

Alg alg_by_name(const std::string& n) {
    if (n == "gost94" || n == "md_gost94") return Alg::gost94;
    if (n == "streebog256" || n == "md_gost12_256") return Alg::streebog256;
    if (n == "streebog512" || n == "md_gost12_512") return Alg::streebog512;
    throw Error("unknown algorithm '" + n + "' (gost94, streebog256, streebog512)", 2);
}

size_t digest_size(Alg a) { return a == Alg::streebog512 ? 64 : 32; }
size_t block_size(Alg a) { return a == Alg::gost94 ? 32 : 64; }

Digest::Digest(Alg a) : alg_(a) {
    if (alg_ == Alg::gost94) GOST_34_11_94_hash_init(nullptr, &s94_);
    else if (alg_ == Alg::streebog256) GOST_34_11_2012_hash_256_init(&s12_);
    else GOST_34_11_2012_hash_512_init(&s12_);
}

Digest::~Digest() {
    wipe(&s94_, sizeof s94_);
    wipe(&s12_, sizeof s12_);
}

void Digest::write(const unsigned char* p, size_t n) {
    bytes_ += n;
    while (n) {
        unsigned k = n > (1u << 30) ? 1u << 30 : static_cast<unsigned>(n);
        auto* q = const_cast<unsigned char*>(p);
        if (alg_ == Alg::gost94) GOST_34_11_94_hash_write(q, k, &s94_);
        else GOST_34_11_2012_hash_write(q, k, &s12_);
        p += k;
        n -= k;
    }
}

Bytes Digest::end() {
    Bytes out(digest_size(alg_));
    if (alg_ == Alg::streebog256) {
        GOST_34_11_2012_hash_256_end(reinterpret_cast<type_uN<32>*>(out.data()), &s12_);
    } else if (alg_ == Alg::streebog512) {
        GOST_34_11_2012_hash_512_end(reinterpret_cast<type_uN<64>*>(out.data()), &s12_);
    } else {
        // The record holds the chaining value, the control sum and the
        // pending octets; the tail block, the length block (256-bit bit
        // count) and the sum go through the step function.
        type_uN<32> h = s94_.H, sum = s94_.sigma, m{}, len{};
        unsigned t = s94_.pending_len & 31u;
        if (t) {
            std::copy(s94_.pending, s94_.pending + t, m.b);
            GOST_34_11_94_sum_mod_2_256(&sum, &m);
            GOST_34_11_94_base_step(&m, &h);
        }
        unsigned long long lo = bytes_ << 3, hi = bytes_ >> 61;
        for (int i = 0; i < 8; ++i) len.b[i] = static_cast<unsigned char>(lo >> (8 * i));
        for (int i = 0; i < 8; ++i) len.b[8 + i] = static_cast<unsigned char>(hi >> (8 * i));
        GOST_34_11_94_base_step(&len, &h);
        GOST_34_11_94_base_step(&sum, &h);
        std::copy(h.b, h.b + 32, out.begin());
        wipe(&h, sizeof h), wipe(&sum, sizeof sum), wipe(&m, sizeof m);
    }
    return out;
}

namespace {

void progress(const std::string& name, unsigned long long done, unsigned long long total) {
    const int width = 40;
    int filled = total ? static_cast<int>(width * done / total) : width;
    std::string bar(filled, '#');
    bar.resize(width, '.');
    std::fprintf(stderr, "\r%-24.24s [%s] %3llu%%", name.c_str(), bar.c_str(), total ? 100 * done / total : 100);
    if (done == total) std::fprintf(stderr, "\r%*s\r", width + 34, "");
    std::fflush(stderr);
}

void feed(Digest& d, const std::string& path, bool show_progress) {
    unsigned long long done = 0, size = 0;
    bool show = show_progress && ::isatty(2);
    read_chunks(path, [&](unsigned char* p, size_t n, unsigned long long total) {
        d.write(p, n);
        done += n;
        size = total;
        if (show && total >= (64ull << 20)) progress(path, done, total);
    });
    if (show && size >= (64ull << 20) && done != size) progress(path, size, size);  // clear the bar
}

}  // namespace

Bytes digest_file(const std::string& path, Alg a, bool show_progress) {
    Digest d(a);
    feed(d, path, show_progress);
    return d.end();
}

Bytes hmac_file(const std::string& path, Alg a, const Bytes& key) {
    const size_t b = block_size(a);
    Bytes k0 = key;
    if (k0.size() > b) {
        Digest d(a);
        d.write(k0.data(), k0.size());
        wipe(k0);
        k0 = d.end();
    }
    k0.resize(b, 0);
    Bytes pad(b);
    for (size_t i = 0; i < b; ++i) pad[i] = k0[i] ^ 0x36;
    Digest inner(a);
    inner.write(pad.data(), b);
    feed(inner, path, false);
    Bytes ih = inner.end();
    for (size_t i = 0; i < b; ++i) pad[i] = k0[i] ^ 0x5C;
    Digest outer(a);
    outer.write(pad.data(), b);
    outer.write(ih.data(), ih.size());
    wipe(k0), wipe(pad), wipe(ih);
    return outer.end();
}

}  // namespace cli
