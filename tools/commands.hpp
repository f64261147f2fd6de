// SPDX-License-Identifier: MIT
// The command table of the vexo tool.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cli.hpp"

namespace tool {

struct Command {
    const char *name;
    const char *usage;
    const char *summary;
    int (*run)(cli::Args &args);
};

struct CommandGroup {
    const char *name;
    const char *summary;
    const Command *commands;
    size_t count;
};

template <size_t N>
CommandGroup make_group(const char *name, const char *summary, const Command (&commands)[N]) {
    return CommandGroup{name, summary, commands, N};
}

CommandGroup corr_group();
CommandGroup calib_group();
CommandGroup pattern_group();

int corr_plot(cli::Args &args);
uint32_t corr_format_option(cli::Args &args);

} // namespace tool
