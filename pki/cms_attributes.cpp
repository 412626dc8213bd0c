// Signed and unsigned attributes of a CMS signer (RFC 5652 5.3, 11): the
// attribute text format, the SET OF order used by this library, and the
// signer block holding [0] signed attributes, the signature and [1] unsigned
// attributes.
#include "ASN1.h"
#include "Base64.h"
#include "CMS.h"
#include "core/bytes.h"
#include "encoding/der.h"
#include "pki/cms_templates.h"

namespace kx {
namespace pki {
namespace {

constexpr unsigned char kItemSep = '&', kOidSep = ':';

// Signer block size of an empty signature element: 04 40 and 64 octets.
constexpr unsigned int kSignatureElement = 2 + 64;

// Length of the item starting at text (up to '&' or the end).
unsigned int item_len(const unsigned char* text, unsigned int len) {
    unsigned int n = 0;
    while (n < len && text[n] != kItemSep) ++n;
    return n;
}

// Length of the OID text of an item (up to ':'); len when there is none.
unsigned int oid_text_len(const unsigned char* item, unsigned int len) {
    unsigned int n = 0;
    while (n < len && item[n] != kOidSep) ++n;
    return n;
}

bool same_text(const unsigned char* a, unsigned int n, const char* b) {
    unsigned int i = 0;
    for (; i < n && b[i]; ++i)
        if (a[i] != static_cast<unsigned char>(b[i])) return false;
    return i == n && b[i] == 0;
}

// Splits an "OID:Base64" item: k = OID text length, b64 = Base64 length.
// False for items that cannot be encoded: no ':', an OID text that is not
// dotted decimal (digits, single dots, at least two arcs) or is longer than
// 255, no whole Base64 groups (the decoder reads four characters per group).
bool split_item(const unsigned char* text, unsigned int len, unsigned int& k, unsigned int& b64) {
    if (!text) return false;
    k = oid_text_len(text, len);
    if (k == len || k == 0 || k > 255) return false;
    b64 = len - k - 1;
    if (b64 == 0 || b64 % 4 != 0) return false;
    unsigned int dots = 0;
    for (unsigned int i = 0; i < k; ++i) {
        if (text[i] == '.') {
            if (i == 0 || i + 1 == k || text[i - 1] == '.') return false;
            ++dots;
        } else if (text[i] < '0' || text[i] > '9') {
            return false;
        }
    }
    if (dots == 0) return false;
    // Past the second arc the OID encoder reads one octet beyond the text per
    // further '.', going on while those octets are dots: they must lie in the
    // item and not be '.'.
    if (len - k < dots - 1) return false;
    for (unsigned int i = 0; i + 1 < dots; ++i)
        if (text[k + i] == '.') return false;
    return true;
}

// Octets the Base64 decoder counts for n characters (n a multiple of 4).
unsigned int decoded_len(const unsigned char* b64, unsigned int n) {
    unsigned int v = n / 4 * 3;
    if (b64[n - 1] == '=') v -= b64[n - 2] == '=' ? 2 : 1;
    return v;
}

// Exact size of CMS_create_Attr's output, computed without writing it.
unsigned int attr_list_size(unsigned char* text, unsigned int len) {
    if (!text) return 0;
    unsigned int total = 0;
    for (unsigned int pos = 0; pos < len;) {
        unsigned int n = item_len(text + pos, len - pos), k, b64;
        if (split_item(text + pos, n, k, b64)) {
            unsigned char oid[256];  // an OID text of 255 characters never gives more octets
            unsigned int o = ASN1_code_ASCII_OID_to_DER(text + pos, static_cast<unsigned char>(k), oid);
            unsigned int v = decoded_len(text + pos + k + 1, b64);
            if (o) total += static_cast<unsigned int>(wrapped(wrapped(o) + wrapped(v)));
        }
        pos += n + 1;
    }
    return total;
}

// The SET OF sort: a stable sort of a run of DER elements on their whole
// encoded size. It merges in place without a buffer (split the longer run in
// half, find where its middle element goes in the other by size, swap the
// two middle pieces by rotation, merge both sides again), so the run is
// sorted in O(n log^2 n) element steps and octet moves, with O(log n) stack.
struct Run {
    unsigned char* end;  // end of the whole run: every element lies below it
    uint32_t size(unsigned char* e) const {
        Der d;
        der_at(e, end, d);
        return d.size();
    }
    unsigned char* next(unsigned char* e) const { return e + size(e); }
    unsigned char* advance(unsigned char* e, unsigned int k) const {
        while (k--) e = next(e);
        return e;
    }
};

void reverse(unsigned char* a, unsigned char* b) {
    while (a < b) {
        unsigned char t = *a;
        *a++ = *--b;
        *b = t;
    }
}

// Swaps [a, m) and [m, b); returns where the first part now starts.
unsigned char* rotate(unsigned char* a, unsigned char* m, unsigned char* b) {
    reverse(a, m);
    reverse(m, b);
    reverse(a, b);
    return a + (b - m);
}

void merge(const Run& r, unsigned char* first, unsigned char* middle, unsigned char* last, unsigned int n1,
           unsigned int n2) {
    while (n1 && n2) {
        if (n1 + n2 == 2) {
            if (r.size(middle) < r.size(first)) rotate(first, middle, last);
            return;
        }
        unsigned char *cut1, *cut2;
        unsigned int k1 = 0, k2 = 0;
        if (n1 > n2) {
            k1 = n1 / 2;
            cut1 = r.advance(first, k1);
            uint32_t key = r.size(cut1);
            for (cut2 = middle; cut2 < last && r.size(cut2) < key; cut2 = r.next(cut2)) ++k2;
        } else {
            k2 = n2 / 2;
            cut2 = r.advance(middle, k2);
            uint32_t key = r.size(cut2);
            for (cut1 = first; cut1 < middle && r.size(cut1) <= key; cut1 = r.next(cut1)) ++k1;
        }
        unsigned char* mid = rotate(cut1, middle, cut2);
        merge(r, first, cut1, mid, k1, k2);
        first = mid, middle = cut2, n1 -= k1, n2 -= k2;  // the right side, without recursion
    }
}

// Sorts the n elements from first; returns the end of the range.
unsigned char* sort_run(const Run& r, unsigned char* first, unsigned int n) {
    if (n < 2) return n ? r.next(first) : first;
    unsigned char* middle = sort_run(r, first, n / 2);  // the half keeps its octet range
    unsigned char* last = sort_run(r, middle, n - n / 2);
    merge(r, first, middle, last, n / 2, n - n / 2);
    return last;
}

// Puts the n octets at p behind a header of tag, in place; returns the
// element size.
unsigned int wrap_in_place(unsigned char* p, unsigned char tag, unsigned int n) {
    unsigned int h = header_size(n);
    ASN1_mem_move(p, p + h, n);
    put_header(p, tag, n);
    return h + n;
}

}  // namespace
}  // namespace pki
}  // namespace kx

