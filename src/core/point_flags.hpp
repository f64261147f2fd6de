// SPDX-License-Identifier: MIT
// Predicates over GeomPoint.flags, shared by every pass that walks polylines.
#pragma once

#include "vexo.h"

namespace vexo {

inline bool is_end(const GeomPoint &p) {
    return (p.flags & VEXO_POINT_END) != 0;
}

inline bool is_processed(const GeomPoint &p) {
    return (p.flags & VEXO_POINT_PROCESSED) != 0;
}

} // namespace vexo
