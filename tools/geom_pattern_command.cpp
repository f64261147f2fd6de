// SPDX-License-Identifier: MIT
// vexo geom pattern: dots every pitch, or dashes from a dash array, along
// the polylines of IN, written as text or drawn as a picture.
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "commands.hpp"
#include "geom_output.hpp"

namespace tool {
namespace {

struct PatternOptions : Output {
    double pitch = 0, phase = 0, circle = 0;
    std::vector<double> dash;
    uint32_t steps = 16;
    bool fit = false, ring = false, flat = false;
};

// The dash array as the library takes it; a bad one is a usage error.
VexoDash dash_record(const PatternOptions &o, uint32_t options) {
    if (o.dash.size() > VEXO_DASH_MAX)
        throw cli::Usage("--dash takes at most " + std::to_string(VEXO_DASH_MAX) + " lengths");
    VexoDash d;
    std::memset(&d, 0, sizeof d);
    double period = 0;
    for (size_t i = 0; i < o.dash.size(); ++i) period += d.lengths[i] = o.dash[i];
    if (!(period > 1e-7)) throw cli::Usage("--dash lengths must add up to more than 1e-7");
    d.count = uint32_t(o.dash.size());
    d.offset = o.phase;
    d.options = options;
    return d;
}

GeomPoint *make_pattern(const PatternOptions &o, const std::vector<GeomPoint> &in, uint32_t *n,
                        uint32_t *status) {
    const uint32_t options = (o.flat ? VEXO_PATTERN_2D : 0u) | (o.fit ? VEXO_PATTERN_FIT : 0u) |
                             (o.ring ? VEXO_PATTERN_RING : 0u);
    if (!o.dash.empty()) {
        const VexoDash d = dash_record(o, options);
        return vexo_line_to_pattern3(in.data(), point_count(in), &d, n, status);
    }
    GeomDotShape shape;
    std::memset(&shape, 0, sizeof shape);
    shape.steps = o.steps;
    shape.radius = uint32_t(std::lround(o.circle * 1000.0)); // thousandths of the unit
    return vexo_line_to_pattern(in.data(), point_count(in), o.pitch, o.phase, options, o.circle > 0,
                                &shape, n, status);
}

} // namespace

void add_pattern(CLI::App *group) {
    auto o = std::make_shared<PatternOptions>();
    CLI::App *cmd = group->add_subcommand(
        "pattern", "Dots every --pitch, or dashes from --dash, along each polyline of IN (lengths "
                   "in the unit of IN; arc length runs on across vertices)");
    add_output_options(cmd, *o);
    CLI::Option *pitch = cmd->add_option("--pitch", o->pitch, "distance between dots, above 1e-7")
                             ->check(finite_range(0, 1e12));
    CLI::Option *dash =
        cmd->add_option("--dash", o->dash,
                        "ON,OFF,...: dash array (at most 16 lengths, an odd count repeats as in "
                        "SVG, 0 on is a dot); each dash becomes a polyline")
            ->delimiter(',')
            ->check(finite_range(0, 1e12));
    cmd->add_option("--phase", o->phase,
                    "dots: arc length of the first dot (modulo the pitch); dashes: where in "
                    "the dash array the polyline starts")
        ->capture_default_str()
        ->check(finite_range(-1e12, 1e12));
    cmd->add_flag("--fit", o->fit,
                  "stretch the pattern to whole periods per polyline (dots then hit both ends)");
    cmd->add_flag("--ring", o->ring,
                  "a polyline ending on its first point runs on across that seam");
    cmd->add_flag("--2d", o->flat, "measure arc length in x and y only (z interpolated)");
    CLI::Option *circle =
        cmd->add_option("--circle", o->circle,
                        "draw each dot as a circle of this radius (0.001 .. 4e6, kept in "
                        "thousandths)")
            ->check(finite_range(0.001, 4e6));
    cmd->add_option("--steps", o->steps, "with --circle: points per turn")
        ->capture_default_str()
        ->check(CLI::Range(3, 100000));
    pitch->excludes(dash);
    circle->excludes(dash);
    cmd->footer(kTextForm);
    cmd->callback([o, pitch, dash] {
        if (pitch->count() == 0 && dash->count() == 0)
            throw cli::Usage("give --pitch (dots) or --dash (dashes)");
        if (pitch->count() > 0 && !(o->pitch > 1e-7))
            throw cli::Usage("--pitch must be above 1e-7");
        const std::vector<GeomPoint> in = read_input_polylines(*o);
        uint32_t n = 0, status = VEXO_OK;
        GeomPoint *r = make_pattern(*o, in, &n, &status);
        const Result result = checked(r, status, "the pattern");
        finish(*o, "pattern", Drawing{&in, false, result.get(), n, o->size});
    });
}

} // namespace tool
