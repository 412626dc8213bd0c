// The PFX and PKCS#8 readers under AddressSanitizer: truncations, wrong
// lengths and flipped bytes of real files end in a formats::Error or a good
// read, never in a crash or an out-of-bounds access. The files are also read
// without their MacData, so that damage behind the MAC reaches the inner
// parsers.
#include <gtest/gtest.h>

#include "common/test_util.h"
#include "formats/pfx.h"

namespace {

using formats::Bytes;

// The PFX without its MacData (the readers accept such files).
Bytes without_mac(const Bytes& pfx) {
    size_t hdr = pfx[1] & 0x80 ? 2 + (pfx[1] & 0x7F) : 2;
    const unsigned char* p = pfx.data() + hdr;
    size_t body = 0;
    for (int i = 0; i < 2; ++i) {  // version, authSafe
        size_t h = p[body + 1] & 0x80 ? 2 + (p[body + 1] & 0x7F) : 2, n = 0;
        if (h == 2) n = p[body + 1];
        for (size_t j = 2; j < h; ++j) n = n << 8 | p[body + j];
        body += h + n;
    }
    Bytes out{0x30, 0x82, static_cast<unsigned char>(body >> 8), static_cast<unsigned char>(body)};
    out.insert(out.end(), p, p + body);
    return out;
}

void read_any(const Bytes& b, const char* pass) {
    try {
        formats::pfx_read(b, pass);
    } catch (const formats::Error&) {
    }
    try {
        formats::pkcs8_load(b);
    } catch (const formats::Error&) {
    }
}

TEST(FormatsAsan, DamagedFilesNeverCrash) {
    struct {
        const char* file;
        const char* pass;
    } files[] = {{"pfx1.pfx", "12345"}, {"ossl-g2012512.pfx", "Test123"}};
    for (auto& f : files) {
        SCOPED_TRACE(f.file);
        Bytes whole = kt::load_file(std::string("formats/") + f.file);
        Bytes bare = without_mac(whole);
        EXPECT_NO_THROW(formats::pfx_read(bare, f.pass));  // still a good file
        for (const Bytes& b : {whole, bare}) {
            for (size_t n = 0; n < b.size(); n += 1 + n / 4) read_any(Bytes(b.begin(), b.begin() + n), f.pass);
            for (size_t i = 0; i < b.size(); i += 1 + i / 5) {
                Bytes x = b;
                x[i] ^= static_cast<unsigned char>(0x80 >> (i % 8)) | 1;
                read_any(x, f.pass);
            }
        }
    }
    Bytes key = kt::load_file("formats/g2012512.key.pem");
    for (size_t n = 0; n < key.size(); ++n) read_any(Bytes(key.begin(), key.begin() + n), "");
}

}  // namespace
