// SPDX-License-Identifier: MIT
#include "line/compact.hpp"

#include "core/point_flags.hpp"

namespace vexo {

uint32_t remove_processed(GeomPoint *points, uint32_t count) noexcept {
    // Points before the first removed one stay where they are.
    uint32_t read = 0;
    while (read < count && !is_processed(points[read])) ++read;
    return read + move_unprocessed(points + read, points + read, count - read);
}

uint32_t move_unprocessed(GeomPoint *dest, const GeomPoint *src, uint32_t n) noexcept {
    // Every record is copied and the write position advances only past
    // kept ones: no branch on the flags, so scattered removals cost one
    // streaming pass.  Copying forward keeps dest <= src safe.
    uint32_t write = 0;
    for (uint32_t read = 0; read < n; ++read) {
        copy_record(&dest[write], src[read]);
        write += is_processed(src[read]) ? 0u : 1u;
    }
    return write;
}

} // namespace vexo
