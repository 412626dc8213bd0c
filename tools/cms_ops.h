// CMS SignedData signing and checking for the korvex program.
#ifndef KORVEX_TOOLS_CMS_OPS_H
#define KORVEX_TOOLS_CMS_OPS_H

#include <string>

#include "cli.h"
#include "keyfile.h"

namespace cli {

// A SignedData message over content, signed with key (which must be the
// certificate's, on the CryptoPro-A curve). attrs/uattrs: attribute text
// (OID:BASE64 items joined by '&'). Needs the generator seeded.
Bytes cms_sign(Bytes& content, KeyPair& key, Bytes& cert, std::string attrs, std::string uattrs, bool detached,
               bool include_cert);

struct CmsCheck {
    unsigned code = 0;       // the library's result: 5 valid, 6 invalid
    bool digest_ok = true;   // messageDigest attribute matches the content
    std::string signer;
    bool valid() const { return code == 5 && digest_ok; }
};
// cert/content override what the message carries (detached content, or a
// message without certificate). Throws Error(code 4) on unreadable messages.
CmsCheck cms_verify(Bytes msg, const Bytes* cert, const Bytes* content);

}  // namespace cli

#endif
