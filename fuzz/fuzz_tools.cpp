// The program's readers on hostile files, as its commands call them: the
// first octet picks the reader, the second bounds the password length (the
// password follows); the rest is the file. Readers refuse bad input by
// throwing (cli::Error, formats::Error); anything else is a finding, and
// ASan/UBSan watch the library calls beneath them.
//   0 certificate: load_cert's outer check, parse_cert, what x509 show
//     prints (names, serial, times, extensions),
//     the self-signature check, the key reader of tools/formats
//   1 CMS SignedData: cms_verify with the certificate it carries
//   2 PFX: pfx_detect, pfx_read
//   3 PKCS#8: pkcs8_detect, pkcs8_load
//   4 PKCS#15, 5 the library's PKCS#12 container (curve A given)
//   6 CryptoPro folder: two octets give the primary.key size, two the
//     masks.key size, the rest is header.key; written to a private folder
#include <stdlib.h>
#include <unistd.h>

#include <fstream>

#include "cert_info.h"
#include "certs.h"
#include "cms_ops.h"
#include "containers.h"
#include "der.h"
#include "framing.h"
#include "formats/pfx.h"
#include "formats/pkcs8.h"

namespace {

void put(const std::string& path, const unsigned char* p, size_t n) {
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(p), n);
}

void cryptopro(const cli::Bytes& f, const std::string& pw) {
    static std::string dir;
    if (dir.empty()) {
        char t[] = "/tmp/fuzz-cp-XXXXXX";
        if (!mkdtemp(t)) abort();
        dir = t;
    }
    if (f.size() < 4) return;
    size_t np = f[0] << 8 | f[1], nm = f[2] << 8 | f[3];
    if (f.size() < 4 + np + nm) return;
    put(dir + "/primary.key", f.data() + 4, np);
    put(dir + "/masks.key", f.data() + 4 + np, nm);
    put(dir + "/header.key", f.data() + 4 + np + nm, f.size() - 4 - np - nm);
    cli::cryptopro_read(dir, "", pw);
}

void run(unsigned which, cli::Bytes& f, const std::string& pw) {
    switch (which) {
        case 0: {
            if (f.size() < 4 || f[0] != 0x30) return;
            der::Elem e = der::read(f.data(), f.data() + f.size());
            f.resize(e.size());
            cli::Cert c = cli::parse_cert(f);
            cli::name_text(c.subject);
            cli::name_text(c.issuer);
            der::read(c.serial.data(), c.serial.data() + c.serial.size());  // as x509 show prints it
            cli::time_text(c.not_before);
            cli::time_text(c.not_after);
            for (const auto& x : c.exts) cli::extension_text(x);
            cli::check_cert_signature(c, c);
            cli::subject_text(f);
            cli::subject_text(f, true);
            formats::cert_key(f);
            break;
        }
        case 1: cli::cms_verify(f, nullptr, nullptr, nullptr, 1700000000); break;
        case 2:
            if (formats::pfx_detect(f)) formats::pfx_read(f, pw);
            break;
        case 3:
            if (formats::pkcs8_detect(f)) formats::pkcs8_load(f);
            break;
        case 4:
        case 5: {
            cli::Curve a = cli::curve_by_name("A");
            if (which == 4) cli::pkcs15_read(f, pw, &a);
            else cli::pkcs12_read(f, pw, &a);
            break;
        }
        case 6: cryptopro(f, pw); break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* d, size_t n) {
    if (n < 2 || n > 1 << 14) return 0;
    unsigned which = d[0] % 7, pl = d[1] & 15;
    if (n < 2 + pl) return 0;
    std::string pw(reinterpret_cast<const char*>(d + 2), pl);
    cli::Bytes f(d + 2 + pl, d + n);
    if ((d[1] & 0x10) && !frame_der(f)) return 0;
    try {
        run(which, f, pw);
    } catch (const cli::Error&) {
    } catch (const formats::Error&) {
    }
    return 0;
}
