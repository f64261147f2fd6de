// SPDX-License-Identifier: MIT
// vexo geom ...: hatch fill and merging of polylines given as text, written
// back as text or drawn as a picture; the output helpers the geom commands
// share (geom_output.hpp).
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "commands.hpp"
#include "geom_output.hpp"
#include "picture.hpp"
#include "polyline_text.hpp"

namespace tool {

const char *const kTextForm =
    "Polyline text (IN, and OUT unless it ends in .svg or .png):\n"
    "  one point per line, \"x y\" or \"x y z\" (z 0 when left out), numbers\n"
    "  separated by spaces or tabs, with a point as the decimal mark;\n"
    "  a blank line ends a polyline; '#' starts a comment (a whole line or\n"
    "  after the numbers); NaN and infinities are refused.  For hatch each\n"
    "  polyline is a closed contour (the last point joins the first), the\n"
    "  region inside an odd number of them is filled.  Output numbers are\n"
    "  the shortest that read back to the same values.\n"
    "Pictures: input faint, result bold, jumps between result polylines\n"
    "  dashed, y upwards, fitted to the picture.";

namespace {

using nlohmann::json;

// Index ranges [first, last] of the polylines of an array.
struct Range {
    size_t first, last;
};
std::vector<Range> polylines_of(const GeomPoint *pts, size_t count) {
    std::vector<Range> lines;
    size_t first = 0;
    for (size_t i = 0; i < count; ++i)
        if ((pts[i].flags & VEXO_POINT_END) || i + 1 == count) {
            lines.push_back({first, i});
            first = i + 1;
        }
    return lines;
}

struct Summary {
    size_t polylines = 0, points = 0;
    double mark = 0, jump = 0; // 2D lengths: along the polylines, between them
};

Summary summarise(const GeomPoint *pts, size_t count) {
    Summary s;
    const std::vector<Range> lines = polylines_of(pts, count);
    s.polylines = lines.size();
    s.points = count;
    for (size_t k = 0; k < lines.size(); ++k) {
        for (size_t i = lines[k].first; i < lines[k].last; ++i)
            s.mark += std::hypot(pts[i + 1].x - pts[i].x, pts[i + 1].y - pts[i].y);
        if (k > 0) {
            const GeomPoint &a = pts[lines[k - 1].last], &b = pts[lines[k].first];
            s.jump += std::hypot(b.x - a.x, b.y - a.y);
        }
    }
    return s;
}

// ---------------------------------------------------------------- pictures

struct Frame {
    double scale = 1, cx = 0, cy = 0, half = 0;
    double px(double x) const { return half + (x - cx) * scale; }
    double py(double y) const { return half - (y - cy) * scale; } // y up
};

// Fits every point of both arrays into a square of `size` with a margin.
Frame fit(const std::vector<GeomPoint> &input, const GeomPoint *result, size_t count, int size) {
    double lo_x = INFINITY, lo_y = INFINITY, hi_x = -INFINITY, hi_y = -INFINITY;
    auto take = [&](const GeomPoint &p) {
        lo_x = std::min(lo_x, p.x), hi_x = std::max(hi_x, p.x);
        lo_y = std::min(lo_y, p.y), hi_y = std::max(hi_y, p.y);
    };
    for (const GeomPoint &p : input) take(p);
    for (size_t i = 0; i < count; ++i) take(result[i]);
    Frame f;
    f.half = size / 2.0;
    if (!(lo_x <= hi_x)) return f;
    // Halved before subtracting, so that +-1e308 give no infinity.
    f.cx = lo_x / 2 + hi_x / 2;
    f.cy = lo_y / 2 + hi_y / 2;
    const double span = std::max(hi_x / 2 - lo_x / 2, hi_y / 2 - lo_y / 2) * 2;
    const double room = size * 0.9;
    if (span > 0 && std::isfinite(room / span)) f.scale = room / span;
    return f;
}

void trace(cairo_t *cr, const Frame &f, const GeomPoint *pts, Range r, bool closed) {
    cairo_move_to(cr, f.px(pts[r.first].x), f.py(pts[r.first].y));
    for (size_t i = r.first + 1; i <= r.last; ++i)
        cairo_line_to(cr, f.px(pts[i].x), f.py(pts[i].y));
    if (closed) cairo_close_path(cr);
}

void draw_polylines(cairo_t *cr, const Drawing &d) {
    const Frame f = fit(*d.input, d.result, d.count, d.size);
    const double unit = std::max(1.0, d.size / 800.0);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);

