#include "cli.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "PRNG.h"
#include "formats/pkcs8.h"

namespace cli {

std::string Args::get(const std::string& o, const std::string& def) const {
    auto it = opts.find(o);
    return it == opts.end() || it->second.empty() ? def : it->second.back();
}

std::string Args::need(const std::string& o) const {
    if (!has(o)) throw Error("missing option " + o, kExitUsage);
    return get(o);
}

std::vector<std::string> Args::all(const std::string& o) const {
    auto it = opts.find(o);
    return it == opts.end() ? std::vector<std::string>{} : it->second;
}

void read_chunks(const std::string& path,
                 const std::function<void(unsigned char* p, size_t n, unsigned long long total)>& chunk) {
    int fd = path == "-" ? 0 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw Error(path + ": " + std::strerror(errno));
    struct stat st;
    unsigned long long total = 0;
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode)) total = static_cast<unsigned long long>(st.st_size);
    std::vector<unsigned char> buf(1 << 20);
    for (;;) {
        ssize_t n = ::read(fd, buf.data(), buf.size());
        if (n < 0) {
            if (errno == EINTR) continue;
            int e = errno;
            if (fd) ::close(fd);
            throw Error(path + ": " + std::strerror(e));
        }
        if (n == 0) break;
        chunk(buf.data(), static_cast<size_t>(n), total);
    }
    if (fd) ::close(fd);
}

Bytes read_file(const std::string& path, size_t max) {
    Bytes out;
    read_chunks(path, [&](unsigned char* p, size_t n, unsigned long long total) {
        if (max && (total > max || out.size() + n > max))
            throw Error(path + ": too large (more than " + std::to_string(max >> 10) + " KiB) for what it is given as",
                        kExitInput);
        out.insert(out.end(), p, p + n);
    });
    return out;
}

std::string read_text(const std::string& path, size_t max) {
    Bytes b = read_file(path, max);
    return std::string(b.begin(), b.end());
}

