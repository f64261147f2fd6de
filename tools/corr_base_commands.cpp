// SPDX-License-Identifier: MIT
// vexo corr base: the ideal table of a two-mirror head from its geometry;
// vexo corr lookup: what a table sends for field positions (or, inverted,
// where output values land), as a filter over "x y" lines.
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "commands.hpp"
#include "corr_table.hpp"
#include "polyline_text.hpp"

namespace tool {
namespace {

// ---------------------------------------------------------------- base

struct BaseOptions {
    std::string out, to;
    double field = 0, distance = 0, gap = 0, focal = 0;
    bool focus = false, json = false;
};

CorrBase base_record(const BaseOptions &o, bool flat_field) {
    CorrBase b;
    std::memset(&b, 0, sizeof b);
    b.mirror_gap = flat_field ? o.gap : 0.0;
    b.distance = flat_field ? o.distance : 0.0;
    b.field_size = o.field;
    b.focal_length = flat_field ? 0.0 : o.focal;
    b.options = o.focus ? VEXO_CORR_BASE_FOCUS : 0u;
    return b;
}

void add_base(CLI::App *group) {
    auto o = std::make_shared<BaseOptions>();
    CLI::App *cmd = group->add_subcommand(
        "base", "Write the ideal table of a two-mirror head (X mirror first): each node's "
                "output turns the mirrors so the spot lands on the node's place in a field of "
                "--field mm; outputs proportional to mirror angle, the largest at full range");
    cmd->add_option("OUT", o->out, "file to write (.kxo, .ctb or .cor), - for standard output")
        ->required();
    cmd->add_option("--to", o->to, "write this format whatever OUT's extension");
    cmd->add_option("--field", o->field, "side of the square field the table spans, mm")
        ->required()
        ->check(finite_range(1e-3, 1e6));
    CLI::Option *distance =
        cmd->add_option("--distance", o->distance, "Y mirror axis to the field plane, mm")
            ->check(finite_range(1e-3, 1e6));
    CLI::Option *gap =
        cmd->add_option("--mirror-gap", o->gap, "X mirror axis to Y mirror axis along the beam, mm")
            ->check(finite_range(0, 1e6));
    CLI::Option *focal =
        cmd->add_option("--ftheta", o->focal,
                        "focal length of an ideal f-theta objective, mm (the spot lies at "
                        "f * beam angle; --distance and --mirror-gap are then not used)")
            ->check(finite_range(1e-3, 1e6));
    cmd->add_flag("--focus", o->focus,
                  "write z: the extra beam path to each node, in the units of --focal of "
                  "corr convert (0 behind an f-theta objective)");
    add_json_flag(cmd, o->json);
    cmd->callback([o, distance, gap, focal] {
        const bool flat_field = focal->count() == 0;
        if (flat_field && (distance->count() == 0 || gap->count() == 0))
            throw cli::Usage("--distance and --mirror-gap are needed without --ftheta");
        if (!flat_field && (distance->count() > 0 || gap->count() > 0))
            throw cli::Usage("--ftheta leaves no part to --distance and --mirror-gap");
        const FormatSpec &format = output_format(o->out, o->to);
        const CorrBase base = base_record(*o, flat_field);
        auto t = neutral_table();
        double full_scale = 0;
        const uint32_t status = vexo_corr_set_base(t->table.get(), &base, &full_scale);
        if (status != VEXO_OK)
            throw cli::Failure("the head geometry gives no table: " + cli::status_text(status));
        // The ".cor" scale, as corr convert --field writes it.
        t->info.flags |= VEXO_CORR_INFO_SCALE;
        t->info.scale = 65536.0 / o->field;
        save_table(o->out, format, *t);
        if (o->json)
            print_json(nlohmann::json{
                {"output", o->out}, {"format", format.name}, {"full_scale_degrees", full_scale}}
                           .dump(2));
        else if (o->out != "-")
            cli::say("head table written to %s (%s); output 32767.5 = %.9g degrees of mirror "
                     "turn\n",
                     o->out.c_str(), format.name, full_scale);
    });
}

// ---------------------------------------------------------------- lookup

struct LookupOptions {
    std::string table, format, input = "-";
    double field = 0;
    bool inverse = false;
};

// One line of the input: its text, or a point (the next in the array).
struct InputLine {
    std::string text;
    bool is_point;
};

std::vector<InputLine> split_lines(const std::vector<uint8_t> &bytes, const std::string &name,
                                   std::vector<GeomPoint> &points) {
    std::vector<InputLine> lines;
    each_line(bytes.data(), bytes.size(), [&](const char *text, size_t length, size_t number) {
        GeomPoint p;
        if (parse_text_line(text, length, name, number, &p) != TextLine::Point) {
            lines.push_back({std::string(text, length), false});
            return;
        }
        if (points.size() == kMaxPolylinePoints)
            throw cli::Failure(name + ": line " + std::to_string(number) + ": more than " +
                               std::to_string(kMaxPolylinePoints) + " points");
        points.push_back(p);
        lines.push_back({std::string(), true});
    });
    return lines;
}

double lookup_field(const LookupOptions &o, const LoadedTable &t) {
    if (o.field > 0) return o.field;
    // The ".cor" scale as corr convert --field and corr base write it.
    if (t.units_per_mm() > 0) return 65536.0 / t.units_per_mm();
    return kFieldUnits; // positions in the table's own output units
}

void add_lookup(CLI::App *group) {
    auto o = std::make_shared<LookupOptions>();
    CLI::App *cmd = group->add_subcommand(
        "lookup",
        "Read \"x y\" lines (field positions) and print for each the output values the table "
        "sends there, interpolated between nodes as a scanner card does; with --inverse read "
        "output values and print the field positions. Blank and '#' lines are passed through");
    cmd->add_option("FILE", o->table, "correction file, - for standard input")->required();
    cmd->add_option("--format", o->format,
                    "read FILE as this format (name or number, see vexo corr formats)");
    cmd->add_option("--input", o->input, "the lines to convert (default: standard input)")
        ->capture_default_str();
    cmd->add_flag("--inverse", o->inverse, "output values in, field positions out");
    cmd->add_option("--field", o->field,
                    "field size in mm (default: from the file's scale, else 65535: positions "
                    "in output units)")
        ->check(finite_range(1e-6, 1e9));
    cmd->callback([o] {
        if (o->table == "-" && o->input == "-")
            throw cli::Usage("FILE and the lines cannot both come from standard input");
        const auto t = load_table(o->table, o->format.empty() ? nullptr : &format_named(o->format));
        const std::vector<uint8_t> bytes = cli::read_input(o->input, kMaxPolylineBytes);
        std::vector<GeomPoint> points;
        const std::vector<InputLine> lines =
            split_lines(bytes, o->input == "-" ? "standard input" : o->input, points);
        const uint32_t status =
            vexo_corr_apply(t->table.get(), points.data(), uint32_t(points.size()),
                            lookup_field(*o, *t), o->inverse ? VEXO_CORR_APPLY_INVERSE : 0u);
        if (status != VEXO_OK)
            throw cli::Failure(std::string(o->inverse ? "the inverse lookup" : "the lookup") +
                               " failed: " + cli::status_text(status));
        size_t next = 0;
        for (const InputLine &line : lines) {
            if (line.is_point) {
                const GeomPoint &p = points[next++];
                std::printf("%s %s\n", format_number(p.x).c_str(), format_number(p.y).c_str());
            } else {
                std::fwrite(line.text.data(), 1, line.text.size(), stdout);
                std::fputc('\n', stdout);
            }
        }
    });
}

} // namespace

void add_corr_base_commands(CLI::App *group) {
    add_base(group);
    add_lookup(group);
}

} // namespace tool
