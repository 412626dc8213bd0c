// korvex hash / korvex hmac.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "GOST_34_11_2012.h"
#include "GOST_34_11_94.h"
#include "cli.h"
#include "commands.h"

namespace {

using cli::Bytes;
using cli::Error;

enum class Alg { gost94, streebog256, streebog512 };

Alg alg_by_name(const std::string& n) {
    if (n == "gost94" || n == "md_gost94") return Alg::gost94;
    if (n == "streebog256" || n == "md_gost12_256") return Alg::streebog256;
    if (n == "streebog512" || n == "md_gost12_512") return Alg::streebog512;
    throw Error("unknown algorithm '" + n + "' (gost94, streebog256, streebog512)");
}

size_t digest_size(Alg a) { return a == Alg::streebog512 ? 64 : 32; }

// One streaming hash over either family.
struct Hasher {
    Alg alg;
    stream_hash_t s94;
    stream_hash_2012_t s12;

    explicit Hasher(Alg a) : alg(a) {
        if (alg == Alg::gost94) GOST_34_11_94_hash_init(nullptr, &s94);
        else if (alg == Alg::streebog256) GOST_34_11_2012_hash_256_init(&s12);
        else GOST_34_11_2012_hash_512_init(&s12);
    }
    void write(unsigned char* p, unsigned n) {
        if (alg == Alg::gost94) GOST_34_11_94_hash_write(p, n, &s94);
        else GOST_34_11_2012_hash_write(p, n, &s12);
    }
    Bytes end() {
        Bytes out(digest_size(alg));
        if (alg == Alg::gost94) GOST_34_11_94_hash_end(reinterpret_cast<type_uN<32>*>(out.data()), &s94);
        else if (alg == Alg::streebog256)
            GOST_34_11_2012_hash_256_end(reinterpret_cast<type_uN<32>*>(out.data()), &s12);
        else GOST_34_11_2012_hash_512_end(reinterpret_cast<type_uN<64>*>(out.data()), &s12);
        return out;
    }
};

void progress(const std::string& name, unsigned long long done, unsigned long long total) {
    const int width = 40;
    int filled = total ? static_cast<int>(width * done / total) : width;
    std::string bar(filled, '#');
    bar.resize(width, '.');
    std::fprintf(stderr, "\r%-24.24s [%s] %3llu%%", name.c_str(), bar.c_str(), total ? 100 * done / total : 100);
    if (done == total) std::fprintf(stderr, "\r%*s\r", width + 34, "");
    std::fflush(stderr);
}

Bytes digest_file(const std::string& path, Alg alg) {
    Hasher h(alg);
    unsigned long long done = 0, size = 0;
    bool show = ::isatty(2);
    cli::read_chunks(path, [&](unsigned char* p, size_t n, unsigned long long total) {
        h.write(p, static_cast<unsigned>(n));
        done += n;
        size = total;
        if (show && total >= (64ull << 20)) progress(path, done, total);
    });
    if (show && size >= (64ull << 20) && done != size) progress(path, size, size);  // clear the bar
    return h.end();
}

// A line of a check file: "<hex> <name>" (gost12sum, korvex) or the same
// with two spaces or a '*' before the name (coreutils style).
bool split_line(const std::string& line, std::string& hex, std::string& name) {
    auto sp = line.find(' ');
    if (sp == std::string::npos) return false;
    hex = line.substr(0, sp);
    name = line.substr(sp + 1);
    if (!name.empty() && (name[0] == ' ' || name[0] == '*')) name = name.substr(1);
    return !hex.empty() && !name.empty();
}

int check(const std::string& list, const cli::Args& a) {
    std::istringstream in(cli::read_text(list));
    std::string line;
    int bad = 0, unreadable = 0, lines = 0;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        std::string hex, name;
        if (!split_line(line, hex, name)) throw Error(list + ": malformed line '" + line.substr(0, 60) + "'");
        Bytes want = cli::from_hex(hex);
        ++lines;
        // The digest length tells 512 from 256 bits; for 256 bits -a picks
        // the algorithm (Streebog-256 unless told otherwise).
        Alg alg = want.size() == 64 ? Alg::streebog512 : alg_by_name(a.get("-a", "streebog256"));
        if (want.size() != digest_size(alg)) throw Error(list + ": digest of unexpected length");
        Bytes got;
        try {
            got = digest_file(name, alg);
        } catch (const Error& e) {
            std::printf("%s: FAILED open or read\n", name.c_str());
            ++unreadable;
            continue;
        }
        // gostsum prints GOST R 34.11-94 digests byte-reversed: accept both.
        Bytes rev(got.rbegin(), got.rend());
        bool ok = want == got || (alg == Alg::gost94 && want == rev);
        if (!ok) ++bad;
        if (!ok || !a.has("--quiet")) std::printf("%s: %s\n", name.c_str(), ok ? "OK" : "FAILED");
    }
    if (!lines) throw Error(list + ": no digest lines");
    if (bad) std::fprintf(stderr, "korvex hash: WARNING: %d computed checksum(s) did NOT match\n", bad);
    if (unreadable) std::fprintf(stderr, "korvex hash: WARNING: %d listed file(s) could not be read\n", unreadable);
    return bad || unreadable ? 1 : 0;
}

}  // namespace

