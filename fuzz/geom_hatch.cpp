// SPDX-License-Identifier: MIT
// Hatch fill of random rings: the first 88 bytes (when present) are the
// parameter record, bounded so one input stays quick (spacing at least
// 1/4096 of the rings' spread, at most 4 passes) unless its first byte is
// odd, when the record goes in as given; the rest are points of 5 bytes
// (x, y as int16 hundredths, a byte whose bit 0 ends the ring).  Whatever
// the bytes, the call returns one of its statuses, and a result holds only
// finite points with the end flag on its last one.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_points.hpp"
#include "vexo.h"

namespace {

void bound(VexoHatch &h, const std::vector<GeomPoint> &pts) {
    double lo = 0, hi = 0;
    for (const GeomPoint &p : pts)
        lo = std::fmin(lo, std::fmin(p.x, p.y)), hi = std::fmax(hi, std::fmax(p.x, p.y));
    const double least = (hi - lo) / 4096.0 + 1e-3;
    if (!(std::fabs(h.spacing) >= least) || !std::isfinite(h.spacing)) h.spacing = least;
    h.spacing = std::fabs(h.spacing);
    h.passes = 1 + h.passes % 4;
    for (double *v : {&h.angle, &h.inset, &h.start_trim, &h.end_trim, &h.min_length, &h.origin_x,
                      &h.origin_y, &h.connect_distance, &h.angle_step})
        if (!std::isfinite(*v) || std::fabs(*v) > 1e4) *v = 0.0;
    h.inset = std::fabs(h.inset);
    h.min_length = std::fabs(h.min_length);
    h.connect_distance = std::fabs(h.connect_distance);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    VexoHatch h;
    std::memset(&h, 0, sizeof h);
    const size_t head = size < sizeof h ? size : sizeof h;
    if (head > 0) std::memcpy(&h, data, head); // an empty input comes as a null pointer
    const std::vector<GeomPoint> pts = fuzz_read_points(data + head, size - head, false);
    const bool raw = head > 0 && (data[0] & 1);
    if (!raw)
        bound(h, pts);
    else if (h.passes > 2)
        h.passes = 2;
    uint32_t n = 0, status = 0;
    GeomPoint *out = vexo_geom_cover(pts.data(), uint32_t(pts.size()), &h, &n, &status);
    fuzz_check_points("geom_hatch", out, n, status);
    vexo_geom_release(out);
    return 0;
}
