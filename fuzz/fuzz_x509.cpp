// X.509 accessors and the certificate check on one framed certificate:
// every pointer returned lies inside it.
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
    return 0;
}
