// Writers of the fixed PKCS#12 layout and the two structure checks.
#include "pkcs12.h"

#include "containers/pkcs12_fields.h"
#include "encoding/bytes.h"

namespace {
using namespace kx::p12;

// Suffix pairs shared by several OIDs of the container.
constexpr unsigned char kSufCipherParams[2] = {0x1F, 0x00};  // 1.2.643.2.2.31.0
constexpr unsigned char kSufHashParams[2] = {0x1E, 0x00};    // 1.2.643.2.2.30.0
constexpr unsigned char kSufCurveA[2] = {0x23, 0x01};        // 1.2.643.2.2.35.1
constexpr unsigned char kSufBagTypes[2] = {0x0C, 0x03};      // 1.2.840.113549.1.12.3

// ---- writing ----

void put(unsigned char*& p, unsigned char b) { *p++ = b; }

void put_bytes(unsigned char*& p, const unsigned char* src, unsigned n) {
    kx::copy(p, src, n);
    p += n;
}

void put_header(unsigned char*& p, unsigned char tag, unsigned short len) {
    put(p, tag);
    pkcs12_ber_code(&p, len);
}

// 06 09 1.2.840.113549.1.a.b
void put_rsa_oid(unsigned char*& p, unsigned char a, unsigned char b) {
    put_header(p, 0x06, 9);
    put_bytes(p, kStemRsa, sizeof kStemRsa);
    put(p, a);
    put(p, b);
}

// 06 06 1.2.643.2.2.a
void put_cp_oid(unsigned char*& p, unsigned char a) {
    put_header(p, 0x06, 6);
    put_bytes(p, kStemCp, sizeof kStemCp);
    put(p, a);
}

// 06 07 1.2.643.2.2.a.b
void put_cp_oid2(unsigned char*& p, const unsigned char* suffix) {
    put_header(p, 0x06, 7);
    put_bytes(p, kStemCp, sizeof kStemCp);
    put_bytes(p, suffix, 2);
}

// 06 0A 1.2.840.113549.1.12.3.n: the bag types of the early PKCS#12 drafts.
void put_bag_oid(unsigned char*& p, unsigned char n) {
    put_header(p, 0x06, 10);
    put_bytes(p, kStemRsa, sizeof kStemRsa);
    put_bytes(p, kSufBagTypes, 2);
    put(p, n);
}

void put_octets(unsigned char*& p, const unsigned char* src, unsigned short n) {
    put_header(p, 0x04, n);
    put_bytes(p, src, n);
}

void put_small_int(unsigned char*& p, unsigned char v) {
    put_header(p, 0x02, 1);
    put(p, v);
}

// ---- checking ----

// A forward reader over [p, end): every step is checked against end.
struct Cursor {
    unsigned char* p;
    const unsigned char* end;
};

// Lengths here never take more than the three octets pkcs12_ber_code writes.
constexpr unsigned kMaxLengthOctets = 3;

// Reads the length octets at c.p; false when they do not end within bounds.
bool read_length(Cursor& c, unsigned& len) {
    if (c.p >= c.end) return false;
    unsigned room = static_cast<unsigned>(c.end - c.p);
    unsigned n = number_octets(c.p, room < kMaxLengthOctets ? room : kMaxLengthOctets);
    if (n == 0) return false;
    len = number_value(c.p, n);
    c.p += n;
    return true;
}

// Tag check and step into the element (past tag and length).
bool enter(Cursor& c, unsigned char tag, unsigned* len = nullptr) {
    if (c.p >= c.end || *c.p != tag) return false;
    ++c.p;
    unsigned l;
    if (!read_length(c, l)) return false;
    if (len) *len = l;
    return true;
}

// Tag check and step over the whole element.
bool skip(Cursor& c, unsigned char tag) {
    unsigned len;
    if (!enter(c, tag, &len)) return false;
    if (len > static_cast<unsigned>(c.end - c.p)) return false;
    c.p += len;
    return true;
}

// Exact octets (a whole small element with its tag and length).
bool exact(Cursor& c, const unsigned char* want, unsigned n) {
    if (static_cast<unsigned>(c.end - c.p) < n || !kx::equal(c.p, want, n)) return false;
    c.p += n;
    return true;
}

bool exact_rsa_oid(Cursor& c, unsigned char a, unsigned char b) {
    unsigned char want[11] = {0x06, 0x09};
    kx::copy(want + 2, kStemRsa, sizeof kStemRsa);
    want[9] = a;
    want[10] = b;
    return exact(c, want, sizeof want);
}

// An OID element: a wrong tag is 5, a wrong length or content is 4.
unsigned char check_oid(Cursor& c, const unsigned char* stem, unsigned stem_len, const unsigned char* suffix,
                        unsigned suffix_len) {
    unsigned len;
    if (!enter(c, 0x06, &len)) return 5;
    if (len != stem_len + suffix_len || static_cast<unsigned>(c.end - c.p) < len) return 4;
    if (!kx::equal(c.p, stem, stem_len) || !kx::equal(c.p + stem_len, suffix, suffix_len)) return 4;
    c.p += len;
    return 0;
}

}  // namespace

