// Small helpers shared by the test programs.
#pragma once

#include <cstdlib>
#include <cstring>
#include <memory>

#include "vexo.h"

namespace vexo_test {

// Owns a point array returned by the library.
struct PointsDeleter {
    void operator()(GeomPoint *p) const { vexo_geom_release(p); }
};
using Points = std::unique_ptr<GeomPoint, PointsDeleter>;

inline GeomPoint point(double x, double y, double z = 0.0, uint32_t flags = 0) {
    GeomPoint p;
    std::memset(&p, 0, sizeof p);
    p.x = x;
    p.y = y;
    p.z = z;
    p.flags = flags;
    return p;
}

// A count whose byte size no machine can allocate (about 128 GiB).
constexpr uint32_t kHugeCount = 0xF0000000u;

} // namespace vexo_test
