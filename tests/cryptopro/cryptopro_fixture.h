// Shared test data of the CryptoPro container tests: containers and
// certificates made by tests/vectors/cryptopro/generate.sh.
#ifndef KORVEX_TESTS_CRYPTOPRO_FIXTURE_H
#define KORVEX_TESTS_CRYPTOPRO_FIXTURE_H

#include <string>
#include <vector>

#include "CryptoPro.h"
#include "common/buffers.h"
#include "common/der.h"

namespace cpt {

using namespace kt;

struct Container {
    std::string name;
    Bytes password, primary, masks, key, other, mask_block, kek;
};

inline Container container(const std::string& name) {
    for (auto& r : kt::load_records("cryptopro/cryptopro.txt")) {
        auto h = [&](const char* f) { return kt::from_hex(r.at(f)); };
        if (r.at("name") == name)
            return {name, h("password"), h("primary"), h("masks"), h("key"), h("other"), h("mask_block"), h("kek")};
    }
    throw std::runtime_error("no container " + name);
}

inline Bytes certificate(const std::string& name) { return kt::load_file("cryptopro/" + name + ".der"); }
inline unsigned char len(const Bytes& b) { return static_cast<unsigned char>(b.size()); }
inline type_uN<32>* k32(Bytes* b) { return b ? reinterpret_cast<type_uN<32>*>(b->data()) : nullptr; }

inline unsigned char update(Container& c) {
    return CryptoPro_conteiner_update(c.primary.data(), c.masks.data(), c.password.data(), len(c.password));
}

}  // namespace cpt

#endif
