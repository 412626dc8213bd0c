// GOST R 34.10 private keys as PKCS#8 (RFC 5208, RFC 4491, RFC 9215), in the
// forms OpenSSL's GOST engine reads and writes, and the curves they name.
// A key's curve always comes from the file: nothing here guesses one.
#ifndef KORVEX_TOOLS_FORMATS_PKCS8_H
#define KORVEX_TOOLS_FORMATS_PKCS8_H

#include <string>

#include "formats/error.h"

namespace formats {

enum class Gen { gost2001, gost2012_256, gost2012_512 };

struct CurveInfo {
    const char* oid;
    const char* name;   // the program's short name (--curve)
    const char* title;  // for messages
    unsigned char sel;  // the library's curve selector
    bool is512;
    bool supported;
};
// The curve of a parameter-set OID; throws (exit 5) naming the curves the
// library lacks, and (exit 4) for unknown OIDs.
const CurveInfo& curve_by_oid(const std::string& oid);
// By short name or dotted OID; null when unknown. Unsupported curves are
// returned too (check .supported).
const CurveInfo* find_curve(const std::string& name_or_oid);

Gen gen_of_alg(const std::string& alg_oid);  // throws when not a GOST R 34.10 key
const char* sign_alg_oid(Gen g);             // 1.2.643.2.2.19, 1.2.643.7.1.1.1.1, 1.2.643.7.1.1.1.2
const char* digest_oid(Gen g);
const char* gen_name(Gen g);  // gost2001, gost2012_256, gost2012_512

struct PrivateKey {
    Gen gen = Gen::gost2001;
    std::string curve_oid;
    std::string digest;  // the digest parameter OID as found, or empty
    Secret d;            // little-endian, 32 or 64 bytes
    size_t width() const { return gen == Gen::gost2012_512 ? 64 : 32; }
    const CurveInfo& curve() const { return curve_by_oid(curve_oid); }
};

// Checks generation, curve and length.
void check_key(const PrivateKey& k);

// A DER PrivateKeyInfo. The private key may be the raw little-endian octets
// (what the engine writes), or DER inside them: an OCTET STRING (little-endian)
// or an INTEGER (big-endian, as other tools write).
PrivateKey pkcs8_decode(const unsigned char* der, size_t n);
// PEM ("PRIVATE KEY") or DER.
bool pkcs8_detect(const Bytes& file);
PrivateKey pkcs8_load(const Bytes& file);
// The engine's form: signature algorithm OID, {curve, digest}, raw octets.
Secret pkcs8_encode(const PrivateKey& k);
Secret pkcs8_pem(const PrivateKey& k);

// The public key d*G, x then y little-endian (64 or 128 bytes); throws for
// a zero key (the point at infinity).
Bytes public_key(const PrivateKey& k);

// The GOST public key of a DER certificate.
struct CertKey {
    Gen gen;
    std::string curve_oid;
    Bytes q;  // x then y, little-endian
};
CertKey cert_key(const Bytes& cert_der);
// Throws (exit 3: the key is not the certificate's) unless k's public key is the
// certificate's.
void check_against_cert(const PrivateKey& k, const Bytes& cert_der);

// PEM armour through libcrypto.
std::string pem_encode(const char* label, const Bytes& der);
// All blocks of one label, in order; empty when there is none.
std::vector<Bytes> pem_decode_all(const Bytes& text, const char* label);

}  // namespace formats

#endif