    cairo_set_source_rgb(cr, 0.72, 0.72, 0.72);
    cairo_set_line_width(cr, unit);
    for (const Range &r : polylines_of(d.input->data(), d.input->size()))
        trace(cr, f, d.input->data(), r, d.input_closed);
    cairo_stroke(cr);

    const std::vector<Range> lines = polylines_of(d.result, d.count);
    cairo_set_source_rgb(cr, 0.05, 0.15, 0.5);
    cairo_set_line_width(cr, 2 * unit);
    for (const Range &r : lines) {
        if (r.first == r.last) { // a dot
            cairo_new_sub_path(cr);
            cairo_arc(cr, f.px(d.result[r.first].x), f.py(d.result[r.first].y), 1.5 * unit, 0,
                      2 * M_PI);
            continue;
        }
        trace(cr, f, d.result, r, false);
    }
    cairo_stroke(cr);

    const double dash[] = {4 * unit, 3 * unit};
    cairo_set_dash(cr, dash, 2, 0);
    cairo_set_source_rgba(cr, 0.8, 0.1, 0.1, 0.7);
    cairo_set_line_width(cr, 0.75 * unit);
    for (size_t k = 1; k < lines.size(); ++k) {
        const GeomPoint &a = d.result[lines[k - 1].last], &b = d.result[lines[k].first];
        cairo_move_to(cr, f.px(a.x), f.py(a.y));
        cairo_line_to(cr, f.px(b.x), f.py(b.y));
    }
    cairo_stroke(cr);
}

} // namespace

// ---------------------------------------------------------------- output

void add_output_options(CLI::App *cmd, Output &o) {
    cmd->add_option("IN", o.in, "polyline text (see vexo geom --help), - for standard input")
        ->required();
    cmd->add_option("OUT", o.out,
                    "result: .svg or .png draws it, anything else (- for standard output) is "
                    "polyline text")
        ->required();
    cmd->add_option("--size", o.size, "picture width and height in pixels")
        ->capture_default_str()
        ->check(CLI::Range(100, 8000));
    add_json_flag(cmd, o.json);
}

std::vector<GeomPoint> read_input_polylines(const Output &o) {
    if (o.json && o.out == "-")
        throw cli::Usage("--json prints on standard output: OUT must be a file");
    std::vector<GeomPoint> pts = read_polylines(o.in);
    if (pts.empty()) throw cli::Failure((o.in == "-" ? "standard input" : o.in) + ": no points");
    return pts;
}

void write_text(const std::string &path, const GeomPoint *pts, size_t count) {
    std::FILE *file = std::fopen(path.c_str(), "w");
    if (file == nullptr) throw cli::Failure(path + ": cannot open: " + std::strerror(errno));
    const bool written = write_polylines(file, pts, count);
    if (std::fclose(file) != 0 || !written)
        throw cli::Failure(path + ": cannot write: " + std::strerror(errno));
}

