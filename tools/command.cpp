#include "command.h"

#include "formats/error.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>
#include <memory>

#ifndef KORVEX_VERSION
#define KORVEX_VERSION "unknown"
#endif

namespace cli {

namespace {

const char* kExitTable =
    "exit codes (every command):\n"
    "  0  done; the signature or checksum is valid\n"
    "  1  a signature or checksum does not verify\n"
    "  2  bad command line (usage)\n"
    "  3  wrong password, or a key that is not the certificate's\n"
    "  4  unreadable or damaged input\n"
    "  5  refused: would overwrite a file, unsupported curve or parameters\n";

// How many positional arguments a command's `args` text allows.
void positional_counts(const std::string& args, size_t& min, size_t& max) {
    min = max = 0;
    size_t i = 0;
    while (i < args.size()) {
        size_t j = args.find(' ', i);
        if (j == std::string::npos) j = args.size();
        std::string t = args.substr(i, j - i);
        i = j + 1;
        if (t.empty()) continue;
        bool many = t.find("...") != std::string::npos;
        if (t[0] != '[') ++min;
        max = many ? SIZE_MAX : max + 1;
    }
}

// One command's place in the CLI11 tree and where its parse results land.
struct Node {
    const Command* cmd;
    std::string path;  // "korvex cms sign"
    CLI::App* app;
    std::vector<std::pair<const Option*, CLI::Option*>> opts;
    CLI::Option* force = nullptr;
    std::vector<std::string> pos;
};

std::string usage_line(const Node& n) {
    std::string s = n.path;
    if (!n.cmd) return s + " COMMAND [OPTIONS] [ARGS]";
    if (!n.cmd->run) return s + " COMMAND [OPTIONS] [ARGS]";
    bool optional = false;
    for (const Option& o : n.cmd->options) {
        std::string first = o.names;
        first = first.substr(0, first.find(','));
        if (o.flags & kRequired) s += " " + first + (*o.value ? std::string(" ") + o.value : "");
        else optional = true;
    }
    if (optional) s += " [OPTIONS]";
    if (*n.cmd->args) s += std::string(" ") + n.cmd->args;
    return s;
}

std::string list_line(const std::string& name, const std::string& text) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "  %-10s ", name.c_str());
    return buf + text + "\n";
}

// Help in the program's layout: usage, the paragraph, options, commands.
class Help : public CLI::Formatter {
public:
    Help(const Node* node, const std::vector<const Node*>& children) : node_(node), children_(children) {}
    std::string make_help(const CLI::App* app, std::string, CLI::AppFormatMode mode) const override {
        std::string out = "usage: ";
        if (node_->cmd && !node_->cmd->run) {
            for (size_t i = 0; i < children_.size(); ++i)
                out += (i ? "       " : "") + usage_line(*children_[i]) + "\n";
        } else {
            out += usage_line(*node_) + "\n";
        }
        const char* about = node_->cmd ? node_->cmd->about : nullptr;
        if (about && *about) out += std::string("\n") + about;
        if (!children_.empty()) {
            out += "\ncommands:\n";
            for (const Node* c : children_) out += list_line(c->cmd->name, c->cmd->summary);
        }
        std::string groups = make_groups(app, mode);
        groups.erase(0, groups.find_first_not_of('\n'));
        if (!groups.empty()) out += "\n" + groups;
        if (!children_.empty())
            out += "\n'" + node_->path + " COMMAND --help' lists a command's options and arguments.\n";
        if (!app->get_footer().empty()) out += "\n" + app->get_footer() + "\n";
        if (!node_->cmd) out += std::string("\n") + kExitTable;
        return out;
    }

private:
    const Node* node_;
    std::vector<const Node*> children_;
};

class Program {
public:
    Program(const std::vector<const Command*>& commands) : root_("korvex", "korvex") {
        root_.set_help_flag("-h,--help", "print this help and exit");
        root_.set_version_flag("--version", "korvex " KORVEX_VERSION " (libKorvex)", "print the version and exit");
        force_ = root_.add_flag("--force", "replace existing output files (-o)");
        nodes_.push_back(std::make_unique<Node>(Node{nullptr, "korvex", &root_, {}, nullptr, {}}));
        std::vector<const Node*> top;
        for (const Command* c : commands) top.push_back(add(&root_, "korvex", c));
        root_.formatter(std::make_shared<Help>(nodes_[0].get(), top));
        root_.footer(
            "Output files (-o) are never written over an existing file unless --force\n"
            "is given, and never over a device, folder or symbolic link; -o - writes\n"
            "to standard output. Usage and errors go to standard error.");
    }

