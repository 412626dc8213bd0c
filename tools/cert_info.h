// X.509 certificates read by the program itself, with every element checked
// against its parent's bounds: v1 and v3 layouts, UTCTime and
// GeneralizedTime, names and extensions by name, the GOST public key of either
// generation, and the certificate's signature checked with the issuer's key.
#ifndef KORVEX_TOOLS_CERT_INFO_H
#define KORVEX_TOOLS_CERT_INFO_H

#include <string>
#include <vector>

#include "cli.h"
#include "der.h"
#include "gost_alg.h"

namespace cli {

struct Extension {
    std::string oid;
    bool critical = false;
    Bytes value;  // content of the extnValue OCTET STRING
};

struct Cert {
    Bytes der;         // the whole certificate
    Bytes tbs;         // tbsCertificate, header included (what is signed)
    int version = 1;
    Bytes serial;      // INTEGER element
    Bytes issuer, subject;  // Name elements
    long long not_before = 0, not_after = 0;  // seconds since 1970
    std::string sig_alg;
    Bytes sig;         // signatureValue without its unused-bits octet
    std::string key_alg, key_params;
    GostKey key;
    std::string key_error;  // why `key` is unusable, empty when it is usable
    std::vector<Extension> exts;

    bool self_issued() const { return issuer == subject; }
};

// Throws Error(4) when the certificate is not well formed.
Cert parse_cert(const Bytes& der);
Cert read_cert(const std::string& path);  // PEM or DER
// Every attribute of a Name, in order: "CN=..., O=..., INN=...".
std::string name_text(const Bytes& name);
std::string time_text(long long t);
// Does issuer's key verify c's signature? Empty when it does, else the reason.
std::string check_cert_signature(const Cert& c, const Cert& issuer);
// Human-readable description of an extension ("name: value").
std::string extension_text(const Extension& e);

}  // namespace cli

#endif
