// SPDX-License-Identifier: MIT
// C boundary of pattern recognition: keypoint sets and the recogniser.
#include <cstdlib>

#include "core/boundary.hpp"
#include "vexo.h"
#include "vision/keypoints.hpp"
#include "vision/recogniser.hpp"
#include "vision/recognition_report.hpp"

extern "C" {

VEXO_API PatternKeypoint *vexo_prcg_gen_keypoints(const ImageBlock *image, int32_t *count,
                                                  uint32_t *options, int32_t left, int32_t top,
                                                  int32_t right, int32_t bottom) {
    if (!count) return nullptr;
    *count = -1;
    if (!image || !options) return nullptr;
    const vexo::PatternRect rect{left, top, right, bottom};
    PatternKeypoint *out = vexo::guard_value<PatternKeypoint *>(
        [&] { return vexo::generate_keypoints(image, count, options, rect); }, nullptr);
    if (!out) *count = -1;
    return out;
}

VEXO_API PatternKeypoint *vexo_prcg_alloc_keypoints(uint32_t count) {
    return vexo::allocate_keypoints(count);
}

VEXO_API void vexo_prcg_release_keypoints(PatternKeypoint *keypoints) {
    std::free(keypoints);
}

VEXO_API Recogniser *vexo_prcg_create_recogniser(const PatternKeypoint *keypoints, int32_t count,
                                                 uint32_t options, const ImageBlock *reference,
                                                 int32_t origin_x, int32_t origin_y) {
    return vexo::guard_value<Recogniser *>(
        [&] {
            return vexo::create_recogniser(keypoints, count, options, reference, origin_x,
                                           origin_y);
        },
        nullptr);
}

VEXO_API void vexo_prcg_start_recogniser(Recogniser *rec, const ImageBlock *frame,
                                         RecognitionResult *result) {
    if (!result) return;
    if (!rec) {
        result->x = result->y = result->rotation = 0.0f;
        result->status = int32_t(VEXO_ERROR_NO_HANDLE);
        return;
    }
    const uint32_t failure = vexo::guard_status([&] {
        vexo::run_recogniser(*rec, frame, result);
        return uint32_t(VEXO_OK);
    });
    if (failure != VEXO_OK) {
        result->x = result->y = result->rotation = 0.0f;
        result->status = int32_t(failure);
    }
}

VEXO_API uint32_t vexo_prcg_start_recogniser2(Recogniser *rec, const ImageBlock *frame,
                                              uint32_t options, RecognitionReport *report) {
    if (!report) return VEXO_ERROR_INVALID_PARAMETER;
    *report = RecognitionReport{};
    if (!rec) return report->status = VEXO_ERROR_NO_HANDLE;
    const uint32_t failure = vexo::guard_status([&] {
        vexo::run_recogniser_report(*rec, frame, options, report);
        return uint32_t(VEXO_OK);
    });
    if (failure != VEXO_OK) {
        *report = RecognitionReport{};
        report->status = failure;
    }
    return report->status;
}

VEXO_API void vexo_prcg_release_recogniser(Recogniser *rec) {
    delete rec;
}

} // extern "C"
