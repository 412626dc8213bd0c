// Shared plumbing of the korvex program: argument handling, files, hex,
// passwords, the generator's seed and key hygiene. The program uses the
// public interface of libKorvex only.
#ifndef KORVEX_TOOLS_CLI_H
#define KORVEX_TOOLS_CLI_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace cli {

using Bytes = std::vector<unsigned char>;

// The exit codes of every command, listed in `korvex --help`.
enum Exit : int {
    kExitOk = 0,        // done; the signature or checksum is valid
    kExitInvalid = 1,   // a signature or checksum does not verify
    kExitUsage = 2,     // bad command line
    kExitPassword = 3,  // wrong password (or a key that is not the certificate's)
    kExitInput = 4,     // unreadable or damaged input
    kExitRefused = 5,   // refused: would overwrite a file, unsupported curve or parameters
};

// A failure to report: one line on stderr, exit code `code`.
struct Error : std::runtime_error {
    int code;
    explicit Error(const std::string& msg, int c = kExitInput) : std::runtime_error(msg), code(c) {}
};

// The options and positional arguments of one command, as the command layer
// (command.h) parsed them: options are keyed by their first declared name.
struct Args {
    std::map<std::string, std::vector<std::string>> opts;
    std::vector<std::string> pos;

    bool has(const std::string& o) const { return opts.count(o) != 0; }
    std::string get(const std::string& o, const std::string& def = "") const;
    std::string need(const std::string& o) const;  // exit 2 when absent
    std::vector<std::string> all(const std::string& o) const;
};

// "-" is stdin. With max, a larger file is refused (exit 4) before it is
// read: keys, certificates and containers are small, and a huge file given
// as one must not fill the memory.
Bytes read_file(const std::string& path, size_t max = 0);
constexpr size_t kSmallFile = size_t(1) << 20;  // certificates, keys, containers
constexpr size_t kBundleFile = size_t(16) << 20;  // certificate bundles
// Feeds a file ("-" is stdin) to `chunk` piece by piece; `total` is the file's
// size when it is a regular file, else 0.
void read_chunks(const std::string& path,
                 const std::function<void(unsigned char* p, size_t n, unsigned long long total)>& chunk);
std::string read_text(const std::string& path, size_t max = 0);
// Writes through a temporary file in the same folder, then renames it over
// the target, so that a failure never leaves a half-written file; "-" is
// standard output. Refuses (exit 5) to write over any path listed in
// `inputs`, over anything but a regular file (devices, FIFOs, folders,
// symbolic links), and over an existing file unless the command updates it
// in place (its mode is kept) or --force was given (g_force).
enum class Overwrite { no, in_place };
extern bool g_force;
void write_file(const std::string& path, const Bytes& data, const std::vector<std::string>& inputs = {},
                unsigned mode = 0644, Overwrite ow = Overwrite::no);
void write_file(const std::string& path, const std::string& text, const std::vector<std::string>& inputs = {},
                unsigned mode = 0644, Overwrite ow = Overwrite::no);
bool file_exists(const std::string& path);

std::string to_hex(const unsigned char* p, size_t n);
inline std::string to_hex(const Bytes& b) { return to_hex(b.data(), b.size()); }
Bytes from_hex(const std::string& s);               // throws Error on bad hex
// A value given as hex, or as "file:PATH" / a path to a file holding raw bytes
// or hex text.
Bytes hex_or_file(const std::string& v, size_t want);

// Password from --pass-file FILE, --pass env:VAR / pass:TEXT, or a no-echo
// prompt on the terminal.
std::string password(const Args& a, const std::string& prompt, bool confirm = false);
std::string password_from(const std::string& spec, const std::string& file, const std::string& prompt,
                          bool confirm);

// Seeds the library's generator from getrandom(2).
void seed_generator();

void wipe(void* p, size_t n);
inline void wipe(Bytes& b) { wipe(b.data(), b.size()); }
inline void wipe(std::string& s) { wipe(s.data(), s.size()); }

// Cipher S-box selector by name: A, B, C, D, Z, hash (or a number).
unsigned char sbox_by_name(const std::string& n);
// Curve selector: A, B, C, XA, XB, test (256-bit) or 512A, 512B, 512test,
// TC26-256-B/C/D, or a parameter-set OID. The library's missing curves
// (TC26 256-bit paramSetA, 512-bit paramSetC) are refused by name (exit 5).
struct Curve {
    unsigned char sel;
    bool is512;
    std::string name;
    std::string oid;  // the parameter-set OID
};
Curve curve_by_name(const std::string& n);

// PEM armour.
std::string pem_encode(const std::string& label, const Bytes& der);
Bytes pem_decode(const std::string& text, const std::string& label);  // accepts DER too

}  // namespace cli

#endif
