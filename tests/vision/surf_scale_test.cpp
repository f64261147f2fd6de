// SPDX-License-Identifier: MIT
// Our SURF on the scale its Hessian thresholds are stated on: every box of
// the three Haar patterns weighs in by the mean of its pixels.  The figures
// here are computed from the pixels directly, not through the integral image.
#include <algorithm>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/keypoints_detectors.hpp"
#include "vision/surf.hpp"
#include "vision/surf_internal.hpp"

namespace {

// Mean of the pixels in rows [r0, r1), columns [c0, c1).
double box_mean(const cv::Mat &img, int r0, int c0, int r1, int c1) {
    return cv::mean(img(cv::Range(r0, r1), cv::Range(c0, c1)))[0];
}

// Determinant of the box-filter Hessian of side `size` at pixel (x, y),
// written out lobe by lobe: Dxx and Dyy are three lobe x (2 lobe - 1) boxes
// weighted 1, -2, 1; Dxy four lobe x lobe squares weighted +1 on the
// main diagonal, -1 off it, leaving the centre row and column out.
double determinant_by_means(const cv::Mat &img, int x, int y, int size) {
    const int l = size / 3, half = l - 1; // a lobe spans 2 l - 1 across
    double dxx = 0, dyy = 0;
    for (int k = -1; k <= 1; ++k) {
        const double w = k == 0 ? -2.0 : 1.0;
        const int a = k * l - (l - 1) / 2; // lobe start along the derivative
        dxx += w * box_mean(img, y - half, x + a, y + half + 1, x + a + l);
        dyy += w * box_mean(img, y + a, x - half, y + a + l, x + half + 1);
    }
    const double dxy =
        box_mean(img, y - l, x - l, y, x) + box_mean(img, y + 1, x + 1, y + l + 1, x + l + 1) -
        box_mean(img, y - l, x + 1, y, x + l + 1) - box_mean(img, y + 1, x - l, y + l + 1, x);
    return dxx * dyy - 0.81 * dxy * dxy;
}

// A dark Gaussian blob (sigma 4 pixels, `contrast` grey levels deep) on 200.
void draw_blob(cv::Mat &img, double cx, double cy, double contrast) {
    for (int r = 0; r < img.rows; ++r)
        for (int c = 0; c < img.cols; ++c) {
            const double d2 = (c - cx) * (c - cx) + (r - cy) * (r - cy);
            if (d2 < 30 * 30)
                img.at<uint8_t>(r, c) = cv::saturate_cast<uint8_t>(img.at<uint8_t>(r, c) -
                                                                   contrast * std::exp(-d2 / 32));
        }
}

TEST(SurfResponse, EqualsTheDeterminantOfBoxMeansOnNoise) {
    const cv::Mat img = vt::noise(90, 70, 3);
    const vexo::IntegralImage ii(img);
    for (int size : {9, 15, 21, 27, 39, 51})
        for (const cv::Point p : {cv::Point(30, 30), cv::Point(45, 34), cv::Point(60, 40)}) {
            const double want = determinant_by_means(img, p.x, p.y, size);
            EXPECT_NEAR(want, vexo::surf_hessian_response(ii, p.x, p.y, size),
                        1e-4 * std::max(1.0, std::fabs(want)))
                << size << " at " << p;
        }
}

TEST(SurfResponse, NineBoxOfALoneDotIsItsLobeArithmetic) {
    // One pixel of 255 at the centre of the 9 x 9 filter sits in the middle
    // lobe of Dxx and of Dyy (3 x 5 = 15 pixels each, weight -2) and on the
    // left-out row of Dxy: Dxx = Dyy = -2 * 255 / 15 = -34, Dxy = 0.
    cv::Mat img(21, 21, CV_8UC1, cv::Scalar(0));
    img.at<uint8_t>(10, 10) = 255;
    const vexo::IntegralImage ii(img);
    EXPECT_FLOAT_EQ(34.0f * 34.0f, vexo::surf_hessian_response(ii, 10, 10, 9));
}

TEST(SurfResponse, NineBoxOfADiagonalDotIsItsSquareArithmetic) {
    // One pixel of 255 up and left of the centre: in the +1 square of Dxy
    // (3 x 3 = 9 pixels), and still in the middle lobes of Dxx and Dyy
    // (3 wide, 5 long): Dxx = Dyy = -2 * 255 / 15 = -34, Dxy = 255 / 9.
    cv::Mat img(21, 21, CV_8UC1, cv::Scalar(0));
    img.at<uint8_t>(9, 9) = 255;
    const vexo::IntegralImage ii(img);
    const double dxy = 255.0 / 9.0;
    EXPECT_NEAR(34.0 * 34.0 - 0.81 * dxy * dxy, vexo::surf_hessian_response(ii, 10, 10, 9), 1e-2);
}

// A 150-deep blob at pixel (60, 50) of a 120 x 100 image, and the
// strongest keypoint the stored detector's parameters find on it.
struct OneBlob {
    cv::Mat img{100, 120, CV_8UC1, cv::Scalar(200)};
    cv::KeyPoint best;
    OneBlob() {
        draw_blob(img, 60, 50, 150);
        std::vector<cv::KeyPoint> kps;
        vexo::Surf::create(400, 4, 2, false, false)->detect(img, kps);
        if (!kps.empty())
            best = *std::max_element(kps.begin(), kps.end(),
                                     [](auto &a, auto &b) { return a.response < b.response; });
    }
};

// The strongest keypoint carries the response of its sample: the
// determinant at the blob's pixel for the middle-layer filter that peaks
// (the 21-box, on a sigma-4 blob).
TEST(SurfDetect, BlobResponseIsTheDeterminantOfBoxMeansAtItsCentre) {
    const OneBlob b;
    const double d21 = determinant_by_means(b.img, 60, 50, 21);
    ASSERT_GT(d21, determinant_by_means(b.img, 60, 50, 15));
    ASSERT_GT(d21, determinant_by_means(b.img, 60, 50, 27));
    EXPECT_NEAR(d21, b.best.response, 1e-4 * d21);
}

TEST(SurfDetect, BlobIsFoundAtItsCentre) {
    const OneBlob b;
    EXPECT_NEAR(60.0, b.best.pt.x, 0.25);
    EXPECT_NEAR(50.0, b.best.pt.y, 0.25);
}

// The 21-box peaks: the fitted scale lies between those of its
// neighbouring layers, 1.2 / 9 x 15 and 1.2 / 9 x 27.
TEST(SurfDetect, BlobScaleLiesBetweenTheNeighbouringLayers) {
    const OneBlob b;
    EXPECT_GT(b.best.size / 2.0, 2.0);
    EXPECT_LT(b.best.size / 2.0, 3.6);
}

// Blobs of known contrast on a flat field: their determinants, computed
// here, put them clearly above or below the threshold 400, and exactly the
// ones above are found (a keypoint within 1.5 pixels of the centre).
TEST(SurfDetect, FindsExactlyTheBlobsWhoseDeterminantPassesTheThreshold) {
    const double contrasts[] = {8, 12, 16, 30, 40, 60};
    cv::Mat img(80, 6 * 60, CV_8UC1, cv::Scalar(200));
    for (int k = 0; k < 6; ++k) draw_blob(img, 30 + 60 * k, 40, contrasts[k]);
    std::vector<cv::KeyPoint> kps;
    vexo::Surf::create(400, 4, 2, true, false)->detect(img, kps);
    for (int k = 0; k < 6; ++k) {
        const cv::Point2f centre(30.0f + 60 * k, 40.0f);
        double peak = 0;
        for (int size : {15, 21, 27})
            peak = std::max(peak, determinant_by_means(img, 30 + 60 * k, 40, size));
        ASSERT_TRUE(peak < 400 / 1.5 || peak > 400 * 1.5)
            << "borderline blob " << k << ": " << peak;
        const bool found = std::any_of(kps.begin(), kps.end(), [&](const cv::KeyPoint &kp) {
            return cv::norm(kp.pt - centre) < 1.5;
        });
        EXPECT_EQ(peak > 400, found) << "contrast " << contrasts[k] << ", determinant " << peak;
    }
}

TEST(SurfDetect, EveryKeypointOnAFlatFieldSitsOnABlob) {
    cv::Mat img(80, 6 * 60, CV_8UC1, cv::Scalar(200));
    for (int k = 0; k < 6; ++k) draw_blob(img, 30 + 60 * k, 40, 40);
    std::vector<cv::KeyPoint> kps;
    vexo::Surf::create(400, 4, 2, true, false)->detect(img, kps);
    ASSERT_GE(kps.size(), 6u);
    for (const auto &kp : kps) {
        const float nearest_x = 30.0f + 60.0f * std::round((kp.pt.x - 30.0f) / 60.0f);
        EXPECT_NEAR(nearest_x, kp.pt.x, 1.0) << kp.pt;
        EXPECT_NEAR(40.0f, kp.pt.y, 1.0) << kp.pt;
    }
}

// Descriptor of a keypoint of scale 2 at (x, 70.3) on a textured image.
cv::Mat descriptor_at(float x) {
    static const cv::Mat texture = vt::make_pattern(160, 140, 9);
    std::vector<cv::KeyPoint> kps{cv::KeyPoint(x, 70.3f, 4.0f)};
    cv::Mat desc;
    vexo::Surf::create(100, 4, 3, false, true)->compute(texture, kps, desc);
    return desc;
}

// Samples fall between pixels; their wavelets are blended from the pixel
// grid, so a tenth of a pixel moves the descriptor by about a tenth of what
// a whole pixel does (rounding to the grid would jump a whole pixel here,
// between 79.95 and 80.05, as wide as between 79.5 and 80.5).
TEST(SurfDescribe, DescriptorMovesSmoothlyWithTheKeypoint) {
    const double tenth = cv::norm(descriptor_at(79.95f), descriptor_at(80.05f));
    const double whole = cv::norm(descriptor_at(79.5f), descriptor_at(80.5f));
    EXPECT_LT(tenth, 0.25 * whole) << "0.1 px: " << tenth << ", 1 px: " << whole;
}

// The recogniser finds and describes a frame's keypoints in one pass; it
// must give what detect() then the extractor's compute() give.
TEST(SurfDescribe, OnePassEqualsDetectThenComputeBitForBit) {
    const cv::Mat texture = vt::make_pattern(240, 200, 5);
    const auto detector = vexo::make_detector(vexo::DetectorKind::Surf);
    std::vector<cv::KeyPoint> two_calls, one_pass;
    cv::Mat described, one_pass_rows;
    detector->detect(texture, two_calls);
    vexo::make_extractor(vexo::DetectorKind::Surf)->compute(texture, two_calls, described);
    vexo::detect_and_describe(vexo::DetectorKind::Surf, *detector, texture, one_pass,
                              one_pass_rows);
    ASSERT_GT(two_calls.size(), 10u);
    ASSERT_EQ(two_calls.size(), one_pass.size());
    for (size_t k = 0; k < one_pass.size(); ++k) {
        EXPECT_EQ(two_calls[k].pt, one_pass[k].pt) << "keypoint " << k;
        EXPECT_EQ(two_calls[k].angle, one_pass[k].angle) << "keypoint " << k;
        EXPECT_EQ(two_calls[k].size, one_pass[k].size) << "keypoint " << k;
    }
    ASSERT_EQ(described.size(), one_pass_rows.size());
    EXPECT_EQ(0, std::memcmp(described.data, one_pass_rows.data,
                             described.total() * described.elemSize()));
}

} // namespace
