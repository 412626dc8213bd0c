// korvex demo: the library end to end on built-in defaults, in a temporary
// folder: seed, key pair, self-signed certificate, PKCS#15 container, CMS
// SignedData signature and its check.
#include <cstdio>
#include <ctime>
#include <cstdlib>
#include <unistd.h>

#include "certs.h"
#include "cli.h"
#include "cms_ops.h"
#include "commands.h"
#include "containers.h"
#include "x_509.h"

namespace {

int demo_run(const cli::Args& a) {
    char tmpl[] = "/tmp/korvex-demo.XXXXXX";
    if (!mkdtemp(tmpl)) throw cli::Error("cannot make a temporary folder");
    std::string dir = tmpl;
    std::vector<std::string> made;
    auto path = [&](const std::string& n) {
        made.push_back(dir + "/" + n);
        return dir + "/" + n;
    };
    int step = 0;
    auto say = [&](const std::string& s) { std::printf("%2d. %s\n", ++step, s.c_str()); };
    const std::string password = "korvex-demo";
    int rc = 0;
    try {
        std::printf("korvex demo in %s\n", dir.c_str());
        cli::seed_generator();
        say("generator seeded with 40 bytes from getrandom(2); self-test passed");

        cli::KeyPair key = cli::generate_key(cli::curve_by_name("A"));
        say("GOST R 34.10-2001 key pair on CryptoPro-A; public x = " + cli::to_hex(key.q.data(), 8) + "...");

        cli::CertRequest req;
        req.subject = "CN=Korvex demo,O=Korvex,C=RU";
        cli::Bytes cert = cli::self_signed(key, req);
        cli::write_file(path("demo.crt"), cli::pem_encode("CERTIFICATE", cert));
        unsigned ok = x_509_check_certificate(cert.data(), nullptr);
        say("self-signed certificate for '" + cli::subject_text(cert) + "' (" + std::to_string(cert.size()) +
            " bytes), its signature " + (ok == 1 ? "verifies" : "DOES NOT verify"));
        if (ok != 1) rc = 1;

        cli::Bytes container = cli::pkcs15_make(key, password, false, 0);
        cli::write_file(path("demo.p15"), container, {}, 0600);
        say("private key stored in a PKCS#15 container (" + std::to_string(container.size()) +
            " bytes) under password '" + password + "'");

        cli::Bytes stored = cli::read_file(dir + "/demo.p15");
        cli::KeyPair reopened = cli::pkcs15_read(stored, password, &key.curve);
        bool same = reopened.d == key.d;
        say(std::string("container reopened: ") + (same ? "same private key" : "A DIFFERENT KEY"));
        if (!same) rc = 1;
        try {
            cli::pkcs15_read(stored, "not the password", nullptr);
            say("a wrong password was NOT refused");
            rc = 1;
        } catch (const cli::Error&) {
            say("a wrong password is refused");
        }

        std::string text = "Korvex demo document: signed with GOST R 34.10-2001.\n";
        cli::Bytes doc(text.begin(), text.end());
        cli::write_file(path("document.txt"), doc);
        cli::CmsSignRequest sreq;
        sreq.content_path = path("document.txt");
        cli::Bytes msg = cli::cms_sign(reopened.d, reopened.curve.sel, cli::parse_cert(cert), sreq);
        cli::write_file(path("document.p7s"), msg);
        say("document signed as CMS SignedData (" + std::to_string(msg.size()) + " bytes, certificate included)");

        cli::CmsCheck c = cli::cms_verify(msg, nullptr, nullptr, nullptr, std::time(nullptr));
        say("signature of '" + c.signer + "' checked: " + (c.valid() ? "valid" : "INVALID"));
        if (!c.valid()) rc = 1;

        cli::Bytes altered = doc;
        altered[0] ^= 1;
        cli::write_file(path("altered.txt"), altered);
        std::string altered_path = path("altered.txt");
        cli::CmsCheck bad = cli::cms_verify(msg, nullptr, &altered_path, nullptr, std::time(nullptr));
        say(std::string("the same signature over an altered document: ") + (bad.valid() ? "valid (WRONG)" : "INVALID, as it must be"));
        if (bad.valid()) rc = 1;
    } catch (...) {
        if (!a.has("--keep")) {
            for (auto& f : made) ::unlink(f.c_str());
            ::rmdir(dir.c_str());
        }
        throw;
    }
    if (a.has("--keep")) {
        std::printf("files kept in %s\n", dir.c_str());
    } else {
        for (auto& f : made) ::unlink(f.c_str());
        ::rmdir(dir.c_str());
    }
    std::printf("%s\n", rc == 0 ? "demo finished: every step as expected" : "demo FAILED");
    return rc;
}

}  // namespace

namespace cmd {
const cli::Command demo = {
    "demo", "run the library end to end on built-in defaults", "",
    "Runs the library end to end in a temporary folder and prints each step:\n"
    "seed the generator, make a GOST R 34.10-2001 key pair on CryptoPro-A and a\n"
    "self-signed certificate, store the key in a PKCS#15 container under a\n"
    "password, reopen it, sign a document as CMS SignedData and verify it.\n",
    {{"--keep", "", "leave the folder in place"}},
    demo_run};
}  // namespace cmd
