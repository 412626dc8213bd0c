// GOST R 34.10 key pairs in the korvex program. Private keys are written as
// PKCS#8 PEM (the form OpenSSL's GOST engine reads); PKCS#8 PEM or DER and
// the older korvex key files are read. A key file is a small text file in
// the library's byte order:
//
//   curve = A
//   algorithm = gost2012_256               (absent: gost2001, or 2012 for 512-bit curves)
//   private = <hex, little-endian d>       (absent in a public-key file)
//   public = <hex, x then y, little-endian>
#ifndef KORVEX_TOOLS_KEYFILE_H
#define KORVEX_TOOLS_KEYFILE_H

#include <string>

#include "cli.h"
#include "formats/pkcs8.h"

namespace cli {

struct KeyPair {
    Curve curve;
    formats::Gen gen = formats::Gen::gost2001;  // 2001, 2012-256 or 2012-512
    Bytes d;  // 32 or 64 bytes, empty for a public key
    Bytes q;  // 64 or 128 bytes
    size_t width() const { return curve.is512 ? 64 : 32; }
    bool is2012() const { return gen != formats::Gen::gost2001; }
    ~KeyPair() { wipe(d); }
};

// The generation of a key on curve c: 512-bit curves are always 2012.
formats::Gen gen_for(const Curve& c, bool is2012);
// "gost2001", "gost2012_256", "gost2012_512"
formats::Gen gen_by_name(const std::string& n, const Curve& c);

// A korvex key file, or a PKCS#8 private key (PEM or DER).
KeyPair read_key(const std::string& path);
KeyPair from_pkcs8(const formats::PrivateKey& p);
formats::PrivateKey to_pkcs8(const KeyPair& k);
// The private key as PKCS#8 PEM.
std::string private_pem(const KeyPair& k);
// The key file text; with_private only for the older tools' sake.
std::string format_key(const KeyPair& k, bool with_private);
// A fresh key pair from the library's generator (seeded by the caller).
KeyPair generate_key(const Curve& c, bool is2012 = false);
// The public key of d.
Bytes public_of(const Curve& c, Bytes& d);

}  // namespace cli

#endif
