// Our SURF: box sums, blob position and strength, masks, a quarter turn.
#include <cmath>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/surf.hpp"
#include "vision/surf_internal.hpp"

namespace {

using vexo::Surf;

TEST(SurfIntegral, BoxSumsAreExactAndFiltersGrowPerOctave) {
    const cv::Mat img = vt::noise(53, 37, 7);
    const vexo::IntegralImage ii(img);
    cv::RNG rng(11);
    for (int k = 0; k < 200; ++k) {
        const int r0 = rng.uniform(0, 37), r1 = rng.uniform(r0, 38);
        const int c0 = rng.uniform(0, 53), c1 = rng.uniform(c0, 54);
        ASSERT_EQ(float(cv::sum(img(cv::Range(r0, r1), cv::Range(c0, c1)))[0]),
                  ii.box(r0, c0, r1, c1));
    }
    EXPECT_EQ(float(cv::sum(img)[0]), ii.box_clamped(-10, -10, 100, 100));
    // The 32-bit running sum wraps; boxes up to the side limit stay exact.
    const vexo::IntegralImage white(cv::Mat(4096, 1100, CV_8UC1, cv::Scalar(255)));
    EXPECT_EQ(255.0 * 4096 * 1100, double(white.box(0, 0, 4096, 1100)));
    EXPECT_EQ(255.0 * 96 * 100, double(white.box(4000, 1000, 4096, 1100)));
    const int sizes[3][4] = {{9, 15, 21, 27}, {15, 27, 39, 51}, {27, 51, 75, 99}};
    for (int o = 0; o < 12; ++o)
        EXPECT_EQ(sizes[o / 4][o % 4], vexo::surf_filter_size(o / 4, o % 4)) << o;
}

TEST(SurfDetect, GaussianBlobFoundAtItsCentreScaleAndBoxResponse) {
    const double cx = 60.3, cy = 50.7, sigma = 4.0, two_s2 = 2 * sigma * sigma;
    cv::Mat img(100, 120, CV_8UC1);
    for (int r = 0; r < img.rows; ++r)
        for (int c = 0; c < img.cols; ++c)
            img.at<uint8_t>(r, c) = cv::saturate_cast<uint8_t>(
                200 - 150 * std::exp(-(std::pow(c - cx, 2) + std::pow(r - cy, 2)) / two_s2));
    std::vector<cv::KeyPoint> kps;
    Surf::create(400, 4, 2, false, false)->detect(img, kps);
    ASSERT_FALSE(kps.empty());
    const cv::KeyPoint best = *std::max_element(
        kps.begin(), kps.end(), [](auto &a, auto &b) { return a.response < b.response; });
    EXPECT_NEAR(cx, best.pt.x, 0.5);
    EXPECT_NEAR(cy, best.pt.y, 0.5);
    EXPECT_NEAR(sigma, best.size / 2.0, sigma * 0.3);
    EXPECT_TRUE(best.angle >= 0.0f && best.angle < 360.0f) << best.angle;
    // Independent figure: the 21-box weights (lobe 7; +1, -2, +1 across 21
    // columns, 13 rows) summed over the analytic blob at its centre give
    // Dxx = Dyy = 26.60, Dxy = 0, so det = 707.6, a little less off-centre.
    double sx = 0, sy = 0;
    for (int t = -10; t <= 10; ++t)
        sx += (std::abs(t) > 3 ? 1.0 : -2.0) * std::exp(-t * t / two_s2);
    for (int t = -6; t <= 6; ++t)
        sy += std::exp(-t * t / two_s2);
    const double det = std::pow(150.0 * sx * sy / (21.0 * 21.0), 2);
    EXPECT_NEAR(707.59, det, 0.01);
    EXPECT_NEAR(det, best.response, 0.03 * det);
}

TEST(SurfDetect, NothingToFindMaskThresholdAndProvidedKeypoints) {
    auto surf = Surf::create(400, 4, 2, true, false);
    std::vector<cv::KeyPoint> kps{cv::KeyPoint(1, 1, 2)}, strong;
    cv::Mat desc;
    // Flat, smaller than the first octave's largest filter, empty.
    for (const cv::Mat &img : {cv::Mat(120, 160, CV_8UC1, cv::Scalar(90)),
                               vt::make_pattern(20, 20, 3), cv::Mat()}) {
        surf->detectAndCompute(img, cv::noArray(), kps, desc);
        EXPECT_TRUE(kps.empty() && desc.rows == 0);
    }
    // Masked to the left half; the threshold bounds the determinant.
    const cv::Mat img = vt::make_pattern(200, 160, 21);
    cv::Mat mask(img.size(), CV_8UC1, cv::Scalar(0));
    mask.colRange(0, 100).setTo(255);
    surf->detectAndCompute(img, mask, kps, desc);
    Surf::create(800, 4, 2, false, false)->detect(img, strong);
    EXPECT_TRUE(kps.size() > strong.size() && !strong.empty()) << kps.size() << strong.size();
    EXPECT_EQ(cv::Size(128, int(kps.size())), desc.size()); // extended
    for (const auto &kp : kps)
        EXPECT_TRUE(kp.pt.x < 100 && kp.response > 400) << kp.pt << " " << kp.response;
    for (const auto &kp : strong)
        EXPECT_GT(kp.response, 800.0f);

    // Provided keypoints all kept, even outside (zero descriptor) or NaN.
    kps = {cv::KeyPoint(60, 50, 6),   cv::KeyPoint(0, 0, 10),  cv::KeyPoint(199, 159, 30),
           cv::KeyPoint(-50, 500, 4), cv::KeyPoint(30, 30, 0), cv::KeyPoint(40, 40, 1e9f),
           cv::KeyPoint(NAN, 10, 4)};
    const auto given = kps;
    Surf::create(100, 4, 3, false, false)->compute(img, kps, desc);
    ASSERT_EQ(given.size(), kps.size());
    ASSERT_EQ(cv::Size(64, int(kps.size())), desc.size());
    for (size_t k = 0; k < kps.size(); ++k) {
        const double norm = cv::norm(desc.row(int(k)));
        EXPECT_TRUE((kps[k].pt == given[k].pt || k == 6) && kps[k].size == given[k].size &&
                    cv::checkRange(desc.row(int(k))) && (std::fabs(norm - 1) < 1e-4 || norm == 0))
            << k << " " << norm;
    }
    EXPECT_NEAR(1.0, cv::norm(desc.row(0)), 1e-4);
    EXPECT_EQ(0.0, cv::norm(desc.row(3)) + cv::norm(desc.row(6))); // outside; no position
}

// Keypoints come back a quarter turn on, angles +90 (rows grow downwards),
// each descriptor nearest to its own counterpart's.
TEST(SurfDescribe, QuarterTurnMovesKeypointsAndAnglesAndKeepsDescriptors) {
    const cv::Mat img = vt::make_pattern(200, 200, 17);
    cv::Mat turned, da, db;
    cv::rotate(img, turned, cv::ROTATE_90_CLOCKWISE); // (x, y) -> (199 - y, x)
    std::vector<cv::KeyPoint> a, b;
    Surf::create(100, 4, 3, false, false)->detectAndCompute(img, cv::noArray(), a, da);
    Surf::create(100, 4, 3, false, false)->detectAndCompute(turned, cv::noArray(), b, db);
    ASSERT_GT(a.size(), 30u);
    int paired = 0, angle_ok = 0, nearest_ok = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        int twin = -1, nearest = -1;
        double d_twin = 1.5, d_nearest = 1e9;
        for (int j = 0; j < int(b.size()); ++j) {
            const double d = cv::norm(b[j].pt - cv::Point2f(199 - a[i].pt.y, a[i].pt.x));
            const double dd = cv::norm(da.row(int(i)), db.row(j));
            if (d < d_twin && std::fabs(b[j].size - a[i].size) < 0.2 * a[i].size)
                d_twin = d, twin = j;
            if (dd < d_nearest)
                d_nearest = dd, nearest = j;
        }
        if (twin >= 0) {
            const double gap = std::fmod(std::fabs(b[twin].angle - a[i].angle - 90.0), 360.0);
            paired += 1;
            angle_ok += std::min(gap, 360.0 - gap) < 2.0;
            nearest_ok += nearest == twin;
        }
    }
    EXPECT_GT(paired, int(a.size()) * 7 / 10);
    EXPECT_GT(angle_ok, paired * 8 / 10);
    EXPECT_GT(nearest_ok, paired * 9 / 10);
}

} // namespace
