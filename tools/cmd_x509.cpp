// korvex x509 show / selfsign.
#include <cstdio>

#include "certs.h"
#include "cli.h"
#include "commands.h"
#include "der.h"
#include "x_509.h"

namespace {

using cli::Bytes;
using cli::Error;

std::string curve_name(Bytes& cert) {
    unsigned s = x_509_get_open_key_parametrs_ds(cert.data());
    static const char* names256[] = {"GOST R 34.10-2001 test curve", "CryptoPro-A (or XchA)", "CryptoPro-B",
                                     "CryptoPro-C (or XchB)"};
    if (s <= 3) return names256[s];
    unsigned t = x_509_get_open_key_parametrs_ds_512bit(cert.data());
    if (t == 0) return "GOST R 34.10-2012 512-bit example curve";
    if (t == 1) return "TC26 512-bit paramSetA";
    if (t == 2) return "TC26 512-bit paramSetB";
    return "not a known GOST parameter set";
}

std::string usage_text(unsigned u) {
    static const char* names[] = {"digitalSignature", "nonRepudiation", "keyEncipherment", "dataEncipherment",
                                  "keyAgreement",     "keyCertSign",    "cRLSign",         "encipherOnly",
                                  "decipherOnly"};
    std::string s;
    for (int i = 0; i < 9; ++i)
        if (u & (1u << i)) s += (s.empty() ? "" : ", ") + std::string(names[i]);
    return s.empty() ? "(none given)" : s;
}

std::string time_text(const x509_field_ref& f) {
    if (!f.ptr) return "(not a UTCTime)";
    std::string t(reinterpret_cast<const char*>(f.ptr), f.len);
    if (t.size() >= 12) {
        int yy = std::stoi(t.substr(0, 2));
        return std::to_string(yy < 50 ? 2000 + yy : 1900 + yy) + "-" + t.substr(2, 2) + "-" + t.substr(4, 2) + " " +
               t.substr(6, 2) + ":" + t.substr(8, 2) + ":" + t.substr(10, 2) + " UTC";
    }
    return t;
}

int show(int argc, char** argv, int first) {
    cli::Args a = cli::parse(argc, argv, first, {"--issuer"}, {});
    if (a.pos.size() != 1) throw Error("name one certificate");
    Bytes cert = cli::load_cert(a.pos[0]);
    Bytes issuer = a.has("--issuer") ? cli::load_cert(a.get("--issuer")) : Bytes();
    x509_textbox tb = x_509_get_textbox_of_cer(cert.data());
    std::printf("subject:    %s\n", cli::subject_text(cert).c_str());
    std::printf("issuer:     %s\n", cli::subject_text(cert, true).c_str());
    std::printf("serial:     %s\n", tb.serial_number.ptr ? cli::to_hex(tb.serial_number.ptr, tb.serial_number.len).c_str() : "?");
    std::printf("not before: %s\nnot after:  %s\n", time_text(tb.not_before).c_str(), time_text(tb.not_after).c_str());
    std::printf("key usage:  %s\n", usage_text(x_509_get_key_usage(cert.data())).c_str());
    std::printf("key set:    %s\n", curve_name(cert).c_str());
    unsigned char* q = x_509_get_open_key(cert.data());
    bool is512 = x_509_get_open_key_parametrs_ds_512bit(cert.data()) != 0xFFFFFFFFu;
    if (q) std::printf("public key: %s\n", cli::to_hex(q, is512 ? 128 : 64).c_str());
    unsigned ok = x_509_check_certificate(cert.data(), issuer.empty() ? nullptr : issuer.data());
    std::printf("signature:  %s (%s)\n", ok == 1 ? "valid" : "INVALID",
                issuer.empty() ? "checked against its own key" : "checked against the issuer's key");
    return ok == 1 ? 0 : 1;
}

int selfsign(int argc, char** argv, int first) {
    cli::Args a = cli::parse(argc, argv, first, {"--key", "--subject", "--days", "--serial", "-o"}, {"--der"});
    cli::KeyPair k = cli::read_key(a.need("--key"));
    cli::CertRequest req;
    if (a.has("--subject")) req.subject = a.get("--subject");
    if (a.has("--days")) req.days = std::stol(a.get("--days"));
    if (a.has("--serial")) req.serial = cli::from_hex(a.get("--serial"));
    cli::seed_generator();
    Bytes cert = cli::self_signed(k, req);
    if (a.has("--der")) cli::write_file(a.get("-o", "-"), cert, {a.get("--key")});
    else cli::write_file(a.get("-o", "-"), cli::pem_encode("CERTIFICATE", cert), {a.get("--key")});
    return 0;
}

}  // namespace

namespace cmd {

int x509(int argc, char** argv, int first) {
    std::string sub = first < argc ? argv[first] : "";
    if (cli::wants_sub_help(sub, argc, argv, first)) {
        std::printf(
            "usage: korvex x509 show CERT [--issuer CERT]\n"
            "       korvex x509 selfsign --key KEY [--subject \"CN=..,O=..,C=RU\"] [--days N]\n"
            "                            [--serial HEX] [--der] [-o OUT]\n\n"
            "show prints names, serial, validity, key usage, the key's parameter set,\n"
            "and checks the signature against the certificate's own key or the\n"
            "issuer's (exit 1 when it does not verify). selfsign composes a\n"
            "self-signed GOST R 34.10-2001 certificate (v3, keyUsage and basic\n"
            "constraints) for a korvex key file, PEM unless --der.\n");
        return sub.empty() ? 2 : 0;
    }
    if (sub == "show") return show(argc, argv, first + 1);
    if (sub == "selfsign") return selfsign(argc, argv, first + 1);
    throw Error("unknown x509 command '" + sub + "' (show, selfsign)");
}

}  // namespace cmd
