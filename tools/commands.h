// The commands of the korvex program, each declared once (options, arguments,
// help) as a cli::Command in its cmd_*.cpp file; main.cpp lists them.
#ifndef KORVEX_TOOLS_COMMANDS_H
#define KORVEX_TOOLS_COMMANDS_H

#include "command.h"

namespace cmd {

extern const cli::Command hash, hmac, enc, dec, keygen, sign, verify, x509, cms, pkcs15, pkcs12, cryptopro, key, pfx,
    demo;

}  // namespace cmd

#endif