bool file_exists(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

static bool same_file(const std::string& a, const std::string& b) {
    struct stat sa, sb;
    if (::stat(a.c_str(), &sa) != 0 || ::stat(b.c_str(), &sb) != 0) return false;
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

bool g_force = false;

void write_file(const std::string& path, const Bytes& data, const std::vector<std::string>& inputs,
                unsigned mode, Overwrite ow) {
    if (path == "-") {
        size_t off = 0;
        while (off < data.size()) {
            ssize_t n = ::write(1, data.data() + off, data.size() - off);
            if (n < 0) {
                if (errno == EINTR) continue;
                throw Error(std::string("stdout: ") + std::strerror(errno));
            }
            off += static_cast<size_t>(n);
        }
        return;
    }
    for (auto& in_path : inputs)
        if (in_path == path || same_file(in_path, path))
            throw Error(path + ": refusing to overwrite an input file", kExitRefused);
    // Only regular files are ever replaced, never what a link points at, and
    // an existing file only when the command updates it or --force is given.
    struct stat st;
    if (::lstat(path.c_str(), &st) == 0) {
        if (S_ISLNK(st.st_mode)) throw Error(path + ": is a symbolic link; refusing to replace it", kExitRefused);
        if (!S_ISREG(st.st_mode))
            throw Error(path + ": not a regular file; refusing to replace it (-o - writes to standard output)",
                        kExitRefused);
        if (ow == Overwrite::in_place) mode = st.st_mode & 07777;
        else if (!g_force) throw Error(path + ": exists; --force replaces it", kExitRefused);
    } else if (ow == Overwrite::in_place) {
        throw Error(path + ": " + std::strerror(errno), 4);
    }
    std::string tmpl = path + ".XXXXXX";
    std::vector<char> name(tmpl.begin(), tmpl.end());
    name.push_back('\0');
    int fd = ::mkstemp(name.data());
    if (fd < 0) throw Error(path + ": " + std::strerror(errno));
    std::string tmp(name.data());
    auto fail = [&](const std::string& what) {
        int e = errno;
        ::close(fd);
        ::unlink(tmp.c_str());
        throw Error(path + ": " + what + ": " + std::strerror(e));
    };
    size_t off = 0;
    while (off < data.size()) {
        ssize_t n = ::write(fd, data.data() + off, data.size() - off);
        if (n < 0) {
            if (errno == EINTR) continue;
            fail("write");
        }
        off += static_cast<size_t>(n);
    }
    if (::fchmod(fd, mode) != 0) fail("chmod");
    if (::fsync(fd) != 0) fail("fsync");
    if (::close(fd) != 0) {
        ::unlink(tmp.c_str());
        throw Error(path + ": close failed");
    }
    if (::rename(tmp.c_str(), path.c_str()) != 0) {
        int e = errno;
        ::unlink(tmp.c_str());
        throw Error(path + ": " + std::strerror(e));
    }
}

void write_file(const std::string& path, const std::string& text, const std::vector<std::string>& inputs,
                unsigned mode, Overwrite ow) {
    write_file(path, Bytes(text.begin(), text.end()), inputs, mode, ow);
}

std::string to_hex(const unsigned char* p, size_t n) {
    static const char* d = "0123456789abcdef";
    std::string s;
    s.reserve(2 * n);
    for (size_t i = 0; i < n; ++i) {
        s += d[p[i] >> 4];
        s += d[p[i] & 15];
    }
    return s;
}

static int hexval(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

Bytes from_hex(const std::string& s) {
    std::string t;
    for (char c : s)
        if (!std::isspace(static_cast<unsigned char>(c)) && c != ':') t += c;
    if (t.rfind("0x", 0) == 0 || t.rfind("0X", 0) == 0) t = t.substr(2);
    if (t.size() % 2) throw Error("bad hex: odd number of digits");
    Bytes out(t.size() / 2);
    for (size_t i = 0; i < out.size(); ++i) {
        int h = hexval(t[2 * i]), l = hexval(t[2 * i + 1]);
        if (h < 0 || l < 0) throw Error("bad hex: '" + s.substr(0, 40) + "'");
        out[i] = static_cast<unsigned char>(h << 4 | l);
    }
    return out;
}

Bytes hex_or_file(const std::string& v, size_t want) {
    Bytes b;
    std::string path = v.rfind("file:", 0) == 0 ? v.substr(5) : "";
    if (path.empty() && file_exists(v)) path = v;
    if (!path.empty()) {
        b = read_file(path);
        if (b.size() != want) {
            std::string text(b.begin(), b.end());
            b = from_hex(text);
        }
    } else {
        b = from_hex(v);
    }
    if (want && b.size() != want)
        throw Error("expected " + std::to_string(want) + " bytes, got " + std::to_string(b.size()));
    return b;
}

static std::string strip_newline(std::string s) {
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r')) s.pop_back();
    return s;
}

static std::string prompt_tty(const std::string& prompt) {
    int fd = ::open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (fd < 0) throw Error("no terminal to ask for the password: use --pass-file FILE or --pass env:VAR");
    (void)!::write(fd, prompt.data(), prompt.size());
    struct termios old, quiet;
    bool have = ::tcgetattr(fd, &old) == 0;
    if (have) {
        quiet = old;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(fd, TCSAFLUSH, &quiet);
    }
    std::string line;
    char c;
    while (::read(fd, &c, 1) == 1 && c != '\n') line += c;
    if (have) ::tcsetattr(fd, TCSAFLUSH, &old);
    (void)!::write(fd, "\n", 1);
    ::close(fd);
    return line;
}

std::string password_from(const std::string& spec, const std::string& file, const std::string& prompt,
                          bool confirm) {
    std::string pw;
    if (!file.empty()) {
        std::string t = read_text(file);
        pw = strip_newline(t.substr(0, t.find('\n')));
        wipe(t);
    } else if (spec.rfind("env:", 0) == 0) {
        const char* v = std::getenv(spec.substr(4).c_str());
        if (!v) throw Error("environment variable " + spec.substr(4) + " is not set");
        pw = v;
    } else if (spec.rfind("pass:", 0) == 0) {
        pw = spec.substr(5);
    } else if (spec.rfind("file:", 0) == 0) {
        return password_from("", spec.substr(5), prompt, confirm);
    } else if (!spec.empty()) {
        throw Error("--pass takes env:VAR, pass:TEXT or file:PATH", kExitUsage);
    } else {
        pw = prompt_tty(prompt);
        if (confirm) {
            std::string again = prompt_tty("Again: ");
            bool same = again == pw;
            wipe(again);
            if (!same) throw Error("the passwords differ");
        }
    }
    if (pw.size() > 255) throw Error("password longer than 255 bytes");
    return pw;
}

std::string password(const Args& a, const std::string& prompt, bool confirm) {
    return password_from(a.get("--pass"), a.get("--pass-file"), prompt, confirm);
}

void seed_generator() {
    unsigned char seed[40];
    size_t got = 0;
    while (got < sizeof seed) {
        ssize_t n = ::getrandom(seed + got, sizeof seed - got, 0);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw Error(std::string("getrandom: ") + std::strerror(errno));
        }
        got += static_cast<size_t>(n);
    }
    unsigned char r = PRNG_init(seed);
    wipe(seed, sizeof seed);
    if (r != 0) throw Error("the generator's self-test failed (code " + std::to_string(r) + ")");
}

void wipe(void* p, size_t n) {
    volatile unsigned char* d = static_cast<volatile unsigned char*>(p);
    while (n--) *d++ = 0;
}

unsigned char sbox_by_name(const std::string& n) {
    static const std::map<std::string, unsigned char> names = {
        {"A", 2}, {"CryptoPro-A", 2}, {"B", 4}, {"CryptoPro-B", 4}, {"C", 5}, {"CryptoPro-C", 5},
        {"D", 6}, {"CryptoPro-D", 6}, {"Z", 7}, {"param-Z", 7}, {"hash", 1}, {"R3411", 1}};
    auto it = names.find(n);
    if (it != names.end()) return it->second;
    throw Error("unknown S-box '" + n + "' (A, B, C, D, Z or hash)", kExitUsage);
}

Curve curve_by_name(const std::string& n) {
    const formats::CurveInfo* c = formats::find_curve(n);
    if (!c) throw Error("unknown curve '" + n + "' (A, B, C, XA, XB, test, 512A, 512B, 512test, or an OID)", 2);
    if (!c->supported) throw Error(std::string("the ") + c->title + " curve (" + c->oid + ") is not supported", 5);
    return {c->sel, c->is512, c->name, c->oid};
}

// PEM armour through libcrypto (tools/formats).
std::string pem_encode(const std::string& label, const Bytes& der) { return formats::pem_encode(label.c_str(), der); }

Bytes pem_decode(const std::string& text, const std::string& label) {
    Bytes t(text.begin(), text.end());
    std::vector<Bytes> blocks = formats::pem_decode_all(t, label.c_str());
    if (!blocks.empty()) return blocks[0];
    if (!t.empty() && t[0] == 0x30) return t;
    throw Error("no " + label + " found", 4);
}

}  // namespace cli
