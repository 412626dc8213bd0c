// Where the parts of a PKCS#15 container lie: the fixed offsets of the 2001
// generation and the walk of the 2012 one. Shared by the readers and the
// update functions.
#ifndef KORVEX_CONTAINERS_PKCS15_LOCATE_H
#define KORVEX_CONTAINERS_PKCS15_LOCATE_H

#include "containers/pkcs15_internal.h"

namespace kx {
namespace p15 {

// 2001 layout, octet offsets from the container's first octet. Fields of the
// key object move by s = 1 in the 787-octet form (two usage-flag octets).
constexpr unsigned kSize2001 = 786;
constexpr unsigned kRandomLen = 40;
constexpr unsigned kSalt2001 = 178;          // PBKDF2 salt, 32 octets
constexpr unsigned kRandomBase2001 = 272;    // enveloped random value (A2 content)
constexpr unsigned kKeyBase2001 = 500;       // enveloped private key, + s
constexpr unsigned kAdUkm2001 = 46;          // AuthenticatedData: UKM of the MAC key wrap
constexpr unsigned kAdMacKey2001 = 60;       //   wrapped MAC key
constexpr unsigned kAdMacKeyMac2001 = 94;    //   its MAC
constexpr unsigned kToken2001 = 142;         //   encapsulated token, 532 + s octets
constexpr unsigned kTokenLen2001 = 532;
constexpr unsigned kAttrs2001 = 674;         //   authenticated attributes, + s
constexpr unsigned kRandomValue2001 = 414;   // random value inside the random object

// Checks the first tag, the leading INTEGER and that the outer length covers
// need octets (need + s when shifted); sets s. 0 or 30.
unsigned check_2001(uint8_t* c, unsigned need, bool shifted, unsigned& s);
// The enveloped value whose A2 content starts at c + base.
Envelope envelope_2001(uint8_t* c, unsigned base, unsigned value_len);

// 2012: finds the key object (or the random object) and its envelope and
// the password info element (kmi.tag null when absent). 0 or 30.
unsigned walk_2012(uint8_t* c, bool key_object, Der& kmi, Envelope& env);
// KEK from the password info, honouring its iteration count; zero without
// password info. 0 or 30.
unsigned kek_2012(const Der& kmi, uint8_t* password, unsigned char passwordLen, type_uN<32>* kek);

}  // namespace p15
}  // namespace kx

#endif
