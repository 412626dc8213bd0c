#include "keyfile.h"

#include <sstream>

#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"

namespace cli {

formats::Gen gen_for(const Curve& c, bool is2012) {
    return c.is512 ? formats::Gen::gost2012_512 : is2012 ? formats::Gen::gost2012_256 : formats::Gen::gost2001;
}

formats::Gen gen_by_name(const std::string& n, const Curve& c) {
    for (formats::Gen g : {formats::Gen::gost2001, formats::Gen::gost2012_256, formats::Gen::gost2012_512})
        if (n == formats::gen_name(g)) {
            if ((g == formats::Gen::gost2012_512) != c.is512)
                throw Error(n + " does not go with the " + c.name + " curve", 2);
            return g;
        }
    throw Error("unknown algorithm '" + n + "' (gost2001, gost2012_256, gost2012_512)", 2);
}

KeyPair from_pkcs8(const formats::PrivateKey& p) {
    KeyPair k{};
    k.curve = curve_by_name(p.curve_oid);
    k.gen = p.gen;
    k.d.assign(p.d.begin(), p.d.end());
    k.q = formats::public_key(p);
    return k;
}

formats::PrivateKey to_pkcs8(const KeyPair& k) {
    formats::PrivateKey p;
    p.gen = k.gen;
    p.curve_oid = k.curve.oid;
    p.d.assign(k.d.begin(), k.d.end());
    return p;
}

std::string private_pem(const KeyPair& k) {
    if (k.d.empty()) throw Error("no private key to write");
    formats::Secret pem = formats::pkcs8_pem(to_pkcs8(k));
    return std::string(pem.begin(), pem.end());
}

KeyPair read_key(const std::string& path) {
    Bytes file = read_file(path, kSmallFile);
    if (formats::pkcs8_detect(file)) {
        formats::PrivateKey p = formats::pkcs8_load(file);
        wipe(file);
        return from_pkcs8(p);
    }
    std::istringstream in(std::string(file.begin(), file.end()));
    wipe(file);
    KeyPair k{};
    std::string line, curve, alg;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        auto eq = line.find(" = ");
        if (eq == std::string::npos) throw Error(path + ": not a PKCS#8 key or a korvex key file", 4);
        std::string name = line.substr(0, eq), value = line.substr(eq + 3);
        if (name == "curve") curve = value;
        else if (name == "algorithm") alg = value;
        else if (name == "private") k.d = from_hex(value);
        else if (name == "public") k.q = from_hex(value);
        wipe(line);
    }
    if (curve.empty()) throw Error(path + ": not a korvex key file (no curve)", 4);
    k.curve = curve_by_name(curve);
    k.gen = alg.empty() ? gen_for(k.curve, false) : gen_by_name(alg, k.curve);
    if (!k.d.empty() && k.d.size() != k.width()) throw Error(path + ": private key of wrong length", 4);
    if (!k.d.empty()) {
        Bytes q = public_of(k.curve, k.d);
        if (!k.q.empty() && k.q != q) throw Error(path + ": the public key does not belong to the private key", 4);
        k.q = q;
    }
    if (k.q.size() != 2 * k.width()) throw Error(path + ": public key of wrong length", 4);
    return k;
}

std::string format_key(const KeyPair& k, bool with_private) {
    std::string s = "# korvex GOST R 34.10 key, little-endian values\ncurve = " + k.curve.name + "\n";
    if (k.gen == formats::Gen::gost2012_256) s += "algorithm = gost2012_256\n";
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

KeyPair generate_key(const Curve& c, bool is2012) {
    KeyPair k{};
    k.curve = c;
    k.gen = gen_for(c, is2012);
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
