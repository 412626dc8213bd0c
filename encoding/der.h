// The library's one DER layer (X.690): named tags, a bounded reader and a
// sized writer. Internal; the exported ASN1_* header functions are built on
// it too.
//
// Reading: an element is found inside a limit, and its children are read
// through a cursor limited by the element, so no step can leave its parent
// (the way BearSSL's and Botan's readers work). Only the outermost element is
// taken on trust: the interface hands over pointers without buffer lengths.
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

// Header size of the element at p from its first two octets (the further
// length octets are not looked at); 0 for the indefinite and over-long forms.
inline unsigned header_at(const uint8_t* p) {
    unsigned first = p[1];
    if (first < 0x80) return 2;
    unsigned n = first & 0x7F;  // 0 here is the indefinite form
    return n == 0 || n > kMaxLengthOctets ? 0 : n + 2;
}
// Content length of the element at p whose header has h octets (h from
// header_at, not 0). Non-minimal long forms (81 05, leading zero octets) are
// taken as they stand.
inline uint32_t length_at(const uint8_t* p, unsigned h) {
    if (h == 2) return p[1];
    uint32_t len = 0;
    for (unsigned i = 2; i < h; ++i) len = (len << 8) | p[i];
    return len;
}

// The DER length form: writes the length octets of n at p; returns their
// count (header_size(n) - 1).
struct DerLength {
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

// Reads the element at p, which must end at or before limit. A null limit
// means the element is the outermost one and is taken on trust; a null p
// fails.
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
// The second pass: headers and octets written front to back. Length is the
// length form: DerLength here, the PKCS#12 container's own base-128 form in
// its adapter (containers/pkcs12_writer.h).
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
