// Key containers in the korvex program: PKCS#15 (both generations), the
// library's PKCS#12 container and CryptoPro container folders.
#ifndef KORVEX_TOOLS_CONTAINERS_H
#define KORVEX_TOOLS_CONTAINERS_H

#include <string>

#include "cli.h"
#include "keyfile.h"

namespace cli {

enum class Kind { keyfile, pkcs8, pfx, pkcs15, pkcs12, cryptopro, unknown };
Kind kind_of(const std::string& path);
// Refuses (exit 4) a file whose outer DER element does not fit it (exact:
// fills it); the library trusts that length.
void require_der(const Bytes& b, const std::string& what, bool exact);
const char* kind_name(Kind k);

// PKCS#15: the container stores the key and a 40-byte seed, not the curve;
// `curve` names it, and without it the read stops (512-bit curves and
// 2012-256 keys go into the 2012 generation).
Bytes pkcs15_make(const KeyPair& k, const std::string& pw, bool gen2012, unsigned short usage);
KeyPair pkcs15_read(Bytes& container, const std::string& pw, const Curve* curve);
// True when a 2001 container's AuthenticatedData seal holds under the
// password: the digest of the token and the HMAC of its attributes. The
// library's 2001 reader does not check them.
bool pkcs15_2001_sealed(const Bytes& container, const std::string& pw);
// Fresh salts, IVs and keys around the same private key, in place.
void pkcs15_renew(Bytes& container, const std::string& pw);

// PKCS#12 (the library's 372-byte container); the curve name and the
// generation travel in its 40-byte auxiliary block.
Bytes pkcs12_make(const KeyPair& k, const std::string& pw);
KeyPair pkcs12_read(Bytes& container, const std::string& pw, const Curve* curve);

// CryptoPro container folder: header.key, primary.key, masks.key and
// optionally primary2.key, masks2.key.
struct CryptoProKey {
    KeyPair key;
    Bytes cert;
    std::string which;  // "primary" or "primary2"
    std::string note;   // why the first copy was passed over, or empty
};
// Folders made by CryptoPro CSP (their header.key says so) are read by
// tools/formats/csp_container, any length of password; the others in the
// library's own format, passwords of at most 12 characters.
CryptoProKey cryptopro_read(const std::string& dir, const std::string& cert_path, const std::string& pw);
// The key as PKCS#8 PEM to key_out ("-": standard output) and, when
// cert_out is not empty, the certificate as PEM; on a failure nothing is
// left behind.
void write_key_and_cert(const KeyPair& k, const Bytes& cert, const std::string& key_out, const std::string& cert_out,
                        const std::string& source);
// Generation, curve, name, certificate: no password needed.
void cryptopro_info(const std::string& dir);
void cryptopro_update(const std::string& dir, const std::string& cert_path, const std::string& pw);

// Any private-key source: PKCS#8 (PEM or DER), a korvex key file, a PFX or
// one of the containers (asking for the password when it needs one). `a`
// gives --pass/--pass-file, --curve and --cert. The curve comes from the
// file, else from --curve or the certificate of --cert; when none says it
// the program stops. A key read with --cert is checked against it.
KeyPair load_private_key(const std::string& path, const Args& a);
// Checks k against the certificate (exit 3 on mismatch, as cli.h says;
// curve conflicts exit 2); with take_gen, a 256-bit key (from a container that does
// not record its generation) takes the certificate's.
void match_cert(KeyPair& k, const Bytes& cert, bool take_gen);

}  // namespace cli

#endif
