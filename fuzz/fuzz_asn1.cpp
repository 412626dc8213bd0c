// DER header, length and OID reading: the header length agrees with the
// length octets, the descriptor points into the element, the length writer
// round-trips, and OID text of any digits and dots encodes inside its bound.
#include "framing.h"
#include "ASN1.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n < 2 || n > 1 << 16) return 0;
    FuzzBuf f(d, n);
    unsigned int h = ASN1_header_legth(f.p());
    if (h && h <= n) {
        unsigned int len = ASN1_get_block_length(f.p());
        asn1_t s;
        ASN1_get_sruct(&s, f.p());
        if (s.value != f.p() + h) abort();
        unsigned char w[8] = {0x30};
        if (ASN1_set_block_length(w, len) != ASN1_calculate_len_of_hdr(len) && len) abort();
        if (ASN1_get_block_length(w) != len) abort();
    }
    // OID text: dotted decimal (a digit first, at least one '.'; each input
    // byte mapped onto "0123456789."), NUL-terminated as the header asks.
    size_t t = n < 250 ? n : 250;
    std::vector<unsigned char> text(t);
    bool dot = false;
    for (size_t i = 0; i < t; ++i) {
        text[i] = (unsigned char)(i && d[i] % 11 == 10 ? '.' : '0' + d[i] % 10);
        dot |= text[i] == '.';
    }
    if (!dot) return 0;
    text.push_back(0);
    std::vector<unsigned char> out(5 * (t + 1));
    unsigned int o = ASN1_code_ASCII_OID_to_DER(text.data(), (unsigned char)t, out.data());
    if (o > out.size()) abort();
    return 0;
}
