#include "formats/pfx.h"

#include <sys/random.h>

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/x509.h>

#include "formats/csp.h"
#include "formats/gost.h"
#include "formats/pbes2.h"
#include "formats/ossl.h"

namespace formats {

namespace {

const char* kData = "1.2.840.113549.1.7.1";
const char* kCspPbe = "1.2.840.113549.1.12.1.80";
const char* kStreebog512 = "1.2.643.7.1.1.2.3";
const unsigned long kWriteIterations = 2048;

void free_bags(STACK_OF(PKCS12_SAFEBAG) * s) { sk_PKCS12_SAFEBAG_pop_free(s, PKCS12_SAFEBAG_free); }
void free_p7s(STACK_OF(PKCS7) * s) { sk_PKCS7_pop_free(s, PKCS7_free); }
using Bags = Own<STACK_OF(PKCS12_SAFEBAG), free_bags>;
using P7s = Own<STACK_OF(PKCS7), free_p7s>;

Bytes random_bytes(size_t n) {
    Bytes b(n);
    for (size_t got = 0; got < n;) {
        ssize_t r = getrandom(b.data() + got, n - got, 0);
        if (r < 0) throw Error("getrandom failed", kInvalid);
        got += static_cast<size_t>(r);
    }
    return b;
}

// --- reading ---------------------------------------------------------------

// The authSafe octets that the MAC covers: PFX { version, ContentInfo { data,
// [0] OCTET STRING }, macData }.
Bytes auth_octets(const Bytes& f) {
    const char* what = "PFX";
    const unsigned char* cur = f.data();
    Tlv top = tlv_at(cur, f.data() + f.size(), what);
    if (cur != f.data() + f.size()) throw Error("PFX: trailing bytes after the structure");
    auto kids = tlv_children(top, what);
    if (kids.size() < 2 || tlv_int(kids[0], what) != 3) throw Error("not a PKCS#12 (v3) file");
    auto ci = tlv_children(kids[1], what);
    if (ci.size() != 2 || tlv_oid(ci[0], what) != kData) throw Error("PFX: the authenticated safe is not plain data", kRefused);
    auto wrap = tlv_children(ci[1], what);
    if (wrap.size() != 1 || !wrap[0].is(V_ASN1_OCTET_STRING) || wrap[0].cons) throw Error("PFX: bad authenticated safe");
    return wrap[0].value();
}

// True when a MAC was present and matched.
bool check_mac(PKCS12* p12, const Bytes& auth, const std::string& pw) {
    if (!PKCS12_mac_present(p12)) return false;
    const ASN1_OCTET_STRING* mac = nullptr;
    const X509_ALGOR* alg = nullptr;
    const ASN1_OCTET_STRING* salt = nullptr;
    const ASN1_INTEGER* iter = nullptr;
    PKCS12_get0_mac(&mac, &alg, &salt, &iter, p12);
    int64_t it = 1;
    if (iter && !ASN1_INTEGER_get_int64(&it, iter)) throw Error("PFX: bad MAC iteration count");
    check_iterations(static_cast<long>(it), "PFX MAC");
    std::string oid = alg_oid(alg);
    Hmac h;
    if (oid == kStreebog512) h = Hmac::streebog512;
    else if (oid == "1.2.643.7.1.1.2.2") h = Hmac::streebog256;
    else if (oid == "1.2.643.2.2.9") h = Hmac::gost94;
    else {
        Own<ASN1_OBJECT, ASN1_OBJECT_free> o(oid_obj(oid.c_str()));
        if (!EVP_get_digestbyobj(o.get())) throw Error("PFX: MAC digest " + oid + " is not supported", kRefused);
        // An empty password is either no octets or an empty BMPString
        // (RFC 7292 B.1 leaves it open); writers differ, so both are tried.
        if (!PKCS12_verify_mac(p12, pw.c_str(), static_cast<int>(pw.size())) &&
            !(pw.empty() && PKCS12_verify_mac(p12, nullptr, 0))) {
            ERR_clear_error();
            throw Error("wrong password (the PFX MAC does not match)", kWrongPassword);
        }
        return true;
    }
    // RFC 9548 3: the MAC key is bytes 64..95 of PBKDF2 over the same HMAC.
    const unsigned char* s = ASN1_STRING_get0_data(salt);
    Secret k = pbkdf2(h, bytes_of(pw), Bytes(s, s + ASN1_STRING_length(salt)), static_cast<unsigned long>(it), 96);
    Secret want = hmac(h, k.data() + 64, 32, auth.data(), auth.size());
    if (ASN1_STRING_length(mac) != static_cast<int>(want.size()) ||
        CRYPTO_memcmp(ASN1_STRING_get0_data(mac), want.data(), want.size()) != 0)
        throw Error("wrong password (the PFX MAC does not match)", kWrongPassword);
    return true;
}

struct Reader {
    const std::string& pw;
    bool mac_ok;
    std::vector<PrivateKey> keys;
    std::vector<Bytes> certs;
    std::string kind = "GOST PKCS#12";

