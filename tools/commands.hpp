// SPDX-License-Identifier: MIT
// The command groups of the vexo tool.  Each group adds its subcommands to
// the root application; vexo.cpp lists the groups.  A command is a CLI11
// subcommand whose callback does the work and throws cli::Failure (exit 1)
// or cli::Usage (exit 2).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli.hpp"
#include "vexo.h"

namespace tool {

void add_corr_group(CLI::App &root);
void add_geom_group(CLI::App &root);
#ifdef VEXO_TOOL_VISION
void add_calib_group(CLI::App &root);
void add_pattern_group(CLI::App &root);
// A picture file as an RGB24 ImageBlock's bytes (header and pixels), read
// and size-checked as the calib and pattern commands read pictures.
std::vector<uint8_t> read_picture_block(const std::string &path);
// A checked 216-byte calibration record file.
CalibrationRecord read_calibration_record(const std::string &path);
#endif

// A group: a subcommand that needs one of its own subcommands.
CLI::App *add_group(CLI::App &root, const char *name, const char *summary);

// --json, as every command that prints results spells it.
void add_json_flag(CLI::App *cmd, bool &json);

// A number check that also refuses NaN (CLI::Range lets it through).
CLI::Validator finite_range(double lo, double hi);

// Prints a JSON document on stdout.
void print_json(const std::string &text);

// corr plot lives in its own file.
void add_corr_plot(CLI::App *group);
// corr base and corr lookup, the head geometry's commands, too.
void add_corr_base_commands(CLI::App *group);
// corr from-grid, from-photo and grid: field calibration from marked dots.
void add_corr_grid_commands(CLI::App *group);

} // namespace tool
