// SPDX-License-Identifier: MIT
// Dot finding judged against photos rendered by the test's own rasteriser.
#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "dot_render.hpp"
#include "fixtures.hpp"
#include "vexo.h"

namespace {

// The header promises 48 bytes on 64-bit hosts; hosts lay the record out
// by hand.
static_assert(sizeof(void *) != 8 || sizeof(PrcgDotParams) == 48, "PrcgDotParams layout");
static_assert(offsetof(PrcgDotParams, record) == 40 || sizeof(void *) != 8, "record offset");

using vt::Disc;
using vt::Frame;
using vt::PointsPtr;

struct Found {
    PointsPtr points;
    uint32_t count = 0;
    uint32_t status = 0;
};

Found find(ImageBlock *image, const PrcgDotParams &p) {
    Found f;
    f.count = 12345;
    f.points.reset(vexo_prcg_find_dots(image, &p, &f.count, &f.status));
    return f;
}

// A 9 x 7 grid of radius-6 discs at sub-pixel places that differ per dot.
std::vector<Disc> scattered_grid() {
    std::vector<Disc> discs;
    cv::RNG rng(3);
    for (int i = 0; i < 7; ++i)
        for (int j = 0; j < 9; ++j)
            discs.push_back({30.0 + 40 * j + rng.uniform(-0.5, 0.5),
                             30.0 + 40 * i + rng.uniform(-0.5, 0.5), 6.0});
    return discs;
}

// The scattered grid under each look and threshold: every dot found, its
// centre within five hundredths of a pixel (RMS) of the true one.
TEST(DotsFind, EveryRenderedDotFoundWithinFiveHundredthsOfAPixelRms) {
    const struct {
        const char *name;
        vt::Look look;
        uint32_t threshold_kind, threshold, options;
    } cases[] = {
        {"otsu", {}, VEXO_PRCG_THRESHOLD_OTSU, 0, 0},
        {"stronger_noise", {40, 220, 0.8, 6, 11}, VEXO_PRCG_THRESHOLD_OTSU, 0, 0},
        {"fixed_level", {}, VEXO_PRCG_THRESHOLD_FIXED, 130, 0},
        {"dark_on_light", {215, 35}, VEXO_PRCG_THRESHOLD_OTSU, 0, VEXO_PRCG_DOTS_DARK},
    };
    const auto discs = scattered_grid();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Frame f(vt::render(400, 320, discs, c.look));
        PrcgDotParams p = vt::dot_params();
        p.threshold_kind = c.threshold_kind;
        p.threshold = c.threshold;
        p.options = c.options;
        const Found got = find(f.block(), p);
        EXPECT_EQ(got.status, VEXO_OK);
        ASSERT_EQ(got.count, discs.size());
        const double rms = vt::centre_rms(got.points.get(), got.count, discs);
        RecordProperty(std::string("centroid_rms_px_") + c.name, std::to_string(rms));
        EXPECT_LE(rms, 0.05);
    }
}

TEST(DotsFind, EachDotCarriesTheDotFlagAndItsArea) {
    Frame f(vt::render(100, 100, {{50.3, 49.6, 10.0}}, vt::Look{40, 220, 0, 0}));
    const Found got = find(f.block(), vt::dot_params());
    ASSERT_EQ(got.count, 1u);
    EXPECT_EQ(got.points.get()[0].flags, 0x01u);
    // Contour through boundary pixel centres: about pi (r - 0.5)^2.
    EXPECT_NEAR(got.points.get()[0].z, M_PI * 9.5 * 9.5, 0.05 * M_PI * 9.5 * 9.5);
}

TEST(DotsFind, DotsComeInGrowingY) {
    Frame f(vt::render(200, 200, {{150, 50, 6}, {50, 150, 6}, {50, 52, 6}, {150, 148, 6}}));
    const Found got = find(f.block(), vt::dot_params());
    ASSERT_EQ(got.count, 4u);
    std::vector<double> ys;
    for (uint32_t k = 0; k < 4; ++k) ys.push_back(std::round(got.points.get()[k].y));
    EXPECT_THAT(ys, testing::ElementsAre(50.0, 52.0, 148.0, 150.0));
}

