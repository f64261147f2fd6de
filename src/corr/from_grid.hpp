// SPDX-License-Identifier: MIT
// A correction table from a measured grid of marks: the error field, its
// inverse by fixed-point iteration, and the base table read through it.
#pragma once

#include <cstdint>

#include "vexo.h"

namespace vexo {

// vexo_corr_from_grid after the NULL checks (base may be NULL).  May throw
// std::bad_alloc; table is written only on VEXO_OK.
uint32_t table_from_grid(uint32_t n, const GeomPoint *measured, const GeomPoint *nominal,
                         double field_size, const CorrTable *base, CorrTable &table);

} // namespace vexo
