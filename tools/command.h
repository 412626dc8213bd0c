// The korvex program's command layer: every command declares its options,
// arguments and help once, in a cli::Command table, and CLI11 parses the
// command line and prints the help from that table. See tools/README.md.
#ifndef KORVEX_TOOLS_COMMAND_H
#define KORVEX_TOOLS_COMMAND_H

#include <string>
#include <vector>

#include "cli.h"

namespace cli {

// One option. `names`: "-o" or "--key" or "-a,--alg" (the first name is the
// key in Args). `value`: the placeholder shown in help ("HEX|FILE"); empty
// for a flag. `flags`: kRequired and/or kRepeat (may be given many times).
enum OptionFlags : unsigned { kRequired = 1, kRepeat = 2 };
struct Option {
    const char* names;
    const char* value;
    const char* help;
    unsigned flags = 0;
};

struct Command;
using Run = int (*)(const Args& a);

// A command: a leaf with `run`, or a group of `subs` (korvex cms sign ...).
// `args` names the positional arguments for the usage line and sets how many
// are taken: "FILE" one, "[FILE]" at most one, "[FILE...]" any number,
// "FILE..." at least one. `summary` is the line in the parent's list,
// `about` the paragraph under the usage line.
struct Command {
    const char* name;
    const char* summary;
    const char* args;
    const char* about;
    std::vector<Option> options;
    Run run = nullptr;
    std::vector<const Command*> subs = {};
};

// The password options (--pass SPEC, --pass-file FILE) added to `opts`.
std::vector<Option> with_password(std::vector<Option> opts);
// `a` then `b`.
std::vector<Option> join(std::vector<Option> a, const std::vector<Option>& b);

// Parses argv with CLI11 against `commands` and runs the chosen one:
// --help prints to stdout (exit 0), --version prints the version, usage
// errors go to stderr with exit 2, a thrown cli::Error prints
// "korvex CMD: message" on stderr and exits with its code.
int run_program(int argc, char** argv, const std::vector<const Command*>& commands);

}  // namespace cli

#endif
