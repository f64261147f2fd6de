/* SPDX-License-Identifier: MIT */
/* The byte layout of every public record, proved in one place.  Hosts
 * exchange these records as raw bytes and the file formats store some of
 * them whole, so a size or offset that moved would corrupt data silently.
 * Included by the library's C translation unit (the C compiler's view) and
 * by the C++ header check in tests/abi (the C++ compiler's view). */
#ifndef VEXO_RECORD_LAYOUTS_H
#define VEXO_RECORD_LAYOUTS_H

#include <stddef.h>

#include "vexo.h"

#define VEXO_LAYOUT(name, cond) typedef char vexo_layout_##name[(cond) ? 1 : -1]

VEXO_LAYOUT(point_size, sizeof(GeomPoint) == 32);
VEXO_LAYOUT(point_flags, offsetof(GeomPoint, flags) == 24);
VEXO_LAYOUT(dot_size, sizeof(GeomDotShape) == 24);
VEXO_LAYOUT(dot_options, offsetof(GeomDotShape, options) == 4);
VEXO_LAYOUT(dot_pitch, offsetof(GeomDotShape, pitch) == 20);
VEXO_LAYOUT(hatch_size, sizeof(VexoHatch) == 88);
VEXO_LAYOUT(hatch_angle, offsetof(VexoHatch, angle) == 8);
VEXO_LAYOUT(hatch_inset, offsetof(VexoHatch, inset) == 16);
VEXO_LAYOUT(hatch_start_trim, offsetof(VexoHatch, start_trim) == 24);
VEXO_LAYOUT(hatch_end_trim, offsetof(VexoHatch, end_trim) == 32);
VEXO_LAYOUT(hatch_min_length, offsetof(VexoHatch, min_length) == 40);
VEXO_LAYOUT(hatch_origin, offsetof(VexoHatch, origin_x) == 48);
VEXO_LAYOUT(hatch_connect, offsetof(VexoHatch, connect_distance) == 64);
VEXO_LAYOUT(hatch_angle_step, offsetof(VexoHatch, angle_step) == 72);
VEXO_LAYOUT(hatch_passes, offsetof(VexoHatch, passes) == 80);
VEXO_LAYOUT(hatch_options, offsetof(VexoHatch, options) == 84);
VEXO_LAYOUT(dash_size, sizeof(VexoDash) == 144);
VEXO_LAYOUT(dash_count, offsetof(VexoDash, count) == 128);
VEXO_LAYOUT(dash_options, offsetof(VexoDash, options) == 132);
VEXO_LAYOUT(dash_offset, offsetof(VexoDash, offset) == 136);
VEXO_LAYOUT(matrix_size, sizeof(GeomMatrix) == 128);
VEXO_LAYOUT(head_size, sizeof(CorrHead) == 12);
VEXO_LAYOUT(head_header_size, offsetof(CorrHead, header_size) == 2);
VEXO_LAYOUT(head_tag, offsetof(CorrHead, tag) == 4);
VEXO_LAYOUT(head_reserved, offsetof(CorrHead, reserved) == 5);
VEXO_LAYOUT(head_value, offsetof(CorrHead, value) == 8);
VEXO_LAYOUT(table_size, sizeof(CorrTable) == 135200);
VEXO_LAYOUT(base_size, sizeof(CorrBase) == 40);
VEXO_LAYOUT(base_distance, offsetof(CorrBase, distance) == 8);
VEXO_LAYOUT(base_field_size, offsetof(CorrBase, field_size) == 16);
VEXO_LAYOUT(base_focal_length, offsetof(CorrBase, focal_length) == 24);
VEXO_LAYOUT(base_options, offsetof(CorrBase, options) == 32);
VEXO_LAYOUT(base_reserved, offsetof(CorrBase, reserved) == 36);
VEXO_LAYOUT(file_info_size, sizeof(CorrFileInfo) == 128);
VEXO_LAYOUT(file_info_scale, offsetof(CorrFileInfo, scale) == 24);
VEXO_LAYOUT(file_info_params, offsetof(CorrFileInfo, params) == 48);
VEXO_LAYOUT(file_info_trailer, offsetof(CorrFileInfo, trailer) == 120);
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

#undef VEXO_LAYOUT

#endif