    PrivateKey decode(const unsigned char* p, size_t n) {
        try {
            return pkcs8_decode(p, n);
        } catch (const Error& e) {
            if (e.code == kRefused || mac_ok) throw;
            throw Error("wrong password (the key does not decode)", kWrongPassword);
        }
    }

    void bags(const STACK_OF(PKCS12_SAFEBAG) * list, int depth) {
        if (depth > 4) throw Error("PFX: safe contents nested too deeply");
        for (int i = 0; i < sk_PKCS12_SAFEBAG_num(list); ++i) {
            const PKCS12_SAFEBAG* bag = sk_PKCS12_SAFEBAG_value(list, i);
            switch (PKCS12_SAFEBAG_get_nid(bag)) {
                case NID_certBag: {
                    if (PKCS12_SAFEBAG_get_bag_nid(bag) != NID_x509Certificate) break;
                    Own<X509, X509_free> x(PKCS12_SAFEBAG_get1_cert(bag));
                    unsigned char* der = nullptr;
                    int n = x ? i2d_X509(x.get(), &der) : -1;
                    if (n <= 0) throw Error("PFX: unreadable certificate");
                    certs.emplace_back(der, der + n);
                    OPENSSL_free(der);
                    break;
                }
                case NID_keyBag: {
                    unsigned char* der = nullptr;
                    int n = i2d_PKCS8_PRIV_KEY_INFO(PKCS12_SAFEBAG_get0_p8inf(bag), &der);
                    if (n <= 0) throw Error("PFX: unreadable key bag");
                    Secret s(der, der + n);
                    OPENSSL_clear_free(der, static_cast<size_t>(n));
                    keys.push_back(decode(s.data(), s.size()));
                    break;
                }
                case NID_pkcs8ShroudedKeyBag: keys.push_back(shrouded(PKCS12_SAFEBAG_get0_pkcs8(bag))); break;
                case NID_safeContentsBag: bags(PKCS12_SAFEBAG_get0_safes(bag), depth + 1); break;
                default: break;  // CRL and secret bags carry nothing for us
            }
        }
    }

    PrivateKey shrouded(const X509_SIG* sig) {
        const X509_ALGOR* alg = nullptr;
        const ASN1_OCTET_STRING* ct = nullptr;
        X509_SIG_get0(sig, &alg, &ct);
        if (alg_oid(alg) == kCspPbe) {
            kind = "CryptoPro CSP";
            return csp_key_bag(alg, ct, pw, mac_ok);
        }
        GostPbes2 g;
        if (gost_pbes2_params(alg, g, "key bag")) {
            Secret plain = gost_pbes2_crypt(true, g, pw, ASN1_STRING_get0_data(ct), static_cast<size_t>(ASN1_STRING_length(ct)));
            return decode(plain.data(), plain.size());
        }
        // Any other PBE (AES PBES2, ...) as libcrypto knows it.
        Own<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free> p8(PKCS8_decrypt(sig, pw.c_str(), static_cast<int>(pw.size())));
        ERR_clear_error();
        if (!p8) throw Error("cannot decrypt the key bag (" + alg_oid(alg) + ")", mac_ok ? kDamaged : kWrongPassword);
        unsigned char* der = nullptr;
        int n = i2d_PKCS8_PRIV_KEY_INFO(p8.get(), &der);
        Secret s(der, der + (n > 0 ? n : 0));
        OPENSSL_clear_free(der, static_cast<size_t>(n > 0 ? n : 0));
        return decode(s.data(), s.size());
    }

