// The library's one DER layer (X.690): named tags, a bounded reader and a
// sized writer. Internal; the exported ASN1_* header functions are built on
// it too.
//
// Reading: an element is found inside a limit, and its children are read
// through a cursor limited by the element, so no step can leave its parent
// (the way BearSSL's and Botan's readers work). Only the outermost element is
// taken on trust: the interface hands over pointers without buffer lengths.
// Reader and writer take the length form as a parameter: DerLength here, the
// PKCS#12 container's own base-128 form in its adapter (BerLength,
// containers/pkcs12_fields.h).
//
// Writing is done in two passes over the same sizes: first every element's
// content size is added up with wrapped() (in 64 bits, so that a result too
// large for the 32-bit interface is seen and refused), then the headers are
// written front to back with those sizes. header_size() is the one rule for
// header sizes; an empty element has a two-octet header like any other.
#ifndef KORVEX_ENCODING_DER_H
#define KORVEX_ENCODING_DER_H

#include <stddef.h>
#include <stdint.h>

#include "core/block_copy.h"

namespace kx {

// ---- Tags -------------------------------------------------------------------
constexpr uint8_t kTagBool = 0x01, kTagInt = 0x02, kTagBitString = 0x03, kTagOctets = 0x04, kTagOid = 0x06,
                  kTagUtf8 = 0x0C, kTagUtcTime = 0x17, kTagSeq = 0x30, kTagSet = 0x31;
// Context-specific [n]: constructed (explicit, or implicit over a
// constructed type) and primitive (implicit over a primitive type).
constexpr uint8_t tag_ctx(unsigned n) { return static_cast<uint8_t>(0xA0 | n); }
constexpr uint8_t tag_ctx_prim(unsigned n) { return static_cast<uint8_t>(0x80 | n); }
constexpr uint8_t kTagCtx0 = tag_ctx(0), kTagCtx1 = tag_ctx(1), kTagCtx2 = tag_ctx(2);

// ---- Headers ----------------------------------------------------------------
// Length octets: the short form below 0x80, else the long form with 1..4
// big-endian octets. Longer and indefinite forms are not read.
constexpr unsigned kMaxLengthOctets = 4;

// Octets of the header (tag and length) of an element with n content octets.
constexpr unsigned header_size(uint64_t n) {
    return n < 0x80 ? 2 : n < 0x100 ? 3 : n < 0x10000 ? 4 : n < 0x1000000 ? 5 : 6;
}
// Octets of the whole element with n content octets.
constexpr uint64_t wrapped(uint64_t n) { return header_size(n) + n; }
// The largest size the interface's 32-bit results can carry.
constexpr uint64_t kMaxSize = 0xFFFFFFFFu;

// Count of the length octets starting at q, from the first one alone (1 for
// the short form, 2..5 for the long form); 0 for the indefinite and over-long
// forms.
inline unsigned length_octets(const uint8_t* q) {
    unsigned first = q[0];
    if (first < 0x80) return 1;
    unsigned n = first & 0x7F;  // 0 here is the indefinite form
    return n == 0 || n > kMaxLengthOctets ? 0 : n + 1;
}
// Value of the k length octets at q (k from length_octets, not 0).
// Non-minimal long forms (81 05, leading zero octets) are taken as they stand.
inline uint32_t length_value(const uint8_t* q, unsigned k) {
    if (k == 1) return q[0];
    uint32_t len = 0;
    for (unsigned i = 1; i < k; ++i) len = (len << 8) | q[i];
    return len;
}
// Header size of the element at p from its first two octets; 0 when its
// length octets are not read (see length_octets).
inline unsigned header_at(const uint8_t* p) {
    unsigned k = length_octets(p + 1);
    return k ? k + 1 : 0;
}

// The DER length form. A length form reads and writes the length octets that
// follow the tag octet.
struct DerLength {
    // Reads the length octets at q with room octets readable; returns their
    // count, 0 when they are malformed or do not fit.
    static unsigned read(const uint8_t* q, size_t room, uint32_t& len) {
        unsigned k = room ? length_octets(q) : 0;
        if (k == 0 || room < k) return 0;
        len = length_value(q, k);
        return k;
    }
    // Writes the length octets of n; returns their count (header_size(n) - 1).
    static unsigned put(uint8_t* p, uint32_t n) {
        unsigned k = header_size(n) - 1;
        if (k == 1) {
            p[0] = static_cast<uint8_t>(n);
            return 1;
        }
        p[0] = static_cast<uint8_t>(0x80 | (k - 1));
        for (unsigned i = 1; i < k; ++i) p[i] = static_cast<uint8_t>(n >> (8 * (k - 1 - i)));
        return k;
    }
};
// Writes tag and length at p; returns the header size.
inline unsigned put_header(uint8_t* p, uint8_t tag, uint32_t n) {
    p[0] = tag;
    return 1 + DerLength::put(p + 1, n);
}

// ---- Reading ----------------------------------------------------------------
// One element: tag octet, first content octet, one past the last.
struct Der {
    uint8_t* tag;
    uint8_t* val;
    uint8_t* end;
    uint32_t len() const { return static_cast<uint32_t>(end - val); }
    uint32_t size() const { return static_cast<uint32_t>(end - tag); }
    uint8_t t() const { return *tag; }
};

// True when the n octets at p lie before limit.
inline bool fits(const uint8_t* p, uint64_t n, const uint8_t* limit) {
    return p <= limit && static_cast<uint64_t>(limit - p) >= n;
}

// Reads the element at p, whose lengths are in the form Length, which must
// end at or before limit. A null limit means the element is the outermost one
// and is taken on trust; a null p fails.
template <class Length>
bool element_at(uint8_t* p, const uint8_t* limit, Der& e) {
    // The tag and the first length octet must be inside before the length is
    // looked at, the further length octets before they are read.
    if (p == nullptr || (limit && !fits(p, 2, limit))) return false;
    uint32_t len = 0;
    unsigned k = Length::read(p + 1, limit ? static_cast<size_t>(limit - p - 1) : SIZE_MAX, len);
    if (k == 0 || (limit && !fits(p + 1 + k, len, limit))) return false;
    e.tag = p;
    e.val = p + 1 + k;
    e.end = e.val + len;
    return true;
}

// The DER element at p (element_at for DerLength).
bool der_at(uint8_t* p, const uint8_t* limit, Der& e);

// The outermost element at p.
inline bool der_top(uint8_t* p, Der& e) { return der_at(p, nullptr, e); }

// The cursor over the children of an element: each step reads the next child
// inside what is left of the parent.
struct DerCursor {
    uint8_t* p;
    uint8_t* end;
    // The next child; false when the parent is used up or the child overruns it.
    bool next(Der& e) {
        if (p >= end || !der_at(p, end, e)) return false;
        p = e.end;
        return true;
    }
    // The next child, which must carry tag.
    bool next(uint8_t tag, Der& e) { return next(e) && e.t() == tag; }
    // The first of the remaining children carrying tag; stops at one that
    // does not parse.
    bool find(uint8_t tag, Der& e) {
        while (next(e))
            if (e.t() == tag) return true;
        return false;
    }
};

inline DerCursor children(const Der& e) { return DerCursor{e.val, e.end}; }

// The first child of e (carrying tag).
inline bool der_first(const Der& e, Der& c) { return children(e).next(c); }
inline bool der_first(const Der& e, uint8_t tag, Der& c) { return children(e).next(tag, c); }

// ---- Writing ----------------------------------------------------------------
// The second pass: headers and octets written front to back in the length
// form Length.
template <class Length>
struct SizedWriter {
    uint8_t* p;
    void header(uint8_t tag, uint64_t n) {
        *p++ = tag;
        p += Length::put(p, static_cast<uint32_t>(n));
    }
    void byte(uint8_t b) { *p++ = b; }
    // Byte 0 first, as a byte loop would: the source may lie in the output.
    void bytes(const uint8_t* src, size_t n) {
        copy_ascending(src, p, n);
        p += n;
    }
};
using DerWriter = SizedWriter<DerLength>;

}  // namespace kx

#endif
