// korvex x509 show / selfsign.
#include <cstdio>

#include "certs.h"
#include "cli.h"
#include "commands.h"
#include "der.h"
#include "cert_info.h"
#include <optional>

namespace {

using cli::Bytes;
using cli::Error;

int show_run(const cli::Args& a) {
    cli::Cert c = cli::read_cert(a.pos[0]);
    std::optional<cli::Cert> issuer;
    if (a.has("--issuer")) issuer = cli::read_cert(a.get("--issuer"));
    std::printf("version:    %d\n", c.version);
    std::printf("subject:    %s\n", cli::name_text(c.subject).c_str());
    std::printf("issuer:     %s\n", cli::name_text(c.issuer).c_str());
    der::Elem sn = der::read(c.serial.data(), c.serial.data() + c.serial.size());
    std::printf("serial:     %s\n", cli::to_hex(sn.content(), sn.len).c_str());
    std::printf("not before: %s\nnot after:  %s\n", cli::time_text(c.not_before).c_str(), cli::time_text(c.not_after).c_str());
    if (c.key_error.empty()) {
        std::printf("key:        %s, %s\n", cli::gen_name(c.key.gen), c.key.curve.c_str());
        std::printf("public key: %s\n", cli::to_hex(c.key.q).c_str());
    } else {
        std::printf("key:        %s\n", c.key_error.c_str());
    }
    for (const cli::Extension& e : c.exts) std::printf("extension:  %s\n", cli::extension_text(e).c_str());
    std::string why, against;
    if (issuer) {
        if (issuer->subject != c.issuer) why = "the issuer certificate's subject is not this certificate's issuer";
        else why = cli::check_cert_signature(c, *issuer);
        against = "checked against the issuer's key";
    } else if (c.self_issued()) {
        why = cli::check_cert_signature(c, c);
        against = "checked against its own key";
    } else {
        std::printf("signature:  not checked (issuer not given: use --issuer)\n");
        return 0;
    }
    std::printf("signature:  %s (%s%s)\n", why.empty() ? "valid" : "INVALID", against.c_str(),
                why.empty() ? "" : (": " + why).c_str());
    return why.empty() ? 0 : 1;
}

int selfsign_run(const cli::Args& a) {
    cli::CertRequest req;
    if (a.has("--subject")) req.subject = a.get("--subject");
    if (a.has("--days")) {
        const std::string d = a.get("--days");
        size_t used = 0;
        try {
            req.days = std::stol(d, &used);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used == 0 || used != d.size() || req.days <= 0 || req.days > 36500)
            throw Error("--days: '" + d + "' is not a whole number of days from 1 to 36500", cli::kExitUsage);
    }
    if (a.has("--serial")) req.serial = cli::from_hex(a.get("--serial"));
    cli::KeyPair k = cli::read_key(a.need("--key"));
    cli::seed_generator();
    Bytes cert = cli::self_signed(k, req);
    if (a.has("--der")) cli::write_file(a.get("-o", "-"), cert, {a.get("--key")});
    else cli::write_file(a.get("-o", "-"), cli::pem_encode("CERTIFICATE", cert), {a.get("--key")});
    return 0;
}

const cli::Command x509_show = {
    "show", "print a certificate and check its signature", "CERT",
    "Prints names, serial, validity, the key and its curve and every extension,\n"
    "and checks the signature (GOST R 34.10-2001 or -2012) with the --issuer\n"
    "certificate's key, or its own when it is self-issued (exit 1 when it does\n"
    "not verify).\n",
    {{"--issuer", "CERT", "check the signature with this issuer's key"}},
    show_run};

const cli::Command x509_selfsign = {
    "selfsign", "make a self-signed certificate for a key", "",
    "Composes a self-signed GOST R 34.10-2001 certificate (v3, keyUsage and\n"
    "basic constraints) for a korvex key file, PEM unless --der.\n",
    {{"--key", "KEY", "the key", cli::kRequired},
     {"--subject", "DN", "the name, as \"CN=..,O=..,C=RU\""},
     {"--days", "N", "days of validity"},
     {"--serial", "HEX", "the serial number"},
     {"--der", "", "write DER instead of PEM"},
     {"-o", "OUT", "the certificate file (default: stdout)"}},
    selfsign_run};

}  // namespace

namespace cmd {
const cli::Command x509 = {"x509", "show a certificate, make a self-signed one", "", "", {}, nullptr,
                           {&x509_show, &x509_selfsign}};
}  // namespace cmd
