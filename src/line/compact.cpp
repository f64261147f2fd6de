#include "line/compact.hpp"

#include <cstring>

namespace vexo {

namespace {

bool is_processed(const GeomPoint &p) { return (p.flags & VEXO_POINT_PROCESSED) != 0; }

} // namespace

uint32_t remove_processed(GeomPoint *points, uint32_t count) noexcept {
    // Points before the first removed one stay where they are; after it,
    // runs of kept points move down one block at a time.
    uint32_t read = 0;
    while (read < count && !is_processed(points[read]))
        ++read;
    uint32_t write = read;
    while (read < count) {
        while (read < count && is_processed(points[read]))
            ++read;
        const uint32_t run_start = read;
        while (read < count && !is_processed(points[read]))
            ++read;
        const uint32_t run = read - run_start;
        if (run > 0)
            std::memmove(points + write, points + run_start, size_t{run} * sizeof(GeomPoint));
        write += run;
    }
    return write;
}

} // namespace vexo
