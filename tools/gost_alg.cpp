#include "gost_alg.h"

#include <algorithm>
#include <cstring>

#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"

namespace cli {

namespace {

struct OidGen {
    const char* oid;
    Gen gen;
};
// Public-key, signature-with-digest and (for 2001) bare signature OIDs.
const OidGen kGenOids[] = {
    {"1.2.643.2.2.19", Gen::g2001},        {"1.2.643.2.2.3", Gen::g2001},
    {"1.2.643.7.1.1.1.1", Gen::g2012_256}, {"1.2.643.7.1.1.3.2", Gen::g2012_256},
    {"1.2.643.7.1.1.1.2", Gen::g2012_512}, {"1.2.643.7.1.1.3.3", Gen::g2012_512},
};

struct OidCurve {
    const char* oid;
    bool is512;
    int sel;  // -1: a curve the library does not have
    const char* name;
};
// TC26 256-bit paramSets B, C, D are CryptoPro-A, B, C under new names
// (RFC 7836); paramSetA (a twisted Edwards curve) and 512-bit paramSetC are
// not in the library.
const OidCurve kCurves[] = {
    {"1.2.643.2.2.35.0", false, 0, "GOST R 34.10-2001 test curve"},
    {"1.2.643.2.2.35.1", false, 1, "CryptoPro-A"},
    {"1.2.643.2.2.35.2", false, 2, "CryptoPro-B"},
    {"1.2.643.2.2.35.3", false, 3, "CryptoPro-C"},
    {"1.2.643.2.2.36.0", false, 1, "CryptoPro-XchA"},
    {"1.2.643.2.2.36.1", false, 3, "CryptoPro-XchB"},
    {"1.2.643.7.1.2.1.1.1", false, -1, "TC26 256-bit paramSetA"},
    {"1.2.643.7.1.2.1.1.2", false, 1, "TC26 256-bit paramSetB (CryptoPro-A)"},
    {"1.2.643.7.1.2.1.1.3", false, 2, "TC26 256-bit paramSetC (CryptoPro-B)"},
    {"1.2.643.7.1.2.1.1.4", false, 3, "TC26 256-bit paramSetD (CryptoPro-C)"},
    {"1.2.643.7.1.2.1.2.0", true, 0, "GOST R 34.10-2012 512-bit test curve"},
    {"1.2.643.7.1.2.1.2.1", true, 1, "TC26 512-bit paramSetA"},
    {"1.2.643.7.1.2.1.2.2", true, 2, "TC26 512-bit paramSetB"},
    {"1.2.643.7.1.2.1.2.3", true, -1, "TC26 512-bit paramSetC"},
};

// The library's 512-bit signature keeps s as two separately reversed 32-octet
// halves of its little-endian form and r little-endian; the wire form is
// s || r big-endian.
void sig512_to_wire(Bytes& s) {
    std::swap_ranges(s.begin(), s.begin() + 32, s.begin() + 32);
    std::reverse(s.begin() + 64, s.end());
}
void sig512_from_wire(Bytes& s) { sig512_to_wire(s); }  // its own inverse

template <size_t N>
type_uN<N>* u(Bytes& b) {
    return reinterpret_cast<type_uN<N>*>(b.data());
}

}  // namespace

size_t key_width(Gen g) { return g == Gen::g2012_512 ? 64 : 32; }

const char* gen_name(Gen g) {
    return g == Gen::g2001 ? "GOST R 34.10-2001" : g == Gen::g2012_256 ? "GOST R 34.10-2012 (256 bits)"
                                                                        : "GOST R 34.10-2012 (512 bits)";
}
const char* digest_oid(Gen g) {
    return g == Gen::g2001 ? "1.2.643.2.2.9" : g == Gen::g2012_256 ? "1.2.643.7.1.1.2.2" : "1.2.643.7.1.1.2.3";
}
const char* key_oid(Gen g) {
    return g == Gen::g2001 ? "1.2.643.2.2.19" : g == Gen::g2012_256 ? "1.2.643.7.1.1.1.1" : "1.2.643.7.1.1.1.2";
}
const char* sig_with_digest_oid(Gen g) {
    return g == Gen::g2001 ? "1.2.643.2.2.3" : g == Gen::g2012_256 ? "1.2.643.7.1.1.3.2" : "1.2.643.7.1.1.3.3";
}

bool gen_of_oid(const std::string& oid, Gen& g) {
    for (const OidGen& o : kGenOids)
        if (oid == o.oid) {
            g = o.gen;
            return true;
        }
    return false;
}

unsigned char curve_of_oid(Gen g, const std::string& oid, std::string& name) {
    for (const OidCurve& c : kCurves) {
        if (oid != c.oid) continue;
        if (c.is512 != (g == Gen::g2012_512)) throw Error("curve " + std::string(c.name) + " does not fit a " + gen_name(g) + " key", 4);
        if (c.sel < 0) throw Error("curve " + std::string(c.name) + " is not supported", 5);
        name = c.name;
        return static_cast<unsigned char>(c.sel);
    }
    throw Error("unknown GOST parameter set " + oid, 5);
}

GenDigest::GenDigest(Gen g) : gen_(g) {
    if (g == Gen::g2001) {
        state_.resize(sizeof(stream_hash_t));
        GOST_34_11_94_hash_init(nullptr, reinterpret_cast<stream_hash_t*>(state_.data()));
    } else {
        state_.resize(sizeof(stream_hash_2012_t));
        auto* s = reinterpret_cast<stream_hash_2012_t*>(state_.data());
        if (g == Gen::g2012_256) GOST_34_11_2012_hash_256_init(s);
        else GOST_34_11_2012_hash_512_init(s);
    }
}

void GenDigest::write(const unsigned char* p, size_t n) {
    while (n) {
        unsigned part = static_cast<unsigned>(std::min<size_t>(n, 1u << 30));
        auto* q = const_cast<unsigned char*>(p);
        if (gen_ == Gen::g2001) GOST_34_11_94_hash_write(q, part, reinterpret_cast<stream_hash_t*>(state_.data()));
        else GOST_34_11_2012_hash_write(q, part, reinterpret_cast<stream_hash_2012_t*>(state_.data()));
        p += part;
        n -= part;
    }
}

Bytes GenDigest::end() {
    Bytes out(gen_ == Gen::g2012_512 ? 64 : 32);
    if (gen_ == Gen::g2001) GOST_34_11_94_hash_end(u<32>(out), reinterpret_cast<stream_hash_t*>(state_.data()));
    else if (gen_ == Gen::g2012_256)
        GOST_34_11_2012_hash_256_end(u<32>(out), reinterpret_cast<stream_hash_2012_t*>(state_.data()));
    else GOST_34_11_2012_hash_512_end(u<64>(out), reinterpret_cast<stream_hash_2012_t*>(state_.data()));
    wipe(state_);
    return out;
}

Bytes digest_of(Gen g, const unsigned char* p, size_t n) {
    GenDigest d(g);
    d.write(p, n);
    return d.end();
}

Bytes digest_file(Gen g, const std::string& path) {
    GenDigest d(g);
    read_chunks(path, [&](unsigned char* p, size_t n, unsigned long long) { d.write(p, n); });
    return d.end();
}

Bytes sign_digest(Gen g, unsigned char sel, const Bytes& d, const Bytes& digest) {
    size_t w = key_width(g);
    if (d.size() != w || digest.size() != w) throw Error("internal: key or digest of the wrong size");
    Bytes k = d, h = digest, sig(2 * w);
    unsigned char r = g == Gen::g2012_512 ? GOST_34_10_2012_create_DS_512_bit(u<64>(h), u<64>(k), u<128>(sig), sel)
                                          : GOST_34_10_2001_create_DS(u<32>(h), u<32>(k), u<64>(sig), sel);
    wipe(k);
    if (r != 0) throw Error("signing failed: the generator is not seeded");
    if (g == Gen::g2012_512) sig512_to_wire(sig);
    return sig;
}

bool verify_digest(const GostKey& k, const Bytes& digest, const Bytes& sig_in) {
    size_t w = key_width(k.gen);
    if (k.q.size() != 2 * w || digest.size() != w || sig_in.size() != 2 * w) return false;
    Bytes q = k.q, h = digest, sig = sig_in;
    if (k.gen == Gen::g2012_512) {
        sig512_from_wire(sig);
        return GOST_34_10_2012_check_DS_512_bit(u<64>(h), u<128>(q), u<128>(sig), k.sel) == 1;
    }
    return GOST_34_10_2001_check_DS(u<32>(h), u<64>(q), u<64>(sig), k.sel) == 1;
}

Bytes public_key_of(Gen g, unsigned char sel, const Bytes& d) {
    Bytes k = d, q(2 * key_width(g));
    if (k.size() != key_width(g))
        throw Error("the private key has the wrong size for a " + std::string(gen_name(g)) + " key", kExitUsage);
    if (g == Gen::g2012_512) GOST_34_10_2012_512_gen_open_key(u<64>(k), u<128>(q), sel);
    else GOST_34_10_2001_gen_open_key(u<32>(k), u<64>(q), sel);
    wipe(k);
    return q;
}

}  // namespace cli