using namespace kx;
using namespace kx::pki;

KORVEX_API unsigned int CMS_create_Attribute(unsigned char* text, unsigned int len, unsigned char* out) {
    unsigned int k, b64;
    if (!out || !split_item(text, len, k, b64)) return 0;
    unsigned int o = ASN1_code_ASCII_OID_to_DER(text, static_cast<unsigned char>(k), out);
    if (o == 0) return 0;
    unsigned int v = Base64_decode_msg(text + k + 1, b64, out + o);
    unsigned int ho = header_size(o), hv = header_size(v);
    unsigned int total = hv + v + ho + o;
    unsigned int ht = header_size(total);
    // Attribute ::= SEQUENCE { attrType OID, attrValues SET { value } }; the
    // value is inserted verbatim.
    ASN1_mem_move(out + o, out + ht + ho + o + hv, v);
    ASN1_mem_move(out, out + ht + ho, o);
    put_header(out, kTagSeq, total);
    put_header(out + ht, kTagOid, o);
    put_header(out + ht + ho + o, kTagSet, v);
    return total + ht;
}

KORVEX_API unsigned int CMS_create_Attr(unsigned char* text, unsigned int len, unsigned char* out) {
    if (!text || len == 0) return 0;
    unsigned int written = 0;
    for (unsigned int pos = 0; pos < len;) {
        unsigned int n = item_len(text + pos, len - pos);
        written += CMS_create_Attribute(text + pos, n, out + written);
        pos += n + 1;
    }
    return written;
}

KORVEX_API void CMS_DER_SetOf_sort(unsigned char* p, unsigned int len) {
    if (!p) return;
    // Smallest size first, equal sizes in their order. A run that does not
    // parse as elements up to its end is left as it is.
    Run r{p + len};
    unsigned int n = 0;
    Der e;
    for (unsigned char* i = p; i < r.end; i = e.end, ++n)
        if (!der_at(i, r.end, e)) return;
    sort_run(r, p, n);
}

