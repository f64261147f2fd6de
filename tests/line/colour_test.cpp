#include <gtest/gtest.h>

#include <math.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "line/colour.hpp"
#include "vexo.h"

namespace {

// The per-byte pipeline written out literally, independent of the
// table-driven implementation.
float reference_exponent(int32_t gamma) {
    if (gamma < 0)
        return (float)(1.0 - (double)(float)(-(double)gamma / 100.0) * 0.8);
    return (float)((double)(float)((double)gamma / 100.0) * 4.0 + 1.0);
}

std::vector<float> reference_gamma_table(int32_t gamma) {
    const float g = reference_exponent(gamma);
    std::vector<float> table(256);
    for (int k = 0; k < 256; ++k) {
        float v = powf((float)(k + 1) * 0.00390625f, g) * 65535.0f + 0.5f;
        v = v < 0.0f ? 0.0f : (v > 65535.0f ? 65535.0f : v);
        table[k] = (float)(uint16_t)v / 65535.0f;
    }
    return table;
}

struct Params {
    int32_t brightness, contrast, o0, o1, o2;
};

uint8_t reference_byte(const float *table, uint8_t v, const Params &p, int channel) {
    const float c = (float)((int64_t)p.contrast + 100) / 100.0f;
    const float c2 = c * c;
    const int32_t o = channel == 0 ? p.o0 : (channel == 1 ? p.o1 : p.o2);
    float r = ((table[v] - 0.5f) * c2 + 0.5f) * 255.0f + (float)p.brightness + (float)o;
    if (r < 0.0f)
        r = 0.0f;
    if (r > 255.0f)
        r = 255.0f;
    return (uint8_t)(int)r;
}

std::vector<uint8_t> reference_image(const float *table, const std::vector<uint8_t> &src,
                                     const Params &p) {
    std::vector<uint8_t> out(src.size());
    for (size_t i = 0; i < src.size(); ++i)
        out[i] = reference_byte(table, src[i], p, (int)(i % 3));
    return out;
}

// Every byte value in every channel (256 pixels, each channel rotated), plus
// random bytes, so the image has both a full sweep and a tail that is not a
// multiple of eight pixels.
std::vector<uint8_t> sweep_image(size_t extra_pixels) {
    std::vector<uint8_t> img;
    for (int v = 0; v < 256; ++v) {
        img.push_back((uint8_t)v);
        img.push_back((uint8_t)(255 - v));
        img.push_back((uint8_t)(v * 7));
    }
    std::mt19937 rng(7);
    for (size_t i = 0; i < extra_pixels * 3; ++i)
        img.push_back((uint8_t)rng());
    return img;
}

const std::vector<Params> &parameter_sets() {
    static const std::vector<Params> sets = {
        {0, 0, 0, 0, 0},           {10, 0, 0, 0, 0},          {-10, 0, 0, 0, 0},
        {0, 50, 0, 0, 0},          {0, -50, 0, 0, 0},         {0, -100, 0, 0, 0},
        {0, 100, 0, 0, 0},         {0, 1000, 0, 0, 0},        {300, 0, 0, 0, 0},
        {-300, 0, 0, 0, 0},        {0, 0, 5, -5, 17},         {-7, 33, 100, -100, 1},
        {3, -99, -128, 127, 0},    {0, 37, -3, 3, 0},         {255, -200, 0, 0, 0},
        {INT_MAX, 0, 0, 0, 0},     {INT_MIN, 0, 0, 0, 0},     {0, INT_MAX, 0, 0, 0},
        {0, INT_MIN, 0, 0, 0},     {0, 0, INT_MAX, INT_MIN, 0}, {1, 1, 1, 1, 1},
    };
    return sets;
}

uint32_t run(std::vector<uint8_t> &dst, const std::vector<uint8_t> &src, const Params &p,
             int32_t gamma) {
    return vexo_gfx_process_colours(dst.data(), src.data(), (uint32_t)(src.size() / 3), 1,
                                    p.brightness, p.contrast, gamma, p.o0, p.o1, p.o2);
}

} // namespace

