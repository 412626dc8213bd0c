// Streaming digests and HMACs of files in bounded memory, for every command
// that hashes user data (hash, hmac, CMS).
#ifndef KORVEX_TOOLS_DIGEST_H
#define KORVEX_TOOLS_DIGEST_H

#include <string>

#include "cli.h"
#include "korvex.h"

namespace cli {

enum class Alg { gost94, streebog256, streebog512 };
Alg alg_by_name(const std::string& n);  // gost94, streebog256, streebog512 (or OpenSSL's md_ names)
size_t digest_size(Alg a);
size_t block_size(Alg a);  // the HMAC block: 32 octets for GOST R 34.11-94, 64 for Streebog

// One message of any length. GOST R 34.11-94 is finished here with the
// message's full 256-bit bit length, as the standard and other
// implementations do: the library's own streaming form keeps a 32-bit
// counter, which differs from 2^29 octets on.
class Digest {
public:
    explicit Digest(Alg a);
    ~Digest();
    void write(const unsigned char* p, size_t n);
    Bytes end();  // the digest; the object is spent

private:
    Alg alg_;
    unsigned long long bytes_ = 0;
    stream_hash_t s94_;
    stream_hash_2012_t s12_;
};

// Digest of a file ("-": stdin) read in fixed-size pieces; a progress bar on
// a terminal for files of 64 MiB or more when show_progress is set.
Bytes digest_file(const std::string& path, Alg a, bool show_progress = false);
// HMAC (RFC 2104 with the block sizes of RFC 4357 and RFC 7836) of a file.
Bytes hmac_file(const std::string& path, Alg a, const Bytes& key);

}  // namespace cli

#endif
