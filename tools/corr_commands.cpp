// SPDX-License-Identifier: MIT
// vexo corr ...: look at, convert, compare, plot and create correction files.
#include <cmath>
#include <cstdio>
#include <sstream>

#include "cli.hpp"
#include "commands.hpp"
#include "corr_table.hpp"

namespace tool {

namespace {

uint32_t format_option(cli::Args &args) {
    const auto v = args.option("--format");
    if (v.empty()) return VEXO_CORR_FORMAT_AUTO;
    const long n = cli::to_long(v[0], "--format");
    if (n < 1 || n > 11) throw cli::Failure("--format must be 1..11, not " + v[0]);
    return uint32_t(n);
}

double percent_of_field(double units) {
    return 100.0 * units / kFieldUnits;
}

int corr_info(cli::Args &args) {
    const uint32_t format = format_option(args);
    const std::string path = args.next("FILE");
    args.finish();
    const LoadedTable loaded = load_table(path, format);
    const TableStats s = measure(*loaded.table);
    std::printf("file:       %s\n", path.c_str());
    std::printf("format:     %s (%u)%s\n", cli::format_label(loaded.format), loaded.format,
                format ? "" : ", by extension");
    if (loaded.format == VEXO_CORR_FORMAT_KXO)
        std::printf("header:     version %u, header size %u, tag 0x%02X, value 0x%08X\n",
                    loaded.head.version, loaded.head.header_size, loaded.head.tag,
                    loaded.head.value);
    std::printf("x range:    %.3f .. %.3f\n", s.min_x, s.max_x);
    std::printf("y range:    %.3f .. %.3f\n", s.min_y, s.max_y);
    std::printf("z range:    %.3f .. %.3f\n", s.min_z, s.max_z);
    std::printf("deviation:  max %.3f units (%.4f %% of field), rms %.3f units (%.4f %%)\n",
                s.max_deviation, percent_of_field(s.max_deviation), s.rms_deviation,
                percent_of_field(s.rms_deviation));
    std::printf("monotonic:  rows %s, columns %s\n", s.rows_monotonic ? "yes" : "NO",
                s.columns_monotonic ? "yes" : "NO");
    if (!s.rows_monotonic || !s.columns_monotonic)
        std::printf("warning:    the table folds over itself; the file is broken\n");
    return 0;
}

std::vector<double> split_numbers(const std::string &text, size_t count, const char *what) {
    std::vector<double> out;
    std::stringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) out.push_back(cli::to_double(item, what));
    if (out.size() != count)
        throw cli::Failure(std::string(what) + " needs " + std::to_string(count) +
                           " comma-separated numbers, not '" + text + "'");
    return out;
}

// Adjustments run in the order given on the command line.
void apply_adjustments(const std::vector<std::string> &words, CorrTable &table) {
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string &w = words[i];
        auto value = [&](const char *what) {
            if (++i >= words.size())
                throw cli::Failure(std::string(w) + " needs a value for " + what);
            return cli::to_double(words[i], what);
        };
        uint32_t status = VEXO_OK;
        if (w == "--scale") {
            status = vexo_corr_set_scale(&table, value("--scale"));
        } else if (w == "--focal") {
            const double f = value("FOCAL"), field = value("FIELD"), target = value("TARGET");
            status = vexo_corr_set_focal(&table, f, field, target);
        } else if (w == "--spatial") {
            const double side = value("SIDE"), factor = value("FACTOR");
            if (side < 0 || side > 3 || side != std::floor(side))
                throw cli::Failure("--spatial SIDE must be 0, 1, 2 or 3");
            status = vexo_corr_set_spatial(&table, uint8_t(side), factor);
        } else if (w == "--adjust") {
            if (++i >= words.size())
                throw cli::Failure("--adjust needs FROMX,FROMY,TOX,TOY,RADIUS,MODE");
            const auto v = split_numbers(words[i], 6, "--adjust");
            const double from[2] = {v[0], v[1]}, to[2] = {v[2], v[3]};
            status = vexo_corr_adjust_single(&table, from, to, v[4], int32_t(v[5]));
        } else {
            throw cli::Failure("unexpected argument '" + w + "'");
        }
        if (status != VEXO_OK) throw cli::Failure(w + " failed: " + cli::status_name(status));
    }
}

