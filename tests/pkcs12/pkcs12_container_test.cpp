// PKCS#12 container: known-answer containers built from the layout table by
// tests/vectors/pkcs12/generate.sh, round trips, password handling, close and
// change-password, and the failure codes of the container functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "GOST_28147_89.h"
#include "GOST_34_11_94.h"
#include "common/buffers.h"
#include "pkcs12.h"
#include "pkcs5.h"

namespace {

using namespace kt;

struct Case {
    std::string name;
    Bytes key, aux, password, salt, iv, mac_salt, container;
    unsigned iterations, mac_iterations;
    // Salts and counts as the library writes them (one salt, 1024 twice).
    bool library_shape() const { return mac_salt == salt && iterations == 1024 && mac_iterations == 1024; }
    unsigned char* pw() { return password.data(); }
    unsigned char n() const { return static_cast<unsigned char>(password.size()); }
};

std::vector<Case> cases() {
    std::vector<Case> out;
    for (auto& r : kt::load_records("pkcs12/pkcs12.txt")) {
        auto h = [&](const char* f) { return kt::from_hex(r.at(f)); };
        out.push_back({r.at("name"), h("key"), h("aux"), h("password"), h("salt"), h("iv"), h("mac_salt"),
                       h("container"), static_cast<unsigned>(std::stoul(r.at("iterations"))),
                       static_cast<unsigned>(std::stoul(r.at("mac_iterations")))});
    }
    return out;
}

Bytes create(Case c) {
    Bytes out(PKCS12_CONTEINER_SIZE, 0xEE);
    type_uN<32> key;
    std::copy(c.key.begin(), c.key.end(), key.b);
    EXPECT_EQ(0, pkcs12_create_conteiner(out.data(), 0, &key, c.aux.data(), c.pw(), c.n(), c.salt.data(),
                                         c.iv.data()));
    return out;
}

unsigned char open(Bytes& container, Bytes password, Bytes* key, Bytes* aux) {
    return pkcs12_open_conteiner(key ? reinterpret_cast<type_uN<32>*>(key->data()) : nullptr,
                                 aux ? aux->data() : nullptr, password.data(),
                                 static_cast<unsigned char>(password.size()), container.data());
}

// Toggles the content of a container whose MacData salt and count are the
// PBKDF2 ones (counter mode is its own inverse); with mac, recomputes the MAC,
// forging a container whose content is damaged but whose MAC is right.
void crypt(Case& c, Bytes& box, bool mac) {
    type_uN<32> k;
    pkcs5_PBKDF2(c.pw(), c.n(), box.data() + 92, 1024, &k);
    type_u64 iv;
    std::copy(box.begin() + 133, box.begin() + 141, reinterpret_cast<unsigned char*>(&iv));
    GOST_28147_89_ZR_CTR(box.data() + 153, 152, &k, &iv, 2);
    if (mac) GOST_34_11_94_HMAC(box.data() + 23, 282, k.b, 32, reinterpret_cast<type_uN<32>*>(box.data() + 330));
}

// The peer layout pins every octet: 30 82 71 at 0, 02 02 88 00 at 96 and
// 368, the salt at 92 and 364, the IV at 133, the padding of five 05.
TEST(Pkcs12Container, CreateMatchesLayoutBuiltByPeer) {
    for (auto& c : cases())
        if (c.library_shape()) { EXPECT_EQ(kt::to_hex(c.container), kt::to_hex(create(c))) << c.name; }
}

// The peer containers and one the library makes with a 255-octet password.
// The own_mac_parameters container tells the PBKDF2-params salt and count
// (encipherment) from the MacData ones (MAC): a mix-up fails every test.
std::vector<Case> all_cases() {
    std::vector<Case> out = cases();
    Case c = out[0];
    c.name = "255 octets";
    c.password = Bytes(255, 'p');
    c.container = create(c);
    out.push_back(c);
    return out;
}

// A wrong password gives 2 everywhere and changes nothing. Open leaves the
// container as it is; close stores a new block; change-password keeps salts,
// counts and IV (checked against the own_mac_parameters container, whose
// MacData differs from what create writes).
TEST(Pkcs12Container, OpenCloseAndChangePassword) {
    for (auto& c : all_cases()) {
        SCOPED_TRACE(c.name);
        Bytes shorter = c.password.empty() ? str("x") : Bytes(c.password.begin(), c.password.end() - 1);
        for (Bytes pw : {str("Password"), str(""), str("password "), shorter}) {
            if (pw == c.password) continue;
            unsigned char n = static_cast<unsigned char>(pw.size());
            Bytes box = c.container, key(32, 0xA5), aux(40, 0x5A), q = str("q");
            EXPECT_EQ(2, open(box, pw, &key, &aux));
            EXPECT_EQ(Bytes(32, 0xA5), key);
            EXPECT_EQ(Bytes(40, 0x5A), aux);
            EXPECT_EQ(2, pkcs12_conteiner_check_MAC(pw.data(), n, box.data()));
            EXPECT_EQ(2, pkcs12_close_conteiner(aux.data(), pw.data(), n, box.data()));
            EXPECT_EQ(2, pkcs12_conteiner_change_pass(pw.data(), n, q.data(), 1, box.data()));
            EXPECT_EQ(c.container, box);
        }
        Bytes box = c.container, aux = kt::Rng(7).bytes(40), key(32), got(40), q = str("new secret");
        for (int outputs = 0; outputs < 4; ++outputs) {  // either output may be null
            Bytes k(32), a(40);
            EXPECT_EQ(0, open(box, c.password, outputs & 1 ? &k : nullptr, outputs & 2 ? &a : nullptr));
            EXPECT_EQ(outputs & 1 ? c.key : Bytes(32), k);
            EXPECT_EQ(outputs & 2 ? c.aux : Bytes(40), a);
        }
        EXPECT_EQ(c.container, box);
        EXPECT_EQ(0, pkcs12_conteiner_check_MAC(c.pw(), c.n(), box.data()));
        unsigned char salt[4] = {};
        unsigned short iterations = 0;
        pkcs12_get_pbkdf2_par(salt, &iterations, box.data());
        EXPECT_EQ(c.salt, Bytes(salt, salt + 4));
        EXPECT_EQ(c.iterations, iterations);

        EXPECT_EQ(0, pkcs12_close_conteiner(aux.data(), c.pw(), c.n(), box.data()));
        EXPECT_EQ(0, open(box, c.password, &key, &got));
        EXPECT_EQ(c.key, key);
        EXPECT_EQ(aux, got);
        // Closing again with the original block gives the original container:
        // nothing but the content and the MAC was touched.
        EXPECT_EQ(0, pkcs12_close_conteiner(c.aux.data(), c.pw(), c.n(), box.data()));
        EXPECT_EQ(c.container, box);

        EXPECT_EQ(0, pkcs12_conteiner_change_pass(c.pw(), c.n(), q.data(), static_cast<unsigned char>(q.size()),
                                                  box.data()));
        EXPECT_EQ(0, open(box, q, &key, &got));
        EXPECT_EQ(c.key, key);
        EXPECT_EQ(c.aux, got);
        EXPECT_EQ(2, open(box, c.password, nullptr, nullptr));
        EXPECT_TRUE(same(box, c.container, 0, 153) && same(box, c.container, 362, box.size()));
        Case n = c;
        n.password = q;
        if (c.library_shape()) { EXPECT_EQ(create(n), box); }
    }
}

TEST(Pkcs12Container, DamageGivesCodeAndWritesNothing) {
    struct {
        unsigned off;
        int value = -1;
        bool forge = false;
        unsigned char open = 2;
        int mac = -1, close = -1;
    } table[] = {
        // Any octet of the MAC'd region 23..304, and the stored MAC itself (value -1: low bit flipped).
        {23}, {92}, {133}, {153}, {200}, {304}, {361},
        // Content tags other than 02, 04, 06, 30 behind a valid MAC; MacData tags (-1: not called).
        {153 + 52, 0x05, true, 3}, {153 + 105, 0x05, true, 3, -1, 3},
        {362, 0x31, false, 5, 5}, {368, 0x31, false, 5, 5},
    };
    Case c = cases()[0];
    for (auto& t : table) {
        SCOPED_TRACE(t.off);
        Bytes box = c.container, key(32, 0xA5), aux(40, 0x5A);
        if (t.forge) crypt(c, box, false);
        box[t.off] = t.value < 0 ? box[t.off] ^ 1 : t.value;
        if (t.forge) crypt(c, box, true);
        Bytes damaged = box;
        EXPECT_EQ(t.open, open(box, c.password, &key, &aux));
        EXPECT_EQ(Bytes(32, 0xA5), key);  // nothing written, not even the key
        EXPECT_EQ(Bytes(40, 0x5A), aux);
        if (t.mac >= 0) { EXPECT_EQ(t.mac, pkcs12_conteiner_check_MAC(c.pw(), c.n(), box.data())); }
        if (t.close >= 0) { EXPECT_EQ(t.close, pkcs12_close_conteiner(aux.data(), c.pw(), c.n(), box.data())); }
        EXPECT_EQ(damaged, box);
    }
    // The MAC value element is outside the MAC'd region: close checks the MAC,
    // writes the content back and only then meets the bad tag.
    Bytes box = c.container, aux(40, 0x77);
    box[328] = 0x05;
    EXPECT_EQ(0, open(box, c.password, nullptr, nullptr));
    EXPECT_EQ(5, pkcs12_close_conteiner(aux.data(), c.pw(), c.n(), box.data()));
    EXPECT_FALSE(same(box, c.container, 153, 305));
    EXPECT_TRUE(same(box, c.container, 330, 362));
    EXPECT_EQ(2, open(box, c.password, nullptr, nullptr));
    // Nor is the MAC's length octet: a long form there does not move the
    // stored MAC past the MacData (the container ends at 372).
    for (unsigned char len : {0x84, 0xA0, 0xFF}) {
        Exact exact(c.container);
        exact.get()[329] = len;
        EXPECT_EQ(0, pkcs12_close_conteiner(aux.data(), c.pw(), c.n(), exact.get())) << int(len);
        EXPECT_EQ(0, pkcs12_conteiner_change_pass(c.pw(), c.n(), c.pw(), c.n(), exact.get())) << int(len);
        EXPECT_EQ(0, pkcs12_conteiner_check_MAC(c.pw(), c.n(), exact.get())) << int(len);
        EXPECT_TRUE(std::equal(exact.get() + 362, exact.get() + 372, c.container.begin() + 362)) << int(len);
    }
}

}  // namespace