    int run(int argc, char** argv) {
        if (argc == 2 && std::string(argv[1]) == "help") {  // as before CLI11: korvex help
            std::fputs(root_.help().c_str(), stdout);
            return kExitOk;
        }
        try {
            root_.parse(argc, argv);
        } catch (const CLI::CallForHelp&) {
            std::fputs(root_.help().c_str(), stdout);
            return kExitOk;
        } catch (const CLI::CallForVersion& v) {
            std::printf("%s\n", v.what());
            return kExitOk;
        } catch (const CLI::ParseError& e) {
            return usage_error(e.what());
        }
        const Node* n = chosen();
        if (!n->cmd || !n->cmd->run) {
            std::fputs(n->app->help().c_str(), stderr);
            return kExitUsage;
        }
        return call(*n);
    }

private:
    const Node* add(CLI::App* parent, const std::string& prefix, const Command* c) {
        CLI::App* app = parent->add_subcommand(c->name, c->summary);
        app->set_help_flag("-h,--help", "print this help and exit");
        nodes_.push_back(std::make_unique<Node>(Node{c, prefix + " " + c->name, app, {}, nullptr, {}}));
        Node* n = nodes_.back().get();
        std::vector<const Node*> children;
        for (const Command* s : c->subs) children.push_back(add(app, n->path, s));
        bool writes = false;
        for (const Option& o : c->options) {
            CLI::Option* opt;
            if (!*o.value) {
                opt = app->add_flag(o.names, o.help);
            } else {
                opt = app->add_option(o.names, o.help)->type_name(o.value)->expected(1)->allow_extra_args(false);
                opt->multi_option_policy((o.flags & kRepeat) ? CLI::MultiOptionPolicy::TakeAll
                                                             : CLI::MultiOptionPolicy::TakeLast);
            }
            if (o.flags & kRequired) opt->required();
            n->opts.emplace_back(&o, opt);
            writes |= std::string(o.names) == "-o";
        }
        if (writes) n->force = app->add_flag("--force", "replace an existing output file");
        if (c->run) {
            size_t min, max;
            positional_counts(c->args, min, max);
            // Any count here; run() checks it against `args` with a clearer message.
            if (max) app->add_option("args", n->pos)->expected(0, 1 << 20);
        }
        app->formatter(std::make_shared<Help>(n, children));
        return n;
    }

    const Node* chosen() const {
        const Node* best = nodes_[0].get();
        for (auto& n : nodes_)
            if (n->app->parsed() && n->path.size() > best->path.size()) best = n.get();
        return best;
    }

    int usage_error(const std::string& what) {
        const Node* n = chosen();
        auto extras = n->app->remaining();
        if (!extras.empty() && extras[0].size() && extras[0][0] != '-' && (!n->cmd || !n->cmd->run)) {
            std::string names;
            for (const Command* s : n->cmd ? n->cmd->subs : std::vector<const Command*>{}) names += (names.empty() ? "" : ", ") + std::string(s->name);
            if (n->cmd)
                std::fprintf(stderr, "%s: unknown %s command '%s' (%s)\n", n->path.c_str(), n->cmd->name,
                             extras[0].c_str(), names.c_str());
            else
                std::fprintf(stderr, "korvex: unknown command '%s' (try korvex --help)\n", extras[0].c_str());
            return kExitUsage;
        }
        std::fprintf(stderr, "%s: %s (try %s --help)\n", n->path.c_str(), what.c_str(), n->path.c_str());
        return kExitUsage;
    }

    int call(const Node& n) {
        Args a;
        for (auto& [decl, opt] : n.opts) {
            if (!opt->count()) continue;
            std::string key = decl->names;
            key = key.substr(0, key.find(','));
            auto& v = a.opts[key];
            if (*decl->value) v = opt->results();
        }
        if ((n.force && n.force->count()) || force_->count()) g_force = true;
        a.pos = n.pos;
        size_t min, max;
        positional_counts(n.cmd->args, min, max);
        if (a.pos.size() < min || a.pos.size() > max) {
            std::string want = *n.cmd->args ? n.cmd->args : "no arguments";
            std::fprintf(stderr, "%s: expects %s (try %s --help)\n", n.path.c_str(), want.c_str(), n.path.c_str());
            return kExitUsage;
        }
        try {
            return n.cmd->run(a);
        } catch (const Error& e) {
            std::fprintf(stderr, "%s: %s\n", n.path.c_str(), e.what());
            return e.code;
        } catch (const formats::Error& e) {
            std::fprintf(stderr, "%s: %s\n", n.path.c_str(), e.what());
            return e.code;
        } catch (const std::exception& e) {
            std::fprintf(stderr, "%s: %s\n", n.path.c_str(), e.what());
            return kExitInput;
        }
    }

    CLI::App root_;
    CLI::Option* force_;
    std::vector<std::unique_ptr<Node>> nodes_;
};

}  // namespace

std::vector<Option> with_password(std::vector<Option> opts) {
    opts.push_back({"--pass", "SPEC", "password as env:VAR, pass:TEXT or file:PATH (default: a prompt)"});
    opts.push_back({"--pass-file", "FILE", "read the password from the first line of FILE"});
    return opts;
}

std::vector<Option> join(std::vector<Option> a, const std::vector<Option>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

int run_program(int argc, char** argv, const std::vector<const Command*>& commands) {
    return Program(commands).run(argc, argv);
}

}  // namespace cli