// No dot passes in an empty image, nor in one of dark dots without the
// dark option (the light ground becomes one huge contour with holes).
TEST(DotsFind, NoDotPassingGivesNoResultAndCountZero) {
    Frame empty(cv::Mat(120, 160, CV_8UC1, cv::Scalar(90)));
    Frame dark(vt::render(400, 320, scattered_grid(), vt::Look{215, 35}));
    for (Frame *f : {&empty, &dark}) {
        const Found got = find(f->block(), vt::dot_params());
        EXPECT_EQ(got.status, VEXO_ERROR_NO_RESULT);
        EXPECT_EQ(got.count, 0u);
        EXPECT_EQ(got.points, nullptr);
    }
}

// Two overlapping discs make one blob: dropped by the circularity limit,
// found as one dot between them without shape limits.
TEST(DotsFind, MergedDotsPassOnlyWithoutShapeLimits) {
    Frame f(vt::render(200, 100, {{40, 50, 8}, {120, 50, 8}, {133, 50, 8}}));
    for (const bool limits : {true, false}) {
        SCOPED_TRACE(limits ? "limits" : "no limits");
        PrcgDotParams p = vt::dot_params();
        if (!limits) p.min_circularity = p.max_area = 0;
        const Found got = find(f.block(), p);
        ASSERT_EQ(got.count, limits ? 1u : 2u);
        EXPECT_NEAR(got.points.get()[got.count - 1].x, limits ? 40 : 126.5, 0.05);
    }
}

TEST(DotsFind, RgbImageGivesTheSameDotsAsItsGreyTwin) {
    const cv::Mat grey = vt::render(400, 320, scattered_grid());
    Frame g(grey), c(grey, IMAGE_FORMAT_RGB24);
    const Found a = find(g.block(), vt::dot_params());
    const Found b = find(c.block(), vt::dot_params());
    ASSERT_EQ(b.count, a.count);
    EXPECT_EQ(std::memcmp(a.points.get(), b.points.get(), a.count * sizeof(GeomPoint)), 0);
}

TEST(DotsFind, RgbImageIsGreyedWithTheCalibratorsSignedSum) {
    // Channels (100, 100, 130) grey to 24, not 110: a light dot of those
    // channels on a 60 ground is darker than the ground and not found.
    cv::Mat img(100, 100, CV_8UC3, cv::Scalar(60, 60, 60));
    for (int r = 40; r < 60; ++r)
        for (int c = 40; c < 60; ++c)
            if ((r - 49.5) * (r - 49.5) + (c - 49.5) * (c - 49.5) < 64)
                img.at<cv::Vec3b>(r, c) = cv::Vec3b(100, 100, 130);
    Frame f(cv::Mat(100, 100, CV_8UC1, cv::Scalar(0)), IMAGE_FORMAT_RGB24);
    std::memcpy(f.pixels(), img.data, img.total() * 3);
    PrcgDotParams p = vt::dot_params();
    p.threshold_kind = VEXO_PRCG_THRESHOLD_FIXED;
    p.threshold = 80;
    EXPECT_EQ(find(f.block(), p).status, VEXO_ERROR_NO_RESULT);
}

// A dot cut by the image edge is kept unless the option drops it.
TEST(DotsFind, DotTouchingTheBorderIsDroppedOnlyOnRequest) {
    Frame f(vt::render(100, 100, {{3, 50, 8}, {50, 50, 8}}));
    for (const uint32_t options : {0u, uint32_t(VEXO_PRCG_DOTS_NO_BORDER)}) {
        SCOPED_TRACE(options);
        PrcgDotParams p = vt::dot_params();
        p.min_circularity = 0.3;
        p.options = options;
        const Found got = find(f.block(), p);
        ASSERT_EQ(got.count, options ? 1u : 2u);
        if (options) {
            EXPECT_NEAR(got.points.get()[0].x, 50, 0.05);
        }
    }
}

