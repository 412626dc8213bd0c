#include "keyfile.h"

#include <sstream>

#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"

namespace cli {

KeyPair read_key(const std::string& path) {
    std::istringstream in(read_text(path));
    KeyPair k{};
    std::string line, curve;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        auto eq = line.find(" = ");
        if (eq == std::string::npos) throw Error(path + ": not a korvex key file");
        std::string name = line.substr(0, eq), value = line.substr(eq + 3);
        if (name == "curve") curve = value;
        else if (name == "private") k.d = from_hex(value);
        else if (name == "public") k.q = from_hex(value);
    }
    if (curve.empty()) throw Error(path + ": not a korvex key file (no curve)");
    k.curve = curve_by_name(curve);
    if (!k.d.empty() && k.d.size() != k.width()) throw Error(path + ": private key of wrong length");
    if (k.q.empty() && !k.d.empty()) k.q = public_of(k.curve, k.d);
    if (k.q.size() != 2 * k.width()) throw Error(path + ": public key of wrong length");
    return k;
}

std::string format_key(const KeyPair& k, bool with_private) {
    std::string s = "# korvex GOST R 34.10 key, little-endian values\ncurve = " + k.curve.name + "\n";
    if (with_private) s += "private = " + to_hex(k.d) + "\n";
    return s + "public = " + to_hex(k.q) + "\n";
}

Bytes public_of(const Curve& c, Bytes& d) {
    Bytes q(c.is512 ? 128 : 64);
    if (c.is512)
        GOST_34_10_2012_512_gen_open_key(reinterpret_cast<type_uN<64>*>(d.data()),
                                         reinterpret_cast<type_uN<128>*>(q.data()), c.sel);
    else
        GOST_34_10_2001_gen_open_key(reinterpret_cast<type_uN<32>*>(d.data()),
                                     reinterpret_cast<type_uN<64>*>(q.data()), c.sel);
    return q;
}

KeyPair generate_key(const Curve& c) {
    KeyPair k{};
    k.curve = c;
    k.d.assign(k.width(), 0);
    k.q.assign(2 * k.width(), 0);
    int r = c.is512 ? GOST_34_10_2012_512_gen_key_pair(reinterpret_cast<type_uN<64>*>(k.d.data()),
                                                       reinterpret_cast<type_uN<128>*>(k.q.data()), c.sel)
                    : GOST_34_10_2001_gen_key_pair(reinterpret_cast<type_uN<32>*>(k.d.data()),
                                                   reinterpret_cast<type_uN<64>*>(k.q.data()), c.sel);
    if (r != 0) throw Error("key generation failed: the generator is not seeded");
    return k;
}

}  // namespace cli
