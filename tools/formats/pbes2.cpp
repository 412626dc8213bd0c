#include "formats/pbes2.h"

#include "formats/gost.h"
#include "formats/ossl.h"

namespace formats {

namespace {

const char* kPbes2 = "1.2.840.113549.1.5.13";
const char* kPbkdf2 = "1.2.840.113549.1.5.12";
const char* kHmacStreebog512 = "1.2.643.7.1.1.4.2";
const char* kGost89 = "1.2.643.2.2.21";
const char* kParamZ = "1.2.643.7.1.2.5.1.1";

unsigned char sbox_of(const std::string& oid) {
    static const std::pair<const char*, unsigned char> sets[] = {
        {"1.2.643.7.1.2.5.1.1", kSboxZ}, {"1.2.643.2.2.31.1", kSboxA}, {"1.2.643.2.2.31.2", 4},
        {"1.2.643.2.2.31.3", 5},         {"1.2.643.2.2.31.4", 6}};
    for (auto& s : sets)
        if (oid == s.first) return s.second;
    throw Error("unknown GOST 28147-89 parameter set " + oid, kRefused);
}

}  // namespace

bool gost_pbes2_params(const X509_ALGOR* alg, GostPbes2& out, const char* what) {
    std::string oid;
    Bytes p = alg_params(alg, oid);
    if (oid != kPbes2) return false;
    const unsigned char* cur = p.data();
    Tlv top = tlv_at(cur, p.data() + p.size(), what);
    auto kids = tlv_children(top, what);
    if (kids.size() != 2) throw Error(std::string(what) + ": bad PBES2 parameters");
    auto kdf = tlv_children(kids[0], what), enc = tlv_children(kids[1], what);
    if (enc.size() != 2 || tlv_oid(enc[0], what) != kGost89) return false;
    if (kdf.size() != 2 || tlv_oid(kdf[0], what) != kPbkdf2) throw Error(std::string(what) + ": PBES2 without PBKDF2");
    auto kp = tlv_children(kdf[1], what);
    if (kp.size() < 2 || !kp[0].is(V_ASN1_OCTET_STRING)) throw Error(std::string(what) + ": bad PBKDF2 parameters");
    out.salt = kp[0].value();
    out.iterations = tlv_int(kp[1], what);
    check_iterations(out.iterations, what);
    size_t i = 2;
    if (i < kp.size() && kp[i].is(V_ASN1_INTEGER) && tlv_int(kp[i++], what) != 32)
        throw Error(std::string(what) + ": PBKDF2 key length is not 32", kRefused);
    std::string prf = i < kp.size() ? tlv_oid(tlv_children(kp[i], what).at(0), what) : "HMAC-SHA1";
    if (prf != kHmacStreebog512) throw Error(std::string(what) + ": PBKDF2 with PRF " + prf + " is not supported", kRefused);
    auto ep = tlv_children(enc[1], what);
    if (ep.empty() || !ep[0].is(V_ASN1_OCTET_STRING) || ep[0].len != 8)
        throw Error(std::string(what) + ": bad GOST 28147-89 parameters");
    out.iv = ep[0].value();
    out.sbox = ep.size() > 1 ? sbox_of(tlv_oid(ep[1], what)) : kSboxA;
    return true;
}

Secret gost_pbes2_crypt(bool decrypt, const GostPbes2& g, const std::string& pw, const unsigned char* data, size_t n) {
    Secret key = pbkdf2(Hmac::streebog512, bytes_of(pw), g.salt, static_cast<unsigned long>(g.iterations), 32);
    Secret out(data, data + n);
    cfb_meshed(decrypt, out.data(), out.size(), key.data(), g.iv.data(), g.sbox);
    return out;
}

Bytes gost_pbes2_alg(const GostPbes2& g) {
    Bytes kdf = der_seq(cat({der_oid(kPbkdf2),
                             der_seq(cat({der(V_ASN1_OCTET_STRING, g.salt), der_int(g.iterations),
                                          der_seq(cat({der_oid(kHmacStreebog512), der(V_ASN1_NULL, {})}))}))}));
    Bytes enc = der_seq(cat({der_oid(kGost89), der_seq(cat({der(V_ASN1_OCTET_STRING, g.iv), der_oid(kParamZ)}))}));
    return der_seq(cat({der_oid(kPbes2), der_seq(cat({kdf, enc}))}));
}

}  // namespace formats
