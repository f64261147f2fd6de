// SPDX-License-Identifier: MIT
// A double's 8-byte transport form: its IEEE 754 binary64 bytes, most
// significant first.  Calibration records travel between hosts of either
// byte order, so the block never depends on the host's layout.
#include "core/byteorder.hpp"
#include "vexo.h"

extern "C" {

VEXO_API void vexo_util_dbl_to_block(double value, uint8_t *out) {
    if (!out) return;
    vexo::store_be_f64(out, value);
}

// A missing block reads as 0.0, the value an unwritten record field holds.
VEXO_API double vexo_util_block_to_dbl(const uint8_t *in) {
    if (!in) return 0.0;
    return vexo::load_be_f64(in);
}

} // extern "C"
