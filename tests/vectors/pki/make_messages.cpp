// Writes SignedData messages built and signed by libKorvex, for the OpenSSL
// interoperability check in interop.sh.
// Usage: make_messages OUTDIR CERT.der PRIVATE_LE_HEX NAME_PREFIX
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "CMS.h"
#include "PRNG.h"

using Bytes = std::vector<unsigned char>;

static std::string b64(const Bytes& b) {
    static const char* a = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string s;
    for (size_t i = 0; i < b.size(); i += 3) {
        unsigned v = b[i] << 16 | (i + 1 < b.size() ? b[i + 1] << 8 : 0) | (i + 2 < b.size() ? b[i + 2] : 0);
        s += a[v >> 18 & 63];
        s += a[v >> 12 & 63];
        s += i + 1 < b.size() ? a[v >> 6 & 63] : '=';
        s += i + 2 < b.size() ? a[v & 63] : '=';
    }
    return s;
}

// OCTET STRING value making a 1.2.3.4 attribute of `size` octets.
static std::string user_attr(size_t size, unsigned char fill) {
    size_t n = size - 2 - 5 - 2 - 2;
    Bytes v{0x04, static_cast<unsigned char>(n)};
    v.insert(v.end(), n, fill);
    return "1.2.3.4:" + b64(v);
}

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    std::string dir = argv[1], prefix = argv[4];
    std::ifstream cf(argv[2], std::ios::binary);
    Bytes cert((std::istreambuf_iterator<char>(cf)), std::istreambuf_iterator<char>());
    type_uN<32> key;
    for (int i = 0; i < 32; ++i) key.b[i] = static_cast<unsigned char>(std::stoul(std::string(argv[3] + 2 * i, 2), nullptr, 16));
    unsigned char seed[40];
    for (int i = 0; i < 40; ++i) seed[i] = static_cast<unsigned char>(i * 37 + 11);
    if (PRNG_init(seed) != 0) return 3;

    Bytes time{0x17, 0x0D};
    for (char c : std::string("261122120000Z")) time.push_back(static_cast<unsigned char>(c));
    std::string signingTime = "1.2.840.113549.1.9.5:" + b64(time);
    std::string unsignedAttr = "1.2.3.5:" + b64(Bytes{0x04, 0x03, 0x01, 0x02, 0x03});
    std::string sortExample = user_attr(40, 0x40) + "&" + user_attr(26, 0x26) + "&" + user_attr(60, 0x60);
    struct Msg {
        const char* name;
        std::string sig, uns;
        bool attached, withCert;
    } msgs[] = {
        {"plain_attached_cert", "", "", true, true},
        {"attrs_attached_cert", signingTime, unsignedAttr, true, true},
        {"attrs_detached_cert", signingTime, "", false, true},
        {"attrs_attached_nocert", signingTime, "", true, false},
        {"plain_detached_nocert", "", "", false, false},
        {"sort_example_attached_cert", sortExample, "", true, true},
    };
    std::string text = "Korvex signed this\r\n";
    Bytes content(text.begin(), text.end());
    std::ofstream(dir + "/interop_content.bin", std::ios::binary).write(text.data(), text.size());
    for (Msg& m : msgs) {
        unsigned char* s = m.sig.empty() ? nullptr : reinterpret_cast<unsigned char*>(&m.sig[0]);
        unsigned char* u = m.uns.empty() ? nullptr : reinterpret_cast<unsigned char*>(&m.uns[0]);
        Bytes block(CMS_create_SignedAttr(s, m.sig.size(), u, m.uns.size(), nullptr, 0, nullptr));
        block.resize(CMS_create_SignedAttr(s, m.sig.size(), u, m.uns.size(), nullptr, 0, block.data()));
        if (CMS_sig_SignedAttr(block.data(), content.data(), content.size(), &key) != 0) return 4;
        unsigned char* c = m.attached ? content.data() : nullptr;
        unsigned cl = m.attached ? content.size() : 0;
        Bytes msg(CMS_SignedData_create(c, cl, block.data(), block.size(), cert.data(), m.withCert, nullptr));
        if (msg.empty()) return 5;
        CMS_SignedData_create(c, cl, block.data(), block.size(), cert.data(), m.withCert, msg.data());
        std::string path = dir + "/korvex_" + prefix + "_" + m.name + ".der";
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<char*>(msg.data()), msg.size());
        std::printf("%s\n", path.c_str());
    }
    return 0;
}
