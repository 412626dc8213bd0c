#include "cert_info.h"

#include <ctime>

#include "certs.h"

namespace cli {

namespace {

struct Named {
    const char* oid;
    const char* name;
};

// Name attributes: X.520, PKCS#9, RFC 4519, and the Russian registration
// numbers of the 1.2.643 arc (INN, OGRN, SNILS, ...).
const Named kNameAttrs[] = {
    {"2.5.4.3", "CN"},          {"2.5.4.4", "SN"},          {"2.5.4.5", "serialNumber"},
    {"2.5.4.6", "C"},           {"2.5.4.7", "L"},           {"2.5.4.8", "ST"},
    {"2.5.4.9", "street"},      {"2.5.4.10", "O"},          {"2.5.4.11", "OU"},
    {"2.5.4.12", "title"},      {"2.5.4.13", "description"}, {"2.5.4.15", "businessCategory"},
    {"2.5.4.16", "postalAddress"}, {"2.5.4.17", "postalCode"}, {"2.5.4.20", "telephoneNumber"},
    {"2.5.4.41", "name"},       {"2.5.4.42", "GN"},         {"2.5.4.43", "initials"},
    {"2.5.4.44", "generationQualifier"}, {"2.5.4.46", "dnQualifier"}, {"2.5.4.65", "pseudonym"},
    {"2.5.4.97", "organizationIdentifier"}, {"1.2.840.113549.1.9.1", "emailAddress"},
    {"1.2.840.113549.1.9.2", "unstructuredName"}, {"0.9.2342.19200300.100.1.1", "UID"},
    {"0.9.2342.19200300.100.1.25", "DC"}, {"1.2.643.3.131.1.1", "INN"}, {"1.2.643.100.1", "OGRN"},
    {"1.2.643.100.3", "SNILS"},  {"1.2.643.100.4", "INNLE"},  {"1.2.643.100.5", "OGRNIP"},
};

const Named kExtensions[] = {
    {"2.5.29.14", "subjectKeyIdentifier"}, {"2.5.29.15", "keyUsage"}, {"2.5.29.16", "privateKeyUsagePeriod"},
    {"2.5.29.17", "subjectAltName"}, {"2.5.29.18", "issuerAltName"}, {"2.5.29.19", "basicConstraints"},
    {"2.5.29.31", "cRLDistributionPoints"}, {"2.5.29.32", "certificatePolicies"},
    {"2.5.29.35", "authorityKeyIdentifier"}, {"2.5.29.37", "extKeyUsage"},
    {"1.3.6.1.5.5.7.1.1", "authorityInfoAccess"}, {"1.2.643.100.111", "subjectSignTool"},
    {"1.2.643.100.112", "issuerSignTool"}, {"1.2.643.100.114", "identificationKind"},
    {"1.3.6.1.4.1.311.20.2", "certificateTemplateName"}, {"1.3.6.1.4.1.311.21.1", "caVersion"},
    {"1.3.6.1.4.1.311.21.7", "certificateTemplate"},
};

// Purposes and policies shown by name.
const Named kPurposes[] = {
    {"1.3.6.1.5.5.7.3.1", "serverAuth"},    {"1.3.6.1.5.5.7.3.2", "clientAuth"},
    {"1.3.6.1.5.5.7.3.3", "codeSigning"},   {"1.3.6.1.5.5.7.3.4", "emailProtection"},
    {"1.3.6.1.5.5.7.3.8", "timeStamping"},  {"1.3.6.1.5.5.7.3.9", "OCSPSigning"},
    {"2.5.29.37.0", "anyExtendedKeyUsage"}, {"2.5.29.32.0", "anyPolicy"},
    {"1.2.643.100.113.1", "KC1"},           {"1.2.643.100.113.2", "KC2"},
    {"1.2.643.100.113.3", "KC3"},           {"1.2.643.100.113.4", "KB1"},
    {"1.2.643.100.113.5", "KB2"},           {"1.2.643.100.113.6", "KA1"},
    {"1.3.6.1.5.5.7.48.1", "OCSP"},         {"1.3.6.1.5.5.7.48.2", "caIssuers"},
};

const char* lookup(const Named* t, size_t n, const std::string& oid) {
    for (size_t i = 0; i < n; ++i)
        if (oid == t[i].oid) return t[i].name;
    return nullptr;
}
template <size_t N>
std::string named(const Named (&t)[N], const std::string& oid) {
    const char* s = lookup(t, N, oid);
    return s ? s : oid;
}

der::Elem top(const Bytes& b) { return der::read(b.data(), b.data() + b.size()); }

void expect(const der::Elem& e, unsigned char tag, const char* what) {
    if (e.tag != tag) throw Error(std::string("certificate: bad ") + what, 4);
}

// String types of names and general names, shown as UTF-8.
std::string string_value(const der::Elem& e) {
    const unsigned char* p = e.content();
    if (e.tag == 0x1E) {  // BMPString: UTF-16BE
        std::string s;
        for (size_t i = 0; i + 1 < e.len; i += 2) {
            unsigned c = unsigned(p[i]) << 8 | p[i + 1];
            if (c < 0x80) s += char(c);
            else if (c < 0x800) s += {char(0xC0 | c >> 6), char(0x80 | (c & 0x3F))};
            else s += {char(0xE0 | c >> 12), char(0x80 | ((c >> 6) & 0x3F)), char(0x80 | (c & 0x3F))};
        }
        return s;
    }
    static const unsigned char text_tags[] = {0x0C, 0x12, 0x13, 0x14, 0x16, 0x1A, 0x80, 0x81, 0x82, 0x86};
    for (unsigned char t : text_tags)
        if (e.tag == t) return std::string(reinterpret_cast<const char*>(p), e.len);
    if (e.tag == 0x06) return named(kPurposes, der::oid_text(e));
    return "#" + to_hex(p, e.len);
}

long long parse_time(const der::Elem& e) {
    std::string t(reinterpret_cast<const char*>(e.content()), e.len);
    bool gen = e.tag == 0x18;
    if ((e.tag != 0x17 && !gen) || t.size() != (gen ? 15u : 13u) || t.back() != 'Z')
        throw Error("certificate: bad validity time", 4);
    for (size_t i = 0; i + 1 < t.size(); ++i)
        if (t[i] < '0' || t[i] > '9') throw Error("certificate: bad validity time", 4);
    std::tm tm{};
    size_t o = gen ? 4 : 2;
    int year = std::stoi(t.substr(0, o));
    tm.tm_year = (gen ? year : year < 50 ? 2000 + year : 1900 + year) - 1900;
    tm.tm_mon = std::stoi(t.substr(o, 2)) - 1;
    tm.tm_mday = std::stoi(t.substr(o + 2, 2));
    tm.tm_hour = std::stoi(t.substr(o + 4, 2));
    tm.tm_min = std::stoi(t.substr(o + 6, 2));
    tm.tm_sec = std::stoi(t.substr(o + 8, 2));
    return static_cast<long long>(timegm(&tm));
}

std::string general_names(const der::Elem& seq) {
    static const char* kinds[] = {"other", "email", "DNS", "x400", "dirName", "edi", "URI", "IP", "RID"};
    std::string s;
    for (const der::Elem& g : der::children(seq)) {
        unsigned k = g.tag & 0x1F;
        std::string v = k == 4 ? name_text(der::children(g).at(0).bytes())
                        : k == 7 ? to_hex(g.content(), g.len)
                                 : std::string(reinterpret_cast<const char*>(g.content()), g.len);
        s += (s.empty() ? "" : ", ") + std::string(k < 9 ? kinds[k] : "?") + ":" + v;
    }
    return s;
}

void parse_key(Cert& c, const der::Elem& spki) {
    auto parts = der::children(spki);
    expect(parts.at(0), 0x30, "public key algorithm");
    auto alg = der::children(parts.at(0));
    expect(alg.at(0), 0x06, "public key algorithm");
    c.key_alg = der::oid_text(alg.at(0));
    if (alg.size() > 1 && alg[1].tag == 0x30 && !der::children(alg[1]).empty())
        c.key_params = der::oid_text(der::children(alg[1]).at(0));
    if (!gen_of_oid(c.key_alg, c.key.gen)) {
        c.key_error = "not a GOST R 34.10 key (" + c.key_alg + ")";
        return;
    }
    try {
        c.key.sel = curve_of_oid(c.key.gen, c.key_params, c.key.curve);
    } catch (const Error& e) {
        c.key_error = e.what();
        return;
    }
    expect(parts.at(1), 0x03, "public key");
    const der::Elem& bits = parts[1];
    if (bits.len < 1 || bits.content()[0] != 0) throw Error("certificate: bad public key", 4);
    der::Elem q = der::read(bits.content() + 1, bits.end());
    size_t want = 2 * key_width(c.key.gen);
    if (q.tag != 0x04 || q.len != want) {
        c.key_error = "the public key is " + std::to_string(q.len) + " octets, a " + gen_name(c.key.gen) +
                      " key has " + std::to_string(want);
        return;
    }
    c.key.q = q.value();
}

}  // namespace

Cert parse_cert(const Bytes& der) {
    Cert c;
    try {
        der::Elem outer = top(der);
        expect(outer, 0x30, "outer SEQUENCE");
        c.der.assign(outer.p, outer.end());
        auto parts = der::children(outer);
        if (parts.size() != 3) throw Error("certificate: not three parts", 4);
        expect(parts[0], 0x30, "tbsCertificate");
        c.tbs = parts[0].bytes();
        expect(parts[1], 0x30, "signature algorithm");
        c.sig_alg = der::oid_text(der::children(parts[1]).at(0));
        expect(parts[2], 0x03, "signature");
        if (parts[2].len < 1) throw Error("certificate: empty signature", 4);
        c.sig.assign(parts[2].content() + 1, parts[2].end());

        auto tbs = der::children(parts[0]);
        size_t i = 0;
        if (tbs.at(0).tag == 0xA0) {
            der::Elem v = der::children(tbs[0]).at(0);
            expect(v, 0x02, "version");
            c.version = v.len == 1 ? v.content()[0] + 1 : 0;
            ++i;
        }
        expect(tbs.at(i), 0x02, "serial number");
        c.serial = tbs[i].bytes();
        expect(tbs.at(i + 1), 0x30, "signature algorithm");
        expect(tbs.at(i + 2), 0x30, "issuer");
        c.issuer = tbs[i + 2].bytes();
        expect(tbs.at(i + 3), 0x30, "validity");
        auto val = der::children(tbs[i + 3]);
        c.not_before = parse_time(val.at(0));
        c.not_after = parse_time(val.at(1));
        expect(tbs.at(i + 4), 0x30, "subject");
        c.subject = tbs[i + 4].bytes();
        expect(tbs.at(i + 5), 0x30, "subject public key");
        parse_key(c, tbs[i + 5]);
        for (size_t j = i + 6; j < tbs.size(); ++j) {
            if (tbs[j].tag != 0xA3) continue;
            for (const der::Elem& x : der::children(der::children(tbs[j]).at(0))) {
                auto f = der::children(x);
                Extension e;
                e.oid = der::oid_text(f.at(0));
                e.critical = f.size() > 2 && f[1].tag == 0x01 && f[1].len == 1 && f[1].content()[0];
                expect(f.back(), 0x04, "extension value");
                e.value = f.back().value();
                c.exts.push_back(e);
            }
        }
        name_text(c.issuer);
        name_text(c.subject);
    } catch (const std::out_of_range&) {
        throw Error("certificate: an element is missing", 4);
    } catch (const Error& e) {
        throw Error(std::string(e.what()).rfind("certificate", 0) == 0 ? e.what()
                                                                        : std::string("certificate: ") + e.what(),
                    4);
    }
    return c;
}

Cert read_cert(const std::string& path) {
    Bytes d = pem_decode(read_text(path, kSmallFile), "CERTIFICATE");
    try {
        return parse_cert(d);
    } catch (const Error& e) {
        throw Error(path + ": " + e.what(), 4);
    }
}

std::string name_text(const Bytes& name) {
    std::string s;
    for (const der::Elem& rdn : der::children(top(name)))
        for (const der::Elem& atv : der::children(rdn)) {
            auto f = der::children(atv);
            if (f.size() != 2 || f[0].tag != 0x06) throw Error("bad name attribute", 4);
            s += (s.empty() ? "" : ", ") + named(kNameAttrs, der::oid_text(f[0])) + "=" + string_value(f[1]);
        }
    return s;
}

std::string time_text(long long t) {
    std::time_t tt = static_cast<std::time_t>(t);
    std::tm tm{};
    gmtime_r(&tt, &tm);
    char buf[40];
    std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S UTC", &tm);
    return buf;
}

std::string check_cert_signature(const Cert& c, const Cert& issuer) {
    if (!issuer.key_error.empty()) return "the issuer's key is unusable: " + issuer.key_error;
    Gen g;
    if (!gen_of_oid(c.sig_alg, g) || c.sig_alg == key_oid(g))
        return "unknown signature algorithm " + c.sig_alg;
    if (g != issuer.key.gen) return "signed with " + std::string(gen_name(g)) + " but the issuer's key is " + gen_name(issuer.key.gen);
    if (!verify_digest(issuer.key, digest_of(g, c.tbs.data(), c.tbs.size()), c.sig)) return "signature does not verify";
    return "";
}

std::string extension_text(const Extension& e) {
    std::string name = named(kExtensions, e.oid), v;
    try {
        der::Elem x = top(e.value);
        if (e.oid == "2.5.29.37" || e.oid == "2.5.29.32") {  // purposes, policies: OIDs
            for (const der::Elem& p : der::children(x)) {
                der::Elem o = p.tag == 0x30 ? der::children(p).at(0) : p;
                v += (v.empty() ? "" : ", ") + named(kPurposes, der::oid_text(o));
            }
        } else if (e.oid == "2.5.29.17" || e.oid == "2.5.29.18") {
            v = general_names(x);
        } else if (e.oid == "2.5.29.19") {
            auto f = der::children(x);
            bool ca = !f.empty() && f[0].tag == 0x01 && f[0].len == 1 && f[0].content()[0];
            v = ca ? "CA" : "not a CA";
            if (!f.empty() && f.back().tag == 0x02 && f.back().len)
                v += ", path length " + std::to_string(f.back().content()[f.back().len - 1]);
        } else if (e.oid == "2.5.29.14" && x.tag == 0x04) {
            v = to_hex(x.content(), x.len);
        } else if (e.oid == "2.5.29.35") {
            for (const der::Elem& f : der::children(x))
                if (f.tag == 0x80) v = "keyid " + to_hex(f.content(), f.len);
        } else if (e.oid == "2.5.29.31" || e.oid == "1.3.6.1.5.5.7.1.1") {
            // Walk down to the URIs.
            std::vector<der::Elem> todo{x};
            while (!todo.empty()) {
                der::Elem t = todo.back();
                todo.pop_back();
                if (t.tag == 0x86) v += (v.empty() ? "" : ", ") + string_value(t);
                else if (t.tag & 0x20) {
                    auto kids = der::children(t);
                    todo.insert(todo.end(), kids.rbegin(), kids.rend());
                }
            }
        } else if (e.oid == "2.5.29.15" && x.tag == 0x03) {
            static const char* bits[] = {"digitalSignature", "nonRepudiation", "keyEncipherment",
                                         "dataEncipherment", "keyAgreement",   "keyCertSign",
                                         "cRLSign",          "encipherOnly",   "decipherOnly"};
            for (size_t b = 0; b < 9; ++b)
                if (x.len > 1 + b / 8 && (x.content()[1 + b / 8] >> (7 - b % 8) & 1))
                    v += (v.empty() ? "" : ", ") + std::string(bits[b]);
        } else if (x.tag == 0x30) {
            for (const der::Elem& f : der::children(x))
                v += (v.empty() ? "" : ", ") + string_value(f);
        } else {
            v = string_value(x);
        }
    } catch (const std::exception&) {
        v = "#" + to_hex(e.value);
    }
    return name + (e.critical ? " (critical)" : "") + ": " + v;
}

}  // namespace cli
