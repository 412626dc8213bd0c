#include "formats/csp.h"

#include <openssl/crypto.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>

#include "GOST_28147_89.h"
#include "formats/gost.h"
#include "formats/ossl.h"

namespace formats {

namespace {

// CryptoPro CSP hashes the password as UTF-16LE without a terminator.
Secret utf16le(const std::string& pw) {
    unsigned char* uni = nullptr;
    int len = 0;
    if (!OPENSSL_utf82uni(pw.data(), static_cast<int>(pw.size()), &uni, &len))
        throw Error("the password is not valid UTF-8", kInvalid);
    Secret out;
    for (int i = 0; i < len - 2; i += 2) {  // BMPString: big-endian, 00 00 at the end
        out.push_back(uni[i + 1]);
        out.push_back(uni[i]);
    }
    OPENSSL_clear_free(uni, static_cast<size_t>(len));
    return out;
}

}  // namespace

PrivateKey csp_key_bag(const X509_ALGOR* alg, const ASN1_OCTET_STRING* ct, const std::string& pw, bool mac_checked) {
    const char* what = "CryptoPro key bag";
    std::string oid;
    Bytes p = alg_params(alg, oid);
    const unsigned char* cur = p.data();
    auto pp = tlv_children(tlv_at(cur, p.data() + p.size(), what), what);
    if (pp.size() != 2 || !pp[0].is(V_ASN1_OCTET_STRING) || pp[0].len < 8) throw Error(std::string(what) + ": bad PBE parameters");
    Bytes salt = pp[0].value();
    long iterations = tlv_int(pp[1], what);
    check_iterations(iterations, what);
    Secret k = csp_pbe_key(utf16le(pw), salt, static_cast<unsigned long>(iterations));
    Secret plain(ASN1_STRING_get0_data(ct), ASN1_STRING_get0_data(ct) + ASN1_STRING_length(ct));
    cfb_meshed(true, plain.data(), plain.size(), k.data(), salt.data(), kSboxA);

    const unsigned char* q = plain.data();
    Own<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free> p8(
        d2i_PKCS8_PRIV_KEY_INFO(nullptr, &q, static_cast<long>(plain.size())));
    if (!p8 || q != plain.data() + plain.size())
        throw Error(mac_checked ? "damaged CryptoPro key bag" : "wrong password", mac_checked ? kDamaged : kWrongPassword);
    const ASN1_OBJECT* aobj = nullptr;
    const unsigned char* blob = nullptr;
    int bloblen = 0;
    PKCS8_pkey_get0(&aobj, &blob, &bloblen, nullptr, p8.get());
    PrivateKey key;
    key.gen = gen_of_alg(oid_text(aobj));
    // A CryptoAPI PRIVATEKEYBLOB: 16-byte header, then the DER transport.
    if (bloblen < 18 || blob[0] != 0x07 || Bytes(blob + 8, blob + 12) != Bytes{'M', 'A', 'G', '1'})
        throw Error(std::string(what) + ": not a CryptoPro key blob");
    unsigned ai = blob[4] | blob[5] << 8 | blob[6] << 16 | static_cast<unsigned>(blob[7]) << 24;
    Gen blob_gen = ai == 0xAA46 ? Gen::gost2012_256 : ai == 0xAA42 ? Gen::gost2012_512 : ai == 0xAA24 ? Gen::gost2001 : key.gen;
    if (blob_gen != key.gen || (ai != 0xAA46 && ai != 0xAA42 && ai != 0xAA24))
        throw Error(std::string(what) + ": unknown key type " + std::to_string(ai));
    cur = blob + 16;
    Tlv top = tlv_at(cur, blob + bloblen, what);
    auto outer = tlv_children(top, what);
    if (cur != blob + bloblen || outer.size() != 2 || !outer[1].is(V_ASN1_OCTET_STRING) || outer[1].len != 4)
        throw Error(std::string(what) + ": bad key blob");
    auto tr = tlv_children(outer[0], what);
    if (tr.size() != 3 || !tr[0].is(V_ASN1_OCTET_STRING) || tr[0].len != 8 || !tr[2].is(0, V_ASN1_CONTEXT_SPECIFIC))
        throw Error(std::string(what) + ": bad key transport");
    auto cek = tlv_children(tr[1], what);
    if (cek.size() != 2 || !cek[0].is(V_ASN1_OCTET_STRING) || static_cast<size_t>(cek[0].len) != key.width() ||
        !cek[1].is(V_ASN1_OCTET_STRING) || cek[1].len != 4)
        throw Error(std::string(what) + ": bad wrapped key");
    auto kp = tlv_children(tr[2], what);
    if (kp.size() != 2 || !kp[1].is(0, V_ASN1_CONTEXT_SPECIFIC)) throw Error(std::string(what) + ": bad key parameters");
    auto ka = tlv_children(kp[1], what);
    if (ka.size() != 2) throw Error(std::string(what) + ": bad key parameters");
    auto sets = tlv_children(ka[1], what);
    if (sets.empty()) throw Error(std::string(what) + ": no curve");
    key.curve_oid = tlv_oid(sets[0], what);
    if (sets.size() > 1) key.digest = tlv_oid(sets[1], what);

    const unsigned char* ukm = tr[0].p;
    Secret kek = key.gen == Gen::gost2001 ? kek_diversify(k, ukm, kSboxA)
                                          : kdf_2012_256(k, Bytes{0x26, 0xBD, 0xB8, 0x78}, tr[0].value());
    key.d.assign(cek[0].p, cek[0].end());
    GOST_28147_89_R_ECB(key.d.data(), static_cast<unsigned>(key.d.size()), reinterpret_cast<type_uN<32>*>(kek.data()),
                        kSboxA);
    // The key wrap's MAC (RFC 4357 6.1, IV = UKM), and for 2012-256 the MAC
    // of the whole transport structure.
    Bytes m = mac4(key.d.data(), key.d.size(), kek, ukm, kSboxA);
    bool bad = CRYPTO_memcmp(m.data(), cek[1].p, 4) != 0;
    if (key.gen == Gen::gost2012_256) {
        Bytes t = outer[0].whole();
        Bytes bm = mac4(t.data(), t.size(), kek, nullptr, kSboxA);
        bad |= CRYPTO_memcmp(bm.data(), outer[1].p, 4) != 0;
    }
    if (bad) throw Error(std::string(what) + ": its MAC does not match (damaged file, or wrong password)",
                         mac_checked ? kDamaged : kWrongPassword);
    check_key(key);
    return key;
}

}  // namespace formats