TEST(ColourPipeline, GammaExponentAndTableValues) {
    EXPECT_EQ(vexo::gamma_exponent(-100), 0.2f);
    EXPECT_EQ(vexo::gamma_exponent(0), 1.0f);
    EXPECT_EQ(vexo::gamma_exponent(100), 5.0f);
    EXPECT_EQ(vexo::gamma_exponent(50), 3.0f);
    EXPECT_EQ(vexo::gamma_exponent(-50), 0.6f);
    for (int32_t gamma : {-100, -99, -37, -1, 0, 1, 13, 64, 99, 100, INT_MIN, INT_MAX}) {
        vexo::GammaTable table;
        vexo::build_gamma_table(vexo::gamma_exponent(gamma), table);
        const std::vector<float> ref = reference_gamma_table(gamma);
        EXPECT_EQ(0, std::memcmp(table, ref.data(), sizeof table)) << "gamma " << gamma;
        // The (k + 1) shift: the last entry is exactly 1.
        EXPECT_EQ(table[255], 1.0f);
    }
    // Gamma 0 is the identity curve quantised to 16 bits: entry 127 is the
    // level nearest 128/256 of 65535.
    vexo::GammaTable linear;
    vexo::build_gamma_table(1.0f, linear);
    EXPECT_EQ(linear[127], 32768.0f / 65535.0f);
    EXPECT_EQ(linear[0], 256.0f / 65535.0f);
}

// The speed trick (three channel tables, eight pixels per block) must give
// exactly the per-byte formula for every input and parameter set.
TEST(ColourPipeline, TablesAreBitIdenticalToThePerByteFormula) {
    for (int32_t gamma : {-100, -55, 0, 20, 100}) {
        const std::vector<float> ref_table = reference_gamma_table(gamma);
        vexo::GammaTable table;
        vexo::build_gamma_table(vexo::gamma_exponent(gamma), table);
        const std::vector<uint8_t> src = sweep_image(13);
        for (const Params &p : parameter_sets()) {
            vexo::ColourLevels levels;
            levels.brightness = p.brightness;
            levels.contrast = p.contrast;
            levels.offsets[0] = p.o0;
            levels.offsets[1] = p.o1;
            levels.offsets[2] = p.o2;
            vexo::ChannelTables tables;
            vexo::build_channel_tables(table, levels, tables);
            std::vector<uint8_t> dst(src.size());
            vexo::map_pixels(dst.data(), src.data(), src.size() / 3, tables);
            EXPECT_EQ(dst, reference_image(ref_table.data(), src, p))
                << "gamma " << gamma << " brightness " << p.brightness << " contrast "
                << p.contrast;
        }
    }
}

// Checks run against whatever gamma table the process already has, so they
// hold whichever test called the pipeline first.
TEST(ColourPipeline, PublicCallMatchesReferenceInPlaceAndAtAnyWidth) {
    const vexo::GammaTable &table = vexo::shared_gamma_table(0);
    const std::vector<uint8_t> src = sweep_image(29);
    for (const Params &p : parameter_sets()) {
        std::vector<uint8_t> dst(src.size());
        ASSERT_EQ(run(dst, src, p, 0), VEXO_OK);
        const std::vector<uint8_t> expected = reference_image(table, src, p);
        EXPECT_EQ(dst, expected);
        // In place: dst == src.
        std::vector<uint8_t> same = src;
        ASSERT_EQ(vexo_gfx_process_colours(same.data(), same.data(), (uint32_t)(src.size() / 3),
                                           1, p.brightness, p.contrast, 0, p.o0, p.o1, p.o2),
                  VEXO_OK);
        EXPECT_EQ(same, expected);
    }
    // Widths 1 and 3 only take the tail loop; a 2-row image of width n must
    // equal one row of width 2n; all agree with the wide image byte by byte.
    const Params p{5, 20, 1, 2, 3};
    std::vector<uint8_t> wide(src.size());
    run(wide, src, p, 0);
    for (uint32_t width : {1u, 3u}) {
        std::vector<uint8_t> narrow(src.size());
        const uint32_t height = (uint32_t)(src.size() / 3) / width;
        ASSERT_EQ(vexo_gfx_process_colours(narrow.data(), src.data(), width, height, 5, 20, 0, 1,
                                           2, 3),
                  VEXO_OK);
        EXPECT_EQ(0, std::memcmp(narrow.data(), wide.data(), (size_t)width * height * 3))
            << "width " << width;
    }
}

TEST(ColourPipeline, GammaIndependentExamples) {
    std::vector<uint8_t> src(256 * 3);
    for (size_t i = 0; i < src.size(); ++i)
        src[i] = (uint8_t)(i / 3);
    std::vector<uint8_t> dst(src.size());
    // Brightness +300 saturates, -300 blacks out, whatever the curve.
    ASSERT_EQ(run(dst, src, {300, 0, 0, 0, 0}, 0), VEXO_OK);
    EXPECT_EQ(dst, std::vector<uint8_t>(src.size(), 255));
    ASSERT_EQ(run(dst, src, {-300, 0, 0, 0, 0}, 0), VEXO_OK);
    EXPECT_EQ(dst, std::vector<uint8_t>(src.size(), 0));
    // Contrast -100 flattens everything to mid-grey, 127, before offsets.
    ASSERT_EQ(run(dst, src, {0, -100, 0, 0, 0}, 0), VEXO_OK);
    EXPECT_EQ(dst, std::vector<uint8_t>(src.size(), 127));
    ASSERT_EQ(run(dst, src, {0, -100, 1, -1, 200}, 0), VEXO_OK);
    for (size_t i = 0; i < dst.size(); i += 3) {
        EXPECT_EQ(dst[i], 128);
        EXPECT_EQ(dst[i + 1], 126);
        EXPECT_EQ(dst[i + 2], 255);
    }
}

