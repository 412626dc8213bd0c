// X.509 accessors, field pointers, textbox and Name parser, and the
// certificate check on one framed certificate: every pointer returned lies
// inside it.
#include "framing.h"
#include "x_509.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n > 1 << 15) return 0;
    std::vector<unsigned char> b(d, d + n);
    if (!frame_der(b)) return 0;
    FuzzBuf f(b.data(), b.size());
    unsigned int len = x_509_get_certificate_length(f.p());
    if (len > f.n()) abort();
    f.inside(x_509_find_public_key_info_block(f.p()), 1);
    unsigned char* k = x_509_get_open_key(f.p());
    f.inside(k, 1);
    x_509_get_open_key_parametrs_ds(f.p());
    x_509_get_open_key_parametrs_ds_512bit(f.p());
    x_509_get_key_usage(f.p());
    x_509_check_certificate(f.p(), nullptr);
    x509_field_pointers fp = x_509_get_field_pointers(f.p());
    for (const x509_field_ref& r : {fp.subject, fp.serial_number, fp.validity, fp.issuer}) f.inside(r.ptr, r.len);
    x509_textbox tb = x_509_get_textbox_of_cer(f.p());
    for (const x509_field_ref& r : {tb.serial_number, tb.not_before, tb.not_after}) f.inside(r.ptr, r.len);
    for (unsigned char* name : {fp.subject.ptr, fp.issuer.ptr}) {
        if (!name) continue;
        x509_name nm = x_509_parse_Name_field(name);
        for (const x509_name_entry& e : {nm.country, nm.organization, nm.organizational_unit, nm.dn_qualifier,
                                         nm.state, nm.common_name, nm.serial_number, nm.email})
            f.inside(e.value, e.length);
    }
    return 0;
}
