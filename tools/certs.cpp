#include "certs.h"

#include <ctime>
#include <sys/random.h>

#include "GOST_34_10_2001.h"
#include "GOST_34_11_94.h"
#include "der.h"
#include "x_509.h"

namespace cli {

namespace {

// Short names accepted in --subject and their attribute OIDs.
struct Attr {
    const char* name;
    const char* oid;
};
const Attr kAttrs[] = {{"C", "2.5.4.6"},         {"O", "2.5.4.10"},  {"OU", "2.5.4.11"},
                       {"dnQualifier", "2.5.4.46"}, {"ST", "2.5.4.8"}, {"CN", "2.5.4.3"},
                       {"serialNumber", "2.5.4.5"}, {"L", "2.5.4.7"},
                       {"emailAddress", "1.2.840.113549.1.9.1"}};

Bytes name_der(const std::string& text) {
    std::vector<Bytes> rdns;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t comma = text.find(',', pos);
        std::string item = text.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos);
        pos = comma == std::string::npos ? text.size() : comma + 1;
        while (!item.empty() && item[0] == ' ') item.erase(0, 1);
        if (item.empty()) continue;
        auto eq = item.find('=');
        if (eq == std::string::npos) throw Error("bad name item '" + item + "' (want KEY=VALUE)", cli::kExitUsage);
        std::string k = item.substr(0, eq), v = item.substr(eq + 1);
        const Attr* a = nullptr;
        for (const Attr& x : kAttrs)
            if (k == x.name) a = &x;
        if (!a) throw Error("unknown name attribute '" + k + "'", cli::kExitUsage);
        Bytes value = k == "C" ? der::printable(v) : k == "emailAddress" ? der::ia5(v) : der::utf8(v);
        rdns.push_back(der::set({der::seq({der::oid(a->oid), value})}));
    }
    if (rdns.empty()) throw Error("empty subject");
    return der::seq(rdns);
}

std::string entry(const x509_name_entry& e) { return std::string(reinterpret_cast<const char*>(e.value), e.length); }

}  // namespace

Bytes load_cert(const std::string& path) {
    Bytes c = pem_decode(read_text(path, kSmallFile), "CERTIFICATE");
    if (c.size() < 4 || c[0] != 0x30) throw Error(path + ": not a certificate");
    der::Elem e = der::read(c.data(), c.data() + c.size());  // the outer length must fit the file
    c.resize(e.size());
    return c;
}

std::string subject_text(Bytes& cert, bool issuer) {
    // Walk tbsCertificate ourselves so that version 1 certificates work too.
    der::Elem outer = der::read(cert.data(), cert.data() + cert.size());
    auto tbs = der::children(der::children(outer).at(0));
    size_t i = tbs.at(0).tag == 0xA0 ? 1 : 0;  // version
    const der::Elem& name = tbs.at(i + (issuer ? 2 : 4));
    x509_name n = x_509_parse_Name_field(const_cast<unsigned char*>(name.p));
    std::string s;
    auto add = [&](const char* k, const x509_name_entry& e) {
        if (!e.tag) return;
        if (!s.empty()) s += ", ";
        s += std::string(k) + "=" + entry(e);
    };
    add("CN", n.common_name);
    add("O", n.organization);
    add("OU", n.organizational_unit);
    add("ST", n.state);
    add("C", n.country);
    add("serialNumber", n.serial_number);
    add("dnQualifier", n.dn_qualifier);
    add("emailAddress", n.email);
    return s;
}

std::string paramset_oid(const Curve& c) { return c.oid; }

Bytes self_signed(const KeyPair& key, const CertRequest& req) {
    if (key.curve.is512) throw Error("self-signed certificates are made for GOST R 34.10-2001 (256-bit) keys");
    if (key.d.empty()) throw Error("a private key is needed to sign the certificate");
    Bytes serial = req.serial;
    if (serial.empty()) {
        serial.resize(8);
        if (getrandom(serial.data(), serial.size(), 0) != 8) throw Error("getrandom failed");
        serial[0] &= 0x7F;
        serial[0] |= 0x01;
    }
    long long now = std::time(nullptr);
    Bytes name = name_der(req.subject);
    Bytes sig_alg = der::seq({der::oid("1.2.643.2.2.3")});  // GOST R 34.11-94 with GOST R 34.10-2001
    Bytes spki = der::seq({der::seq({der::oid("1.2.643.2.2.19"),
                                     der::seq({der::oid(paramset_oid(key.curve)), der::oid("1.2.643.2.2.30.1")})}),
                           der::bits(der::octets(key.q))});
    // keyUsage: digitalSignature, nonRepudiation, keyEncipherment, keyCertSign.
    Bytes ku = der::seq({der::oid("2.5.29.15"), Bytes{0x01, 0x01, 0xFF}, der::octets(Bytes{0x03, 0x02, 0x02, 0xE4})});
    Bytes bc = der::seq({der::oid("2.5.29.19"), Bytes{0x01, 0x01, 0xFF}, der::octets(der::seq({Bytes{0x01, 0x01, 0xFF}}))});
    Bytes tbs = der::seq({der::tlv(0xA0, der::integer(2)), der::integer_be(serial), sig_alg, name,
                          der::seq({der::utc_time(now - 60), der::utc_time(now + 86400LL * req.days)}), name, spki,
                          der::tlv(0xA3, der::seq({ku, bc}))});
    Bytes digest(32), sig(64);
    GOST_34_11_94_hash(tbs.data(), static_cast<unsigned>(tbs.size()), nullptr, reinterpret_cast<type_uN<32>*>(digest.data()));
    Bytes d = key.d;
    int r = GOST_34_10_2001_create_DS(reinterpret_cast<type_uN<32>*>(digest.data()), reinterpret_cast<type_uN<32>*>(d.data()),
                                      reinterpret_cast<type_uN<64>*>(sig.data()), key.curve.sel);
    wipe(d);
    if (r != 0) throw Error("signing failed: the generator is not seeded");
    return der::seq({tbs, sig_alg, der::bits(sig)});
}

}  // namespace cli
