// SPDX-License-Identifier: MIT
// Moving the points a reduction keeps down over those it drops, in one
// pass, with a hook for dropping a pair at a line end on the way.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// Asked at each kept line end, once it is written at index k: whether it
// and the point written before it go (the write position then steps back
// over both).  A plain function and its context rather than a template,
// so that the 256-bit loop can be compiled for its target alone; it runs
// only at line ends.
struct PairDropTest {
    bool (*drops)(const void *context, uint32_t k);
    const void *context;
};

// Every record of points[from..to) is written at the write position,
// which starts at `written` (<= from) and moves past kept (unprocessed)
// ones only: no branch per point on the flags.  Returns the new write
// position.  The 256-bit path runs where wide_reduce_available().
uint32_t move_kept(GeomPoint *points, uint32_t from, uint32_t to, uint32_t written,
                   PairDropTest pair_drop) noexcept;

} // namespace vexo
