// Structure checks of the PKCS#12 container: the fixed header and the
// PBES2 AlgorithmIdentifier. Every step stays inside the container.
#include "pkcs12.h"

#include "containers/pkcs12_fields.h"
#include "core/bytes.h"
#include "encoding/der.h"

namespace {
using namespace kx;
using namespace kx::p12;

// A forward reader over [p, end) in the container's length form: every step
// is checked against end, but entering an element keeps the outer end (the
// checks step over SEQUENCE lengths, they do not compare them).
struct Cursor {
    unsigned char* p;
    const unsigned char* end;
};

// Tag check and step into the element (past tag and length).
bool enter(Cursor& c, unsigned char tag, unsigned* len = nullptr) {
    if (c.p >= c.end || *c.p != tag) return false;
    uint32_t l = 0;
    unsigned n = BerLength::read(c.p + 1, static_cast<size_t>(c.end - c.p - 1), l);
    if (n == 0) return false;
    c.p += 1 + n;
    if (len) *len = l;
    return true;
}

// Tag check and step over the whole element, which must end within bounds.
bool skip(Cursor& c, unsigned char tag) {
    Der e;
    if (c.p >= c.end || *c.p != tag || !element_at<BerLength>(c.p, c.end, e)) return false;
    c.p = e.end;
    return true;
}

// Exact octets (a whole small element with its tag and length).
bool exact(Cursor& c, const unsigned char* want, unsigned n) {
    if (static_cast<unsigned>(c.end - c.p) < n || !kx::equal(c.p, want, n)) return false;
    c.p += n;
    return true;
}

bool exact_rsa_oid(Cursor& c, unsigned char a, unsigned char b) {
    unsigned char want[11] = {kTagOid, 0x09};
    kx::copy(want + 2, kStemRsa, sizeof kStemRsa);
    want[9] = a;
    want[10] = b;
    return exact(c, want, sizeof want);
}

// An OID element: a wrong tag is 5, a wrong length or content is 4.
unsigned char check_oid(Cursor& c, const unsigned char* stem, unsigned stem_len, const unsigned char* suffix,
                        unsigned suffix_len) {
    if (c.p >= c.end || *c.p != kTagOid) return 5;
    unsigned len;
    if (!enter(c, kTagOid, &len) || len != stem_len + suffix_len || static_cast<unsigned>(c.end - c.p) < len) return 4;
    if (!kx::equal(c.p, stem, stem_len) || !kx::equal(c.p + stem_len, suffix, suffix_len)) return 4;
    c.p += len;
    return 0;
}

}  // namespace

KORVEX_API unsigned char pkcs12_check_header(unsigned char** pp) {
    static constexpr unsigned char kVersion3[3] = {kTagInt, 1, 3};
    static constexpr unsigned char kVersion0[3] = {kTagInt, 1, 0};
    Cursor c{*pp, *pp + kSize};
    bool ok = enter(c, kTagSeq) && exact(c, kVersion3, 3) && enter(c, kTagSeq) && exact_rsa_oid(c, 0x07, 0x01) &&
              enter(c, kTagOctets) && enter(c, kTagSeq) && enter(c, kTagSeq) && exact_rsa_oid(c, 0x07, 0x06) &&
              enter(c, kTagSeq) && exact(c, kVersion0, 3) && enter(c, kTagSeq) && exact_rsa_oid(c, 0x07, 0x01);
    if (!ok) return 5;
    *pp = c.p;
    return 0;
}

KORVEX_API unsigned char pkcs12_check_algorithm(unsigned char* p) {
    static constexpr unsigned char kPbes2[2] = {0x05, 0x0D};
    static constexpr unsigned char kPbkdf2[2] = {0x05, 0x0C};
    static constexpr unsigned char kHmac94[1] = {0x0A};
    static constexpr unsigned char kGost89[1] = {0x15};
    // The identifier sits at offset 60 of a 372-byte container: the walk
    // stops at the container's end whatever the length octets claim. As in
    // the header check, SEQUENCE lengths are stepped over, not compared.
    Cursor c{p, p + (kSize - 60)};
    if (!enter(c, kTagSeq)) return 5;
    unsigned char r;
    if ((r = check_oid(c, kStemRsa, 7, kPbes2, 2))) return r;
    if (!enter(c, kTagSeq) || !enter(c, kTagSeq)) return 5;
    if ((r = check_oid(c, kStemRsa, 7, kPbkdf2, 2))) return r;
    if (!enter(c, kTagSeq) || !skip(c, kTagOctets) || !skip(c, kTagInt)) return 5;
    if (c.p < c.end && *c.p == kTagInt && !skip(c, kTagInt)) return 5;  // optional keyLength
    if (!enter(c, kTagSeq)) return 5;
    if ((r = check_oid(c, kStemCp, 5, kHmac94, 1))) return r;
    if ((r = check_oid(c, kStemCp, 5, kSufHashParams, 2))) return r;
    if (!enter(c, kTagSeq)) return 5;
    if ((r = check_oid(c, kStemCp, 5, kGost89, 1))) return r;
    if (!enter(c, kTagSeq) || !skip(c, kTagOctets)) return 5;
    return check_oid(c, kStemCp, 5, kSufCipherParams, 2);
}
