// SPDX-License-Identifier: MIT
#include "geom/kept_records.hpp"

#include "geom/wide_reduce.hpp"
#include "line/compact.hpp"

namespace vexo {
namespace {

// The write position after the record just written there: past it when
// kept, back over the pair when the hook drops it, unmoved otherwise.
inline uint32_t next_write(uint32_t written, uint32_t flags, PairDropTest pair_drop) {
    const uint32_t kept = ((flags / VEXO_POINT_PROCESSED) & 1u) ^ 1u;
    if ((kept & flags & VEXO_POINT_END) && pair_drop.drops(pair_drop.context, written))
        return written - 1;
    return written + kept;
}

uint32_t narrow_move_kept(GeomPoint *points, uint32_t from, uint32_t to, uint32_t written,
                          PairDropTest pair_drop) {
    for (uint32_t j = from; j < to; ++j) {
        const uint32_t flags = points[j].flags;
        copy_record(points + written, points[j]);
        written = next_write(written, flags, pair_drop);
    }
    return written;
}

#ifdef VEXO_WIDE_REDUCE

// The same loop with a record (32 bytes) moved in one 256-bit register,
// its bits unchanged.
VEXO_WIDE_REDUCE_TARGET uint32_t wide_move_kept(GeomPoint *points, uint32_t from, uint32_t to,
                                                uint32_t written, PairDropTest pair_drop) {
    for (uint32_t j = from; j < to; ++j) {
        const uint32_t flags = points[j].flags;
        _mm256_storeu_pd(&points[written].x, _mm256_loadu_pd(&points[j].x));
        written = next_write(written, flags, pair_drop);
    }
    return written;
}

#endif

} // namespace

uint32_t move_kept(GeomPoint *points, uint32_t from, uint32_t to, uint32_t written,
                   PairDropTest pair_drop) noexcept {
#ifdef VEXO_WIDE_REDUCE
    if (wide_reduce_available()) return wide_move_kept(points, from, to, written, pair_drop);
#endif
    return narrow_move_kept(points, from, to, written, pair_drop);
}

} // namespace vexo
