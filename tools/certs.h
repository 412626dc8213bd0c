// Certificates in the korvex program: loading (PEM or DER), names, and the
// self-signed GOST R 34.10-2001 certificate composer.
#ifndef KORVEX_TOOLS_CERTS_H
#define KORVEX_TOOLS_CERTS_H

#include <string>

#include "cli.h"
#include "keyfile.h"

namespace cli {

Bytes load_cert(const std::string& path);
// The printable attributes of the subject (or issuer) Name, "CN=..., O=...".
std::string subject_text(Bytes& cert, bool issuer = false);
// Parameter-set OID of a 256-bit curve selector as named by `curve`.
std::string paramset_oid(const Curve& c);

struct CertRequest {
    std::string subject = "CN=Korvex test";
    long days = 365;
    Bytes serial;  // big-endian; random when empty
};
// A self-signed X.509 v3 certificate for a GOST R 34.10-2001 key, signed with
// the library (GOST R 34.11-94 digest, RFC 4491 layout). Needs the generator
// seeded.
Bytes self_signed(const KeyPair& key, const CertRequest& req);

}  // namespace cli

#endif
