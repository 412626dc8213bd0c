// The subcommands of the korvex program.
#ifndef KORVEX_TOOLS_COMMANDS_H
#define KORVEX_TOOLS_COMMANDS_H

namespace cmd {

// Each takes the whole argv and the index of its first own argument, and
// returns the process exit code; failures are thrown as cli::Error.
using Fn = int (*)(int argc, char** argv, int first);

int hash(int argc, char** argv, int first);
int hmac(int argc, char** argv, int first);
int enc(int argc, char** argv, int first);
int dec(int argc, char** argv, int first);
int keygen(int argc, char** argv, int first);
int sign(int argc, char** argv, int first);
int verify(int argc, char** argv, int first);
int x509(int argc, char** argv, int first);
int cms(int argc, char** argv, int first);
int pkcs15(int argc, char** argv, int first);
int pkcs12(int argc, char** argv, int first);
int cryptopro(int argc, char** argv, int first);
int key(int argc, char** argv, int first);
int pfx(int argc, char** argv, int first);
int demo(int argc, char** argv, int first);

}  // namespace cmd

#endif
