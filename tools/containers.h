// Key containers in the korvex program: PKCS#15 (both generations), the
// library's PKCS#12 container and CryptoPro container folders.
#ifndef KORVEX_TOOLS_CONTAINERS_H
#define KORVEX_TOOLS_CONTAINERS_H

#include <string>

#include "cli.h"
#include "keyfile.h"

namespace cli {

enum class Kind { keyfile, pkcs15, pkcs12, cryptopro, unknown };
Kind kind_of(const std::string& path);
// Refuses (exit 4) a file whose outer DER element does not fit it (exact:
// fills it); the library trusts that length.
void require_der(const Bytes& b, const std::string& what, bool exact);
const char* kind_name(Kind k);

// PKCS#15: the container stores the key and a 40-byte seed, not the curve;
// `curve` names it (512-bit curves need the 2012 generation).
Bytes pkcs15_make(const KeyPair& k, const std::string& pw, bool gen2012, unsigned short usage);
KeyPair pkcs15_read(Bytes& container, const std::string& pw, const Curve* curve);
// Fresh salts, IVs and keys around the same private key, in place.
void pkcs15_renew(Bytes& container, const std::string& pw);

// PKCS#12 (the library's 372-byte container); the curve name travels in its
// 40-byte auxiliary block.
Bytes pkcs12_make(const KeyPair& k, const std::string& pw);
KeyPair pkcs12_read(Bytes& container, const std::string& pw, const Curve* curve);

// CryptoPro container folder: header.key, primary.key, masks.key and
// optionally primary2.key, masks2.key.
struct CryptoProKey {
    KeyPair key;
    Bytes cert;
    std::string which;  // "primary" or "primary2"
};
CryptoProKey cryptopro_read(const std::string& dir, const std::string& cert_path, const std::string& pw);
void cryptopro_update(const std::string& dir, const std::string& cert_path, const std::string& pw);

// Any private-key source: a korvex key file or one of the containers (asking
// for the password when it needs one). `a` gives --pass/--pass-file, --curve
// and --cert.
KeyPair load_private_key(const std::string& path, const Args& a);

}  // namespace cli

#endif
