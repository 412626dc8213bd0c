#include "cms_ops.h"

#include <algorithm>

#include "CMS.h"
#include "GOST_34_11_94.h"
#include "certs.h"
#include "der.h"
#include "x_509.h"

namespace cli {

Bytes cms_sign(Bytes& content, KeyPair& k, Bytes& cert, std::string attrs, std::string uattrs, bool detached,
               bool include_cert) {
    if (x_509_get_open_key_parametrs_ds(cert.data()) != 1)
        throw Error("CMS signatures are made on the CryptoPro-A curve: the certificate's key is on another set");
    unsigned char* q = x_509_get_open_key(cert.data());
    if (k.curve.is512 || k.d.empty() || !q || k.q != Bytes(q, q + 64))
        throw Error("the key does not belong to the certificate");
    auto text = [](std::string& s) { return s.empty() ? nullptr : reinterpret_cast<unsigned char*>(s.data()); };
    if (CMS_check_SignedAttr(text(attrs), static_cast<unsigned>(attrs.size())))
        throw Error("--attr must not repeat contentType or messageDigest: they are added");
    unsigned bound = CMS_create_SignedAttr(text(attrs), static_cast<unsigned>(attrs.size()), text(uattrs),
                                           static_cast<unsigned>(uattrs.size()), nullptr, 0, nullptr);
    Bytes block(bound + 16);
    unsigned blen = CMS_create_SignedAttr(text(attrs), static_cast<unsigned>(attrs.size()), text(uattrs),
                                          static_cast<unsigned>(uattrs.size()), nullptr, 0, block.data());
    if (!blen || blen > bound) throw Error("bad attribute text (want OID:BASE64 of the DER value)");
    block.resize(blen);

    unsigned char* cp = content.empty() ? nullptr : content.data();
    unsigned clen = static_cast<unsigned>(content.size());
    unsigned r = CMS_sig_SignedAttr(block.data(), cp, clen, reinterpret_cast<type_uN<32>*>(k.d.data()));
    if (r == 1) throw Error("signing failed: the generator is not seeded");
    if (r != 0) throw Error("signing failed (code " + std::to_string(r) + ")");

    unsigned char* mc = detached ? nullptr : cp;
    unsigned mlen = detached ? 0 : clen;
    unsigned char inc = include_cert ? 1 : 0;
    unsigned size = CMS_SignedData_create(mc, mlen, block.data(), blen, cert.data(), inc, nullptr);
    if (!size) throw Error("the certificate cannot identify the signer (it needs a v3 layout)");
    Bytes msg(size);
    if (CMS_SignedData_create(mc, mlen, block.data(), blen, cert.data(), inc, msg.data()) != size)
        throw Error("message size changed between calls");
    return msg;
}

CmsCheck cms_verify(Bytes msg, const Bytes* cert_in, const Bytes* content_in) {
    if (msg.empty() || msg[0] != 0x30) throw Error("not a DER CMS message", 4);
    try {
        der::Elem outer = der::read(msg.data(), msg.data() + msg.size());  // outer length must fit
        msg.resize(outer.size());
    } catch (const Error& e) {
        throw Error(std::string("not a CMS message: ") + e.what(), 4);
    }
    cms_signed_data_t p = CMS_SignedData_parse(msg.data());
    if (p.status != 0) throw Error("not a SignedData message this library reads", 4);

    Bytes cert, content;
    if (cert_in) cert = *cert_in;
    else if (p.certificate) cert.assign(p.certificate, p.certificate + p.certificate_len);
    else throw Error("the message carries no certificate: name one with --cert", 4);
    if (content_in) content = *content_in;
    else if (p.content) content.assign(p.content, p.content + p.content_len);
    else throw Error("detached signature: name the content with --content", 4);

    CmsCheck c;
    c.signer = subject_text(cert);
    unsigned char* cp = content.empty() ? nullptr : content.data();
    c.code = CMS_SignedData_check(p.signed_attrs, nullptr, cp, static_cast<unsigned>(content.size()), cert.data(),
                                  reinterpret_cast<type_uN<64>*>(p.signature));
    if (c.code == 3) throw Error("the certificate holds no usable GOST R 34.10-2001 key", 4);
    if (c.code == 4) throw Error("no data to check", 4);
    // The signature covers the signed attributes; the content is bound to
    // them by the messageDigest attribute, checked here.
    if (p.signed_attrs) {
        unsigned char* md = CMS_SignedAttr_find_msg_digest_value_field(p.signed_attrs);
        Bytes h(32);
        GOST_34_11_94_hash(cp, static_cast<unsigned>(content.size()), nullptr, reinterpret_cast<type_uN<32>*>(h.data()));
        c.digest_ok = md && std::equal(h.begin(), h.end(), md);
    }
    return c;
}

}  // namespace cli
