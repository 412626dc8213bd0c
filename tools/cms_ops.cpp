#include "cms_ops.h"

#include <algorithm>
#include <ctime>

#include "CMS.h"
#include "der.h"

namespace cli {

namespace {

const char* kSignedData = "1.2.840.113549.1.7.2";
const char* kData = "1.2.840.113549.1.7.1";
const char* kContentType = "1.2.840.113549.1.9.3";
const char* kMessageDigest = "1.2.840.113549.1.9.4";
const char* kSigningTime = "1.2.840.113549.1.9.5";

Bytes b64_decode(const std::string& s) { return pem_decode("-----BEGIN A-----\n" + s + "\n-----END A-----", "A"); }

// An Attribute from "OID:BASE64" (the Base64 of the DER value).
Bytes attribute(const std::string& item) {
    auto colon = item.find(':');
    if (colon == std::string::npos || colon == 0) throw Error("bad attribute '" + item + "' (want OID:BASE64)", 2);
    Bytes v = b64_decode(item.substr(colon + 1));
    try {
        der::Elem e = der::read(v.data(), v.data() + v.size());
        if (e.size() != v.size()) throw Error("trailing bytes");
    } catch (const Error&) {
        throw Error("attribute " + item.substr(0, colon) + ": the value is not one DER element", 2);
    }
    return der::seq({der::oid(item.substr(0, colon)), der::set({v})});
}

std::string attr_oid(const Bytes& a) {
    der::Elem e = der::read(a.data(), a.data() + a.size());
    return der::oid_text(der::children(e).at(0));
}

// DER SET OF order: by the encodings, as octet strings.
Bytes sorted_set(unsigned char tag, std::vector<Bytes> items) {
    std::sort(items.begin(), items.end());
    return der::tlv(tag, der::cat(items));
}

Bytes signing_time(long long now) {
    std::time_t t = static_cast<std::time_t>(now);
    std::tm tm{};
    gmtime_r(&t, &tm);
    if (tm.tm_year + 1900 < 2050) return der::utc_time(now);
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y%m%d%H%M%SZ", &tm);
    return der::tlv(0x18, Bytes(buf, buf + 15));
}

// The library's own message: GOST R 34.10-2001 on CryptoPro-A with a v3
// certificate, as the program has always made it.
Bytes library_sign(const Bytes& d, const Cert& cert, const CmsSignRequest& req) {
    std::string attrs, uattrs;
    for (auto& s : req.attrs) attrs += (attrs.empty() ? "" : "&") + s;
    for (auto& s : req.uattrs) uattrs += (uattrs.empty() ? "" : "&") + s;
    auto text = [](std::string& s) { return s.empty() ? nullptr : reinterpret_cast<unsigned char*>(s.data()); };
    auto len = [](std::string& s) { return static_cast<unsigned>(s.size()); };
    if (CMS_check_SignedAttr(text(attrs), len(attrs)))
        throw Error("--attr must not repeat contentType or messageDigest: they are added", 2);
    unsigned bound = CMS_create_SignedAttr(text(attrs), len(attrs), text(uattrs), len(uattrs), nullptr, 0, nullptr);
    Bytes block(bound + 16);
    unsigned blen = CMS_create_SignedAttr(text(attrs), len(attrs), text(uattrs), len(uattrs), nullptr, 0, block.data());
    if (!blen || blen > bound) throw Error("bad attribute text (want OID:BASE64 of the DER value)", 2);
    block.resize(blen);

    Bytes content, key = d;
    if (!req.detached) content = read_file(req.content_path);
    Bytes digest = req.detached ? digest_file(Gen::g2001, req.content_path)
                                : digest_of(Gen::g2001, content.data(), content.size());
    unsigned r = CMS_sig_SignedAttr_hash(block.data(), reinterpret_cast<type_uN<32>*>(digest.data()),
                                         reinterpret_cast<type_uN<32>*>(key.data()));
    wipe(key);
    if (r == 1) throw Error("signing failed: the generator is not seeded");
    if (r != 0) throw Error("signing failed (code " + std::to_string(r) + ")");
    Bytes c = cert.der;
    unsigned char* mc = content.empty() ? nullptr : content.data();
    auto mlen = static_cast<unsigned>(content.size());
    unsigned char inc = req.include_cert ? 1 : 0;
    unsigned size = CMS_SignedData_create(mc, mlen, block.data(), blen, c.data(), inc, nullptr);
    if (!size) throw Error("the certificate cannot identify the signer");
    Bytes msg(size);
    if (CMS_SignedData_create(mc, mlen, block.data(), blen, c.data(), inc, msg.data()) != size)
        throw Error("message size changed between calls");
    return msg;
}

}  // namespace

Bytes cms_sign(const Bytes& d, int key_sel, const Cert& cert, const CmsSignRequest& req) {
    if (!cert.key_error.empty()) throw Error("the certificate's key cannot sign: " + cert.key_error, 5);
    Gen g = cert.key.gen;
    if (d.size() != key_width(g))
        throw Error("the key does not belong to the certificate: a " + std::to_string(8 * d.size()) +
                        "-bit key for a " + gen_name(g) + " certificate",
                    kExitUsage);
    if (key_sel >= 0 && key_sel != cert.key.sel)
        throw Error("the key is on another curve than the certificate's (" + cert.key.curve + ")", kExitUsage);
    if (public_key_of(g, cert.key.sel, d) != cert.key.q) throw Error("the key does not belong to the certificate", kExitPassword);
    if (g == Gen::g2001 && cert.key.sel == 1 && cert.version == 3) return library_sign(d, cert, req);

    // Built here: GOST R 34.10-2012, and 2001 on other curves or v1 certificates.
    std::vector<Bytes> signed_attrs;
    for (auto& s : req.attrs) {
        signed_attrs.push_back(attribute(s));
        std::string o = attr_oid(signed_attrs.back());
        if (o == kContentType || o == kMessageDigest || o == kSigningTime)
            throw Error("--attr must not repeat contentType, messageDigest or signingTime: they are added", 2);
    }
    Bytes content;
    if (!req.detached) content = read_file(req.content_path);
    Bytes md = req.detached ? digest_file(g, req.content_path) : digest_of(g, content.data(), content.size());
    signed_attrs.push_back(der::seq({der::oid(kContentType), der::set({der::oid(kData)})}));
    signed_attrs.push_back(der::seq({der::oid(kSigningTime), der::set({signing_time(std::time(nullptr))})}));
    signed_attrs.push_back(der::seq({der::oid(kMessageDigest), der::set({der::octets(md)})}));
    Bytes attrs = sorted_set(0x31, signed_attrs);
    Bytes sig = sign_digest(g, cert.key.sel, d, digest_of(g, attrs.data(), attrs.size()));
    attrs[0] = 0xA0;  // [0] IMPLICIT in the SignerInfo

    Bytes digest_alg = der::seq({der::oid(digest_oid(g))});
    std::vector<Bytes> si{der::integer(1), der::seq({cert.issuer, cert.serial}), digest_alg, attrs,
                          der::seq({der::oid(key_oid(g))}), der::octets(sig)};
    if (!req.uattrs.empty()) {
        std::vector<Bytes> u;
        for (auto& s : req.uattrs) u.push_back(attribute(s));
        si.push_back(sorted_set(0xA1, u));
    }
    Bytes encap = req.detached ? der::seq({der::oid(kData)})
                               : der::seq({der::oid(kData), der::tlv(0xA0, der::octets(content))});
    std::vector<Bytes> sd{der::integer(1), der::set({digest_alg}), encap};
    if (req.include_cert) sd.push_back(der::tlv(0xA0, cert.der));
    sd.push_back(der::set({der::seq(si)}));
    return der::seq({der::oid(kSignedData), der::tlv(0xA0, der::seq(sd))});
}

namespace {

// Does c carry the signer identifier sid (IssuerAndSerialNumber or [0]
// SubjectKeyIdentifier)?
bool identifies(const der::Elem& sid, const Cert& c) {
    if (sid.tag == 0x30) {
        auto f = der::children(sid);
        return f.size() == 2 && f[0].bytes() == c.issuer && f[1].bytes() == c.serial;
    }
    if (sid.tag == 0x80)
        for (const Extension& e : c.exts)
            if (e.oid == "2.5.29.14" && e.value.size() == sid.len + 2 && std::equal(e.value.begin() + 2, e.value.end(), sid.content()))
                return true;
    return false;
}

std::string period_text(const Cert& c, long long now) {
    if (now < c.not_before) return "not valid before " + time_text(c.not_before);
    if (now > c.not_after) return "expired on " + time_text(c.not_after);
    return "";
}

// Walks from the signer up to one of the anchors through the message's
// certificates, checking every signature and validity period.
std::string chain_to_anchor(const Cert& signer, const std::vector<Cert>& pool, const std::vector<Cert>& anchors,
                            long long now, std::string& text) {
    const Cert* cur = &signer;
    text = name_text(signer.subject);
    for (int depth = 0; depth < 10; ++depth) {
        for (const Cert& a : anchors)
            if (a.der == cur->der) return "";
        const Cert* up = nullptr;
        std::string why = "no issuer certificate for " + name_text(cur->issuer);
        for (const std::vector<Cert>* list : {&anchors, &pool})
            for (const Cert& c : *list) {
                if (up || c.subject != cur->issuer || &c == cur || c.der == cur->der) continue;
                std::string e = check_cert_signature(*cur, c);
                if (e.empty()) up = &c;
                else why = name_text(cur->subject) + ": " + e;
            }
        if (!up) return why;
        std::string t = period_text(*up, now);
        if (!t.empty()) return name_text(up->subject) + ": " + t;
        text = name_text(up->subject);
        cur = up;
    }
    return "the chain is too long";
}

}  // namespace

std::vector<Cert> read_cert_bundle(const std::string& path) {
    std::string text = read_text(path, kBundleFile);
    std::vector<Cert> out;
    const std::string begin = "-----BEGIN CERTIFICATE-----";
    for (size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1))
        out.push_back(parse_cert(pem_decode(text.substr(at), "CERTIFICATE")));
    if (out.empty()) out.push_back(read_cert(path));
    return out;
}

