// CryptoPro CSP key containers (the folder format): the password-derived
// key-encryption key, as real CSP 4/5 containers use it. The password is
// widened to four bytes per character and run through 2000 rounds of an
// HMAC-like step over GOST R 34.11-94 (2001 containers) or Streebog-256 with
// 64-byte pads (2012 containers, 256- and 512-bit keys alike). Any length.
#ifndef KORVEX_TOOLS_FORMATS_CSP_KDF_H
#define KORVEX_TOOLS_FORMATS_CSP_KDF_H
#include <string>
#include "formats/error.h"
namespace formats {
// salt: the 12 bytes of masks.key for the KEK, or the 8-byte public-key
// fingerprint of header.key for the password-check key. 32 bytes out.
Secret csp_container_kek(const std::string& password, const Bytes& salt, bool gost2012);
// header.key's hmacPassword ([2], 4 bytes): the GOST 28147-89 MAC of 16 zero
// bytes under the password-check key (S-box A for 2001, Z for 2012). Proves
// the password before the key is touched.
bool csp_password_matches(const std::string& password, const Bytes& fingerprint, const Bytes& hmac_password,
                          bool gost2012);
// masks.key's MAC: the salt under the mask (a 64-byte mask's upper half).
// Detects a damaged masks file without the password.
bool csp_mask_mac_matches(const Bytes& mask, const Bytes& salt, const Bytes& mac, bool gost2012);
// header.key's own MAC: the DER of keyContainerContent under a zero key. A
// checksum against damage (the key is constant); false for any malformed file.
bool csp_header_mac_matches(const Bytes& header, bool gost2012);
}  // namespace formats
#endif
