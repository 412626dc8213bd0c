// CMS: a framed SignedData ContentInfo through CMS_SignedData_parse (every
// part found lies inside the message), the signed-attribute readers on what it
// found, and CMS_SignedData_check and _check_hash with the embedded
// certificate; or, with the
// first octet odd, attribute text through the block builder (size query, then
// a buffer of exactly that size), the readers and the signer on the block
// built, and the set sort on the raw bytes. Bit 1 of the first octet turns
// on the slow steps (signature check, signing).
#include "CMS.h"
#include "framing.h"

namespace {

void message(FuzzBuf& f, bool verify) {
    cms_signed_data_t m = CMS_SignedData_parse(f.p());
    f.inside(m.certificate, m.certificate_len);
    f.inside(m.content, m.content_len);
    f.inside(m.signed_attrs, m.signed_attrs_len);
    f.inside(m.signer_id, m.signer_id_len);
    f.inside(m.signature, m.signature_len);
    if (m.signed_attrs) {
        f.inside(CMS_SignedAttr_find_msg_digest_value_field(m.signed_attrs), 32);
        cms_mime_type_t t = CMS_SignedAttr_MIME_type(m.signed_attrs);
        f.inside(t.value, t.length);
    }
    if (!verify || m.status != 0 || !m.certificate || !m.signature) return;
    // The check takes 64 signature octets: a shorter signature goes in a
    // zero-padded copy, as a careful caller would pass it.
    KORVEX_UN(64) sig{};
    KORVEX_UN(64)* s = reinterpret_cast<KORVEX_UN(64)*>(m.signature);
    if (m.signature_len != 64) {
        if (m.signature_len > 64) return;
        std::memcpy(sig.b, m.signature, m.signature_len);
        s = &sig;
    }
    unsigned r = CMS_SignedData_check(m.signed_attrs, nullptr, m.content, m.content ? m.content_len : 0,
                                      m.certificate, s);
    if (r < 3 || r > 6) abort();
    KORVEX_UN(32) digest{};
    r = CMS_SignedData_check_hash(m.signed_attrs, nullptr, digest.b, 32, m.certificate, s);
    if (r < 3 || r > 6) abort();
}

void text(const uint8_t* d, size_t n, bool sign) {
    // Signed text, then after the first NUL the unsigned text.
    size_t cut = 0;
    while (cut < n && d[cut] != 0) ++cut;
    FuzzBuf st(d, cut), ut(d + (cut < n ? cut + 1 : n), cut < n ? n - cut - 1 : 0);
    CMS_check_SignedAttr(st.p(), unsigned(st.n()));
    unsigned size = CMS_create_SignedAttr(st.p(), unsigned(st.n()), ut.p(), unsigned(ut.n()), nullptr, 0, nullptr);
    std::vector<unsigned char> out(size);
    FuzzBuf blk(out.data(), out.size());
    unsigned w = CMS_create_SignedAttr(st.p(), unsigned(st.n()), ut.p(), unsigned(ut.n()), nullptr, 0, blk.p());
    if (w > size || w < 66) abort();
    blk.b.resize(w);
    unsigned char* md = CMS_SignedAttr_find_msg_digest_value_field(blk.p());
    if (st.n() && !md) abort();  // the fixed messageDigest is always there
    blk.inside(md, 32);
    cms_mime_type_t t = CMS_SignedAttr_MIME_type(blk.p());
    blk.inside(t.value, t.length);
    if (sign) {
        fuzz_seed_generator();
        KORVEX_UN(32) digest{}, key{};
        key.b[0] = 1;
        CMS_sig_SignedAttr_hash(blk.p(), &digest, &key);
    }
    FuzzBuf raw(d, n);
    CMS_DER_SetOf_sort(raw.p(), unsigned(raw.n()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n < 1 || n > 1 << 15) return 0;
    if (d[0] & 1) {
        text(d + 1, n - 1, d[0] & 2);
        return 0;
    }
    std::vector<unsigned char> b(d + 1, d + n);
    if (!frame_der(b)) return 0;
    FuzzBuf f(b.data(), b.size());
    message(f, d[0] & 2);
    return 0;
}
