// SPDX-License-Identifier: MIT
// vexo corr from-grid, from-photo and grid: field calibration.  Mark the
// dot grid (grid), measure where the dots landed (by hand, or from a photo
// with from-photo), and turn the errors into a correction table.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#ifdef VEXO_TOOL_VISION
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#endif

#include "commands.hpp"
#include "corr_table.hpp"
#include "grid_text.hpp"
#include "polyline_text.hpp"

namespace tool {
namespace {

using nlohmann::json;

// The nominal n x n grid, `pitch` apart, centred on (0, 0), row by row.
std::vector<GeomPoint> nominal_grid(uint32_t n, double pitch) {
    std::vector<GeomPoint> g(size_t(n) * n, GeomPoint{});
    const double mid = (n - 1) / 2.0;
    for (uint32_t i = 0; i < n; ++i)
        for (uint32_t j = 0; j < n; ++j) {
            g[size_t(i) * n + j].x = (j - mid) * pitch;
            g[size_t(i) * n + j].y = (i - mid) * pitch;
        }
    return g;
}

// Writes path (temporary beside it, then renamed; "-" for standard output)
// through `fill`, which returns false on a write error.
void write_file(const std::string &path, const std::function<bool(std::FILE *)> &fill) {
    cli::write_output(path, [&](const std::string &tmp) {
        std::FILE *f = std::fopen(tmp.c_str(), "wb");
        if (!f) throw cli::Failure(path + ": cannot open: " + std::strerror(errno));
        const bool ok = fill(f);
        if (std::fclose(f) != 0 || !ok)
            throw cli::Failure(path + ": cannot write: " + std::strerror(errno));
    });
}

struct Residual {
    double max = 0, rms = 0; // mm
};

Residual residual(const std::vector<GeomPoint> &measured, const std::vector<GeomPoint> &nominal) {
    Residual r;
    for (size_t k = 0; k < nominal.size(); ++k) {
        const double d = std::hypot(measured[k].x - nominal[k].x, measured[k].y - nominal[k].y);
        r.max = std::max(r.max, d);
        r.rms += d * d;
    }
    r.rms = std::sqrt(r.rms / double(nominal.size()));
    return r;
}

// Options both table-making commands share.
struct TableOptions {
    std::string out, to, base;
    double field = 0;
    bool json = false;
};

void add_table_options(CLI::App *cmd, TableOptions &o, const char *field_default) {
    cmd->add_option("OUT", o.out, "table to write (.kxo, .ctb or .cor), - for standard output")
        ->required();
    cmd->add_option("--to", o.to, "write this format whatever OUT's extension");
    cmd->add_option("--field", o.field,
                    std::string("side of the field the table spans, mm (") + field_default + ")")
        ->check(finite_range(1e-6, 1e9));
    cmd->add_option("--base", o.base,
                    "the table the marks were made with (any readable format); the result "
                    "corrects it.  Default: the neutral table");
    add_json_flag(cmd, o.json);
}

// The table from the grids, written to OUT; returns the format's name.
const char *write_grid_table(const TableOptions &o, uint32_t n, const std::vector<GeomPoint> &m,
                             const std::vector<GeomPoint> &nominal, double field) {
    const FormatSpec &format = output_format(o.out, o.to);
    std::unique_ptr<LoadedTable> t = o.base.empty() ? neutral_table() : load_table(o.base, nullptr);
    const uint32_t status =
        vexo_corr_from_grid(n, m.data(), nominal.data(), field, t->table.get(), t->table.get());
    if (status == VEXO_ERROR_INVALID_DATA)
        throw cli::Failure("the measured grid folds (marks swapped places along a row or column)");
    if (status != VEXO_OK)
        throw cli::Failure("no table from this grid: " + cli::status_text(status));
    // The ".cor" scale, as corr convert --field writes it.
    t->info.flags |= VEXO_CORR_INFO_SCALE;
    t->info.scale = 65536.0 / field;
    save_table(o.out, format, *t);
    return format.name;
}

void report(const TableOptions &o, const char *format, uint32_t n, double field, Residual r,
            const json &extra) {
    if (o.json) {
        json j = {{"output", o.out},   {"format", format},         {"grid", n},
                  {"field_mm", field}, {"residual_max_mm", r.max}, {"residual_rms_mm", r.rms}};
        j.update(extra);
        print_json(j.dump(2));
        return;
    }
    if (o.out != "-")
        cli::say("%u x %u marks, field %.6g mm; measured - nominal: max %.6g mm, RMS %.6g mm; "
                 "table written to %s (%s)\n",
                 n, n, field, r.max, r.rms, o.out.c_str(), format);
}

// ---------------------------------------------------------------- from-grid

struct FromGridOptions : TableOptions {
    std::string in;
};

void add_from_grid(CLI::App *group) {
    auto o = std::make_shared<FromGridOptions>();
    CLI::App *cmd = group->add_subcommand(
        "from-grid",
        "Make a correction table from a measured grid of marks.  MEASURED is text, one mark a "
        "line: \"nominal_x nominal_y measured_x measured_y\" in mm, field centre at (0, 0), y "
        "along the table rows; '#' starts a comment.  The nominal places must be a full n x n "
        "grid (n >= 2; each x and y value repeated exactly), lines in any order.  A perfect "
        "measurement gives the base table unchanged");
    cmd->add_option("MEASURED", o->in, "measured grid text, - for standard input")->required();
    add_table_options(cmd, *o, "default: the nominal grid's extent");
    cmd->callback([o] {
        const std::vector<uint8_t> bytes = cli::read_input(o->in, kMaxGridBytes);
        const MeasuredGrid g = parse_measured_grid(bytes.data(), bytes.size(),
                                                   o->in == "-" ? "standard input" : o->in);
        const double extent = std::max(g.nominal.back().x - g.nominal.front().x,
                                       g.nominal.back().y - g.nominal.front().y);
        const double field = o->field > 0 ? o->field : extent;
        const char *format = write_grid_table(*o, g.n, g.measured, g.nominal, field);
        report(*o, format, g.n, field, residual(g.measured, g.nominal), json::object());
    });
}

// ---------------------------------------------------------------- grid

struct GridOptions {
    std::string out;
    uint32_t n = 0;
    double pitch = 0, radius = 0;
};

std::vector<GeomPoint> grid_figures(const GridOptions &o) {
    const std::vector<GeomPoint> places = nominal_grid(o.n, o.pitch);
    if (o.radius <= 0) {
        std::vector<GeomPoint> dots = places;
        for (GeomPoint &p : dots) p.flags = VEXO_POINT_END | VEXO_POINT_END_MARK;
        return dots;
    }
    GeomDotShape shape;
    std::memset(&shape, 0, sizeof shape);
    shape.kind = 0; // circle
    shape.steps = 36;
    shape.radius = uint32_t(std::lround(o.radius * 1000));
    GeomPoint *buffer = nullptr;
    uint32_t count = 0;
    for (const GeomPoint &p : places) {
        buffer = vexo_geom_append_dot(buffer, &count, &p, true, &shape);
        if (!buffer) throw cli::Failure("no memory for the dot figures");
    }
    std::vector<GeomPoint> out(buffer, buffer + count);
    vexo_geom_release(buffer);
    return out;
}

// An SVG in mm, y up, each dot a circle (or the figure's outline).
void write_grid_svg(std::FILE *f, const GridOptions &o, const std::vector<GeomPoint> &pts) {
    const double half = (o.n - 1) * o.pitch / 2 + std::max(o.radius, o.pitch / 10) * 2;
    std::fprintf(f,
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%smm\" height=\"%smm\" "
                 "viewBox=\"%s %s %s %s\">\n<g transform=\"scale(1,-1)\" fill=\"none\" "
                 "stroke=\"black\" stroke-width=\"%s\">\n",
                 format_number(2 * half).c_str(), format_number(2 * half).c_str(),
                 format_number(-half).c_str(), format_number(-half).c_str(),
                 format_number(2 * half).c_str(), format_number(2 * half).c_str(),
                 format_number(o.pitch / 50).c_str());
    std::string path;
    for (size_t i = 0; i < pts.size(); ++i) {
        const bool starts = i == 0 || (pts[i - 1].flags & VEXO_POINT_END);
        const bool lone = starts && (pts[i].flags & VEXO_POINT_END);
        if (lone) {
            std::fprintf(f, "<circle cx=\"%s\" cy=\"%s\" r=\"%s\" fill=\"black\"/>\n",
                         format_number(pts[i].x).c_str(), format_number(pts[i].y).c_str(),
                         format_number(o.pitch / 20).c_str());
            continue;
        }
        path += (starts ? "M" : "L") + format_number(pts[i].x) + " " + format_number(pts[i].y);
        if (pts[i].flags & VEXO_POINT_END) {
            std::fprintf(f, "<path d=\"%s\"/>\n", path.c_str());
            path.clear();
        } else {
            path += " ";
        }
    }
    std::fprintf(f, "</g>\n</svg>\n");
}

void add_grid(CLI::App *group) {
    auto o = std::make_shared<GridOptions>();
    CLI::App *cmd = group->add_subcommand(
        "grid", "Write the n x n dot grid to mark for a field calibration, centred on (0, 0), "
                "row by row from the lowest y: polyline text (one dot a point, or its circle "
                "with --dot-radius), or an SVG when OUT ends in .svg");
    cmd->add_option("OUT", o->out, "polyline text or .svg file, - for standard output")->required();
    cmd->add_option("--grid", o->n, "marks per side")->required()->check(CLI::Range(2u, 1024u));
    cmd->add_option("--pitch", o->pitch, "distance between neighbouring marks, mm")
        ->required()
        ->check(finite_range(1e-3, 1e6));
    cmd->add_option("--dot-radius", o->radius, "draw each dot as a circle of this radius, mm")
        ->check(finite_range(1e-3, 1e3));
    cmd->callback([o] {
        const std::vector<GeomPoint> pts = grid_figures(*o);
        const bool svg = o->out != "-" && cli::final_extension(o->out) == "svg";
        write_file(o->out, [&](std::FILE *f) {
            if (!svg) return write_polylines(f, pts.data(), pts.size());
            write_grid_svg(f, *o, pts);
            return std::ferror(f) == 0;
        });
    });
}

#ifdef VEXO_TOOL_VISION
// ---------------------------------------------------------------- from-photo

struct PhotoOptions : TableOptions {
    std::string image, record, dots_png;
    uint32_t n = 0;
    double pitch = 0, min_area = 10, circularity = 0.6;
    int threshold = -1;
    bool dark = false;
};

// Pixels (y up, about the middle dot) onto the nominal grid by the
// similarity (scale, turn, shift) that fits best in least squares: the
// camera's placement and scale are not known, so they are not measured.
double fit_to_nominal(std::vector<GeomPoint> &pts, const std::vector<GeomPoint> &nominal) {
    const double count = double(pts.size());
    double px = 0, py = 0, qx = 0, qy = 0;
    for (size_t k = 0; k < pts.size(); ++k)
        px += pts[k].x, py += pts[k].y, qx += nominal[k].x, qy += nominal[k].y;
    px /= count, py /= count, qx /= count, qy /= count;
    double a = 0, b = 0, norm = 0;
    for (size_t k = 0; k < pts.size(); ++k) {
        const double x = pts[k].x - px, y = pts[k].y - py;
        const double u = nominal[k].x - qx, v = nominal[k].y - qy;
        a += x * u + y * v;
        b += x * v - y * u;
        norm += x * x + y * y;
    }
    const double s = std::hypot(a, b) / norm, t = std::atan2(b, a);
    const double c = s * std::cos(t), d = s * std::sin(t);
    for (GeomPoint &p : pts) {
        const double x = p.x - px, y = p.y - py;
        p.x = qx + c * x - d * y;
        p.y = qy + d * x + c * y;
    }
    return s; // mm per pixel
}

std::string dots_problem(uint32_t status, uint32_t found, uint32_t n) {
    const std::string counted =
        "found " + std::to_string(found) + " dots, the grid has " + std::to_string(n * n);
    if (status == VEXO_ERROR_NO_RESULT) return counted + ": a mark is missing";
    if (status == VEXO_ERROR_INVALID_DATA)
        return found == n * n
                   ? counted + ", but not in " + std::to_string(n) + " rows of " + std::to_string(n)
                   : counted + ": an extra dot (dust, a reflection?)";
    return "the dots cannot be put in grid order: " + cli::status_text(status);
}

void write_dots_png(const std::string &path, std::vector<uint8_t> &block,
                    const std::vector<GeomPoint> &dots) {
    const auto *b = block.data();
    const int w = int(uint32_t(b[16]) << 24 | uint32_t(b[17]) << 16 | uint32_t(b[18]) << 8 | b[19]);
    const int h = int(uint32_t(b[20]) << 24 | uint32_t(b[21]) << 16 | uint32_t(b[22]) << 8 | b[23]);
    cv::Mat photo(h, w, CV_8UC3, block.data() + VEXO_IMAGE_HEADER_SIZE);
    const int unit = std::max(1, std::max(w, h) / 800);
    for (const GeomPoint &d : dots) {
        const cv::Point c(int(std::lround(d.x * 16)), int(std::lround(d.y * 16)));
        const int r = int(std::lround(std::sqrt(d.z / M_PI) * 16)) + 2 * 16;
        cv::circle(photo, c, r, cv::Scalar(0, 0, 255), unit, cv::LINE_AA, 4);
    }
    std::vector<uint8_t> png;
    if (!cv::imencode(".png", photo, png)) throw cli::Failure(path + ": cannot encode the PNG");
    write_file(path, [&](std::FILE *f) {
        return std::fwrite(png.data(), 1, png.size(), f) == png.size();
    });
}

struct FoundDots {
    std::vector<GeomPoint> pixels;
    uint32_t status = 0;
};

FoundDots find_photo_dots(const PhotoOptions &o, const std::vector<uint8_t> &block,
                          const CalibrationRecord *record) {
    PrcgDotParams p;
    std::memset(&p, 0, sizeof p);
    p.threshold_kind = o.threshold < 0 ? VEXO_PRCG_THRESHOLD_OTSU : VEXO_PRCG_THRESHOLD_FIXED;
    p.threshold = o.threshold < 0 ? 0u : uint32_t(o.threshold);
    p.min_area = o.min_area;
    p.min_circularity = o.circularity;
    p.options = (o.dark ? VEXO_PRCG_DOTS_DARK : 0u) | VEXO_PRCG_DOTS_NO_BORDER;
    if (record) {
        p.options |= VEXO_PRCG_DOTS_UNDISTORT | VEXO_PRCG_DOTS_PERSPECTIVE;
        p.record = record;
    }
    FoundDots f;
    uint32_t count = 0;
    GeomPoint *dots = vexo_prcg_find_dots(reinterpret_cast<const ImageBlock *>(block.data()), &p,
                                          &count, &f.status);
    if (dots) f.pixels.assign(dots, dots + count);
    vexo_geom_release(dots);
    return f;
}

void add_from_photo(CLI::App *group) {
    auto o = std::make_shared<PhotoOptions>();
    CLI::App *cmd = group->add_subcommand(
        "from-photo",
        "Make a correction table from a photo of a marked n x n dot grid (see corr grid): find "
        "the dots, put them in grid order (photo up is +y), fit them to the nominal grid by "
        "scale, turn and shift (the camera's own placement), and correct the base table by "
        "what remains.  Prints the residual per mark (max, RMS)");
    cmd->add_option("IMAGE", o->image, "PNG, JPEG or BMP photo of the marks")->required();
    add_table_options(cmd, *o, "default: (grid - 1) x pitch");
    cmd->add_option("--grid", o->n, "marks per side")->required()->check(CLI::Range(2u, 1024u));
    cmd->add_option("--pitch", o->pitch, "nominal distance between neighbouring marks, mm")
        ->required()
        ->check(finite_range(1e-3, 1e6));
    cmd->add_option("--record", o->record,
                    "calibration record: undistort the lens and straighten the perspective of "
                    "the dot centres first");
    cmd->add_flag("--dark", o->dark, "dark marks on a light ground");
    cmd->add_option("--threshold", o->threshold, "grey level of the marks' edge (default: Otsu)")
        ->check(CLI::Range(0, 254));
    cmd->add_option("--min-area", o->min_area, "smallest dot, pixels")
        ->capture_default_str()
        ->check(finite_range(0, 1e9));
    cmd->add_option("--circularity", o->circularity, "least 4 pi area / perimeter^2 of a dot")
        ->capture_default_str()
        ->check(finite_range(0, 1));
    cmd->add_option("--dots-png", o->dots_png,
                    "also draw the found dots over the photo (PNG), where they lie in the photo "
                    "before any straightening");
    cmd->callback([o] {
        std::vector<uint8_t> block = read_picture_block(o->image);
        CalibrationRecord record;
        if (!o->record.empty()) record = read_calibration_record(o->record);
        FoundDots found = find_photo_dots(*o, block, o->record.empty() ? nullptr : &record);
        // Straightened centres lie in another frame than the photo's pixels:
        // the picture shows the dots where they are found in the photo.
        if (!o->dots_png.empty())
            write_dots_png(o->dots_png, block,
                           o->record.empty() ? found.pixels
                                             : find_photo_dots(*o, block, nullptr).pixels);
        if (found.status != VEXO_OK)
            throw cli::Failure(o->image + ": no dots found: " + cli::status_text(found.status));
        std::vector<GeomPoint> pts = found.pixels;
        const auto count = uint32_t(pts.size());
        vexo_prcg_scale_dots(pts.data(), count, 1, 1, nullptr, VEXO_PRCG_SCALE_FLIP_Y);
        double rotation = 0;
        const uint32_t sorted =
            vexo_prcg_unrotate_dots(pts.data(), count, o->n, &rotation, VEXO_PRCG_SORT_GRID);
        if (sorted != VEXO_OK)
            throw cli::Failure(o->image + ": " + dots_problem(sorted, count, o->n));
        const std::vector<GeomPoint> nominal = nominal_grid(o->n, o->pitch);
        const double mm_per_px = fit_to_nominal(pts, nominal);
        const double field = o->field > 0 ? o->field : (o->n - 1) * o->pitch;
        const char *format = write_grid_table(*o, o->n, pts, nominal, field);
        report(*o, format, o->n, field, residual(pts, nominal),
               {{"dots", count}, {"rotation_degrees", rotation}, {"mm_per_pixel", mm_per_px}});
    });
}
#endif

} // namespace

void add_corr_grid_commands(CLI::App *group) {
    add_from_grid(group);
#ifdef VEXO_TOOL_VISION
    add_from_photo(group);
#endif
    add_grid(group);
}

} // namespace tool
