#include "line/compact.hpp"

namespace vexo {

namespace {

bool is_processed(const GeomPoint &p) { return (p.flags & VEXO_POINT_PROCESSED) != 0; }

} // namespace

uint32_t remove_processed(GeomPoint *points, uint32_t count) noexcept {
    // Points before the first removed one stay where they are.
    uint32_t read = 0;
    while (read < count && !is_processed(points[read]))
        ++read;
    // From there on every record is copied down and the write position
    // advances only past kept ones: no branch on the flags, so arrays with
    // scattered removals cost one streaming pass.
    uint32_t write = read;
    for (; read < count; ++read) {
        const GeomPoint p = points[read];
        points[write] = p;
        write += is_processed(p) ? 0u : 1u;
    }
    return write;
}

} // namespace vexo
