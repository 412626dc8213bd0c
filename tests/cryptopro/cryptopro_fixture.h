// Shared test data of the CryptoPro container tests: containers and
// certificates made by tests/vectors/cryptopro/generate.sh.
#ifndef KORVEX_TESTS_CRYPTOPRO_FIXTURE_H
#define KORVEX_TESTS_CRYPTOPRO_FIXTURE_H

#include <string>
#include <vector>

#include "common/test_util.h"

namespace cpt {

using kt::Bytes;

struct Container {
    std::string name;
    Bytes password, primary, masks, key, other, mask_block;
};

inline std::vector<Container> containers() {
    std::vector<Container> out;
    for (auto& r : kt::load_records("cryptopro/cryptopro.txt"))
        out.push_back({r.at("name"), kt::from_hex(r.at("password")), kt::from_hex(r.at("primary")),
                       kt::from_hex(r.at("masks")), kt::from_hex(r.at("key")), kt::from_hex(r.at("other")),
                       kt::from_hex(r.at("mask_block"))});
    return out;
}

inline Container container(const std::string& name) {
    for (auto& c : containers())
        if (c.name == name) return c;
    throw std::runtime_error("no container " + name);
}

inline Bytes certificate(const std::string& name) { return kt::load_file("cryptopro/" + name + ".der"); }

// A header file: 30 { 30 { elements } }, each given whole.
inline Bytes tlv(unsigned char tag, const Bytes& content) {
    Bytes out{tag};
    size_t n = content.size();
    if (n < 128) {
        out.push_back(static_cast<unsigned char>(n));
    } else if (n < 256) {
        out.push_back(0x81);
        out.push_back(static_cast<unsigned char>(n));
    } else {
        out.push_back(0x82);
        out.push_back(static_cast<unsigned char>(n >> 8));
        out.push_back(static_cast<unsigned char>(n));
    }
    out.insert(out.end(), content.begin(), content.end());
    return out;
}

inline Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (auto& p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

}  // namespace cpt

#endif
