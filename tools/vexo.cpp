// SPDX-License-Identifier: MIT
// vexo: look at, convert and create scanner correction files, hatch and
// merge polylines, calibrate a camera and teach/find patterns, from the
// command line.  A client of the
// public header only.  Exit status: 0 success, 1 failure, 2 usage error.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "commands.hpp"

namespace tool {

CLI::App *add_group(CLI::App &root, const char *name, const char *summary) {
    CLI::App *group = root.add_subcommand(name, summary);
    group->require_subcommand(1);
    return group;
}

void add_json_flag(CLI::App *cmd, bool &json) {
    cmd->add_flag("--json", json, "print the result as JSON");
}

CLI::Validator finite_range(double lo, double hi) {
    char description[80];
    std::snprintf(description, sizeof description, "NUMBER in [%g - %g]", lo, hi);
    return CLI::Validator(
        [lo, hi](std::string &text) -> std::string {
            char *end = nullptr;
            const double v = std::strtod(text.c_str(), &end);
            if (text.empty() || *end != '\0') return "'" + text + "' is not a number";
            if (!(v >= lo && v <= hi)) {
                char range[80];
                std::snprintf(range, sizeof range, " is outside %g .. %g", lo, hi);
                return text + range;
            }
            return "";
        },
        description);
}

void print_json(const std::string &text) {
    std::printf("%s\n", text.c_str());
}

} // namespace tool

namespace {

// "vexo corr convert": the words of the command that ran.
std::string command_words(const CLI::App &root) {
    std::string words = "vexo";
    const CLI::App *app = &root;
    while (true) {
        const auto subs = app->get_subcommands();
        if (subs.empty()) break;
        app = subs.front();
        words += " " + app->get_name();
    }
    return words;
}

// The deepest command that was recognised.
const CLI::App *deepest(const CLI::App &root) {
    const CLI::App *app = &root;
    while (!app->get_subcommands().empty()) app = app->get_subcommands().front();
    return app;
}

// A usage error: what was wrong, then where the help is.  A group given a
// word that is none of its commands says so rather than "required".
void report_usage(const CLI::App &root, const CLI::ParseError &e, int argc, char **argv) {
    const CLI::App *app = deepest(root);
    const std::string words = command_words(root);
    std::string message = e.what();
    if (app->get_require_subcommand_min() > 0) {
        // The word after the recognised ones, if any, was not a command.
        int depth = 0;
        for (const CLI::App *a = &root; a != app; a = a->get_subcommands().front()) ++depth;
        for (int i = 1, seen = 0; i < argc; ++i) {
            if (argv[i][0] == '-') continue;
            if (seen++ == depth) {
                message = std::string("unknown command '") + argv[i] + "'";
                break;
            }
        }
        if (message == e.what()) message = "a command is needed";
    }
    std::fprintf(stderr, "%s: %s\n(see %s --help)\n", words.c_str(), message.c_str(),
                 words.c_str());
}

int finish_stdout() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        std::fprintf(stderr, "vexo: cannot write to standard output: %s\n", std::strerror(errno));
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    CLI::App app(
        "vexo: scanner correction tables, marking geometry, camera calibration and "
        "pattern recognition with libvexo.\nExit status: 0 success, 1 failure, 2 usage error.",
        "vexo");
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", std::string("vexo ") + vexo_util_version_string());
    app.add_flag("-q,--quiet", cli::global().quiet, "no progress lines, only results and errors");
    app.add_flag("--force", cli::global().force,
                 "overwrite existing outputs; write tables that fail the checks");
    tool::add_corr_group(app);
    tool::add_geom_group(app);
#ifdef VEXO_TOOL_VISION
    tool::add_calib_group(app);
    tool::add_pattern_group(app);
#endif
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        if (e.get_exit_code() == 0) {
            app.exit(e);
            return finish_stdout();
        }
        report_usage(app, e, argc, argv);
        return 2;
    } catch (const cli::Usage &e) {
        std::fprintf(stderr, "%s: %s\n", command_words(app).c_str(), e.what());
        return 2;
    } catch (const cli::Failure &e) {
        std::fflush(stdout);
        std::fprintf(stderr, "%s: %s\n", command_words(app).c_str(), e.what());
        return 1;
    } catch (const std::bad_alloc &) {
        std::fprintf(stderr, "%s: out of memory\n", command_words(app).c_str());
        return 1;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "%s: unexpected error: %s\n", command_words(app).c_str(), e.what());
        return 1;
    }
    return finish_stdout();
}
