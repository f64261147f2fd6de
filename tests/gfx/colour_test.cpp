// SPDX-License-Identifier: MIT
// Colour pipeline: the call against the per-byte formula, and the once-only gamma curve.
#include <gtest/gtest.h>

#include <math.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include "vexo.h"

namespace {

struct Params {
    int32_t brightness, contrast, offset[3];
};
const Params kSets[] = {
    {0, 0, {}},
    {10, 0, {}},
    {-10, 0, {}},
    {0, 50, {}},
    {0, -50, {}},
    {0, -100, {}},
    {0, 1000, {}},
    {300, 0, {}},
    {INT_MAX, 0, {}},
    {INT_MIN, 0, {}},
    {0, INT_MAX, {}},
    {0, INT_MIN, {}},
    {-7, 33, {100, -100, 1}},
    {3, -99, {-128, 127, 0}},
    {255, -200, {5, -5, 17}},
    {0, 0, {INT_MAX, INT_MIN, 0}},
    {1 << 24, 0, {-(1 << 24), -(1 << 24), -(1 << 24)}}}; // brightness, then offset, in f32

// g from the gamma percentage (quotient in double rounded to f32, the rest
// in double rounded to f32), then 16-bit levels of ((k + 1) / 256)^g.
std::vector<float> reference_table(int32_t gamma) {
    const float q = (float)((gamma < 0 ? -(double)gamma : (double)gamma) / 100.0);
    const float g = gamma < 0 ? (float)(1.0 - (double)q * 0.8) : (float)((double)q * 4.0 + 1.0);
    std::vector<float> table(256);
    for (int k = 0; k < 256; ++k) {
        const float v = powf((float)(k + 1) * 0.00390625f, g) * 65535.0f + 0.5f;
        table[k] = (float)(uint16_t)(v < 0.0f ? 0.0f : (v > 65535.0f ? 65535.0f : v)) / 65535.0f;
    }
    return table;
}

std::vector<uint8_t> reference_image(const std::vector<float> &table,
                                     const std::vector<uint8_t> &src, const Params &p) {
    const float c = (float)((int64_t)p.contrast + 100) / 100.0f, c2 = c * c;
    std::vector<uint8_t> out(src.size());
    for (size_t i = 0; i < src.size(); ++i) {
        const float r = ((table[src[i]] - 0.5f) * c2 + 0.5f) * 255.0f + (float)p.brightness +
                        (float)p.offset[i % 3];
        out[i] = (uint8_t)(int)(r < 0.0f ? 0.0f : (r > 255.0f ? 255.0f : r));
    }
    return out;
}

// Every byte value in every channel, then a random tail: 285 pixels, not whole blocks of 8.
std::vector<uint8_t> sweep_image() {
    std::vector<uint8_t> img;
    std::mt19937 rng(7);
    for (int v = 0; v < 285; ++v)
        img.insert(img.end(), {uint8_t(v < 256 ? v : rng()), uint8_t(255 - v), uint8_t(v * 7)});
    return img;
}

uint32_t run(uint8_t *dst, const std::vector<uint8_t> &src, const Params &p, int32_t gamma,
             uint32_t width = 285) { // as width x (285 / width) pixels
    return vexo_gfx_process_colours(dst, src.data(), width, 285 / width, p.brightness, p.contrast,
                                    gamma, p.offset[0], p.offset[1], p.offset[2]);
}

// Runs in a fresh process, after an optional call without buffers of
// prior x prior pixels with gamma 100.  The first call that is not refused
// fixes the curve; every call, in place and as 3 x 95 pixels too, must give
// the formula's bytes on it.  Exit code 0 if so.
int check_first_curve(int prior, int32_t first, int32_t later) {
    if (prior >= 0) vexo_gfx_process_colours(nullptr, nullptr, prior, prior, 0, 0, 100, 0, 0, 0);
    const std::vector<float> table = reference_table(prior == 0 ? 100 : first);
    const std::vector<uint8_t> src = sweep_image();
    for (const Params &p : kSets) {
        const std::vector<uint8_t> expected = reference_image(table, src, p);
        std::vector<uint8_t> dst(src.size()), same = src, narrow(src.size());
        if (run(dst.data(), src, p, &p == kSets ? first : later) != VEXO_OK || dst != expected ||
            run(same.data(), same, p, later) != VEXO_OK || same != expected ||
            run(narrow.data(), src, p, later, 3) != VEXO_OK || narrow != expected)
            return 1 + static_cast<int>(&p - kSets);
    }
    return 0;
}

} // namespace

// Each case re-executes the test binary so the once-only curve starts unset; together they
// prove the call bit-identical to the formula under several curves.  An empty image fixes
// the curve, a refused call does not.
TEST(ColourPipelineFreshProcess, FirstGammaStaysForTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const int cases[][3] = {{-1, 0, 100},           {-1, -100, 0}, {-1, 100, -100}, {-1, -33, 42},
                            {-1, INT_MIN, INT_MAX}, {0, 0, -100},  {4, -100, 100}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c[0] << ", " << c[1] << ", " << c[2]);
        EXPECT_EXIT(std::exit(check_first_curve(c[0], c[1], c[2])), testing::ExitedWithCode(0), "");
    }
}

TEST(ColourPipeline, ExamplesOnAnyCurveAndBadArguments) {
    // Brightness +-300 saturates; contrast -100 flattens to 127 before offsets.
    const struct {
        Params p;
        uint8_t channel[3];
    } flat[] = {{{300, 0, {}}, {255, 255, 255}},
                {{-300, 0, {}}, {0, 0, 0}},
                {{0, -100, {1, -1, 200}}, {128, 126, 255}}};
    const std::vector<uint8_t> src = sweep_image();
    std::vector<uint8_t> out(src.size());
    for (const auto &c : flat) {
        ASSERT_EQ(run(out.data(), src, c.p, 0), VEXO_OK);
        for (size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out[i], c.channel[i % 3]) << i;
    }
    // The identity curve (gamma 0) maps v to trunc((v + 1) / 256 * 255).
    const std::vector<uint8_t> linear = reference_image(reference_table(0), src, kSets[0]);
    for (int v = 0; v < 256; ++v) ASSERT_EQ(linear[3 * v], (v + 1) * 255 / 256) << v;

    // NULL buffers with pixels, or a byte size beyond size_t: 16, nothing touched; an empty
    // image needs no buffers.
    uint8_t pixel[3] = {1, 2, 3};
    EXPECT_EQ(vexo_gfx_process_colours(nullptr, pixel, 1, 1, 0, 0, 0, 0, 0, 0),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_gfx_process_colours(pixel, nullptr, 1, 1, 0, 0, 0, 0, 0, 0),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_gfx_process_colours(pixel, pixel, ~0u, ~0u, 300, 0, 0, 0, 0, 0),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_gfx_process_colours(nullptr, nullptr, 0, 5, 0, 0, 0, 0, 0, 0), VEXO_OK);
    EXPECT_EQ(vexo_gfx_process_colours(nullptr, nullptr, 5, 0, 0, 0, 0, 0, 0, 0), VEXO_OK);
    EXPECT_EQ(pixel[0], 1);
    EXPECT_EQ(pixel[2], 3);
}
