/* SPDX-License-Identifier: MIT */
/* The shared library's own translation unit: the internal family libraries
 * are linked into it whole.  Compiling the public header here as C proves
 * the record layouts with the C compiler's view of them. */
#include "vexo.h"

#include <stddef.h>

#define VEXO_LAYOUT(name, cond) typedef char vexo_layout_##name[(cond) ? 1 : -1]

VEXO_LAYOUT(point_size, sizeof(GeomPoint) == 32);
VEXO_LAYOUT(point_flags, offsetof(GeomPoint, flags) == 24);
VEXO_LAYOUT(dot_size, sizeof(GeomDotShape) == 24);
VEXO_LAYOUT(dot_options, offsetof(GeomDotShape, options) == 4);
VEXO_LAYOUT(dot_pitch, offsetof(GeomDotShape, pitch) == 20);
VEXO_LAYOUT(matrix_size, sizeof(GeomMatrix) == 128);
VEXO_LAYOUT(head_size, sizeof(CorrHead) == 12);
VEXO_LAYOUT(head_tag, offsetof(CorrHead, tag) == 4);
VEXO_LAYOUT(head_value, offsetof(CorrHead, value) == 8);
VEXO_LAYOUT(table_size, sizeof(CorrTable) == 135200);
VEXO_LAYOUT(image_size, sizeof(ImageBlock) == 32);
VEXO_LAYOUT(image_kind, offsetof(ImageBlock, kind) == 8);
VEXO_LAYOUT(image_width, offsetof(ImageBlock, width) == 16);
VEXO_LAYOUT(image_bits, offsetof(ImageBlock, bits) == 24);
VEXO_LAYOUT(image_data_size, offsetof(ImageBlock, data_size) == 28);
VEXO_LAYOUT(calib_distortion, offsetof(CalibrationRecord, distortion) == 72);
VEXO_LAYOUT(calib_width, offsetof(CalibrationRecord, width) == 104);
VEXO_LAYOUT(calib_height, offsetof(CalibrationRecord, height) == 108);
VEXO_LAYOUT(calib_reserved, offsetof(CalibrationRecord, reserved0) == 112);
VEXO_LAYOUT(calib_perspective, offsetof(CalibrationRecord, perspective) == 136);
VEXO_LAYOUT(calib_options, offsetof(CalibrationRecord, options) == 213);
VEXO_LAYOUT(calib_size, sizeof(CalibrationRecord) == 216);
VEXO_LAYOUT(keypoint_size, sizeof(PatternKeypoint) == 28);
VEXO_LAYOUT(result_size, sizeof(RecognitionResult) == 16);
VEXO_LAYOUT(result_status, offsetof(RecognitionResult, status) == 12);
