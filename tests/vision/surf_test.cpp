// Our SURF: box sums, filter layout, blob localisation, invariance to
// rotation, mask and provided-keypoint behaviour.
#include <cmath>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "scene.hpp"
#include "vision/surf.hpp"
#include "vision/surf_internal.hpp"

namespace {

using vexo::IntegralImage;
using vexo::Surf;

double angle_gap(double a, double b) {
    double d = std::fmod(std::fabs(a - b), 360.0);
    return d > 180.0 ? 360.0 - d : d;
}

TEST(SurfIntegral, BoxSumsMatchDirectSumsAndClampToTheImage) {
    cv::Mat img(37, 53, CV_8UC1);
    cv::RNG(7).fill(img, cv::RNG::UNIFORM, 0, 256);
    img.setTo(255, img > 250); // include the brightest value
    const IntegralImage ii(img);
    cv::RNG rng(11);
    for (int k = 0; k < 200; ++k) {
        const int r0 = rng.uniform(0, 37), r1 = rng.uniform(r0, 38);
        const int c0 = rng.uniform(0, 53), c1 = rng.uniform(c0, 54);
        const double direct = cv::sum(img(cv::Range(r0, r1), cv::Range(c0, c1)))[0];
        ASSERT_EQ(ii.box(r0, c0, r1, c1), float(direct));
    }
    EXPECT_EQ(ii.box_clamped(-10, -10, 100, 100), float(cv::sum(img)[0]));
    EXPECT_EQ(ii.box_clamped(-10, 5, 3, 9), ii.box(0, 5, 3, 9));
    EXPECT_EQ(ii.box_clamped(40, 0, 50, 10), 0.0f);  // wholly below
    EXPECT_EQ(ii.box_clamped(5, 9, 3, 20), 0.0f);    // inverted
}

TEST(SurfIntegral, LargeBoxesStayExactBeyond32BitRunningSums) {
    // 4096 x 1100 white pixels: the running sum passes 2^32 but each box
    // up to the side limit is still exact.
    const cv::Mat white(4096, 1100, CV_8UC1, cv::Scalar(255));
    const IntegralImage ii(white);
    EXPECT_EQ(double(ii.box(0, 0, 4096, 1100)), 255.0 * 4096 * 1100);
    EXPECT_EQ(double(ii.box(4000, 1000, 4096, 1100)), 255.0 * 96 * 100);
}

TEST(SurfLayout, FilterSizesPerOctaveAndDescriptorShape) {
    const int expected[3][4] = {{9, 15, 21, 27}, {15, 27, 39, 51}, {27, 51, 75, 99}};
    for (int o = 0; o < 3; ++o)
        for (int l = 0; l < 4; ++l)
            EXPECT_EQ(vexo::surf_filter_size(o, l), expected[o][l]) << o << "," << l;
    EXPECT_EQ(Surf::create(100, 4, 3, false, false)->descriptorSize(), 64);
    EXPECT_EQ(Surf::create(400, 4, 2, true, false)->descriptorSize(), 128);
    EXPECT_EQ(Surf::create()->descriptorType(), CV_32F);
    EXPECT_EQ(Surf::create()->defaultNorm(), cv::NORM_L2);
}

TEST(SurfDetect, FindsAGaussianBlobAtItsCentreAndScale) {
    // A dark Gaussian blob of sigma 4 at a sub-pixel centre: the strongest
    // Hessian maximum sits on it, with a scale near sigma.
    const double cx = 60.3, cy = 50.7, sigma = 4.0;
    cv::Mat img(100, 120, CV_8UC1);
    for (int r = 0; r < img.rows; ++r)
        for (int c = 0; c < img.cols; ++c) {
            const double d2 = (c - cx) * (c - cx) + (r - cy) * (r - cy);
            img.at<uint8_t>(r, c) =
                cv::saturate_cast<uint8_t>(200.0 - 150.0 * std::exp(-d2 / (2 * sigma * sigma)));
        }
    std::vector<cv::KeyPoint> kps;
    Surf::create(400, 4, 2, false, false)->detect(img, kps);
    ASSERT_FALSE(kps.empty());
    const auto best = *std::max_element(kps.begin(), kps.end(), [](auto &a, auto &b) {
        return a.response < b.response;
    });
    EXPECT_NEAR(best.pt.x, cx, 0.5);
    EXPECT_NEAR(best.pt.y, cy, 0.5);
    EXPECT_NEAR(best.size / 2.0, sigma, sigma * 0.3);
    // Independent figure: the 21-box weights (lobe 7; +1, -2, +1 across 21
    // columns, 13 rows) summed over the analytic blob at its centre give
    // Dxx = Dyy = 26.60, Dxy = 0, so det = 707.6 before the sub-pixel
    // offset of the centre lowers it slightly.
    double sx = 0, sy = 0;
    for (int t = -10; t <= 10; ++t)
        sx += (std::abs(t) > 3 ? 1.0 : -2.0) * std::exp(-t * t / (2 * sigma * sigma));
    for (int t = -6; t <= 6; ++t)
        sy += std::exp(-t * t / (2 * sigma * sigma));
    const double dxx = 150.0 * sx * sy / (21.0 * 21.0);
    EXPECT_NEAR(dxx * dxx, 707.59, 0.01);
    EXPECT_NEAR(best.response, dxx * dxx, 0.03 * dxx * dxx);
    EXPECT_GE(best.angle, 0.0f);
    EXPECT_LT(best.angle, 360.0f);
}

TEST(SurfDetect, FeaturelessAndTinyImagesGiveNothing) {
    std::vector<cv::KeyPoint> kps{cv::KeyPoint(1, 1, 2)};
    cv::Mat desc;
    auto surf = Surf::create(400, 4, 2, true, false);
    surf->detectAndCompute(cv::Mat(120, 160, CV_8UC1, cv::Scalar(90)), cv::noArray(), kps, desc);
    EXPECT_TRUE(kps.empty());
    EXPECT_EQ(desc.rows, 0);
    // Smaller than the first octave's largest filter: no octave at all.
    surf->detectAndCompute(scene::make_pattern(20, 20, 3), cv::noArray(), kps, desc);
    EXPECT_TRUE(kps.empty());
    surf->detectAndCompute(cv::Mat(), cv::noArray(), kps, desc);
    EXPECT_TRUE(kps.empty());
    // Octave counts beyond any image stop quietly.
    Surf::create(0, 40, 2, false, false)->detect(scene::make_pattern(64, 64, 3), kps);
    EXPECT_FALSE(kps.empty());
}

TEST(SurfDetect, MaskThresholdAndRepeatability) {
    const cv::Mat img = scene::make_pattern(200, 160, 21);
    auto surf = Surf::create(400, 4, 2, false, false);
    std::vector<cv::KeyPoint> all, again, masked, strong;
    surf->detect(img, all);
    surf->detect(img, again);
    ASSERT_GT(all.size(), 20u);
    ASSERT_EQ(all.size(), again.size());
    for (size_t k = 0; k < all.size(); ++k) {
        EXPECT_EQ(all[k].pt, again[k].pt);
        EXPECT_EQ(all[k].angle, again[k].angle);
    }
    cv::Mat mask(img.size(), CV_8UC1, cv::Scalar(0));
    mask(cv::Rect(0, 0, 100, 160)).setTo(255);
    surf->detect(img, masked, mask);
    size_t left_half = 0;
    for (const auto &kp : all)
        left_half += kp.pt.x < 99.5f;
    EXPECT_GT(masked.size(), 0u);
    EXPECT_LE(masked.size(), left_half + 2);
    for (const auto &kp : masked)
        EXPECT_LT(kp.pt.x, 100.0f);
    Surf::create(4000, 4, 2, false, false)->detect(img, strong);
    EXPECT_LT(strong.size(), all.size());
    for (const auto &kp : strong)
        EXPECT_GT(kp.response, 4000.0f);
}

TEST(SurfDescribe, ProvidedKeypointsAreKeptEvenAtOrBeyondTheBorder) {
    const cv::Mat img = scene::make_pattern(120, 100, 5);
    std::vector<cv::KeyPoint> kps = {
        cv::KeyPoint(60, 50, 6), cv::KeyPoint(0, 0, 10), cv::KeyPoint(119, 99, 30),
        cv::KeyPoint(-50, 500, 4), cv::KeyPoint(30, 30, 0), cv::KeyPoint(40, 40, 1e9f),
        cv::KeyPoint(NAN, 10, 4)};
    const auto before = kps;
    cv::Mat desc;
    auto surf = Surf::create(100, 4, 3, false, false);
    surf->compute(img, kps, desc);
    ASSERT_EQ(kps.size(), before.size());
    ASSERT_EQ(desc.rows, int(before.size()));
    ASSERT_EQ(desc.cols, 64);
    for (size_t k = 0; k < kps.size(); ++k) {
        if (std::isfinite(before[k].pt.x)) {
            EXPECT_EQ(kps[k].pt, before[k].pt);
        }
        EXPECT_EQ(kps[k].size, before[k].size);
        EXPECT_TRUE(cv::checkRange(desc.row(int(k))));
        const double norm = cv::norm(desc.row(int(k)));
        EXPECT_TRUE(std::fabs(norm - 1.0) < 1e-4 || norm == 0.0) << k << " " << norm;
    }
    EXPECT_NEAR(cv::norm(desc.row(0)), 1.0, 1e-4);
    EXPECT_EQ(cv::norm(desc.row(3)), 0.0); // wholly outside: nothing to see
    EXPECT_EQ(cv::norm(desc.row(6)), 0.0); // no position
}

TEST(SurfDescribe, UprightLeavesAnglesAndExtendedDoublesTheLength) {
    const cv::Mat img = scene::make_pattern(160, 120, 9);
    std::vector<cv::KeyPoint> kps;
    cv::Mat desc;
    Surf::create(400, 4, 2, true, true)->detectAndCompute(img, cv::noArray(), kps, desc);
    ASSERT_FALSE(kps.empty());
    EXPECT_EQ(desc.cols, 128);
    for (const auto &kp : kps)
        EXPECT_EQ(kp.angle, 0.0f);
    std::vector<cv::KeyPoint> given = {cv::KeyPoint(80, 60, 8, 33.0f)};
    Surf::create(100, 4, 3, false, true)->compute(img, given, desc);
    EXPECT_EQ(given[0].angle, 33.0f);
}

// Exact quarter turn: every keypoint should come back a quarter turn on,
// with its orientation advanced by 90 degrees (image rows grow downwards,
// so a clockwise turn on screen adds to the angle) and a descriptor whose
// nearest neighbour is its own counterpart.
TEST(SurfDescribe, QuarterTurnMovesKeypointsAnglesAndKeepsDescriptors) {
    const cv::Mat img = scene::make_pattern(200, 200, 17);
    cv::Mat turned;
    cv::rotate(img, turned, cv::ROTATE_90_CLOCKWISE); // (x, y) -> (199 - y, x)
    auto surf = Surf::create(100, 4, 3, false, false);
    std::vector<cv::KeyPoint> a, b;
    cv::Mat da, db;
    surf->detectAndCompute(img, cv::noArray(), a, da);
    surf->detectAndCompute(turned, cv::noArray(), b, db);
    ASSERT_GT(a.size(), 30u);
    int paired = 0, angle_ok = 0, nearest_ok = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        const cv::Point2f expected(199.0f - a[i].pt.y, a[i].pt.x);
        int j_best = -1;
        double d_best = 1.5;
        for (size_t j = 0; j < b.size(); ++j) {
            const double d = cv::norm(b[j].pt - expected);
            if (d < d_best && std::fabs(b[j].size - a[i].size) < 0.2 * a[i].size) {
                d_best = d;
                j_best = int(j);
            }
        }
        if (j_best < 0)
            continue;
        ++paired;
        angle_ok += angle_gap(b[size_t(j_best)].angle, a[i].angle + 90.0) < 2.0;
        double nearest = 1e9;
        int nearest_j = -1;
        for (int j = 0; j < db.rows; ++j) {
            const double d = cv::norm(da.row(int(i)), db.row(j));
            if (d < nearest) {
                nearest = d;
                nearest_j = j;
            }
        }
        nearest_ok += nearest_j == j_best;
    }
    EXPECT_GT(paired, int(a.size()) * 7 / 10);
    EXPECT_GT(angle_ok, paired * 8 / 10);
    EXPECT_GT(nearest_ok, paired * 9 / 10);
}

} // namespace
