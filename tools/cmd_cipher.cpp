// korvex enc / korvex dec: GOST 28147-89 over files.
#include <algorithm>
#include <cstdio>

#include "GOST_28147_89.h"
#include "cli.h"
#include "commands.h"

namespace {

using cli::Bytes;
using cli::Error;

type_uN<32>* as_key(Bytes& b) { return reinterpret_cast<type_uN<32>*>(b.data()); }
type_u64* as_block(Bytes& b) { return b.empty() ? nullptr : reinterpret_cast<type_u64*>(b.data()); }

void cfb_meshed(Bytes& data, Bytes key, Bytes iv, unsigned char sbox, bool encrypt) {
    if (iv.empty()) iv.assign(8, 0);
    const size_t piece = 1024;
    for (size_t off = 0; off < data.size(); off += piece) {
        size_t n = std::min(piece, data.size() - off);
        Bytes last(data.begin() + off + (n >= 8 ? n - 8 : 0), data.begin() + off + n);  // ciphertext, if decrypting
        if (encrypt) GOST_28147_89_Z_CFB(data.data() + off, static_cast<unsigned>(n), as_key(key), as_block(iv), sbox);
        else GOST_28147_89_R_CFB(data.data() + off, static_cast<unsigned>(n), as_key(key), as_block(iv), sbox);
        if (off + n < data.size()) {
            // The feedback register now holds the last ciphertext block.
            if (encrypt) last.assign(data.begin() + off + n - 8, data.begin() + off + n);
            iv = last;
            GOST_28147_89_key_mesh(as_key(key), as_block(iv), sbox);
        }
    }
    cli::wipe(key);
}

// Counter mode through the streaming record, meshing its key and running
// counter after every 1024 bytes, as OpenSSL's gost89-cnt does.
void ctr_meshed(Bytes& data, Bytes key, Bytes iv, unsigned char sbox) {
    stream_GOST_CTR_t st;
    GOST_28147_89_ZR_CTR_init(as_key(key), as_block(iv), sbox, &st);
    for (size_t off = 0; off < data.size(); off += 1024) {
        if (off) GOST_28147_89_key_mesh(&st.key, &st.counter, sbox);
        GOST_28147_89_ZR_CTR_step(data.data() + off, static_cast<unsigned>(std::min<size_t>(1024, data.size() - off)),
                                  &st);
    }
    cli::wipe(&st, sizeof st);
    cli::wipe(key);
}

int run(const cli::Args& a, bool encrypt) {
    std::string mode = a.need("-m");
    if (mode != "ecb" && mode != "ctr" && mode != "cfb" && mode != "cbc")
        throw Error("unknown mode '" + mode + "' (ecb, ctr, cfb, cbc)", cli::kExitUsage);
    std::string in = a.pos.empty() ? "-" : a.pos[0];
    Bytes key = cli::hex_or_file(a.need("--key"), 32);
    Bytes iv = a.has("--iv") ? cli::hex_or_file(a.get("--iv"), 8) : Bytes();
    unsigned char sbox = cli::sbox_by_name(a.get("-s", "A"));
    bool pad = (mode == "ecb" || mode == "cbc") && !a.has("--no-pad");
    if (a.has("--mesh") && mode != "cfb" && mode != "ctr") throw Error("--mesh applies to cfb and ctr only", cli::kExitUsage);
    if (mode == "ecb" && a.has("--iv")) throw Error("ECB takes no IV", cli::kExitUsage);

    Bytes data = cli::read_file(in);
    if (pad && encrypt) {
        unsigned char n = static_cast<unsigned char>(8 - data.size() % 8);
        data.insert(data.end(), n, n);
    }
    if ((mode == "ecb" || mode == "cbc") && data.size() % 8)
        throw Error("input is not a multiple of 8 bytes");
    unsigned len = static_cast<unsigned>(data.size());
    unsigned char* p = data.empty() ? nullptr : data.data();
    if (mode == "ecb") {
        if (encrypt) GOST_28147_89_Z_ECB(p, len, as_key(key), sbox);
        else GOST_28147_89_R_ECB(p, len, as_key(key), sbox);
    } else if (mode == "ctr") {
        if (a.has("--mesh")) ctr_meshed(data, key, iv, sbox);
        else GOST_28147_89_ZR_CTR(p, len, as_key(key), as_block(iv), sbox);
    } else if (mode == "cfb") {
        if (a.has("--mesh")) cfb_meshed(data, key, iv, sbox, encrypt);
        else if (encrypt) GOST_28147_89_Z_CFB(p, len, as_key(key), as_block(iv), sbox);
        else GOST_28147_89_R_CFB(p, len, as_key(key), as_block(iv), sbox);
    } else {
        if (encrypt) GOST_28147_89_Z_CBC(p, len, as_key(key), as_block(iv), sbox);
        else GOST_28147_89_R_CBC(p, len, as_key(key), as_block(iv), sbox);
    }
    cli::wipe(key);
    if (pad && !encrypt) {
        unsigned char n = data.empty() ? 0 : data.back();
        if (n < 1 || n > 8 || n > data.size()) throw Error("bad padding (wrong key or IV?)");
        for (size_t i = data.size() - n; i < data.size(); ++i)
            if (data[i] != n) throw Error("bad padding (wrong key or IV?)");
        data.resize(data.size() - n);
    }
    cli::write_file(a.get("-o", "-"), data, {in});
    return 0;
}

int enc_run(const cli::Args& a) { return run(a, true); }
int dec_run(const cli::Args& a) { return run(a, false); }

const char* kAbout =
    "GOST 28147-89 in the given mode. ECB and CBC pad the last block as PKCS#7\n"
    "does (1 to 8 bytes of the pad length) unless --no-pad is given, which needs\n"
    "a multiple of 8 bytes. Reads stdin when no file is named, writes stdout\n"
    "unless -o is given.\n";

const std::vector<cli::Option> kOptions = {
    {"-m", "MODE", "ecb, ctr, cfb or cbc", cli::kRequired},
    {"--key", "HEX|FILE", "the 32-byte key, as hex or a file", cli::kRequired},
    {"--iv", "HEX|FILE", "the 8-byte IV (synchro), as hex or a file (default: zero)"},
    {"-s", "SBOX", "S-box: A (default), B, C, D, Z or hash"},
    {"--no-pad", "", "no padding in ECB and CBC"},
    {"--mesh", "", "CryptoPro key meshing (RFC 4357) every 1024 bytes in CFB and CTR, as OpenSSL's gost89 and gost89-cnt"},
    {"-o", "OUT", "output file (default: stdout)"},
};

}  // namespace

namespace cmd {
const cli::Command enc = {"enc", "encrypt with GOST 28147-89 (ecb, ctr, cfb, cbc)", "[FILE]", kAbout, kOptions, enc_run};
const cli::Command dec = {"dec", "decrypt with GOST 28147-89", "[FILE]", kAbout, kOptions, dec_run};
}  // namespace cmd