// Writes the result by OUT's extension, then reports it.
void finish(const Output &o, const char *command, const Drawing &d) {
    const std::string ext = o.out == "-" ? "" : cli::final_extension(o.out);
    cli::write_output(o.out, [&](const std::string &tmp) {
        if (ext == "svg" || ext == "png")
            write_picture(tmp, ext == "svg", d.size, d.size,
                          [&](cairo_t *cr) { draw_polylines(cr, d); });
        else
            write_text(tmp, d.result, d.count);
    });
    const Summary s = summarise(d.result, d.count);
    if (o.json) {
        print_json(json{
            {"command", command},
            {"input", o.in},
            {"output", o.out},
            {"polylines", s.polylines},
            {"points", s.points},
            {"mark_length", s.mark},
            {"jump_length",
             s.jump}}.dump(2));
    } else if (o.out != "-") {
        cli::say("%s: %zu polylines, %zu points, mark length %.6g, jump length %.6g\n",
                 o.out.c_str(), s.polylines, s.points, s.mark, s.jump);
    }
}

Result checked(GeomPoint *result, uint32_t status, const char *what) {
    Result owned(result);
    if (status == VEXO_ERROR_NO_RESULT)
        throw cli::Failure(std::string(what) + " is empty: " + cli::status_text(status));
    if (status != VEXO_OK)
        throw cli::Failure(std::string(what) + " failed: " + cli::status_text(status));
    return owned;
}

uint32_t point_count(const std::vector<GeomPoint> &pts) {
    return uint32_t(pts.size()); // at most kMaxPolylinePoints
}

