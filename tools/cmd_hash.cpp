// korvex hash / korvex hmac.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "cli.h"
#include "commands.h"
#include "digest.h"

namespace {

using cli::Bytes;
using cli::Error;

using cli::Alg;
using cli::digest_file;
using cli::digest_size;

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
        // the algorithm. Without -a a 256-bit line is Streebog-256 (korvex,
        // gost12sum) or GOST R 34.11-94 (gostsum, which prints it
        // byte-reversed): the second is tried when the first does not match.
        std::vector<Alg> algs = {want.size() == 64 ? Alg::streebog512
                                                  : cli::alg_by_name(a.get("-a", "streebog256"))};
        if (want.size() == 32 && !a.has("-a")) algs.push_back(Alg::gost94);
        if (want.size() != digest_size(algs[0])) throw Error(list + ": digest of unexpected length", 4);
        bool ok = false, read_failed = false;
        for (Alg alg : algs) {
            Bytes got;
            try {
                got = digest_file(name, alg);
            } catch (const Error& e) {
                read_failed = true;
                break;
            }
            Bytes rev(got.rbegin(), got.rend());
            if (want == got || (alg == Alg::gost94 && want == rev)) {
                ok = true;
                break;
            }
        }
        if (read_failed) {
            std::printf("%s: FAILED open or read\n", name.c_str());
            ++unreadable;
            continue;
        }
        if (!ok) ++bad;
        if (!ok || !a.has("--quiet")) std::printf("%s: %s\n", name.c_str(), ok ? "OK" : "FAILED");
    }
    if (!lines) throw Error(list + ": no digest lines");
    if (bad) std::fprintf(stderr, "korvex hash: WARNING: %d computed checksum(s) did NOT match\n", bad);
    if (unreadable) std::fprintf(stderr, "korvex hash: WARNING: %d listed file(s) could not be read\n", unreadable);
    return bad || unreadable ? 1 : 0;
}

int hash_run(const cli::Args& a) {
    if (a.has("--check")) return check(a.get("--check"), a);
    Alg alg = cli::alg_by_name(a.get("-a", "streebog256"));
    std::vector<std::string> files = a.pos.empty() ? std::vector<std::string>{"-"} : a.pos;
    int rc = 0;
    for (const std::string& f : files) {
        try {
            Bytes d = digest_file(f, alg, true);
            std::printf("%s %s\n", cli::to_hex(d).c_str(), f.c_str());
        } catch (const Error& e) {
            std::fprintf(stderr, "korvex hash: %s\n", e.what());
            rc = e.code;
        }
    }
    return rc;
}

int hmac_run(const cli::Args& a) {
    Alg alg = cli::alg_by_name(a.get("-a", "streebog256"));
    Bytes key = cli::hex_or_file(a.need("--key"), 0);
    if (key.size() > 255) throw Error("the key is longer than 255 bytes", cli::kExitUsage);
    std::vector<std::string> files = a.pos.empty() ? std::vector<std::string>{"-"} : a.pos;
    for (const std::string& f : files) std::printf("%s %s\n", cli::to_hex(cli::hmac_file(f, alg, key)).c_str(), f.c_str());
    cli::wipe(key);
    return 0;
}

const cli::Option kAlg = {"-a", "ALG", "gost94, streebog256 (default) or streebog512"};

}  // namespace

namespace cmd {

const cli::Command hash = {
    "hash", "GOST R 34.11-94 / 34.11-2012 digests of files (gost12sum style)", "[FILE...]",
    "Prints one line per file, '<digest> <name>', as gost12sum does, the digest\n"
    "bytes in the order openssl dgst prints them. Reads stdin when no file is\n"
    "named. --check verifies a list written by korvex, gost12sum or gostsum\n"
    "(whose GOST R 34.11-94 digests are byte-reversed): exit 1 when a digest\n"
    "does not match or a listed file cannot be read. Files are read in pieces\n"
    "of 1 MiB, whatever their size.\n",
    {kAlg,
     {"--check", "LIST", "verify the digests listed in LIST"},
     {"--quiet", "", "with --check, print only the files that fail"}},
    hash_run};

const cli::Command hmac = {
    "hmac", "HMAC with a GOST hash", "[FILE...]",
    "HMAC (RFC 2104) with a GOST hash: HMAC_GOSTR3411 of RFC 4357, or\n"
    "HMAC-Streebog of RFC 7836. One line per file, as korvex hash prints;\n"
    "reads stdin when no file is named.\n",
    {kAlg, {"--key", "HEX|FILE", "the key: hex, or a file holding it (at most 255 bytes)", cli::kRequired}},
    hmac_run};

}  // namespace cmd
