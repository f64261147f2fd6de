// SPDX-License-Identifier: MIT
// The ideal two-mirror scanner head: field position <-> beam deflection
// angles, with or without an f-theta objective, and the extra beam path a
// dynamic focus must take up.  Callable from C++ (field calibration renders
// its test images through position_for_angles).
#pragma once

#include "vexo.h"

namespace vexo {

// Optical deflection of each mirror in radians: twice the mirror's own
// turn, the sign of the spot's move.
struct BeamAngles {
    double x;
    double y;
};

struct FieldPosition {
    double x;
    double y;
};

// Every size finite and in range, known option bits, reserved 0.
bool valid_head(const CorrBase &head) noexcept;

// Beam angles that put the spot at (x, y); false where the model cannot
// reach (behind an objective: 90 degrees or more from the axis) or the
// result is not finite.  head must be valid.
bool angles_for_position(const CorrBase &head, double x, double y, BeamAngles &angles) noexcept;

// Where the beam deflected by `angles` meets the field (the forward model).
FieldPosition position_for_angles(const CorrBase &head, const BeamAngles &angles) noexcept;

// Beam path from the X mirror to the spot minus the axial path e + d, in
// field units (0 behind an objective, whose image field is flat).
double extra_path(const CorrBase &head, const BeamAngles &angles) noexcept;

// Mechanical mirror angle in degrees (the public unit) and back.
double mirror_degrees(double beam_radians) noexcept;
double beam_radians(double mirror_degrees) noexcept;

// Fills x, y (and z with VEXO_CORR_BASE_FOCUS) of every node; returns the
// status.  The table is written only on VEXO_OK; *full_scale, when not
// null, then receives the mirror angle (degrees) of output 32767.5.
uint32_t fill_base_table(CorrTable &table, const CorrBase &head, double *full_scale) noexcept;

} // namespace vexo
