// Bounded positional walking over DER elements held in caller buffers.
// The outermost element is trusted to lie in the caller's buffer (the
// interface carries no buffer length); every element read inside it must end
// within its parent, otherwise the read fails like a tag mismatch.
#ifndef KORVEX_PKI_DER_WALK_H
#define KORVEX_PKI_DER_WALK_H

#include <stdint.h>

namespace kx {
namespace pki {

// Single-octet tags used by the certificate and message layouts.
constexpr unsigned char kTagBool = 0x01, kTagInt = 0x02, kTagBitString = 0x03, kTagOctets = 0x04,
                        kTagOid = 0x06, kTagUtcTime = 0x17, kTagSeq = 0x30, kTagSet = 0x31,
                        kTagCtx0 = 0xA0, kTagCtx1 = 0xA1;

// One element: tag byte, first content octet, one past the last.
struct Der {
    unsigned char* tag;
    unsigned char* val;
    unsigned char* end;
    uint32_t len() const { return static_cast<uint32_t>(end - val); }
    uint32_t size() const { return static_cast<uint32_t>(end - tag); }
    unsigned char t() const { return *tag; }
};

// Reads the element at p, which must end at or before limit. A null limit
// means the element is the outermost one and is taken on trust.
bool der_at(unsigned char* p, const unsigned char* limit, Der& e);

// The outermost element at p (null p fails).
inline bool der_top(unsigned char* p, Der& e) { return p != nullptr && der_at(p, nullptr, e); }

// Children of an element, in order.
struct DerIter {
    unsigned char* p;
    unsigned char* end;
};

inline DerIter children(const Der& e) { return DerIter{e.val, e.end}; }

// The next child; false when the parent is used up or the child overruns it.
inline bool der_next(DerIter& it, Der& e) {
    if (it.p >= it.end || !der_at(it.p, it.end, e)) return false;
    it.p = e.end;
    return true;
}

// The next child, which must carry tag.
inline bool der_next(DerIter& it, unsigned char tag, Der& e) {
    return der_next(it, e) && e.t() == tag;
}

// The first child of e, any tag.
inline bool der_first(const Der& e, Der& c) {
    DerIter it = children(e);
    return der_next(it, c);
}

// The first child of e, which must carry tag.
inline bool der_first(const Der& e, unsigned char tag, Der& c) {
    DerIter it = children(e);
    return der_next(it, tag, c);
}

// True when the n octets at p lie before limit.
inline bool fits(const unsigned char* p, uint32_t n, const unsigned char* limit) {
    return p <= limit && static_cast<uintptr_t>(limit - p) >= n;
}

}  // namespace pki
}  // namespace kx

#endif
