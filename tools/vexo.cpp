// SPDX-License-Identifier: MIT
// vexo: look at, convert and create scanner correction files, calibrate a
// camera and teach/find patterns, from the command line.  A client of the
// public header only.
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "cli.hpp"
#include "commands.hpp"

namespace {

void print_usage(const tool::CommandGroup *groups, size_t n) {
    std::printf("usage: vexo GROUP COMMAND [ARGS]   (vexo GROUP COMMAND --help)\n\n");
    for (size_t g = 0; g < n; ++g) {
        std::printf("%s: %s\n", groups[g].name, groups[g].summary);
        for (size_t c = 0; c < groups[g].count; ++c)
            std::printf("  vexo %s %s %s\n", groups[g].name, groups[g].commands[c].name,
                        groups[g].commands[c].usage);
    }
}

} // namespace

int main(int argc, char **argv) {
    const tool::CommandGroup groups[] = {tool::corr_group(), tool::calib_group(),
                                         tool::pattern_group()};
    const size_t n_groups = sizeof groups / sizeof groups[0];
    if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h")) {
        print_usage(groups, n_groups);
        return argc < 2 ? 2 : 0;
    }
    if (!std::strcmp(argv[1], "--version")) {
        std::printf("vexo %s\n", vexo_util_version_string());
        return 0;
    }
    for (const tool::CommandGroup &g : groups) {
        if (g.name != std::string(argv[1])) continue;
        for (size_t c = 0; argc > 2 && c < g.count; ++c) {
            const tool::Command &cmd = g.commands[c];
            if (cmd.name != std::string(argv[2])) continue;
            cli::Args args(std::vector<std::string>(argv + 3, argv + argc));
            if (args.wants_help()) {
                std::printf("usage: vexo %s %s %s\n%s\n", g.name, cmd.name, cmd.usage, cmd.summary);
                return 0;
            }
            try {
                return cmd.run(args);
            } catch (const cli::Failure &f) {
                std::fprintf(stderr, "vexo %s %s: %s\n", g.name, cmd.name, f.what());
            } catch (const std::exception &e) {
                std::fprintf(stderr, "vexo %s %s: unexpected error: %s\n", g.name, cmd.name,
                             e.what());
            }
            return 1;
        }
        std::fprintf(stderr, "vexo: unknown %s command%s%s\n", g.name, argc > 2 ? " " : "",
                     argc > 2 ? argv[2] : "");
        print_usage(&g, 1);
        return 2;
    }
    std::fprintf(stderr, "vexo: unknown command group '%s'\n", argv[1]);
    print_usage(groups, n_groups);
    return 2;
}
