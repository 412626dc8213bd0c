// Key container folders made by CryptoPro CSP 3.6 to 5 (header.key,
// primary.key, masks.key, the backup copy primary2.key and masks2.key,
// name.key), GOST R 34.10-2001 and 2012 keys of 256 and 512 bits. The
// generation and curve come from header.key; its MAC, the masks' MACs, the
// password check value and the public-key fingerprint are all checked, and a
// damaged first copy gives way to the backup copy.
#ifndef KORVEX_TOOLS_FORMATS_CSP_CONTAINER_H
#define KORVEX_TOOLS_FORMATS_CSP_CONTAINER_H

#include <string>

#include "formats/pkcs8.h"

namespace formats {

// True when DIR has a header.key that is not the library's own (a well-formed
// header without the public-key fingerprint): such folders are read here,
// the others by the library's container functions.
bool csp_folder(const std::string& dir);

struct CspHeader {
    Gen gen = Gen::gost2001;
    std::string alg_oid, curve_oid, digest_oid;
    std::string name;        // from name.key, else header.key; may be empty
    Bytes fingerprint;       // the first 8 bytes of the public key's x, little-endian
    Bytes hmac_password;     // the password check value; empty without a password
    Bytes cert;              // DER certificate in header.key, or empty
    std::string key_not_after;  // the private key's own end date (GeneralizedTime), or empty
};
// Reads and checks header.key (exit 4 naming it when damaged) and name.key.
CspHeader csp_header(const std::string& dir);

struct CspKey {
    PrivateKey key;
    Bytes cert;         // the certificate the key matched (cert, else header.key's), or empty
    std::string which;  // "primary" or "primary2"
    std::string note;   // why the first copy was passed over, or empty
};
// The private key, checked against the fingerprint and the certificate
// (`cert` when not empty, else header.key's). Wrong password: exit 3;
// damage: exit 4 naming the file; a certificate that is not the key's: exit 1.
CspKey csp_read(const std::string& dir, const std::string& password, const Bytes& cert);

}  // namespace formats

#endif
