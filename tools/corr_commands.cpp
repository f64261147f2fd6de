// SPDX-License-Identifier: MIT
// vexo corr ...: look at, convert, compare and create correction files.
#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

#include <nlohmann/json.hpp>

#include "commands.hpp"
#include "corr_table.hpp"

namespace tool {
namespace {

using nlohmann::json;

double percent_of_field(double units) {
    return 100.0 * units / kFieldUnits;
}

const FormatSpec *forced_format(const std::string &name) {
    return name.empty() ? nullptr : &format_named(name);
}

json node_json(const Node &n) {
    return {{"row", n.row}, {"column", n.column}};
}

// Options shared by the commands that read a table.
void add_format_option(CLI::App *cmd, std::string &format) {
    cmd->add_option("--format", format,
                    "read the input as this format (name or number, see vexo corr formats) "
                    "instead of detecting it by extension and content");
}

// ---------------------------------------------------------------- info

struct InfoOptions {
    std::string path, format;
    bool json = false;
};

json info_json(const std::string &path, const LoadedTable &t, const TableStats &s) {
    json j = {{"file", path},
              {"format", t.format->name},
              {"format_number", t.format->number},
              {"detected", t.forced ? "--format" : "extension and content"}};
    const CorrFileInfo &i = t.info;
    if (i.flags & VEXO_CORR_INFO_HEAD)
        j["header"] = {{"version", i.head.version},
                       {"header_size", i.head.header_size},
                       {"tag", i.head.tag},
                       {"value", i.head.value}};
    if (t.units_per_mm() > 0)
        j["scale"] = {{"units_per_mm", i.scale}, {"field_mm", kFieldUnits / i.scale}};
    if (i.flags & VEXO_CORR_INFO_FACTORS) j["factors"] = {i.factors[0], i.factors[1]};
    if (i.flags & VEXO_CORR_INFO_PARAMS)
        j["ct5_header"] = std::vector<uint32_t>(i.params, i.params + 16);
    if (i.flags & VEXO_CORR_INFO_TRAILER) j["trailer_bytes"] = i.trailer_size;
    j["x"] = {{"min", s.min[0]}, {"max", s.max[0]}};
    j["y"] = {{"min", s.min[1]}, {"max", s.max[1]}};
    j["z"] = t.has_z ? json{{"min", s.min[2]}, {"max", s.max[2]}} : json(nullptr);
    j["deviation"] = {{"max_units", s.max_deviation},
                      {"rms_units", s.rms_deviation},
                      {"max_percent_of_field", percent_of_field(s.max_deviation)},
                      {"worst", node_json(s.worst)}};
    if (t.units_per_mm() > 0) {
        j["deviation"]["max_mm"] = s.max_deviation / i.scale;
        j["deviation"]["rms_mm"] = s.rms_deviation / i.scale;
    }
    j["finite"] = s.finite;
    j["monotonic"] = {{"rows", s.rows_monotonic}, {"columns", s.columns_monotonic}};
    return j;
}

void print_info(const std::string &path, const LoadedTable &t, const TableStats &s) {
    const CorrFileInfo &i = t.info;
    std::printf("file:       %s\n", path.c_str());
    std::printf("format:     %s (%u), %s\n", t.format->name, t.format->number,
                t.forced ? "as given by --format" : "by extension and content");
    if (i.flags & VEXO_CORR_INFO_HEAD)
        std::printf("header:     version %u, header size %u, tag 0x%02X, value 0x%08X\n",
                    i.head.version, i.head.header_size, i.head.tag, i.head.value);
    if (t.units_per_mm() > 0)
        std::printf("scale:      %.6f units/mm (field %.3f mm)\n", i.scale, kFieldUnits / i.scale);
    if (i.flags & VEXO_CORR_INFO_FACTORS)
        std::printf("factors:    x %.6f, y %.6f\n", i.factors[0], i.factors[1]);
    if (i.flags & VEXO_CORR_INFO_PARAMS) {
        std::printf("ct5 header:");
        for (uint32_t w : i.params) std::printf(" %08X", w);
        std::printf("\n");
    }
    if (i.flags & VEXO_CORR_INFO_TRAILER)
        std::printf("trailer:    %u bytes after the planes (kept when written as ctb)\n",
                    i.trailer_size);
    std::printf("x range:    %.3f .. %.3f units\n", s.min[0], s.max[0]);
    std::printf("y range:    %.3f .. %.3f units\n", s.min[1], s.max[1]);
    if (t.has_z)
        std::printf("z range:    %.3f .. %.3f\n", s.min[2], s.max[2]);
    else
        std::printf("z:          no z (the format has none; written as 0)\n");
    std::printf("deviation:  max %.3f units (%.4f %% of field) at node (row %d, column %d), "
                "rms %.3f units\n",
                s.max_deviation, percent_of_field(s.max_deviation), s.worst.row, s.worst.column,
                s.rms_deviation);
    if (t.units_per_mm() > 0)
        std::printf("            max %.4f mm, rms %.4f mm\n", s.max_deviation / i.scale,
                    s.rms_deviation / i.scale);
    std::printf("monotonic:  rows %s, columns %s\n", s.rows_monotonic ? "yes" : "NO",
                s.columns_monotonic ? "yes" : "NO");
    if (!s.finite) std::printf("warning:    the table holds values that are not finite\n");
    if (!s.rows_monotonic || !s.columns_monotonic)
        std::printf("warning:    the table folds over itself; the file is broken\n");
}

void add_info(CLI::App *group) {
    auto o = std::make_shared<InfoOptions>();
    CLI::App *cmd = group->add_subcommand(
        "info", "Format, header, scale, ranges, deviation from neutral and whether the table "
                "folds; all lengths in output units (65535 across the field), mm where the file "
                "gives its scale");
    cmd->add_option("FILE", o->path, "correction file, - for standard input")->required();
    add_format_option(cmd, o->format);
    add_json_flag(cmd, o->json);
    cmd->callback([o] {
        const auto t = load_table(o->path, forced_format(o->format));
        const TableStats s = measure(*t->table);
        if (o->json)
            print_json(info_json(o->path, *t, s).dump(2));
        else
            print_info(o->path, *t, s);
    });
}

// ---------------------------------------------------------------- convert

std::vector<double> split_numbers(const std::string &text, size_t count, const char *what) {
    std::vector<double> out;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) out.push_back(cli::number_in(item, -1e6, 1e6, what));
    if (out.size() != count)
        throw cli::Usage(std::string(what) + " needs " + std::to_string(count) +
                         " comma-separated numbers, not '" + text + "'");
    return out;
}

// Each adjustment option with the number of values one use of it takes.
struct Adjustment {
    CLI::Option *option;
    size_t values;
};

void apply(const std::string &name, const std::vector<std::string> &v, LoadedTable &t) {
    CorrTable *table = t.table.get();
    uint32_t status = VEXO_OK;
    if (name == "--scale") {
        status = vexo_corr_set_scale(table, cli::number_in(v[0], 0.01, 10, "--scale"));
    } else if (name == "--focal") {
        const double f = cli::number_in(v[0], 1, 10000, "--focal FOCAL");
        const double field = cli::number_in(v[1], 1, 10000, "--focal FIELD");
        const double target = cli::number_in(v[2], 1, 10000, "--focal TARGET");
        status = vexo_corr_set_focal(table, f, field, target);
        t.has_z = true;
    } else if (name == "--spatial") {
        const double side = cli::number_in(v[0], 0, 3, "--spatial SIDE");
        if (side != std::floor(side)) throw cli::Usage("--spatial SIDE must be 0, 1, 2 or 3");
        status = vexo_corr_set_spatial(table, uint8_t(side),
                                       cli::number_in(v[1], 0.5, 2, "--spatial FACTOR"));
    } else if (name == "--adjust") {
        const auto a = split_numbers(v[0], 6, "--adjust");
        const double from[2] = {a[0], a[1]}, to[2] = {a[2], a[3]};
        if (a[5] != std::floor(a[5]) || a[5] < 0 || a[5] > 3)
            throw cli::Usage("--adjust MODE must be 0..3");
        status = vexo_corr_adjust_single(table, from, to, a[4], int32_t(a[5]));
    }
    if (status != VEXO_OK) throw cli::Failure(name + " failed: " + cli::status_text(status));
}

struct ConvertOptions {
    std::string in, out, format, to;
    double field = 0;
    std::vector<std::string> scale, focal, spatial, adjust;
};

void add_convert(CLI::App *group) {
    auto o = std::make_shared<ConvertOptions>();
    CLI::App *cmd = group->add_subcommand(
        "convert", "Load IN, apply the adjustments in the order given, check the table and "
                   "write OUT (kxo, ctb or cor by its extension, or --to)");
    cmd->add_option("IN", o->in, "correction file, - for standard input")->required();
    cmd->add_option("OUT", o->out, "file to write, - for standard output")->required();
    add_format_option(cmd, o->format);
    cmd->add_option("--to", o->to, "write this format (kxo, ctb, cor) whatever OUT's extension");
    cmd->add_option("--field", o->field,
                    "field size in mm: gives a .cor file 65536/MM units per mm (default: the "
                    "input's own scale, else 0)")
        ->check(finite_range(0.1, 10000.0));
    std::vector<Adjustment> adjustments = {
        {cmd->add_option("--scale", o->scale,
                         "shrink (<1) or enlarge the field near the centre, rim fixed; 0.01..10"),
         1},
        {cmd->add_option("--focal", o->focal,
                         "FOCAL FIELD TARGET (mm): recompute z for a flat field under this lens")
             ->expected(3),
         3},
        {cmd->add_option("--spatial", o->spatial,
                         "SIDE FACTOR: trapezoid, scale one side (0..3) by 0.5..2")
             ->expected(2),
         2},
        {cmd->add_option("--adjust", o->adjust,
                         "FX,FY,TX,TY,RADIUS,MODE: a mark meant for T landed at F (units)"),
         1},
    };
    cmd->callback([o, cmd, adjustments] {
        const FormatSpec &out_format = output_format(o->out, o->to);
        auto t = load_table(o->in, forced_format(o->format));
        // Adjustments run in the order they stand on the command line. The
        // parse order lists an option once per value it took, so an
        // adjustment of N values is complete at every Nth sighting.
        std::map<const CLI::Option *, size_t> seen;
        for (const CLI::Option *opt : cmd->parse_order()) {
            for (const Adjustment &a : adjustments) {
                if (a.option != opt) continue;
                const size_t taken = ++seen[opt];
                const auto &r = opt->results();
                if (taken % a.values != 0 || taken > r.size()) continue;
                apply(opt->get_name(),
                      std::vector<std::string>(r.begin() + long(taken - a.values),
                                               r.begin() + long(taken)),
                      *t);
            }
        }
        if (o->field > 0) {
            t->info.flags |= VEXO_CORR_INFO_SCALE;
            t->info.scale = 65536.0 / o->field;
        }
        save_table(o->out, out_format, *t);
        if (o->out != "-")
            cli::say("%s -> %s (%s)\n", o->in.c_str(), o->out.c_str(), out_format.name);
    });
}

// ---------------------------------------------------------------- diff

struct DiffOptions {
    std::string a, b, format_a, format_b;
    double tolerance = -1;
    bool json = false;
};

void add_diff(CLI::App *group) {
    auto o = std::make_shared<DiffOptions>();
    CLI::App *cmd = group->add_subcommand(
        "diff", "Largest and RMS distance between corresponding nodes of A and B (x, y and z "
                "when both files have z), in output units, and the node where it is largest");
    cmd->add_option("A", o->a, "first correction file")->required();
    cmd->add_option("B", o->b, "second correction file")->required();
    cmd->add_option("--format-a", o->format_a, "read A as this format");
    cmd->add_option("--format-b", o->format_b, "read B as this format");
    cmd->add_option("--tolerance", o->tolerance,
                    "exit 1 when the largest difference exceeds T output units")
        ->check(finite_range(0.0, 1e9));
    add_json_flag(cmd, o->json);
    cmd->callback([o] {
        const auto a = load_table(o->a, forced_format(o->format_a));
        const auto b = load_table(o->b, forced_format(o->format_b));
        const bool with_z = a->has_z && b->has_z;
        const Difference d = difference(*a->table, *b->table, with_z);
        const bool within = o->tolerance < 0 || d.max <= o->tolerance;
        if (o->json) {
            json j = {{"a", o->a},
                      {"b", o->b},
                      {"z_compared", with_z},
                      {"max_units", d.max},
                      {"rms_units", d.rms},
                      {"worst",
                       {{"row", d.worst.row},
                        {"column", d.worst.column},
                        {"dx", d.dx},
                        {"dy", d.dy},
                        {"dz", d.dz}}}};
            if (o->tolerance >= 0) j["tolerance"] = o->tolerance, j["within"] = within;
            print_json(j.dump(2));
        } else {
            std::printf("max difference: %.4f units (%.5f %% of field) at node (row %d, column "
                        "%d): dx %.4f, dy %.4f, dz %.4f\n",
                        d.max, percent_of_field(d.max), d.worst.row, d.worst.column, d.dx, d.dy,
                        d.dz);
            std::printf("rms difference: %.4f units (%.5f %% of field)\n", d.rms,
                        percent_of_field(d.rms));
            if (!with_z)
                std::printf("z:              not compared (%s has no z)\n",
                            a->has_z ? o->b.c_str() : o->a.c_str());
        }
        if (!within) {
            char text[160];
            std::snprintf(text, sizeof text, "difference %.4f units exceeds the tolerance %.4f",
                          d.max, o->tolerance);
            throw cli::Failure(text);
        }
    });
}

// ---------------------------------------------------------------- neutral, sample

struct WriteOptions {
    std::string out, to;
    double pincushion = -0.04, focal = 163.0, field = 110.0;
};

void add_neutral(CLI::App *group) {
    auto o = std::make_shared<WriteOptions>();
    CLI::App *cmd = group->add_subcommand("neutral", "Write the identity table");
    cmd->add_option("OUT", o->out, "file to write (.kxo, .ctb or .cor), - for standard output")
        ->required();
    cmd->add_option("--to", o->to, "write this format whatever OUT's extension");
    cmd->callback([o] {
        const FormatSpec &f = output_format(o->out, o->to);
        save_table(o->out, f, *neutral_table());
        if (o->out != "-") cli::say("neutral table written to %s\n", o->out.c_str());
    });
}

// A pincushion-like field plus the focus of a flat-field lens: what a real
// head's correction looks like, for trying the tools without such a file.
void add_sample(CLI::App *group) {
    auto o = std::make_shared<WriteOptions>();
    CLI::App *cmd = group->add_subcommand(
        "sample", "Write a distorted sample table: stretch 1 + K*r^2 (r = 1 at the field's "
                  "edge) with a small shear, and the focus of a lens over a field");
    cmd->add_option("OUT", o->out, "file to write, - for standard output")->required();
    cmd->add_option("--to", o->to, "write this format whatever OUT's extension");
    cmd->add_option("--pincushion", o->pincushion, "K, -0.2..0.05")
        ->capture_default_str()
        ->check(finite_range(-0.2, 0.05));
    cmd->add_option("--focal", o->focal, "lens focal length in mm")
        ->capture_default_str()
        ->check(finite_range(1.0, 10000.0));
    cmd->add_option("--field", o->field, "field size in mm")
        ->capture_default_str()
        ->check(finite_range(1.0, 10000.0));
    cmd->callback([o] {
        const FormatSpec &f = output_format(o->out, o->to);
        auto t = neutral_table();
        for (GeomPoint &p : t->table->cell) {
            const double u = p.x / 32767.5, v = p.y / 32767.5;
            const double stretch = 1.0 + o->pincushion * (u * u + v * v);
            p.x = p.x * stretch + 150.0 * u * v;
            p.y = p.y * stretch;
        }
        const uint32_t status = vexo_corr_set_focal(t->table.get(), o->focal, o->field, o->field);
        if (status != VEXO_OK) throw cli::Failure("--focal failed: " + cli::status_text(status));
        t->info.flags |= VEXO_CORR_INFO_SCALE;
        t->info.scale = 65536.0 / o->field;
        save_table(o->out, f, *t);
        if (o->out != "-") cli::say("sample table written to %s\n", o->out.c_str());
    });
}

// ---------------------------------------------------------------- formats

void add_formats(CLI::App *group) {
    auto json_out = std::make_shared<bool>(false);
    CLI::App *cmd = group->add_subcommand(
        "formats", "The correction formats: name (also the extension), number, read, write, z");
    add_json_flag(cmd, *json_out);
    cmd->callback([json_out] {
        if (*json_out) {
            json list = json::array();
            for (const FormatSpec &f : formats())
                list.push_back({{"name", f.name},
                                {"number", f.number},
                                {"extension", std::string(".") + f.name},
                                {"read", true},
                                {"write", f.writable},
                                {"z", f.has_z},
                                {"content", f.content}});
            print_json(list.dump(2));
            return;
        }
        std::printf("%-5s %3s  %-4s %-5s %-3s  %s\n", "name", "no", "read", "write", "z",
                    "content");
        for (const FormatSpec &f : formats())
            std::printf("%-5s %3u  %-4s %-5s %-3s  %s\n", f.name, f.number, "yes",
                        f.writable ? "yes" : "no", f.has_z ? "yes" : "no", f.content);
    });
}

} // namespace

void add_corr_group(CLI::App &root) {
    CLI::App *group = add_group(root, "corr", "scanner correction tables");
    add_info(group);
    add_convert(group);
    add_diff(group);
    add_corr_plot(group);
    add_corr_base_commands(group);
    add_corr_grid_commands(group);
    add_neutral(group);
    add_sample(group);
    add_formats(group);
}

} // namespace tool