    void safe(PKCS7* p7) {
        int nid = OBJ_obj2nid(p7->type);
        if (nid == NID_pkcs7_data) {
            Bags b(PKCS12_unpack_p7data(p7));
            if (!b) throw Error("PFX: unreadable safe contents");
            bags(b.get(), 0);
        } else if (nid == NID_pkcs7_encrypted) {
            PKCS7_ENC_CONTENT* ec = p7->d.encrypted ? p7->d.encrypted->enc_data : nullptr;
            if (!ec || !ec->algorithm || !ec->enc_data) throw Error("PFX: bad encrypted safe contents");
            GostPbes2 g;
            Bags b;
            if (gost_pbes2_params(ec->algorithm, g, "certificate bag")) {
                Secret plain = gost_pbes2_crypt(true, g, pw, ec->enc_data->data, static_cast<size_t>(ec->enc_data->length));
                const unsigned char* p = plain.data();
                b.reset(reinterpret_cast<STACK_OF(PKCS12_SAFEBAG)*>(
                    ASN1_item_d2i(nullptr, &p, static_cast<long>(plain.size()), ASN1_ITEM_rptr(PKCS12_SAFEBAGS))));
            } else {
                b.reset(PKCS12_unpack_p7encdata(p7, pw.c_str(), static_cast<int>(pw.size())));
                if (!b && pw.empty()) b.reset(PKCS12_unpack_p7encdata(p7, nullptr, 0));
            }
            ERR_clear_error();
            if (!b) throw Error("cannot decrypt the certificate bag (" + alg_oid(ec->algorithm) + ")",
                                mac_ok ? kDamaged : kWrongPassword);
            bags(b.get(), 0);
        } else {
            throw Error("PFX: safe of unsupported type (public-key privacy mode?)", kRefused);
        }
    }
};

}  // namespace

bool pfx_detect(const Bytes& f) {
    try {
        auth_octets(f);
        return true;
    } catch (const Error&) {
        return false;
    }
}

Pfx pfx_read(const Bytes& f, const std::string& pw) {
    // Older exports protect the certificates with RC2-40, which OpenSSL 3
    // keeps in its legacy provider.
    struct Legacy {
        OSSL_PROVIDER* p = OSSL_PROVIDER_try_load(nullptr, "legacy", 1);
        ~Legacy() { OSSL_PROVIDER_unload(p); }
    };
    static const Legacy legacy;
    ERR_clear_error();
    Bytes auth = auth_octets(f);
    const unsigned char* p = f.data();
    Own<PKCS12, PKCS12_free> p12(d2i_PKCS12(nullptr, &p, static_cast<long>(f.size())));
    ERR_clear_error();
    if (!p12) throw Error("not a readable PKCS#12 file");
    Reader r{pw, check_mac(p12.get(), auth, pw), {}, {}};
    P7s safes(PKCS12_unpack_authsafes(p12.get()));
    ERR_clear_error();
    if (!safes) throw Error("PFX: unreadable authenticated safe");
    for (int i = 0; i < sk_PKCS7_num(safes.get()); ++i) r.safe(sk_PKCS7_value(safes.get(), i));
    if (r.keys.size() != 1)
        throw Error(r.keys.empty() ? "the PFX holds no private key" : "the PFX holds more than one private key");
    if (r.certs.empty()) throw Error("the PFX holds no certificate to check its key against");
    Pfx out{r.keys[0], {}, r.kind};
    // The key's certificate first, the others in file order.
    for (size_t i = 0; i < r.certs.size(); ++i) {
        bool match = false;
        try {
            check_against_cert(out.key, r.certs[i]);
            match = true;
        } catch (const Error&) {
        }
        if (match && out.certs.empty()) {
            out.certs.push_back(r.certs[i]);
            r.certs.erase(r.certs.begin() + static_cast<long>(i));
            break;
        }
    }
    if (out.certs.empty()) throw Error("the private key matches no certificate in the PFX", kDamaged);
    out.certs.insert(out.certs.end(), r.certs.begin(), r.certs.end());
    return out;
}

// --- writing ---------------------------------------------------------------

Bytes pfx_write(const PrivateKey& key, const std::vector<Bytes>& certs, const std::string& pw) {
    if (certs.empty()) throw Error("a certificate is needed", kUsage);
    check_against_cert(key, certs[0]);
    std::vector<Own<X509, X509_free>> xs;
    for (const Bytes& c : certs) {
        const unsigned char* p = c.data();
        xs.emplace_back(d2i_X509(nullptr, &p, static_cast<long>(c.size())));
        if (!xs.back()) throw Error("not a DER X.509 certificate");
    }
    // localKeyID: the SHA-1 of the key's certificate, as OpenSSL sets it.
    unsigned char id[EVP_MAX_MD_SIZE];
    unsigned id_len = 0;
    X509_digest(xs[0].get(), EVP_sha1(), id, &id_len);

    auto encrypted = [&](const unsigned char* data, size_t n, Bytes& alg) {
        GostPbes2 g{random_bytes(8), random_bytes(8), static_cast<long>(kWriteIterations), kSboxZ};
        alg = gost_pbes2_alg(g);
        return gost_pbes2_crypt(false, g, pw, data, n);
    };
    auto algor = [](const Bytes& der) {
        const unsigned char* p = der.data();
        return d2i_X509_ALGOR(nullptr, &p, static_cast<long>(der.size()));
    };

    // The key bag.
    Secret p8 = pkcs8_encode(key);
    Bytes key_alg;
    Bytes key_ct = encrypted(p8.data(), p8.size(), key_alg);
    X509_SIG* sig = X509_SIG_new();
    X509_ALGOR* sig_alg = nullptr;
    ASN1_OCTET_STRING* sig_ct = nullptr;
    X509_SIG_getm(sig, &sig_alg, &sig_ct);
    X509_ALGOR* ka = algor(key_alg);
    X509_ALGOR_set0(sig_alg, OBJ_dup(ka->algorithm), V_ASN1_SEQUENCE, ASN1_STRING_dup(ka->parameter->value.sequence));
    X509_ALGOR_free(ka);
    ASN1_OCTET_STRING_set(sig_ct, key_ct.data(), static_cast<int>(key_ct.size()));
    PKCS12_SAFEBAG* kb = PKCS12_SAFEBAG_create0_pkcs8(sig);
    PKCS12_add_localkeyid(kb, id, static_cast<int>(id_len));
    Bags key_bags(sk_PKCS12_SAFEBAG_new_null());
    sk_PKCS12_SAFEBAG_push(key_bags.get(), kb);

    // The certificate bags, encrypted.
    Bags cert_bags(sk_PKCS12_SAFEBAG_new_null());
    for (size_t i = 0; i < xs.size(); ++i) {
        PKCS12_SAFEBAG* cb = PKCS12_SAFEBAG_create_cert(xs[i].get());
        if (i == 0) PKCS12_add_localkeyid(cb, id, static_cast<int>(id_len));
        sk_PKCS12_SAFEBAG_push(cert_bags.get(), cb);
    }
    unsigned char* cb_der = nullptr;
    int cb_len = ASN1_item_i2d(reinterpret_cast<ASN1_VALUE*>(cert_bags.get()), &cb_der, ASN1_ITEM_rptr(PKCS12_SAFEBAGS));
    Bytes cert_alg;
    Bytes cert_ct = encrypted(cb_der, static_cast<size_t>(cb_len), cert_alg);
    OPENSSL_free(cb_der);
    PKCS7* p7c = PKCS7_new();
    PKCS7_set_type(p7c, NID_pkcs7_encrypted);
    X509_ALGOR_free(p7c->d.encrypted->enc_data->algorithm);
    p7c->d.encrypted->enc_data->algorithm = algor(cert_alg);
    p7c->d.encrypted->enc_data->enc_data = ASN1_OCTET_STRING_new();
    ASN1_OCTET_STRING_set(p7c->d.encrypted->enc_data->enc_data, cert_ct.data(), static_cast<int>(cert_ct.size()));

    P7s safes(sk_PKCS7_new_null());
    sk_PKCS7_push(safes.get(), p7c);
    sk_PKCS7_push(safes.get(), PKCS12_pack_p7data(key_bags.get()));
    unsigned char* as_der = nullptr;
    int as_len = ASN1_item_i2d(reinterpret_cast<ASN1_VALUE*>(safes.get()), &as_der, ASN1_ITEM_rptr(PKCS12_AUTHSAFES));
    if (as_len <= 0) throw Error("cannot encode the PFX", kInvalid);
    Bytes auth(as_der, as_der + as_len);
    OPENSSL_free(as_der);

    // MacData: HMAC-Streebog-512 keyed by bytes 64..95 of PBKDF2 (RFC 9548 3).
    Bytes salt = random_bytes(8);
    Secret mk = pbkdf2(Hmac::streebog512, bytes_of(pw), salt, kWriteIterations, 96);
    Secret mac = hmac(Hmac::streebog512, mk.data() + 64, 32, auth.data(), auth.size());
    Bytes mac_data = der_seq(cat({der_seq(cat({der_seq(cat({der_oid(kStreebog512), der(V_ASN1_NULL, {})})),
                                               der(V_ASN1_OCTET_STRING, mac)})),
                                  der(V_ASN1_OCTET_STRING, salt), der_int(static_cast<long>(kWriteIterations))}));
    Bytes auth_ci = der_seq(cat({der_oid(kData), der(0, der(V_ASN1_OCTET_STRING, auth), true, V_ASN1_CONTEXT_SPECIFIC)}));
    return der_seq(cat({der_int(3), auth_ci, mac_data}));
}

}  // namespace formats
