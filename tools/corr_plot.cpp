// SPDX-License-Identifier: MIT
// vexo corr plot: the table over the neutral grid, with axes in output units
// (mm when the file gives its scale), as deviation arrows or as a heat map of
// the deviation's size, z as colour only when it varies.  PNG or SVG.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include <cairo.h>

#include "commands.hpp"
#include "corr_table.hpp"
#include "picture.hpp"

namespace tool {
namespace {

constexpr double kHalf = 32767.5;
constexpr double kMaxAutoExaggeration = 100.0;
// Below this largest deviation (output units) a table is neutral up to the
// rounding of its file format; exaggerating it would draw noise.
constexpr double kNearNeutral = 1.0;

struct Rgb {
    double r, g, b;
};

// A perceptually ordered ramp (dark blue, teal, yellow) for t in 0..1.
Rgb ramp(double t) {
    t = std::clamp(t, 0.0, 1.0);
    const Rgb stops[] = {{0.27, 0.00, 0.33},
                         {0.23, 0.32, 0.55},
                         {0.13, 0.57, 0.55},
                         {0.37, 0.79, 0.38},
                         {0.99, 0.91, 0.14}};
    const double x = t * 4.0;
    const int i = std::min(3, int(x));
    const double f = x - i;
    return {stops[i].r + f * (stops[i + 1].r - stops[i].r),
            stops[i].g + f * (stops[i + 1].g - stops[i].g),
            stops[i].b + f * (stops[i + 1].b - stops[i].b)};
}

struct Layout {
    double size, font;
    double left, top, side; // the square plot area
    double bar_x;           // colour bar's left edge, 0 for none
    double per_unit;        // pixels per output unit
    double px(double x) const { return left + side / 2 + x * per_unit; }
    double py(double y) const { return top + side / 2 - y * per_unit; }
};

struct Plot {
    const LoadedTable *table;
    std::string title;
    std::string style; // "arrows" or "heat"
    double k;          // exaggeration
    bool near_neutral;
    TableStats stats;
    double unit_scale; // units per axis unit: 1, or units per mm
    const char *unit;  // "units" or "mm"
    bool show_z;
};

double neutral(int line) {
    return (line - 32) * 0.015625 * 65535.0;
}

// A step of 1, 2 or 5 times a power of ten giving about `count` ticks.
double nice_step(double span, int count) {
    const double raw = span / count;
    const double p = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (m * p >= raw) return m * p;
    return 10 * p;
}

void text(cairo_t *cr, double x, double y, const std::string &s, double align_x, double align_y) {
    cairo_text_extents_t e;
    cairo_text_extents(cr, s.c_str(), &e);
    cairo_move_to(cr, x - e.width * align_x - e.x_bearing, y - e.height * align_y - e.y_bearing);
    cairo_show_text(cr, s.c_str());
}

std::string number(double v) {
    char s[32];
    std::snprintf(s, sizeof s, "%g", std::fabs(v) < 1e-9 ? 0.0 : v);
    return s;
}

void draw_axes(cairo_t *cr, const Layout &l, const Plot &p) {
    cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
    cairo_set_line_width(cr, 1.0);
    cairo_rectangle(cr, l.left, l.top, l.side, l.side);
    cairo_stroke(cr);
    // Ticks in axis units over the drawn range (the field plus a margin).
    const double reach = kHalf * 1.15 / p.unit_scale;
    const double step = nice_step(2 * reach, 6);
    cairo_set_font_size(cr, l.font);
    for (double v = -std::floor(reach / step) * step; v <= reach + 1e-9; v += step) {
        const double x = l.px(v * p.unit_scale), y = l.py(v * p.unit_scale);
        const double tick = l.font * 0.5;
        cairo_move_to(cr, x, l.top + l.side);
        cairo_line_to(cr, x, l.top + l.side + tick);
        cairo_move_to(cr, l.left, y);
        cairo_line_to(cr, l.left - tick, y);
        cairo_stroke(cr);
        text(cr, x, l.top + l.side + tick * 1.6, number(v), 0.5, 0.0);
        text(cr, l.left - tick * 1.6, y, number(v), 1.0, 0.5);
    }
    const std::string unit = std::string("(") + p.unit + ")";
    text(cr, l.left + l.side, l.top + l.side + l.font * 2.6, "+X " + unit, 1.0, 0.0);
    cairo_save(cr);
    cairo_translate(cr, l.left - l.font * 4.2, l.top);
    cairo_rotate(cr, -M_PI / 2);
    text(cr, 0, 0, "+Y " + unit, 1.0, 0.5);
    cairo_restore(cr);
}

void draw_neutral_grid(cairo_t *cr, const Layout &l) {
    cairo_set_source_rgb(cr, 0.85, 0.85, 0.85);
    cairo_set_line_width(cr, std::max(0.5, l.size / 1600));
    for (int i = 0; i < 65; i += 4) {
        cairo_move_to(cr, l.px(neutral(i)), l.py(-kHalf));
        cairo_line_to(cr, l.px(neutral(i)), l.py(kHalf));
        cairo_move_to(cr, l.px(-kHalf), l.py(neutral(i)));
        cairo_line_to(cr, l.px(kHalf), l.py(neutral(i)));
    }
    cairo_stroke(cr);
}

// Exaggerated place of node (r, c).
void node_at(const Plot &p, const Layout &l, int r, int c, double *x, double *y) {
    const GeomPoint &q = p.table->table->cell[r * 65 + c];
    *x = l.px(neutral(c) + p.k * (q.x - neutral(c)));
    *y = l.py(neutral(r) + p.k * (q.y - neutral(r)));
}

void draw_table_grid(cairo_t *cr, const Layout &l, const Plot &p) {
    cairo_set_source_rgb(cr, 0.1, 0.2, 0.45);
    cairo_set_line_width(cr, std::max(1.0, l.size / 800));
    double x, y;
    for (int i = 0; i < 65; i += 4) {
        for (int j = 0; j < 65; ++j) {
            node_at(p, l, i, j, &x, &y);
            j == 0 ? cairo_move_to(cr, x, y) : cairo_line_to(cr, x, y);
        }
        for (int j = 0; j < 65; ++j) {
            node_at(p, l, j, i, &x, &y);
            j == 0 ? cairo_move_to(cr, x, y) : cairo_line_to(cr, x, y);
        }
    }
    cairo_stroke(cr);
}

void draw_arrows(cairo_t *cr, const Layout &l, const Plot &p) {
    cairo_set_source_rgb(cr, 0.75, 0.1, 0.1);
    cairo_set_line_width(cr, std::max(1.0, l.size / 700));
    for (int r = 0; r < 65; r += 4)
        for (int c = 0; c < 65; c += 4) {
            const double x0 = l.px(neutral(c)), y0 = l.py(neutral(r));
            double x1, y1;
            node_at(p, l, r, c, &x1, &y1);
            const double len = std::hypot(x1 - x0, y1 - y0);
            if (len < 0.5) continue;
            cairo_move_to(cr, x0, y0);
            cairo_line_to(cr, x1, y1);
            const double head = std::min(len * 0.4, l.size / 120);
            const double a = std::atan2(y1 - y0, x1 - x0);
            cairo_move_to(cr, x1, y1);
            cairo_line_to(cr, x1 - head * std::cos(a - 0.45), y1 - head * std::sin(a - 0.45));
            cairo_move_to(cr, x1, y1);
            cairo_line_to(cr, x1 - head * std::cos(a + 0.45), y1 - head * std::sin(a + 0.45));
        }
    cairo_stroke(cr);
}

double deviation(const Plot &p, int r, int c) {
    const GeomPoint &q = p.table->table->cell[r * 65 + c];
    return std::hypot(q.x - neutral(c), q.y - neutral(r));
}

void draw_heat(cairo_t *cr, const Layout &l, const Plot &p) {
    const double top = std::max(p.stats.max_deviation, 1e-12);
    for (int r = 0; r < 64; ++r)
        for (int c = 0; c < 64; ++c) {
            const double d = (deviation(p, r, c) + deviation(p, r + 1, c) + deviation(p, r, c + 1) +
                              deviation(p, r + 1, c + 1)) /
                             4;
            const Rgb col = ramp(d / top);
            cairo_set_source_rgb(cr, col.r, col.g, col.b);
            const double x0 = l.px(neutral(c)), x1 = l.px(neutral(c + 1));
            const double y0 = l.py(neutral(r + 1)), y1 = l.py(neutral(r));
            cairo_rectangle(cr, x0, y0, x1 - x0 + 0.5, y1 - y0 + 0.5);
            cairo_fill(cr);
        }
}

void draw_z_nodes(cairo_t *cr, const Layout &l, const Plot &p) {
    const double lo = p.stats.min[2], hi = p.stats.max[2];
    for (int r = 0; r < 65; r += 4)
        for (int c = 0; c < 65; c += 4) {
            double x, y;
            node_at(p, l, r, c, &x, &y);
            const Rgb col = ramp((p.table->table->cell[r * 65 + c].z - lo) / (hi - lo));
            cairo_set_source_rgb(cr, col.r, col.g, col.b);
            cairo_arc(cr, x, y, std::max(2.0, l.size / 200), 0, 2 * M_PI);
            cairo_fill(cr);
        }
}

void draw_colour_bar(cairo_t *cr, const Layout &l, double lo, double hi, const std::string &label) {
    const double w = l.font * 1.2;
    for (int i = 0; i < 100; ++i) {
        const Rgb col = ramp(1.0 - i / 99.0);
        cairo_set_source_rgb(cr, col.r, col.g, col.b);
        cairo_rectangle(cr, l.bar_x, l.top + l.side * i / 100.0, w, l.side / 100.0 + 0.5);
        cairo_fill(cr);
    }
    cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
    cairo_set_line_width(cr, 1);
    cairo_rectangle(cr, l.bar_x, l.top, w, l.side);
    cairo_stroke(cr);
    char s[48];
    std::snprintf(s, sizeof s, "%.4g", hi);
    text(cr, l.bar_x + w + 3, l.top, s, 0.0, 0.0);
    std::snprintf(s, sizeof s, "%.4g", lo);
    text(cr, l.bar_x + w + 3, l.top + l.side, s, 0.0, 1.0);
    cairo_save(cr);
    cairo_translate(cr, l.bar_x + w + l.font * 1.2, l.top + l.side / 2);
    cairo_rotate(cr, M_PI / 2);
    text(cr, 0, 0, label, 0.5, 1.0);
    cairo_restore(cr);
}

void draw(cairo_t *cr, double size, const Plot &p) {
    Layout l{};
    l.size = size;
    l.font = std::max(9.0, size / 60);
    const bool bar = p.style == "heat" || p.show_z;
    // Whole pixels plus a half: a one-pixel frame then covers one column
    // and one row of pixels instead of two half-grey ones.
    l.left = std::floor(l.font * 6) + 0.5;
    l.top = std::floor(l.font * 4.5) + 0.5;
    const double right = bar ? l.font * 6.5 : l.font * 1.5;
    l.side = std::floor(std::min(size - l.left - right, size - l.top - l.font * 4.5));
    l.bar_x = bar ? l.left + l.side + l.font * 1.2 : 0;
    l.per_unit = l.side / (2 * kHalf * 1.15);

    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, l.font);
    cairo_save(cr);
    cairo_rectangle(cr, l.left, l.top, l.side, l.side);
    cairo_clip(cr);
    if (p.style == "heat") {
        draw_heat(cr, l, p);
    } else {
        draw_neutral_grid(cr, l);
        draw_table_grid(cr, l, p);
        draw_arrows(cr, l, p);
        if (p.show_z) draw_z_nodes(cr, l, p);
    }
    cairo_restore(cr);
    draw_axes(cr, l, p);
    if (p.style == "heat")
        draw_colour_bar(cr, l, 0, p.stats.max_deviation / p.unit_scale,
                        std::string("deviation (") + p.unit + ")");
    else if (p.show_z)
        draw_colour_bar(cr, l, p.stats.min[2], p.stats.max[2], "z");

