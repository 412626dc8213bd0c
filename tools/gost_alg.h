// GOST algorithm choice for certificates and CMS in the korvex program: which
// generation a certificate's key belongs to (GOST R 34.10-2001, or -2012 with
// 256 or 512 bits), its curve, its digest, the identifiers that go with it,
// and signing/verifying a digest in the RFC 4490 / RFC 7091 byte layout
// (s then r, each big-endian) through the library.
#ifndef KORVEX_TOOLS_GOST_ALG_H
#define KORVEX_TOOLS_GOST_ALG_H

#include <string>

#include "cli.h"

namespace cli {

enum class Gen { g2001, g2012_256, g2012_512 };

struct GostKey {
    Gen gen = Gen::g2001;
    unsigned char sel = 1;  // the library's curve selector
    std::string curve;      // name for messages
    Bytes q;                // x then y, little-endian: 64 or 128 octets
};

size_t key_width(Gen g);                 // 32 or 64
const char* gen_name(Gen g);
const char* digest_oid(Gen g);           // GOST R 34.11-94 / 34.11-2012 (256, 512)
const char* key_oid(Gen g);              // public-key algorithm
const char* sig_with_digest_oid(Gen g);  // signature algorithm of certificates
// The generation of a public-key, signature or signature-with-digest OID;
// false for anything else.
bool gen_of_oid(const std::string& oid, Gen& g);
// Curve selector of a parameter-set OID for generation g; throws Error(5)
// naming the curve when the library does not have it.
unsigned char curve_of_oid(Gen g, const std::string& oid, std::string& name);

// Streaming digest of generation g (GOST R 34.11-94 for 2001).
class GenDigest {
public:
    explicit GenDigest(Gen g);
    void write(const unsigned char* p, size_t n);
    Bytes end();

private:
    Gen gen_;
    Bytes state_;
};
Bytes digest_of(Gen g, const unsigned char* p, size_t n);
Bytes digest_file(Gen g, const std::string& path);

// Signature over a digest, s || r big-endian (64 or 128 octets). d is the
// little-endian private key of key_width(g) octets; the generator must be
// seeded.
Bytes sign_digest(Gen g, unsigned char sel, const Bytes& d, const Bytes& digest);
bool verify_digest(const GostKey& k, const Bytes& digest, const Bytes& sig);
// The public key of d (little-endian x then y).
Bytes public_key_of(Gen g, unsigned char sel, const Bytes& d);

}  // namespace cli

#endif