int corr_convert(cli::Args &args) {
    const uint32_t format = format_option(args);
    const auto field = args.option("--field");
    const double field_mm = field.empty() ? 0.0 : cli::to_double(field[0], "--field");
    const std::string in = args.next("IN"), out = args.next("OUT");
    const std::vector<std::string> rest = args.take_rest();
    LoadedTable loaded = load_table(in, format);
    apply_adjustments(rest, *loaded.table);
    save_table(out, *loaded.table, loaded.head, field_mm);
    std::printf("%s -> %s\n", in.c_str(), out.c_str());
    return 0;
}

int corr_diff(cli::Args &args) {
    const std::string a = args.next("A"), b = args.next("B");
    args.finish();
    const LoadedTable ta = load_table(a, 0), tb = load_table(b, 0);
    double max, rms;
    difference(*ta.table, *tb.table, &max, &rms);
    std::printf("max difference: %.4f units (%.5f %% of field)\n", max, percent_of_field(max));
    std::printf("rms difference: %.4f units (%.5f %% of field)\n", rms, percent_of_field(rms));
    return 0;
}

int corr_neutral(cli::Args &args) {
    const std::string out = args.next("OUT");
    args.finish();
    save_table(out, *neutral_table(), CorrHead{}, 0.0);
    std::printf("neutral table written to %s\n", out.c_str());
    return 0;
}

// A pincushion-like field plus the focus of a flat-field lens: what a real
// head's correction looks like, for trying the tools without a vendor file.
int corr_sample(cli::Args &args) {
    const auto k_opt = args.option("--pincushion");
    const double k = k_opt.empty() ? -0.04 : cli::to_double(k_opt[0], "--pincushion");
    const auto focal = args.option("--focal", 2);
    const std::string out = args.next("OUT");
    args.finish();
    Table t = neutral_table();
    for (GeomPoint &p : t->cell) {
        const double u = p.x / 32767.5, v = p.y / 32767.5;
        const double stretch = 1.0 + k * (u * u + v * v);
        p.x = p.x * stretch + 150.0 * u * v;
        p.y = p.y * stretch;
    }
    const double f = focal.empty() ? 163.0 : cli::to_double(focal[0], "FOCAL");
    const double field = focal.empty() ? 110.0 : cli::to_double(focal[1], "FIELD");
    const uint32_t status = vexo_corr_set_focal(t.get(), f, field, field);
    if (status != VEXO_OK) throw cli::Failure("--focal failed: " + cli::status_name(status));
    save_table(out, *t, CorrHead{}, field);
    std::printf("sample table written to %s\n", out.c_str());
    return 0;
}

const Command kCorrCommands[] = {
    {"info", "FILE [--format N]",
     "Shows the format, header, ranges, deviation from neutral and whether the table folds.",
     corr_info},
    {"convert",
     "IN OUT [--format N] [--field MM] [--scale S] [--focal F FIELD TARGET] "
     "[--spatial SIDE FACTOR] [--adjust FX,FY,TX,TY,RADIUS,MODE]...",
     "Loads IN, applies the adjustments in the order given, writes OUT (.kxo, .ctb or .cor).",
     corr_convert},
    {"plot", "FILE OUT.png [--exaggerate K] [--size PX] [--format N]",
     "Draws the corrected grid over the neutral one, z as colour.", corr_plot},
    {"diff", "A B", "Max and RMS difference between two tables.", corr_diff},
    {"neutral", "OUT", "Writes an identity table (.kxo, .ctb or .cor).", corr_neutral},
    {"sample", "OUT [--pincushion K] [--focal F FIELD]",
     "Writes a distorted sample table (pincushion-like field plus focus).", corr_sample},
};

} // namespace

CommandGroup corr_group() {
    return make_group("corr", "correction tables", kCorrCommands);
}

uint32_t corr_format_option(cli::Args &args) {
    return format_option(args);
}

} // namespace tool
