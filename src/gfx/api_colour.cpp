// SPDX-License-Identifier: MIT
// C boundary of the colour pipeline.
#include <cstddef>

#include "core/boundary.hpp"
#include "gfx/colour.hpp"

namespace {

// Pixel count of a width x height image, or false when its byte size
// (three per pixel) does not fit size_t.
bool pixel_count(uint32_t width, uint32_t height, size_t *pixels) {
    const uint64_t n = static_cast<uint64_t>(width) * height;
    if (n > SIZE_MAX / vexo::kColourChannels) return false;
    *pixels = static_cast<size_t>(n);
    return true;
}

} // namespace

extern "C" {

VEXO_API uint32_t vexo_gfx_process_colours(uint8_t *dst, const uint8_t *src, uint32_t width,
                                           uint32_t height, int32_t brightness, int32_t contrast,
                                           int32_t gamma, int32_t offset0, int32_t offset1,
                                           int32_t offset2) {
    size_t pixels = 0;
    if (!pixel_count(width, height, &pixels)) return VEXO_ERROR_INVALID_PARAMETER;
    if (pixels > 0 && (dst == nullptr || src == nullptr)) return VEXO_ERROR_INVALID_PARAMETER;
    return vexo::guard_status([&]() -> uint32_t {
        // The table is fixed by the first accepted call, empty image or not.
        const vexo::GammaTable &gamma_table = vexo::shared_gamma_table(gamma);
        if (pixels == 0) return VEXO_OK;
        vexo::ColourLevels levels;
        levels.brightness = brightness;
        levels.contrast = contrast;
        levels.offsets[0] = offset0;
        levels.offsets[1] = offset1;
        levels.offsets[2] = offset2;
        vexo::ChannelTables tables;
        vexo::build_channel_tables(gamma_table, levels, tables);
        vexo::map_pixels(dst, src, pixels, tables);
        return VEXO_OK;
    });
}

} // extern "C"