TEST(DotsFind, AreaLimitsAreInclusiveBounds) {
    Frame f(vt::render(100, 100, {{50, 50, 10}}, vt::Look{40, 220, 0, 0}));
    PrcgDotParams p = vt::dot_params();
    const Found one = find(f.block(), p);
    ASSERT_EQ(one.count, 1u);
    const double area = one.points.get()[0].z;
    p.min_area = area;
    p.max_area = area;
    EXPECT_EQ(find(f.block(), p).count, 1u);
    p.min_area = std::nextafter(area, 1e9);
    p.max_area = 0;
    EXPECT_EQ(find(f.block(), p).status, VEXO_ERROR_NO_RESULT);
}

// No image, or a frame above the pixel budget (one row beyond 2^23
// pixels; nothing is read): no memory.
TEST(DotsFind, NoImageOrFrameAboveThePixelBudgetIsNoMemory) {
    Frame over(cv::Mat(4, 4, CV_8UC1, cv::Scalar(0)));
    over.set_size(4096, 2049);
    for (ImageBlock *image : {over.block(), static_cast<ImageBlock *>(nullptr)}) {
        const Found got = find(image, vt::dot_params());
        EXPECT_EQ(got.status, VEXO_ERROR_NO_MEMORY);
        EXPECT_EQ(got.count, 0u);
        EXPECT_EQ(got.points, nullptr);
    }
}

TEST(DotsFind, NullParamsOrCountAreInvalid) {
    Frame f(vt::render(100, 100, {{50, 50, 8}}));
    uint32_t status = 0, count = 7;
    EXPECT_EQ(vexo_prcg_find_dots(f.block(), nullptr, &count, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(count, 0u);
    const PrcgDotParams p = vt::dot_params();
    EXPECT_EQ(vexo_prcg_find_dots(f.block(), &p, nullptr, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
}

struct BadParams {
    const char *name;
    void (*spoil)(PrcgDotParams &);
};

class DotsFindBadParams : public testing::TestWithParam<BadParams> {};

TEST_P(DotsFindBadParams, AreRefused) {
    Frame f(vt::render(100, 100, {{50, 50, 8}}));
    PrcgDotParams p = vt::dot_params();
    GetParam().spoil(p);
    const Found got = find(f.block(), p);
    EXPECT_EQ(got.status, VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(got.count, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Each, DotsFindBadParams,
    testing::Values(BadParams{"kind", [](PrcgDotParams &p) { p.threshold_kind = 2; }},
                    BadParams{"level255",
                              [](PrcgDotParams &p) {
                                  p.threshold_kind = VEXO_PRCG_THRESHOLD_FIXED;
                                  p.threshold = 255;
                              }},
                    BadParams{"option", [](PrcgDotParams &p) { p.options = 0x10; }},
                    BadParams{"reserved", [](PrcgDotParams &p) { p.reserved = 1; }},
                    BadParams{"negative_area", [](PrcgDotParams &p) { p.min_area = -1; }},
                    BadParams{"max_below_min", [](PrcgDotParams &p) { p.max_area = 10; }},
                    BadParams{"nan_area", [](PrcgDotParams &p) { p.max_area = NAN; }},
                    BadParams{"circularity", [](PrcgDotParams &p) { p.min_circularity = 1.5; }},
                    BadParams{"undistort_no_record",
                              [](PrcgDotParams &p) { p.options = VEXO_PRCG_DOTS_UNDISTORT; }},
                    BadParams{"perspective_no_record",
                              [](PrcgDotParams &p) { p.options = VEXO_PRCG_DOTS_PERSPECTIVE; }}),
    [](const testing::TestParamInfo<BadParams> &i) { return std::string(i.param.name); });

} // namespace
