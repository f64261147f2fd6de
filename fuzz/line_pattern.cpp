// SPDX-License-Identifier: MIT
// Dot and dash patterns along random polylines.  Byte 0 picks the call
// (bit 0: dashes, bit 1: shaped dots, bit 2: parameters the library must
// refuse go in raw) and bits 3..5 the options (2D, fit, ring); bytes 1..16
// are pitch and phase (or dash offset) as doubles, byte 17 the dash count
// or the shape, bytes 18..49 up to 16 dash entries as uint16 hundredths.
// Valid pitches and periods are raised to 1/256 of the polylines' spread
// (1/16 for shaped dots) so one input stays small and quick.  The rest are
// points of 7 bytes (x, y, z as int16 hundredths, a byte whose bit 0 ends
// the polyline).  Whatever the bytes: one of the allowed statuses, result
// and status agree, every point is finite, the last one ends its polyline,
// and without a shape every point lies within the input's bounds.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_points.hpp"
#include "vexo.h"

namespace {

constexpr size_t kHead = 50;

struct Bounds {
    double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    void add(const GeomPoint &p) {
        const double v[3] = {p.x, p.y, p.z};
        for (int i = 0; i < 3; ++i) lo[i] = std::fmin(lo[i], v[i]), hi[i] = std::fmax(hi[i], v[i]);
    }
    bool holds(const GeomPoint &p, double slack) const {
        const double v[3] = {p.x, p.y, p.z};
        for (int i = 0; i < 3; ++i)
            if (!(v[i] >= lo[i] - slack && v[i] <= hi[i] + slack)) return false;
        return true;
    }
};

// Without a shape every point lies within the input's bounds.
void check(const GeomPoint *out, uint32_t n, uint32_t status, bool shaped, const Bounds &box) {
    fuzz_check_points("line_pattern", out, n, status);
    for (uint32_t i = 0; i < n && !shaped; ++i)
        if (!box.holds(out[i], 1e-6))
            fuzz_fail("line_pattern", "point outside the input's bounds at index", i);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    uint8_t head[kHead];
    std::memset(head, 0, sizeof head);
    const size_t used = size < kHead ? size : kHead;
    if (used > 0) std::memcpy(head, data, used); // an empty input comes as a null pointer
    const std::vector<GeomPoint> pts = fuzz_read_points(data + used, size - used, true);
    Bounds box;
    for (const GeomPoint &p : pts) box.add(p);
    const bool dashes = head[0] & 1, shaped = head[0] & 2, raw = head[0] & 4;
    const double spread = box.hi[0] - box.lo[0] + box.hi[1] - box.lo[1];
    const double least = spread / (shaped && !dashes ? 16.0 : 256.0) + 1e-2;

    const uint32_t options = (head[0] >> 3) & 7;
    double pitch, phase;
    std::memcpy(&pitch, head + 1, 8);
    std::memcpy(&phase, head + 9, 8);
    // Raw values reach the library only where it must refuse them (or they
    // cost nothing); a valid pitch is still raised, or one input could ask
    // for 2^26 dots.
    const bool refusable = !(pitch > 1e-7) || !std::isfinite(pitch);
    if (!(raw && refusable) && !(std::fabs(pitch) >= least && std::fabs(pitch) < 1e6))
        pitch = least;
    if (!raw && !(std::fabs(phase) < 1e6)) phase = 0.0;

    uint32_t n = 0, status = 0;
    GeomPoint *out = nullptr;
    if (dashes) {
        VexoDash dash;
        std::memset(&dash, 0, sizeof dash);
        dash.count = raw ? head[17] : 1 + head[17] % VEXO_DASH_MAX;
        double period = 0.0;
        for (uint32_t i = 0; i < VEXO_DASH_MAX; ++i) {
            dash.lengths[i] = (head[18 + 2 * i] | head[19 + 2 * i] << 8) / 100.0;
            if (i < dash.count) period += dash.lengths[i];
        }
        if (period > 1e-7 && period < least) dash.lengths[0] += least;
        dash.offset = phase;
        dash.options = options;
        out = vexo_line_to_pattern3(pts.data(), uint32_t(pts.size()), &dash, &n, &status);
    } else {
        GeomDotShape shape;
        std::memset(&shape, 0, sizeof shape);
        shape.kind = head[17] & 1;
        shape.options = head[17] >> 1 & 3;
        shape.steps = 3 + head[18] % 24;
        shape.radius = 1u + head[19];
        shape.inner_radius = head[20];
        shape.pitch = 20 + head[21];
        out = vexo_line_to_pattern(pts.data(), uint32_t(pts.size()), pitch, phase, options, shaped,
                                   &shape, &n, &status);
    }
    check(out, n, status, shaped && !dashes, box);
    vexo_geom_release(out);
    return 0;
}