KORVEX_API unsigned char pkcs12_create_auth_safe_hdr(unsigned char** pp, unsigned char* iv8, unsigned char* salt4) {
    unsigned char*& p = *pp;
    put_header(p, 0x30, 279);             // AuthenticatedSafe
    put_header(p, 0x30, 276);             // ContentInfo
    put_rsa_oid(p, 0x07, 0x06);           // encryptedData
    put_header(p, 0x30, 262);             // EncryptedData
    put_small_int(p, 0);
    put_header(p, 0x30, 256);             // EncryptedContentInfo
    put_rsa_oid(p, 0x07, 0x01);           // data
    put_header(p, 0x30, 88);              // contentEncryptionAlgorithm
    put_rsa_oid(p, 0x05, 0x0D);           // PBES2
    put_header(p, 0x30, 75);
    put_header(p, 0x30, 42);              // keyDerivationFunc
    put_rsa_oid(p, 0x05, 0x0C);           // PBKDF2
    put_header(p, 0x30, 29);
    put_octets(p, salt4, 4);
    put_header(p, 0x02, pkcs12_ber_code(nullptr, kIterations));
    pkcs12_ber_code(&p, kIterations);
    put_header(p, 0x30, 17);              // prf
    put_cp_oid(p, 0x0A);                  // HMAC GOST R 34.11-94
    put_cp_oid2(p, kSufHashParams);
    put_header(p, 0x30, 29);              // encryptionScheme
    put_cp_oid(p, 0x15);                  // GOST 28147-89
    put_header(p, 0x30, 19);
    put_octets(p, iv8, 8);
    put_cp_oid2(p, kSufCipherParams);
    put(p, 0x04);                         // encryptedContent
    return pkcs12_ber_code(&p, kPlainLen);
}

KORVEX_API void pkcs12_create_safe_contents(unsigned char** pp, type_uN<32>* private_key, unsigned char* aux40) {
    unsigned char*& p = *pp;
    put_header(p, 0x30, 144);             // SafeContents
    put_header(p, 0x30, 81);              // key bag
    put_bag_oid(p, 0x01);
    put_header(p, 0x30, 67);              // PrivateKeyInfo
    put_small_int(p, 0);
    put_header(p, 0x30, 28);
    put_cp_oid(p, 0x13);                  // GOST R 34.10-2001
    put_header(p, 0x30, 18);
    put_cp_oid2(p, kSufCurveA);
    put_header(p, 0x06, 7);               // 1.2.643.2.2.30.1
    put_bytes(p, kStemCp, sizeof kStemCp);
    put(p, 0x1E);
    put(p, 0x01);
    put_octets(p, private_key->b, 32);
    put_header(p, 0x30, 59);              // second bag
    put_bag_oid(p, 0x05);
    put_header(p, 0x30, 45);
    put_small_int(p, 0);
    put_octets(p, aux40, kAuxLen);
    for (int i = 0; i < 5; ++i) put(p, 0x05);  // padding to 152 octets
}

KORVEX_API unsigned char pkcs12_check_header(unsigned char** pp) {
    static constexpr unsigned char kVersion3[3] = {0x02, 0x01, 0x03};
    static constexpr unsigned char kVersion0[3] = {0x02, 0x01, 0x00};
    Cursor c{*pp, *pp + kSize};
    bool ok = enter(c, 0x30) && exact(c, kVersion3, 3) && enter(c, 0x30) && exact_rsa_oid(c, 0x07, 0x01) &&
              enter(c, 0x04) && enter(c, 0x30) && enter(c, 0x30) && exact_rsa_oid(c, 0x07, 0x06) &&
              enter(c, 0x30) && exact(c, kVersion0, 3) && enter(c, 0x30) && exact_rsa_oid(c, 0x07, 0x01);
    if (!ok) return 5;
    *pp = c.p;
    return 0;
}

KORVEX_API unsigned char pkcs12_check_algorithm(unsigned char* p) {
    static constexpr unsigned char kPbes2[2] = {0x05, 0x0D};
    static constexpr unsigned char kPbkdf2[2] = {0x05, 0x0C};
    static constexpr unsigned char kHmac94[1] = {0x0A};
    static constexpr unsigned char kGost89[1] = {0x15};
    // The identifier sits at offset 60 of a 372-byte container: it cannot
    // extend further than that, whatever its length octets claim.
    Cursor c{p, p + (kSize - 60)};
    unsigned len;
    if (!enter(c, 0x30, &len)) return 5;
    if (len < static_cast<unsigned>(c.end - c.p)) c.end = c.p + len;
    unsigned char r;
    if ((r = check_oid(c, kStemRsa, 7, kPbes2, 2))) return r;
    if (!enter(c, 0x30) || !enter(c, 0x30)) return 5;
    if ((r = check_oid(c, kStemRsa, 7, kPbkdf2, 2))) return r;
    if (!enter(c, 0x30) || !skip(c, 0x04) || !skip(c, 0x02)) return 5;
    if (c.p < c.end && *c.p == 0x02 && !skip(c, 0x02)) return 5;  // optional keyLength
    if (!enter(c, 0x30)) return 5;
    if ((r = check_oid(c, kStemCp, 5, kHmac94, 1))) return r;
    if ((r = check_oid(c, kStemCp, 5, kSufHashParams, 2))) return r;
    if (!enter(c, 0x30)) return 5;
    if ((r = check_oid(c, kStemCp, 5, kGost89, 1))) return r;
    if (!enter(c, 0x30) || !skip(c, 0x04)) return 5;
    return check_oid(c, kStemCp, 5, kSufCipherParams, 2);
}