    // Title and what the picture exaggerates, above the plot.
    cairo_set_source_rgb(cr, 0.05, 0.05, 0.05);
    text(cr, l.left, l.font * 0.8, p.title, 0.0, 0.0);
    char line[200];
    if (p.near_neutral)
        std::snprintf(line, sizeof line,
                      "near-neutral: max deviation %.3g units, drawn to scale (x1)",
                      p.stats.max_deviation);
    else
        std::snprintf(line, sizeof line, "max deviation %.4g %s, displacements drawn x%.3g",
                      p.stats.max_deviation / p.unit_scale, p.unit, p.style == "heat" ? 1 : p.k);
    text(cr, l.left, l.font * 2.3, line, 0.0, 0.0);
}

struct PlotOptions {
    std::string path, out, format, style = "arrows";
    double exaggerate = 0;
    int size = 800;
};

} // namespace

void add_corr_plot(CLI::App *group) {
    auto o = std::make_shared<PlotOptions>();
    CLI::App *cmd = group->add_subcommand(
        "plot", "Draw the table over the neutral grid with axes in output units (mm when the "
                "file gives its scale): deviation arrows and the corrected grid, or a heat map of "
                "the deviation's size; z as colour when it varies");
    cmd->add_option("FILE", o->path, "correction file, - for standard input")->required();
    cmd->add_option("OUT", o->out, "picture to write: .png or .svg")->required();
    cmd->add_option("--format", o->format, "read FILE as this format");
    cmd->add_option("--style", o->style, "arrows or heat")
        ->capture_default_str()
        ->check(CLI::IsMember({"arrows", "heat"}));
    cmd->add_option("--exaggerate", o->exaggerate,
                    "draw displacements K times (default: the largest as 5 % of the field, at "
                    "most x100; a near-neutral table x1)")
        ->check(finite_range(1, 1000));
    cmd->add_option("--size", o->size, "picture width and height in pixels")
        ->capture_default_str()
        ->check(CLI::Range(300, 8000));
    cmd->callback([o] {
        const std::string ext = o->out == "-" ? "png" : cli::final_extension(o->out);
        if (ext != "png" && ext != "svg")
            throw cli::Usage(o->out + ": the picture must be named .png or .svg");
        const auto t = load_table(o->path, o->format.empty() ? nullptr : &format_named(o->format));
        Plot p{};
        p.table = t.get();
        p.title = o->path + " (" + t->format->name + ")";
        p.style = o->style;
        p.stats = measure(*t->table);
        if (!p.stats.finite)
            throw cli::Failure(o->path + ": the table holds values that are not finite");
        p.near_neutral = p.stats.max_deviation < kNearNeutral && o->exaggerate == 0;
        p.k = o->exaggerate > 0 ? o->exaggerate
              : p.near_neutral  ? 1.0
                                : std::clamp(0.05 * kFieldUnits / p.stats.max_deviation, 1.0,
                                             kMaxAutoExaggeration);
        p.unit_scale = t->units_per_mm() > 0 ? t->units_per_mm() : 1.0;
        p.unit = t->units_per_mm() > 0 ? "mm" : "units";
        p.show_z = t->has_z && p.stats.max[2] - p.stats.min[2] > 1e-9;
        cli::write_output(o->out, [&](const std::string &tmp) {
            write_picture(tmp, ext == "svg", o->size, o->size,
                          [&](cairo_t *cr) { draw(cr, o->size, p); });
        });
        if (o->out != "-")
            cli::say("plot of %s written to %s (%dx%d, x%.3g)\n", o->path.c_str(), o->out.c_str(),
                     o->size, o->size, p.k);
    });
}

} // namespace tool
