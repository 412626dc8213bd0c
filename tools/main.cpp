// korvex: the command-line face of libKorvex.
#include "commands.h"
#include "formats/error.h"

int main(int argc, char** argv) {
    return cli::run_program(argc, argv,
                            {&cmd::hash, &cmd::hmac, &cmd::enc, &cmd::dec, &cmd::keygen, &cmd::sign, &cmd::verify,
                             &cmd::x509, &cmd::cms, &cmd::pkcs15, &cmd::pkcs12, &cmd::cryptopro, &cmd::key, &cmd::pfx,
                             &cmd::demo});
}
