#include "containers.h"

#include <cstdio>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "CryptoPro.h"
#include "PRNG.h"
#include "cert_info.h"
#include "certs.h"
#include "formats/csp_container.h"
#include "formats/pfx.h"
#include "pkcs12.h"
#include "pkcs15.h"
#include "x_509.h"

namespace cli {

namespace {

unsigned char* pw_ptr(const std::string& pw) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(pw.data()));
}
unsigned char pw_len(const std::string& pw) { return static_cast<unsigned char>(pw.size()); }

Bytes random_bytes(size_t n) {
    Bytes b(n);
    size_t got = 0;
    while (got < n) {
        ssize_t r = getrandom(b.data() + got, n - got, 0);
        if (r < 0) throw Error("getrandom failed");
        got += static_cast<size_t>(r);
    }
    return b;
}

bool is_dir(const std::string& p) {
    struct stat st;
    return ::stat(p.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// The key-file pairs present in a CryptoPro container folder, first key first.
struct KeyFiles {
    std::string which, primary, masks;
};
std::vector<KeyFiles> key_files(const std::string& dir) {
    std::vector<KeyFiles> out;
    for (std::string which : {"primary", "primary2"}) {
        KeyFiles f{which, dir + "/" + which + ".key", dir + "/masks" + which.substr(7) + ".key"};
        if (file_exists(f.primary) && file_exists(f.masks)) out.push_back(f);
    }
    if (out.empty()) throw Error(dir + ": no primary.key/masks.key pair");
    return out;
}

[[noreturn]] void no_curve(const char* what) {
    throw Error(std::string(what) + " does not record the key's curve: name it with --curve or --cert", 2);
}

// True when b holds one DER element (exactly, or with octets behind it).
bool der_fits(const Bytes& b, bool exact) {
    if (b.size() < 2) return false;
    size_t h = 2, len = b[1];
    if (len & 0x80) {
        size_t n = len & 0x7F;
        if (n == 0 || n > 4 || b.size() < 2 + n) return false;
        len = 0;
        for (size_t i = 0; i < n; ++i) len = len << 8 | b[2 + i];
        h += n;
    }
    return exact ? h + len == b.size() : h + len <= b.size();
}

// The library reads the key files at fixed offsets: one or two enciphered
// keys (36 or 70 octets) and the 56-octet masks file.
void check_key_files(const KeyFiles& f, const Bytes& primary, const Bytes& masks) {
    if ((primary.size() != 36 && primary.size() != 70) || !der_fits(primary, true))
        throw Error(f.primary + ": truncated or damaged (not 36 or 70 octets of DER)", 4);
    if (masks.size() != 56 || !der_fits(masks, true))
        throw Error(f.masks + ": truncated or damaged (not 56 octets of DER)", 4);
}

}  // namespace

void require_der(const Bytes& b, const std::string& what, bool exact) {
    if (!der_fits(b, exact)) throw Error(what + ": truncated or damaged (its DER length does not match the file)", 4);
}

Kind kind_of(const std::string& path) {
    if (is_dir(path)) return file_exists(path + "/primary.key") ? Kind::cryptopro : Kind::unknown;
    Bytes b = read_file(path, kSmallFile);
    if (b.empty()) return Kind::unknown;
    if (formats::pkcs8_detect(b)) return Kind::pkcs8;
    if (formats::pfx_detect(b)) return Kind::pfx;
    if (b[0] == '#' || (b.size() > 6 && std::string(b.begin(), b.begin() + 6) == "curve ")) return Kind::keyfile;
    if (b.size() == PKCS12_CONTEINER_SIZE) {
        unsigned char* p = b.data();
        if (pkcs12_check_header(&p) == 0) return Kind::pkcs12;
    }
    if (b[0] == 0x30 && der_fits(b, true) && pkcs15_get_version(b.data()) != 0) return Kind::pkcs15;
    return Kind::unknown;
}

const char* kind_name(Kind k) {
    switch (k) {
        case Kind::keyfile: return "korvex key file";
        case Kind::pkcs8: return "PKCS#8 private key";
        case Kind::pfx: return "PFX (PKCS#12) file";
        case Kind::pkcs15: return "PKCS#15 container";
        case Kind::pkcs12: return "PKCS#12 container";
        case Kind::cryptopro: return "CryptoPro container";
        default: return "unknown";
    }
}

Bytes pkcs15_make(const KeyPair& k, const std::string& pw, bool gen2012, unsigned short usage) {
    if (k.d.empty()) throw Error("no private key to store");
    if (k.is2012()) gen2012 = true;  // so that the key comes back out as a 2012 key
    Bytes rnd = random_bytes(40);  // stored beside the key: a seed for the next session
    Bytes out;
    if (gen2012) {
        TSecretKey sk{};
        std::copy(k.d.begin(), k.d.end(), sk.b);
        unsigned char kind = k.curve.is512 ? 2 : 1;
        unsigned n = pkcs15_create_conteiner_2012(nullptr, &sk, rnd.data(), usage, pw_ptr(pw), pw_len(pw), kind);
        out.resize(n);
        n = n ? pkcs15_create_conteiner_2012(out.data(), &sk, rnd.data(), usage, pw_ptr(pw), pw_len(pw), kind) : 0;
        wipe(&sk, sizeof sk);
        out.resize(n);
    } else {
        Bytes d = k.d;
        auto* key = reinterpret_cast<type_uN<32>*>(d.data());
        unsigned n = pkcs15_create_conteiner_new(nullptr, key, rnd.data(), pw_ptr(pw), pw_len(pw), usage);
        out.resize(n);
        n = n ? pkcs15_create_conteiner_new(out.data(), key, rnd.data(), pw_ptr(pw), pw_len(pw), usage) : 0;
        wipe(d);
        out.resize(n);
    }
    wipe(rnd);
    if (out.empty()) throw Error("the container could not be made (generator not seeded?)");
    return out;
}

KeyPair pkcs15_read(Bytes& c, const std::string& pw, const Curve* curve) {
    require_der(c, "PKCS#15 container", true);
    unsigned v = pkcs15_get_version(c.data());
    KeyPair k{};
    if (v == 1) {
        k.d.assign(32, 0);
        unsigned r = pkcs15_get_key(c.data(), reinterpret_cast<type_uN<32>*>(k.d.data()), pw_ptr(pw), pw_len(pw));
        if (r == 32) throw Error("wrong password", 3);
        if (r != 0) throw Error("damaged PKCS#15 container (code " + std::to_string(r) + ")", 4);
        if (!pkcs15_2001_sealed(c, pw)) {
            wipe(k.d);
            throw Error("damaged PKCS#15 container (its digest or MAC does not match)", 4);
        }
        if (!curve) no_curve("a PKCS#15 container");
        k.curve = *curve;
        if (k.curve.is512) throw Error("a 2001 container holds a 256-bit key, not one on " + k.curve.name, 2);
        k.gen = formats::Gen::gost2001;
    } else if (v == 2) {
        // The 2012 reader returns whatever the password deciphers; the update
        // function checks the password first, so run it on a copy.
        Bytes probe = c;
        seed_generator();
        unsigned u = pkcs15_update_2012(probe.data(), pw_ptr(pw), pw_len(pw));
        wipe(probe);
        if (u == 32) throw Error("wrong password", 3);
        if (u != 0) throw Error("damaged PKCS#15 container (code " + std::to_string(u) + ")", 4);
        TSecretKey sk{};
        unsigned r = pkcs15_get_key_2012(c.data(), &sk, pw_ptr(pw), pw_len(pw));
        if (r != 0) throw Error("damaged PKCS#15 container (code " + std::to_string(r) + ")", 4);
        // A 256-bit key fills 32 octets and leaves 32 zero octets (the
        // container's own record of the size); the curve is not recorded.
        unsigned char high = 0;
        for (int i = 32; i < 64; ++i) high |= sk.b[i];
        bool is512 = high != 0;
        if (!curve) {
            wipe(&sk, sizeof sk);
            no_curve("a PKCS#15 container");
        }
        if (curve->is512 != is512) {
            wipe(&sk, sizeof sk);
            throw Error(std::string("the container holds a ") + (is512 ? "512" : "256") + "-bit key, not one on " +
                            curve->name, 2);
        }
        k.curve = *curve;
        k.gen = gen_for(k.curve, true);
        k.d.assign(sk.b, sk.b + (k.curve.is512 ? 64 : 32));
        wipe(&sk, sizeof sk);
    } else {
        throw Error("not a PKCS#15 container", 4);
    }
    k.q = public_of(k.curve, k.d);
    return k;
}

void pkcs15_renew(Bytes& c, const std::string& pw) {
    require_der(c, "PKCS#15 container", true);
    seed_generator();
    unsigned v = pkcs15_get_version(c.data());
    if (v == 1) {
        // The 2001 update re-seals whatever it finds: check password and seal first.
        unsigned r = pkcs15_get_key(c.data(), nullptr, pw_ptr(pw), pw_len(pw));
        if (r == 32) throw Error("wrong password", 3);
        if (r != 0 || !pkcs15_2001_sealed(c, pw))
            throw Error("damaged PKCS#15 container (its digest or MAC does not match)", 4);
    }
    unsigned r = v == 2 ? pkcs15_update_2012(c.data(), pw_ptr(pw), pw_len(pw))
                 : v == 1 ? pkcs15_update(c.data(), pw_ptr(pw), pw_len(pw))
                          : 30;
    if (r == 32) throw Error("wrong password", 3);
    if (r != 0) throw Error("the container could not be updated (code " + std::to_string(r) + ")", 4);
}

Bytes pkcs12_make(const KeyPair& k, const std::string& pw) {
    if (k.curve.is512) throw Error("the PKCS#12 container holds 256-bit keys");
    Bytes out(PKCS12_CONTEINER_SIZE);
    Bytes aux(40, 0);
    std::string tag = "korvex curve=" + k.curve.name + (k.is2012() ? " gen=2012" : "");
    std::copy(tag.begin(), tag.end(), aux.begin());
    Bytes salt = random_bytes(4), iv = random_bytes(8), d = k.d;
    pkcs12_create_conteiner(out.data(), static_cast<unsigned short>(out.size()), reinterpret_cast<type_uN<32>*>(d.data()),
                            aux.data(), pw_ptr(pw), pw_len(pw), salt.data(), iv.data());
    wipe(d);
    return out;
}

KeyPair pkcs12_read(Bytes& c, const std::string& pw, const Curve* curve) {
    if (c.size() != PKCS12_CONTEINER_SIZE) throw Error("not a PKCS#12 container of this library (size)", 4);
    unsigned char* p = c.data();
    unsigned char h = pkcs12_check_header(&p);
    if (h != 0) throw Error("damaged PKCS#12 container (code " + std::to_string(h) + ")", 4);
    unsigned char al = pkcs12_check_algorithm(p);
    if (al != 0) throw Error("unsupported PKCS#12 algorithm (code " + std::to_string(al) + ")", 4);
    KeyPair k{};
    k.d.assign(32, 0);
    Bytes aux(40, 0);
    unsigned char r = pkcs12_open_conteiner(reinterpret_cast<type_uN<32>*>(k.d.data()), aux.data(), pw_ptr(pw),
                                            pw_len(pw), c.data());
    if (r == 2) throw Error("wrong password (or damaged container)", 3);
    if (r != 0) throw Error("damaged PKCS#12 container (code " + std::to_string(r) + ")", 4);
    std::string tag(aux.begin(), aux.end());
    tag = tag.substr(0, tag.find('\0'));
    const std::string pre = "korvex curve=";
    if (tag.rfind(pre, 0) == 0) {
        std::string name = tag.substr(pre.size());
        bool is2012 = name.size() > 9 && name.compare(name.size() - 9, 9, " gen=2012") == 0;
        k.curve = curve_by_name(is2012 ? name.substr(0, name.size() - 9) : name);
        if (curve && (curve->sel != k.curve.sel || curve->is512 != k.curve.is512))
            throw Error("the container's key is on the " + k.curve.name + " curve, not " + curve->name, 2);
        k.gen = gen_for(k.curve, is2012);
    } else {
        if (!curve) no_curve("this PKCS#12 container");
        k.curve = *curve;
        k.gen = gen_for(k.curve, false);
    }
    if (k.curve.is512) throw Error("the PKCS#12 container holds 256-bit keys", 2);
    k.q = public_of(k.curve, k.d);
    return k;
}

CryptoProKey cryptopro_read(const std::string& dir, const std::string& cert_path, const std::string& pw) {
    if (formats::csp_folder(dir)) {
        formats::CspKey ck = formats::csp_read(dir, pw, cert_path.empty() ? Bytes{} : load_cert(cert_path));
        return CryptoProKey{from_pkcs8(ck.key), ck.cert, ck.which, ck.note};
    }
    if (pw.size() > CRYPTOPRO_MAX_PASSWORD_LEN)
        throw Error("CryptoPro passwords have at most " + std::to_string(CRYPTOPRO_MAX_PASSWORD_LEN) + " characters");
    CryptoProKey out{};
    if (!cert_path.empty()) {
        out.cert = load_cert(cert_path);
    } else {
        Bytes header = read_file(dir + "/header.key", kSmallFile);
        require_der(header, dir + "/header.key", false);
        unsigned char* c = CryptoPro_conteiner_get_certificate(header.data());
        if (!c) throw Error(dir + "/header.key: no certificate found (damaged?); name one with --cert", 4);
        unsigned n = x_509_get_certificate_length(c);
        if (!n || c + n > header.data() + header.size()) throw Error(dir + "/header.key: damaged certificate");
        out.cert.assign(c, c + n);
    }
    formats::CertKey ck = formats::cert_key(out.cert);
    Curve curve = curve_by_name(ck.curve_oid);
    if (curve.is512) throw Error("this reader opens containers of 256-bit keys", 5);
    int last = -1;
    for (const KeyFiles& f : key_files(dir)) {
        Bytes primary = read_file(f.primary, kSmallFile), masks = read_file(f.masks, kSmallFile), mask_block(40);
        check_key_files(f, primary, masks);
        KeyPair k{};
        k.d.assign(32, 0);
        unsigned char r = CryptoPro_conteiner_get(primary.data(), masks.data(), out.cert.data(), mask_block.data(),
                                                  reinterpret_cast<type_uN<32>*>(k.d.data()), pw_ptr(pw), pw_len(pw));
        wipe(mask_block);
        if (r == 0) {
            k.curve = curve;
            k.gen = ck.gen;
            k.q = public_of(k.curve, k.d);
            if (k.q != ck.q) throw Error(dir + ": the key does not belong to the container's certificate", 4);
            out.key = k;
            out.which = f.which;
            return out;
        }
        last = r;
    }
    if (last == 8) throw Error("wrong password, or the certificate is not this container's", 3);
    throw Error("damaged CryptoPro container (code " + std::to_string(last) + ")", 4);
}

void write_key_and_cert(const KeyPair& k, const Bytes& cert, const std::string& key_out, const std::string& cert_out,
                        const std::string& source) {
    if (!cert_out.empty() && cert.empty()) throw Error(source + ": no certificate to write (name one with --cert)", 4);
    std::string pem = private_pem(k);
    write_file(key_out, pem, {source}, 0600);
    wipe(pem);
    if (cert_out.empty()) return;
    try {
        write_file(cert_out, formats::pem_encode("CERTIFICATE", cert), {source, key_out});
    } catch (...) {
        if (key_out != "-") ::unlink(key_out.c_str());
        throw;
    }
}

void cryptopro_info(const std::string& dir) {
    if (!formats::csp_folder(dir)) {
        const size_t n = key_files(dir).size();
        std::printf("CryptoPro container in the library's own format, %zu key file pair%s\n", n, n == 1 ? "" : "s");
        return;
    }
    formats::CspHeader h = formats::csp_header(dir);
    const formats::CurveInfo& c = formats::curve_by_oid(h.curve_oid);
    std::printf("CryptoPro CSP container, %s key (%s)\n", formats::gen_name(h.gen), h.alg_oid.c_str());
    std::printf("name:        %s\n", h.name.empty() ? "(none)" : h.name.c_str());
    std::printf("curve:       %s (%s)\n", c.title, h.curve_oid.c_str());
    std::printf("password:    %s\n", h.hmac_password.empty() ? "none recorded" : "set");
    if (!h.key_not_after.empty()) std::printf("key usable until: %s\n", h.key_not_after.c_str());
    if (h.cert.empty()) {
        std::printf("certificate: none in header.key\n");
        return;
    }
    Cert cert = parse_cert(h.cert);
    std::printf("subject:     %s\n", name_text(cert.subject).c_str());
    std::printf("issuer:      %s\n", name_text(cert.issuer).c_str());
    std::printf("not before:  %s\n", time_text(cert.not_before).c_str());
    std::printf("not after:   %s\n", time_text(cert.not_after).c_str());
}

void cryptopro_update(const std::string& dir, const std::string& cert_path, const std::string& pw) {
    // The library's update re-masks whatever the password deciphers, so a
    // wrong password would destroy the key: the key is first opened against
    // the certificate (header.key's or --cert), and without one nothing is
    // done. All files are re-masked in memory before any is written.
    if (formats::csp_folder(dir))
        throw Error(dir + ": a CryptoPro CSP container; update re-masks only the library's own format", kExitRefused);
    CryptoProKey check = cryptopro_read(dir, cert_path, pw);
    wipe(check.key.d);
    seed_generator();
    std::vector<std::pair<KeyFiles, std::pair<Bytes, Bytes>>> out;
    for (const KeyFiles& f : key_files(dir)) {
        Bytes primary = read_file(f.primary, kSmallFile), masks = read_file(f.masks, kSmallFile);
        check_key_files(f, primary, masks);
        unsigned char r = CryptoPro_conteiner_update(primary.data(), masks.data(), pw_ptr(pw), pw_len(pw));
        if (r != 0) throw Error(f.which + ".key: update failed (code " + std::to_string(r) + ")", 4);
        out.push_back({f, {primary, masks}});
    }
    for (const auto& [f, files] : out) {
        write_file(f.primary, files.first, {}, 0600, Overwrite::in_place);
        write_file(f.masks, files.second, {}, 0600, Overwrite::in_place);
    }
}

KeyPair load_private_key(const std::string& path, const Args& a) {
    Kind kind = kind_of(path);
    // What the command line says about the curve: --curve, or --cert's key.
    std::optional<Curve> curve;
    Bytes cert;
    if (a.has("--curve")) curve = curve_by_name(a.get("--curve"));
    if (a.has("--cert")) {
        cert = load_cert(a.get("--cert"));
        Curve cc = curve_by_name(formats::cert_key(cert).curve_oid);
        if (curve && (curve->sel != cc.sel || curve->is512 != cc.is512))
            throw Error("--curve " + curve->name + " and the certificate's curve " + cc.name + " differ", 2);
        if (!curve) curve = cc;
    }
    const Curve* cp = curve ? &*curve : nullptr;
    KeyPair k{};
    switch (kind) {
        case Kind::keyfile:
        case Kind::pkcs8: k = read_key(path); break;
        case Kind::pfx: {
            Bytes f = read_file(path, kSmallFile);
            std::string pw = password(a, "Password for " + path + ": ");
            formats::Pfx p = formats::pfx_read(f, pw);
            wipe(pw);
            k = from_pkcs8(p.key);
            break;
        }
        case Kind::pkcs15:
        case Kind::pkcs12: {
            Bytes c = read_file(path, kSmallFile);
            std::string pw = password(a, "Password for " + path + ": ");
            k = kind == Kind::pkcs15 ? pkcs15_read(c, pw, cp) : pkcs12_read(c, pw, cp);
            wipe(pw);
            break;
        }
        case Kind::cryptopro: {
            std::string pw = password(a, "Password for " + path + ": ");
            CryptoProKey ck = cryptopro_read(path, a.get("--cert"), pw);
            wipe(pw);
            k = ck.key;
            break;
        }
        default: throw Error(path + ": not a key file or a known container", 4);
    }
    if (curve && (curve->sel != k.curve.sel || curve->is512 != k.curve.is512))
        throw Error(path + " holds a key on the " + k.curve.name + " curve, not " + curve->name, 2);
    if (!cert.empty() && !k.d.empty()) match_cert(k, cert, kind == Kind::pkcs15);
    return k;
}

void match_cert(KeyPair& k, const Bytes& cert, bool take_gen) {
    formats::CertKey ck = formats::cert_key(cert);
    if (take_gen && !k.curve.is512) k.gen = ck.gen;
    try {
        formats::check_against_cert(to_pkcs8(k), cert);
    } catch (const formats::Error& e) {
        throw Error(std::string(e.what()) + " (--cert)", kExitPassword);
    }
}

}  // namespace cli
