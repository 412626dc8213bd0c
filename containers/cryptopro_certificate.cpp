// Locating the owner's certificate in a CryptoPro header file:
// 30 { 30 { ..., [5] certificate, ... } }.
#include "CryptoPro.h"
#include "encoding/der.h"

KORVEX_API unsigned char* CryptoPro_conteiner_get_certificate(unsigned char* header) {
    using namespace kx;
    Der outer, inner, e;
    if (header[0] != kTagSeq || !der_top(header, outer)) return nullptr;
    if (!der_at(outer.val, outer.end, inner) || inner.t() != kTagSeq) return nullptr;
    // The certificate is [5] IMPLICIT; every element before it must lie
    // inside the inner SEQUENCE.
    for (DerCursor it = children(inner); it.next(e);)
        if (e.t() == tag_ctx_prim(5)) return e.val;
    return nullptr;
}