CmsCheck cms_verify(const Bytes& msg, const Cert* cert_in, const std::string* content_path,
                    const std::vector<Cert>* anchors, long long now) {
    CmsCheck c;
    der::Elem sid, digest_alg, sig_alg, signature, encap_content;
    const der::Elem* attrs = nullptr;
    der::Elem attrs_e;
    std::string econtent_type;
    bool has_content = false;
    std::vector<Cert> pool;
    try {
        der::Elem ci = der::read(msg.data(), msg.data() + msg.size());
        auto top = der::children(ci);
        if (ci.tag != 0x30 || top.size() != 2 || top[0].tag != 0x06 || der::oid_text(top[0]) != kSignedData ||
            top[1].tag != 0xA0)
            throw Error("not a CMS SignedData message");
        auto sd = der::children(der::children(top[1]).at(0));
        size_t i = 1;  // version
        if (sd.at(i++).tag != 0x31) throw Error("no digest algorithms");
        auto encap = der::children(sd.at(i++));
        econtent_type = der::oid_text(encap.at(0));
        if (encap.size() > 1) {
            auto inner = der::children(encap[1]);
            if (inner.size() != 1 || inner[0].tag != 0x04)
                throw Error("the content is not one OCTET STRING (BER or constructed content is not read)");
            encap_content = inner[0];
            has_content = true;
        }
        if (sd.at(i).tag == 0xA0) {
            for (const der::Elem& e : der::children(sd[i]))
                if (e.tag == 0x30) pool.push_back(parse_cert(e.bytes()));
            ++i;
        }
        if (sd.at(i).tag == 0xA1) ++i;
        auto signers = der::children(sd.at(i));
        if (signers.empty()) throw Error("no signer");
        auto si = der::children(signers[0]);
        size_t j = 1;
        sid = si.at(j++);
        digest_alg = si.at(j++);
        if (si.at(j).tag == 0xA0) {
            attrs_e = si[j++];
            attrs = &attrs_e;
        }
        sig_alg = si.at(j++);
        signature = si.at(j++);
        if (signature.tag != 0x04) throw Error("the signature is not an OCTET STRING");
    } catch (const std::out_of_range&) {
        throw Error("not a CMS SignedData message: an element is missing", 4);
    } catch (const Error& e) {
        throw Error(std::string("not a CMS SignedData message: ") + e.what(), 4);
    }

    const Cert* signer = cert_in;
    if (!signer)
        for (const Cert& p : pool)
            if (!signer && identifies(sid, p)) signer = &p;
    if (!signer) throw Error("the message carries no certificate of its signer: name one with --cert", 4);
    if (!identifies(sid, *signer)) throw Error("the certificate given is not the message's signer", 4);
    if (!signer->key_error.empty()) throw Error("the signer's certificate has no usable key: " + signer->key_error, 4);
    c.signer = name_text(signer->subject);
    Gen g = signer->key.gen, gs;
    std::string dalg = der::oid_text(der::children(digest_alg).at(0));
    std::string salg = der::oid_text(der::children(sig_alg).at(0));
    if (dalg != digest_oid(g) || !gen_of_oid(salg, gs) || gs != g)
        throw Error("the message's algorithms (" + dalg + ", " + salg + ") do not fit the signer's " + gen_name(g) +
                        " key",
                    4);

    Bytes md;
    if (content_path) md = digest_file(g, *content_path);
    else if (has_content) md = digest_of(g, encap_content.content(), encap_content.len);
    else throw Error("detached signature: name the content with --content", 4);

    Bytes signed_digest = md;
    if (attrs) {
        Bytes set = attrs->bytes();
        set[0] = 0x31;  // signed as a SET OF
        signed_digest = digest_of(g, set.data(), set.size());
        bool found = false;
        for (const der::Elem& a : der::children(*attrs)) {
            auto f = der::children(a);
            if (f.size() != 2 || f[0].tag != 0x06 || f[1].tag != 0x31) throw Error("bad signed attribute", 4);
            auto v = der::children(f[1]);
            std::string o = der::oid_text(f[0]);
            if (o == kMessageDigest) {
                found = true;
                c.digest_ok = v.size() == 1 && v[0].tag == 0x04 && v[0].value() == md;
            } else if (o == kContentType && (v.size() != 1 || der::oid_text(v[0]) != econtent_type)) {
                c.digest_ok = false;
            }
        }
        if (!found) c.digest_ok = false;
    }
    c.sig_ok = verify_digest(signer->key, signed_digest, signature.value());

    c.cert_time = period_text(*signer, now);
    if (anchors) {
        c.anchored = true;
        c.chain_error = chain_to_anchor(*signer, pool, *anchors, now, c.chain_text);
    } else if (signer->self_issued()) {
        std::string e = check_cert_signature(*signer, *signer);
        if (!e.empty()) c.chain_error = "the self-signed certificate is damaged (" + e + ")";
    }
    return c;
}

}  // namespace cli