KORVEX_API unsigned int CMS_check_SignedAttr(unsigned char* text, unsigned int len) {
    if (!text) return 0;
    unsigned int found = 0;
    for (unsigned int pos = 0; pos < len;) {
        unsigned int n = item_len(text + pos, len - pos);
        unsigned int k = oid_text_len(text + pos, n);
        if (same_text(text + pos, k, kContentTypeOidText)) found += 1;
        if (same_text(text + pos, k, kMessageDigestOidText)) found += 2;
        pos += n + 1;
    }
    return found;
}

KORVEX_API unsigned int CMS_SignedAttr_buffer_len(unsigned int n) {
    if (n == 0) return kSignatureElement;
    // The attributes must stay below 64 KiB together with the fixed ones.
    if (n + static_cast<unsigned int>(sizeof kFixedSignedAttrs) < 65535u)
        return n + static_cast<unsigned int>(sizeof kFixedSignedAttrs) + kSignatureElement;
    return 0;
}

KORVEX_API unsigned int CMS_create_SignedAttr(unsigned char* signedText, unsigned int signedLen,
                                              unsigned char* unsignedText, unsigned int unsignedLen,
                                              unsigned char* /*reserved*/, unsigned char /*reservedFlag*/,
                                              unsigned char* out) {
    bool hasSigned = signedText && signedLen;
    bool hasUnsigned = unsignedText && unsignedLen;
    if (!out) {
        unsigned int bound =
            (hasSigned ? signedLen + sizeof kFixedSignedAttrs + kSignatureElement : kSignatureElement) + unsignedLen;
        // Items shorter than their DER (tiny OIDs and values) and the [0]/[1]
        // headers can exceed the text-based bound: never answer less than the
        // block really takes.
        unsigned int exact = kSignatureElement;
        if (hasSigned) exact += static_cast<unsigned int>(wrapped(sizeof kFixedSignedAttrs + attr_list_size(signedText, signedLen)));
        // The [1] element is left out when no item encodes.
        unsigned int u = hasUnsigned ? attr_list_size(unsignedText, unsignedLen) : 0;
        if (u) exact += static_cast<unsigned int>(wrapped(u));
        return exact > bound ? exact : bound;
    }

    unsigned char* p = out;
    if (hasSigned) {
        unsigned int n = sizeof kFixedSignedAttrs;
        kx::copy(p, kFixedSignedAttrs, n);
        n += CMS_create_Attr(signedText, signedLen, p + n);
        CMS_DER_SetOf_sort(p, n);
        p += wrap_in_place(p, kTagCtx0, n);
    }
    p += put_header(p, kTagOctets, 64);
    kx::fill(p, 0, 64);
    p += 64;
    if (hasUnsigned) {
        unsigned int n = CMS_create_Attr(unsignedText, unsignedLen, p);
        if (n) p += wrap_in_place(p, kTagCtx1, n);  // in the order given
    }
    return static_cast<unsigned int>(p - out);
}

KORVEX_API unsigned char* CMS_SignedAttr_find_msg_digest_value_field(unsigned char* signedAttrs) {
    Der a, attr;
    if (!der_top(signedAttrs, a) || a.t() != kTagCtx0) return nullptr;
    DerCursor it = children(a);
    while (it.next(attr)) {
        if (attr.t() != kTagSeq) return nullptr;
        // SEQUENCE { messageDigest OID, SET { OCTET STRING (32) } }
        if (attr.len() == kMessageDigestAttrLen &&
            kx::equal(attr.val, kMessageDigestOid, sizeof kMessageDigestOid))
            return attr.val + kMessageDigestValueOffset;
    }
    return nullptr;
}

KORVEX_API cms_mime_type_t CMS_SignedAttr_MIME_type(unsigned char* signedAttrs) {
    cms_mime_type_t none{nullptr, 0};
    Der a, attr, values, value, e;
    if (!der_top(signedAttrs, a) || a.len() == 0 || a.val[0] != kTagSeq) return none;
    DerCursor it = children(a);
    while (it.next(attr)) {
        if (!fits(attr.val, sizeof kContentTypeOid, attr.end) ||
            !kx::equal(attr.val, kContentTypeOid, sizeof kContentTypeOid))
            continue;
        DerCursor in = children(attr);
        if (!in.next(e) || !in.next(kTagSet, values) || !der_first(values, kTagSeq, value))
            return none;
        DerCursor v = children(value);
        if (!v.next(e) || !v.next(kTagOctets, e)) return none;
        return cms_mime_type_t{e.val, e.len()};
    }
    return none;
}
