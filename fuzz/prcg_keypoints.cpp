// SPDX-License-Identifier: MIT
// Hostile keypoint records against the recogniser.  Bytes 0..3 are the
// option word, bytes 4 and 5 pick the reference size (8..135 pixels each
// way), the rest are whole 28-byte keypoint records (at most 64).  Whatever
// they hold, creating a recogniser and starting it on the same image must
// come back with a handle or NULL and an allowed status, and touch no
// memory but its own.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_check.hpp"
#include "vexo.h"

namespace {

constexpr size_t kHeader = 6;
constexpr size_t kMaxKeypoints = 64;

// A grey block of width x height with texture at several scales, so that
// every detector finds something to describe.
std::vector<uint8_t> textured_block(int width, int height) {
    std::vector<uint8_t> b(VEXO_IMAGE_HEADER_SIZE + size_t(width) * size_t(height));
    b[8] = VEXO_IMAGE_KIND;
    b[9] = IMAGE_FORMAT_GREY8;
    b[18] = uint8_t(width >> 8);
    b[19] = uint8_t(width);
    b[22] = uint8_t(height >> 8);
    b[23] = uint8_t(height);
    uint32_t state = 0x9E3779B9u;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            const int blocks = ((x / 9) + (y / 7)) % 2 ? 90 : 0;
            const int ring =
                ((x - width / 2) * (x - width / 2) + (y - height / 3) * (y - height / 3)) % 200;
            b[VEXO_IMAGE_HEADER_SIZE + size_t(y) * size_t(width) + size_t(x)] =
                uint8_t(blocks + ring / 2 + int(state & 31u));
        }
    return b;
}

bool allowed(int32_t status) {
    switch (uint32_t(status)) {
    case VEXO_OK:
    case VEXO_ERROR_NO_HANDLE:
    case VEXO_ERROR_NO_MEMORY:
    case VEXO_ERROR_INVALID_PARAMETER:
    case VEXO_ERROR_NO_RATIO_MATCH:
        return true;
    default:
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < kHeader) return 0;
    uint32_t options;
    std::memcpy(&options, data, 4);
    const std::vector<uint8_t> block = textured_block(8 + data[4] % 128, 8 + data[5] % 128);
    const auto *image = reinterpret_cast<const ImageBlock *>(block.data());
    const size_t count = std::min((size - kHeader) / sizeof(PatternKeypoint), kMaxKeypoints);
    std::vector<PatternKeypoint> keypoints(count + 1); // never empty, so data() is never NULL
    std::memcpy(keypoints.data(), data + kHeader, count * sizeof(PatternKeypoint));

    Recogniser *rec =
        vexo_prcg_create_recogniser(keypoints.data(), int32_t(count), options, image, 0, 0);
    if (!rec) return 0;
    if (count < 3) fuzz_fail("prcg_keypoints", "recogniser from fewer than 3 keypoints", count);
    RecognitionResult result{};
    vexo_prcg_start_recogniser(rec, image, &result);
    vexo_prcg_release_recogniser(rec);
    if (!allowed(result.status)) fuzz_fail("prcg_keypoints", "status not allowed", result.status);
    if (result.status != int32_t(VEXO_OK) &&
        (result.x != 0.0f || result.y != 0.0f || result.rotation != 0.0f))
        fuzz_fail("prcg_keypoints", "figures beside a failure status", result.status);
    return 0;
}
