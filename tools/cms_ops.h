// CMS SignedData (RFC 5652) signing and checking for the korvex program, with
// GOST R 34.10-2001 (GOST R 34.11-94) and GOST R 34.10-2012 (GOST R
// 34.11-2012, 256 and 512 bits; RFC 7836 identifiers).
#ifndef KORVEX_TOOLS_CMS_OPS_H
#define KORVEX_TOOLS_CMS_OPS_H

#include <string>
#include <vector>

#include "cert_info.h"
#include "cli.h"

namespace cli {

struct CmsSignRequest {
    std::string content_path;          // "-" is stdin
    std::vector<std::string> attrs;    // OID:BASE64 items (signed)
    std::vector<std::string> uattrs;   // unsigned
    bool detached = false;
    bool include_cert = true;
};

// A SignedData message made with the private key d (little-endian, 32 or 64
// octets) whose certificate is cert. The algorithm comes from the
// certificate; key_sel, when not negative, is the curve the key file names
// and must be the certificate's. The key must belong to the certificate.
// Needs the generator seeded.
Bytes cms_sign(const Bytes& d, int key_sel, const Cert& cert, const CmsSignRequest& req);

struct CmsCheck {
    std::string signer;
    bool sig_ok = false;      // the signature verifies with the signer's key
    bool digest_ok = true;    // messageDigest attribute matches the content
    std::string cert_time;    // empty when the signer's certificate is in its validity period
    bool anchored = false;    // a trust anchor was given
    std::string chain_error;  // with an anchor: empty when the chain reaches it
    std::string chain_text;   // the trust anchor reached
    bool valid() const { return sig_ok && digest_ok && cert_time.empty() && chain_error.empty(); }
};
// cert/content_path override what the message carries (detached content, or
// a message without certificate); anchors are the trusted certificates.
// Throws Error(code 4) on unreadable messages.
CmsCheck cms_verify(const Bytes& msg, const Cert* cert, const std::string* content_path,
                    const std::vector<Cert>* anchors, long long now);

// Every certificate of a PEM bundle (or one DER certificate).
std::vector<Cert> read_cert_bundle(const std::string& path);

}  // namespace cli

#endif