namespace {

// ---------------------------------------------------------------- hatch

struct HatchOptions : Output {
    double spacing = 1, angle = 0, inset = 0, start_trim = 0, end_trim = 0, min_length = 0;
    double angle_step = 0, connect = 0;
    std::vector<double> origin{0, 0};
    uint32_t cross = 1;
    bool bidirectional = false;
    std::string contour = "none";
};

void add_hatch(CLI::App *group) {
    auto o = std::make_shared<HatchOptions>();
    CLI::App *cmd = group->add_subcommand(
        "hatch", "Fill the region of the contours in IN with hatch lines (lengths in the unit "
                 "of IN, angles in degrees from +x)");
    add_output_options(cmd, *o);
    cmd->add_option("--spacing", o->spacing, "distance between hatch lines")
        ->capture_default_str()
        ->check(finite_range(1e-9, 1e12));
    cmd->add_option("--angle", o->angle, "direction of the lines")
        ->capture_default_str()
        ->check(finite_range(-3600, 3600));
    cmd->add_option("--inset", o->inset, "distance kept from the contours")
        ->capture_default_str()
        ->check(finite_range(0, 1e12));
    cmd->add_option("--start-trim", o->start_trim,
                    "taken off the start of each line (negative: extends it)")
        ->capture_default_str()
        ->check(finite_range(-1e12, 1e12));
    cmd->add_option("--end-trim", o->end_trim,
                    "taken off the end of each line (negative: extends it)")
        ->capture_default_str()
        ->check(finite_range(-1e12, 1e12));
    cmd->add_option("--min-length", o->min_length, "drop lines shorter than this after trims")
        ->capture_default_str()
        ->check(finite_range(0, 1e12));
    cmd->add_option("--cross", o->cross, "number of passes, each turned by --angle-step")
        ->capture_default_str()
        ->check(CLI::Range(1, 64));
    CLI::Option *step =
        cmd->add_option("--angle-step", o->angle_step,
                        "degrees added per pass (default: 180 / N, so --cross 2 crosses at 90)")
            ->check(finite_range(-3600, 3600));
    cmd->add_flag("--bidirectional", o->bidirectional, "every other line runs backwards");
    cmd->add_option("--connect", o->connect,
                    "join neighbouring lines by connectors up to this long that stay inside "
                    "(implies --bidirectional)")
        ->check(finite_range(0, 1e12));
    cmd->add_option("--origin", o->origin,
                    "X Y: a point every line family passes through, so that objects hatched "
                    "with the same origin share lines")
        ->expected(2)
        ->check(finite_range(-1e12, 1e12));
    cmd->add_option("--contour", o->contour, "the contours themselves: before, after or none")
        ->capture_default_str()
        ->check(CLI::IsMember({"before", "after", "none"}));
    cmd->footer(kTextForm);
    cmd->callback([o, cmd, step] {
        const std::vector<GeomPoint> rings = read_input_polylines(*o);
        VexoHatch h;
        std::memset(&h, 0, sizeof h);
        h.spacing = o->spacing;
        h.angle = o->angle;
        h.inset = o->inset;
        h.start_trim = o->start_trim;
        h.end_trim = o->end_trim;
        h.min_length = o->min_length;
        h.origin_x = o->origin[0];
        h.origin_y = o->origin[1];
        h.passes = o->cross;
        h.angle_step = step->count() > 0 ? o->angle_step : 180.0 / o->cross;
        if (o->bidirectional) h.options |= VEXO_HATCH_BIDIRECTIONAL;
        if (cmd->count("--connect") > 0) {
            h.options |= VEXO_HATCH_BIDIRECTIONAL | VEXO_HATCH_CONNECT;
            h.connect_distance = o->connect;
        }
        if (o->contour == "before") h.options |= VEXO_HATCH_CONTOUR_BEFORE;
        if (o->contour == "after") h.options |= VEXO_HATCH_CONTOUR_AFTER;
        uint32_t n = 0, status = VEXO_OK;
        GeomPoint *r = vexo_geom_cover(rings.data(), point_count(rings), &h, &n, &status);
        const Result result = checked(r, status, "the hatch");
        finish(*o, "hatch", Drawing{&rings, true, result.get(), n, o->size});
    });
}

// ---------------------------------------------------------------- merge

struct MergeOptions : Output {
    double tolerance = 0;
    bool order = false, rotate_closed = false, keep_direction = false;
    std::vector<double> start;
};

void add_merge(CLI::App *group) {
    auto o = std::make_shared<MergeOptions>();
    CLI::App *cmd = group->add_subcommand(
        "merge", "Join the polylines of IN whose ends meet within a tolerance (reversing pieces "
                 "where needed), then optionally order them to shorten the jumps between them");
    add_output_options(cmd, *o);
    cmd->add_option("--tolerance", o->tolerance, "largest gap between ends that are joined")
        ->required()
        ->check(finite_range(0, 1e12));
    cmd->add_flag("--order", o->order,
                  "order the result: nearest free end first, from --start (default 0 0)");
    cmd->add_option("--start", o->start, "X Y: the pen position the order starts from")
        ->expected(2)
        ->check(finite_range(-1e12, 1e12));
    cmd->add_flag("--rotate-closed", o->rotate_closed,
                  "with --order: a closed polyline may start at any of its vertices");
    cmd->add_flag("--keep-direction", o->keep_direction, "with --order: never reverse a polyline");
    cmd->footer(kTextForm);
    cmd->callback([o] {
        if (!o->order && (!o->start.empty() || o->rotate_closed || o->keep_direction))
            throw cli::Usage("--start, --rotate-closed and --keep-direction need --order");
        const std::vector<GeomPoint> pieces = read_input_polylines(*o);
        uint32_t options = 0;
        if (o->order) options |= VEXO_MERGE_ORDER;
        if (o->rotate_closed) options |= VEXO_ORDER_ROTATE_CLOSED;
        if (o->keep_direction) options |= VEXO_ORDER_KEEP_DIRECTION;
        GeomPoint start;
        std::memset(&start, 0, sizeof start);
        if (!o->start.empty()) start.x = o->start[0], start.y = o->start[1];
        uint32_t n = 0, status = VEXO_OK;
        GeomPoint *r = vexo_geom_merge_lines(pieces.data(), point_count(pieces), o->tolerance,
                                             options, &start, &n, &status);
        const Result result = checked(r, status, "the merge");
        finish(*o, "merge", Drawing{&pieces, false, result.get(), n, o->size});
    });
}

} // namespace

void add_geom_group(CLI::App &root) {
    CLI::App *group = add_group(
        root, "geom", "marking geometry: hatch fill, merging, dot and dash patterns of polylines");
    group->footer(kTextForm);
    add_hatch(group);
    add_merge(group);
    add_pattern(group);
}

} // namespace tool