TEST(ColourPipeline, BadArgumentsAreRejectedWithoutTouchingMemory) {
    uint8_t pixel[3] = {1, 2, 3};
    EXPECT_EQ(vexo_gfx_process_colours(nullptr, pixel, 1, 1, 0, 0, 0, 0, 0, 0),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_gfx_process_colours(pixel, nullptr, 1, 1, 0, 0, 0, 0, 0, 0),
              VEXO_ERROR_INVALID_PARAMETER);
    // An empty image needs no buffers.
    EXPECT_EQ(vexo_gfx_process_colours(nullptr, nullptr, 0, 5, 0, 0, 0, 0, 0, 0), VEXO_OK);
    EXPECT_EQ(vexo_gfx_process_colours(nullptr, nullptr, 5, 0, 0, 0, 0, 0, 0, 0), VEXO_OK);
    EXPECT_EQ(vexo_gfx_process_colours(pixel, pixel, 0, 0, 300, 0, 0, 0, 0, 0), VEXO_OK);
    EXPECT_EQ(pixel[0], 1);
    // A byte size beyond the address space is refused before anything runs.
    if (sizeof(size_t) == 8) {
        EXPECT_EQ(vexo_gfx_process_colours(pixel, pixel, UINT32_MAX, UINT32_MAX, 0, 0, 0, 0, 0, 0),
                  VEXO_ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(pixel[2], 3);
}

namespace {

// Runs in a fresh process (see below): the first call fixes the curve, a
// later call with another gamma must keep it.  Exit code 0 when all holds.
int check_first_call(int32_t first_gamma, int32_t later_gamma) {
    const std::vector<uint8_t> src = sweep_image(5);
    const std::vector<float> table = reference_gamma_table(first_gamma);
    std::vector<uint8_t> dst(src.size());
    const Params p{0, 0, 0, 0, 0};
    if (run(dst, src, p, first_gamma) != VEXO_OK || dst != reference_image(table.data(), src, p))
        return 1;
    for (const Params &q : parameter_sets()) {
        if (run(dst, src, q, later_gamma) != VEXO_OK ||
            dst != reference_image(table.data(), src, q))
            return 2;
    }
    if (first_gamma == 0) {
        // The identity curve: 0 -> 0, 127 -> 127, 255 -> 255, and in
        // general trunc((v + 1) / 256 * 255).
        const uint8_t in[3] = {0, 127, 255};
        uint8_t out[3];
        vexo_gfx_process_colours(out, in, 1, 1, 0, 0, 77, 0, 0, 0);
        if (out[0] != 0 || out[1] != 127 || out[2] != 255)
            return 3;
        for (int v = 0; v < 256; ++v) {
            const uint8_t one[3] = {(uint8_t)v, (uint8_t)v, (uint8_t)v};
            uint8_t res[3];
            vexo_gfx_process_colours(res, one, 1, 1, 0, 0, -77, 0, 0, 0);
            if (res[0] != (v + 1) * 255 / 256)
                return 4;
        }
    }
    return 0;
}

} // namespace

// Each case re-executes the test binary so the once-only curve starts unset.
TEST(ColourPipelineFreshProcess, FirstGammaStaysForTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(check_first_call(0, 100)), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(std::exit(check_first_call(-100, 0)), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(std::exit(check_first_call(100, -100)), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(std::exit(check_first_call(-33, 42)), ::testing::ExitedWithCode(0), "");
}

TEST(ColourPipelineFreshProcess, EmptyOrRejectedFirstCalls) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // An empty image still fixes the curve; a rejected call does not.
    EXPECT_EXIT(
        {
            vexo_gfx_process_colours(nullptr, nullptr, 0, 0, 0, 0, 100, 0, 0, 0);
            std::exit(check_first_call(100, 0));
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            vexo_gfx_process_colours(nullptr, nullptr, 4, 4, 0, 0, 100, 0, 0, 0);
            std::exit(check_first_call(-100, 100));
        },
        ::testing::ExitedWithCode(0), "");
}