namespace cmd {

int hash(int argc, char** argv, int first) {
    if (cli::wants_help(argc, argv, first)) {
        std::printf(
            "usage: korvex hash [-a gost94|streebog256|streebog512] [FILE...]\n"
            "       korvex hash [-a ALG] --check LIST [--quiet]\n\n"
            "Prints one line per file, '<digest> <name>', as gost12sum does, the digest\n"
            "bytes in the order openssl dgst prints them. Reads stdin when no file is\n"
            "named. --check verifies a list written by korvex, gost12sum or gostsum\n"
            "(whose GOST R 34.11-94 digests are byte-reversed). Default: streebog256.\n");
        return 0;
    }
    cli::Args a = cli::parse(argc, argv, first, {"-a", "--check"}, {"--quiet"});
    if (a.has("--check")) return check(a.get("--check"), a);
    Alg alg = alg_by_name(a.get("-a", "streebog256"));
    if (a.pos.empty()) a.pos.push_back("-");
    int rc = 0;
    for (const std::string& f : a.pos) {
        try {
            Bytes d = digest_file(f, alg);
            std::printf("%s %s\n", cli::to_hex(d).c_str(), f.c_str());
        } catch (const Error& e) {
            std::fprintf(stderr, "korvex hash: %s\n", e.what());
            rc = 1;
        }
    }
    return rc;
}

int hmac(int argc, char** argv, int first) {
    if (cli::wants_help(argc, argv, first)) {
        std::printf(
            "usage: korvex hmac [-a gost94|streebog256|streebog512] --key HEX|FILE [FILE...]\n\n"
            "HMAC (RFC 2104) with a GOST hash: HMAC_GOSTR3411 of RFC 4357, or\n"
            "HMAC-Streebog of RFC 7836. The key is hex, or a file holding it (at most\n"
            "255 bytes). One line per file, as korvex hash prints. Default: streebog256.\n");
        return 0;
    }
    cli::Args a = cli::parse(argc, argv, first, {"-a", "--key"}, {});
    Alg alg = alg_by_name(a.get("-a", "streebog256"));
    Bytes key = cli::hex_or_file(a.need("--key"), 0);
    if (key.size() > 255) throw Error("the key is longer than 255 bytes");
    if (a.pos.empty()) a.pos.push_back("-");
    for (const std::string& f : a.pos) {
        Bytes data = cli::read_file(f);
        Bytes out(digest_size(alg));
        unsigned char* d = data.empty() ? nullptr : data.data();
        unsigned n = static_cast<unsigned>(data.size());
        auto klen = static_cast<unsigned char>(key.size());
        if (alg == Alg::gost94)
            GOST_34_11_94_HMAC(d, n, key.data(), klen, reinterpret_cast<type_uN<32>*>(out.data()));
        else if (alg == Alg::streebog256)
            GOST_34_11_2012_HMAC_256_bit(d, n, key.data(), klen, reinterpret_cast<type_uN<32>*>(out.data()));
        else GOST_34_11_2012_HMAC_512_bit(d, n, key.data(), klen, reinterpret_cast<type_uN<64>*>(out.data()));
        std::printf("%s %s\n", cli::to_hex(out).c_str(), f.c_str());
    }
    cli::wipe(key);
    return 0;
}

}  // namespace cmd
