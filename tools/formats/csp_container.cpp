#include "formats/csp_container.h"

#include <fstream>
#include <iterator>

#include <openssl/crypto.h>

#include "GOST_28147_89.h"
#include "formats/csp_kdf.h"
#include "formats/gost.h"
#include "formats/modq.h"
#include "formats/ossl.h"

namespace formats {

namespace {

// Container files are small (header.key holds one certificate); anything
// longer is not one of them and is not read whole.
constexpr size_t kMaxFile = 1 << 20;

Bytes read_small(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    if (!f) throw Error(path + ": cannot read it");
    Bytes b;
    char buf[4096];
    while (f.read(buf, sizeof buf) || f.gcount() > 0) {
        b.insert(b.end(), buf, buf + f.gcount());
        if (b.size() > kMaxFile) throw Error(path + ": too long for a container file");
    }
    return b;
}

bool exists(const std::string& path) { return std::ifstream(path).good(); }

// The one DER element filling `b`, constructed.
Tlv whole(const Bytes& b, const std::string& what) {
    const unsigned char* cur = b.data();
    Tlv t = tlv_at(cur, b.data() + b.size(), what.c_str());
    if (cur != b.data() + b.size() || !t.cons) throw Error(what + ": bad DER (length does not match the file)");
    return t;
}

// header.key's two parts: the description and its MAC.
std::vector<Tlv> header_parts(const Bytes& h, const std::string& what) {
    auto parts = tlv_children(whole(h, what), what.c_str());
    if (parts.size() != 2 || !parts[0].is(V_ASN1_SEQUENCE) || !parts[1].is(V_ASN1_OCTET_STRING) || parts[1].len != 4)
        throw Error(what + ": not a CryptoPro container header");
    return parts;
}

bool ctx(const Tlv& t, int n) { return t.is(n, V_ASN1_CONTEXT_SPECIFIC); }

// "20200701145710Z" -> "2020-07-01 14:57:10 UTC"; anything else as it is.
std::string time_text(const Bytes& g) {
    std::string s(g.begin(), g.end());
    if (s.size() != 15 || s[14] != 'Z') return s;
    return s.substr(0, 4) + "-" + s.substr(4, 2) + "-" + s.substr(6, 2) + " " + s.substr(8, 2) + ":" + s.substr(10, 2) +
           ":" + s.substr(12, 2) + " UTC";
}

// The private key's end date: extension 1.2.643.2.2.37.3.10 holding
// SEQUENCE { [1] GeneralizedTime } (the shape of PrivateKeyUsagePeriod).
std::string key_not_after(const Tlv& exts, const char* what) {
    for (const Tlv& e : tlv_children(exts, what)) {
        auto f = tlv_children(e, what);
        if (f.size() != 2 || tlv_oid(f[0], what) != "1.2.643.2.2.37.3.10" || !f[1].is(V_ASN1_OCTET_STRING)) continue;
        Bytes v = f[1].value();
        const unsigned char* cur = v.data();
        Tlv s = tlv_at(cur, v.data() + v.size(), what);
        for (const Tlv& t : tlv_children(s, what))
            if (ctx(t, 1) && !t.cons) return time_text(t.value());
    }
    return "";
}

struct Copy {
    std::string which, primary, masks;
};

}  // namespace

bool csp_folder(const std::string& dir) {
    const std::string path = dir + "/header.key";
    if (!exists(path)) return false;
    // A well-formed header.key without the public-key fingerprint is the
    // library's own format (it only carries the certificate); one that is not
    // well-formed is read, and refused, as a damaged CSP header.
    try {
        Bytes h = read_small(path);
        auto parts = tlv_children(whole(h, path), path.c_str());
        if (parts.empty() || !parts[0].cons) return true;
        for (const Tlv& t : tlv_children(parts[0], path.c_str()))
            if (ctx(t, 10)) return true;
        return false;
    } catch (const Error&) {
        return true;
    }
}

CspHeader csp_header(const std::string& dir) {
    const std::string path = dir + "/header.key";
    const char* what = path.c_str();
    Bytes h = read_small(path);
    const bool mac_a = csp_header_mac_matches(h, false), mac_z = !mac_a && csp_header_mac_matches(h, true);
    if (!mac_a && !mac_z) throw Error(path + ": damaged (its MAC does not match)");
    CspHeader out;
    bool have_params = false;
    for (const Tlv& t : tlv_children(header_parts(h, path)[0], what)) {
        if (t.is(V_ASN1_IA5STRING)) {
            Bytes v = t.value();
            out.name.assign(v.begin(), v.end());
        } else if (t.is(V_ASN1_SEQUENCE) && !have_params) {
            // PrivateKeyParameters: attributes, [0] { algorithm, { curve, digest } }.
            auto kp = tlv_children(t, what);
            if (kp.size() < 2 || !ctx(kp[1], 0)) throw Error(path + ": bad key parameters");
            auto alg = tlv_children(kp[1], what);
            if (alg.size() != 2) throw Error(path + ": bad key algorithm");
            out.alg_oid = tlv_oid(alg[0], what);
            auto sets = tlv_children(alg[1], what);
            if (sets.empty()) throw Error(path + ": no curve named");
            out.curve_oid = tlv_oid(sets[0], what);
            if (sets.size() > 1) out.digest_oid = tlv_oid(sets[1], what);
            have_params = true;
        } else if (ctx(t, 2) && !t.cons) {
            out.hmac_password = t.value();
        } else if (ctx(t, 5) && !t.cons) {
            out.cert = t.value();
        } else if (ctx(t, 10) && !t.cons) {
            out.fingerprint = t.value();
        } else if (ctx(t, 12) && t.cons) {
            try {  // informative only: an extension of another shape is passed over
                out.key_not_after = key_not_after(t, what);
            } catch (const Error&) {
            }
        }
    }
    if (!have_params || out.fingerprint.size() != 8) throw Error(path + ": no key parameters or fingerprint");
    try {
        out.gen = out.digest_oid == "1.2.643.2.2.30.1" ? Gen::gost2001 : gen_of_alg(out.alg_oid);
    } catch (const Error& e) {
        throw Error(path + ": " + e.what());
    }
    if ((out.gen == Gen::gost2001) != mac_a) throw Error(path + ": its MAC does not fit its key's generation");
    PrivateKey probe;  // generation and curve agree, and the library has the curve
    probe.gen = out.gen;
    probe.curve_oid = out.curve_oid;
    probe.d.assign(probe.width(), 0);
    check_key(probe);
    if (!out.hmac_password.empty() && out.hmac_password.size() != 4)
        throw Error(path + ": bad password check value");

    const std::string name_path = dir + "/name.key";
    if (exists(name_path)) {
        try {
            Bytes n = read_small(name_path);
            auto f = tlv_children(whole(n, name_path), name_path.c_str());
            if (!f.empty() && f[0].is(V_ASN1_IA5STRING)) out.name.assign(f[0].p, f[0].end());
        } catch (const Error&) {
        }
    }
    return out;
}

namespace {

// One copy of the key: the masks file's mask, salt and MAC, the enciphered
// key, the password-derived key, the mask taken off, the fingerprint.
PrivateKey open_copy(const CspHeader& h, const Copy& c, const std::string& pw, bool pw_proven) {
    const bool g12 = h.gen != Gen::gost2001;
    PrivateKey k;
    k.gen = h.gen;
    k.curve_oid = h.curve_oid;
    k.digest = h.digest_oid;
    const size_t w = k.width();

    Bytes masks = read_small(c.masks);
    auto m = tlv_children(whole(masks, c.masks), c.masks.c_str());
    if (m.size() != 3 || !m[0].is(V_ASN1_OCTET_STRING) || static_cast<size_t>(m[0].len) != w ||
        !m[1].is(V_ASN1_OCTET_STRING) || m[1].len != 12 || !m[2].is(V_ASN1_OCTET_STRING) || m[2].len != 4)
        throw Error(c.masks + ": damaged (not the mask of a " + std::to_string(8 * w) + "-bit key)");
    const Bytes mask = m[0].value(), salt = m[1].value();
    if (!csp_mask_mac_matches(mask, salt, m[2].value(), g12)) throw Error(c.masks + ": damaged (its MAC does not match)");

    Secret primary = read_small(c.primary);
    auto p = tlv_children(whole(primary, c.primary), c.primary.c_str());
    if (p.size() != 1 || !p[0].is(V_ASN1_OCTET_STRING) || static_cast<size_t>(p[0].len) != w)
        throw Error(c.primary + ": damaged (not one enciphered " + std::to_string(8 * w) + "-bit key)");
    Secret x(p[0].p, p[0].end());

    Secret kek = csp_container_kek(pw, salt, g12);
    GOST_28147_89_R_ECB(x.data(), static_cast<unsigned>(x.size()), reinterpret_cast<type_uN<32>*>(kek.data()),
                        g12 ? kSboxZ : kSboxA);
    k.d = mul_inverse_mod(x, mask, curve_order(h.curve_oid));
    Bytes q;
    try {
        q = public_key(k);
    } catch (const Error&) {
        q.assign(2 * w, 0);  // the point at infinity: no fingerprint matches it
    }
    if (CRYPTO_memcmp(q.data(), h.fingerprint.data(), 8) != 0) {
        if (pw_proven) throw Error(c.primary + ": damaged (the key does not match the container's fingerprint)");
        throw Error("wrong password for " + c.primary.substr(0, c.primary.rfind('/')), kWrongPassword);
    }
    return k;
}

}  // namespace

CspKey csp_read(const std::string& dir, const std::string& pw, const Bytes& cert) {
    const CspHeader h = csp_header(dir);
    const bool g12 = h.gen != Gen::gost2001;
    const bool proven = !h.hmac_password.empty();
    if (proven && !csp_password_matches(pw, h.fingerprint, h.hmac_password, g12))
        throw Error("wrong password for " + dir, kWrongPassword);
    CspKey out;
    std::vector<Error> errors;
    for (const Copy& c : {Copy{"primary", dir + "/primary.key", dir + "/masks.key"},
                          Copy{"primary2", dir + "/primary2.key", dir + "/masks2.key"}}) {
        if (c.which == "primary2" && !exists(c.primary) && !exists(c.masks)) break;
        try {
            out.key = open_copy(h, c, pw, proven);
            out.which = c.which;
            break;
        } catch (const Error& e) {
            if (e.code != kDamaged && e.code != kWrongPassword) throw;
            errors.push_back(e);
        }
    }
    if (out.which.empty()) throw errors.front();
    if (!errors.empty()) out.note = std::string(errors.front().what()) + "; the backup copy opened";

    out.cert = cert.empty() ? h.cert : cert;
    if (!out.cert.empty()) {
        try {
            check_against_cert(out.key, out.cert);
        } catch (const Error& e) {
            if (cert.empty()) throw Error(dir + "/header.key: its certificate is not the key's (" + e.what() + ")");
            throw Error(std::string(e.what()) + " (--cert)", kWrongPassword);
        }
    }
    return out;
}

}  // namespace formats
