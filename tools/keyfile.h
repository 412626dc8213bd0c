// The korvex key file: a small text file holding a GOST R 34.10 key pair in
// the library's byte order.
//
//   curve = A
//   private = <hex, little-endian d>       (absent in a public-key file)
//   public = <hex, x then y, little-endian>
#ifndef KORVEX_TOOLS_KEYFILE_H
#define KORVEX_TOOLS_KEYFILE_H

#include <string>

#include "cli.h"

namespace cli {

struct KeyPair {
    Curve curve;
    Bytes d;  // 32 or 64 bytes, empty for a public key
    Bytes q;  // 64 or 128 bytes
    size_t width() const { return curve.is512 ? 64 : 32; }
    ~KeyPair() { wipe(d); }
};

KeyPair read_key(const std::string& path);
std::string format_key(const KeyPair& k, bool with_private);
// A fresh key pair from the library's generator (seeded by the caller).
KeyPair generate_key(const Curve& c);
// The public key of d.
Bytes public_of(const Curve& c, Bytes& d);

}  // namespace cli

#endif
