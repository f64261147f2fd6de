// Pattern recognition: keypoint record rules, our SURF against analytic
// figures, teaching, and recognition on synthetic scenes with known placements.
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/keypoints.hpp"
#include "vision/recogniser.hpp"
#include "vision/surf.hpp"
#include "vision/surf_internal.hpp"

namespace {

using vexo::DetectorKind;
using vexo::Surf;
using vt::Frame;
using vt::RecogniserPtr;

TEST(PrcgRules, ThousandthsFootprintChoiceRatioAndAllocation) {
    const std::pair<float, int32_t> thousandths[] = {
        {10.0004f, 10000}, {-0.0005f, -1}, {0.0005f, 1},       {0.00049f, 0},
        {-2.5f, -2500},    {NAN, 0},       {1e10f, INT32_MAX}, {-1e10f, INT32_MIN}};
    for (const auto &[v, want] : thousandths)
        EXPECT_EQ(want, vexo::to_thousandths(v)) << v;
    const PatternKeypoint r =
        vexo::to_pattern_keypoint(cv::KeyPoint(12.3456f, -7.0005f, 9.5f, 271.25f, 0.0125f, 3, 42));
    const PatternKeypoint want{12346, -7001, 9500, 271250, 13, 3, 42};
    EXPECT_EQ(0, std::memcmp(&r, &want, sizeof r));

    // Footprint (diameter = size) in {15, 20, 45, 60}: touching is inside.
    const vexo::PatternRect rect{15, 20, 45, 60};
    const float footprints[][4] = {{20, 30, 10, 1},      {40, 55, 10, 1},     {30, 25, 10, 1},
                                   {19.999f, 30, 10, 0}, {30, 55.01f, 10, 0}, {NAN, 40, 2, 0}};
    for (const auto &f : footprints)
        EXPECT_EQ(f[3] != 0, vexo::footprint_inside(cv::KeyPoint(f[0], f[1], f[2]), rect))
            << f[0] << "," << f[1];

    // Scores (SIFT, SURF, ORB): ties go to SIFT, then SURF; all 0 is SURF.
    using K = DetectorKind;
    const std::tuple<size_t, size_t, size_t, K> choices[] = {
        {0, 0, 0, K::Surf}, {5, 5, 5, K::Sift}, {0, 5, 5, K::Surf},
        {0, 5, 6, K::Orb},  {5, 3, 5, K::Sift}, {3, 5, 4, K::Surf}};
    for (const auto &[s, u, o, best] : choices)
        EXPECT_EQ(best, vexo::choose_detector(s, u, o)) << s << " " << u << " " << o;

    // Ratio test: kept strictly below 0.75 only, from full lists of valid
    // indices (one neighbour; train index 9 of 6; query index 7 of 7).
    using M = cv::DMatch;
    const auto kept = vexo::ratio_filter(
        {{M(0, 4, 0.75f), M(0, 5, 1.0f)}, {M(1, 4, 0.7499f), M(1, 5, 1.0f)}, {M(2, 3, 0.1f)},
         {M(3, 9, 0.1f), M(3, 5, 1.0f)}, {M(7, 2, 0.1f), M(7, 1, 8.0f)}},
        7, 6);
    ASSERT_EQ(1u, kept.size());
    EXPECT_TRUE(kept[0].queryIdx == 1 && kept[0].trainIdx == 4);

    const vt::KeypointsPtr zeroed(vexo_prcg_alloc_keypoints(3));
    const PatternKeypoint zero[3] = {};
    EXPECT_TRUE(zeroed && std::memcmp(zeroed.get(), zero, sizeof zero) == 0);
    EXPECT_EQ(nullptr, vexo_prcg_alloc_keypoints(0));
    EXPECT_EQ(nullptr, vexo::allocate_keypoints(SIZE_MAX / 8)); // count x 28 overflows
}

// The pattern near the reference's (0, 0), whose image is the reported
// figure; taught 10 pixels inside its edges, away from the background.
constexpr int32_t kOrigin = 10, kSide = 120, kLeft = kOrigin + 10, kRight = kOrigin + kSide - 10;
const cv::Mat kPattern = vt::make_pattern(kSide, kSide, 42);
Frame reference(vt::scene(1, kPattern, vt::placement(kPattern.size(), 0, 1, {70, 70})));

std::vector<PatternKeypoint> teach(uint32_t *options) {
    int32_t count = 0;
    const vt::KeypointsPtr k(
        vexo_prcg_gen_keypoints(reference.block(), &count, options, kLeft, kLeft, kRight, kRight));
    EXPECT_EQ(k ? count : -1, count);
    return std::vector<PatternKeypoint>(k.get(), k.get() + (k ? count : 0));
}
RecogniserPtr create(const std::vector<PatternKeypoint> &kps, int32_t count, uint32_t options,
                     Frame &ref = reference) {
    return RecogniserPtr(
        vexo_prcg_create_recogniser(kps.data(), count, options, ref.block(), kOrigin, kOrigin));
}
// Taught with the option word's detector (ORB when none).
RecogniserPtr make(uint32_t options) {
    uint32_t taught = options & RECOGNISER_DETECTOR_MASK ? options : RECOGNISER_ORB;
    const auto kps = teach(&taught);
    return create(kps, int32_t(kps.size()), options);
}
// `truth`: where the reference's (0, 0), pattern point -origin, lands.
RecognitionResult find(Recogniser *rec, double angle, double scale, cv::Point2d centre,
                       cv::Point2d *truth = nullptr) {
    const cv::Matx23d a = vt::placement(kPattern.size(), angle, scale, centre);
    if (truth)
        *truth = cv::Point2d(a * cv::Vec3d(-kOrigin, -kOrigin, 1)) - cv::Point2d(kOrigin, kOrigin);
    Frame frame(vt::scene(77, kPattern, a));
    RecognitionResult r{1, 2, 3, 0};
    vexo_prcg_start_recogniser(rec, frame.block(), &r);
    return r;
}

TEST(PrcgTeach, KeepsThePresetOrPicksTheBestScoreAndRefusesNothingToTeach) {
    size_t scores[3];
    for (int k = 0; k < 3; ++k) {
        const uint32_t bit = vexo::detector_bit(DetectorKind(k));
        uint32_t options = bit | RECOGNISER_POSITION | RECOGNISER_FLANN;
        const auto kps = teach(&options);
        scores[k] = kps.size();
        EXPECT_GT(kps.size(), 10u) << bit;
        EXPECT_EQ(bit | RECOGNISER_POSITION | RECOGNISER_FLANN, options); // 0x200 stays SURF
        for (const auto &p : kps) // the whole footprint inside, touching allowed
            EXPECT_TRUE(std::min({p.x - kLeft * 1000, p.y - kLeft * 1000, kRight * 1000 - p.x,
                                  kRight * 1000 - p.y}) >= p.size / 2 - 1)
                << p.x << "," << p.y << " " << p.size;
    }
    uint32_t options = RECOGNISER_ROTATION;
    const size_t chosen = teach(&options).size();
    const DetectorKind best = vexo::choose_detector(scores[0], scores[1], scores[2]);
    EXPECT_EQ(RECOGNISER_ROTATION | vexo::detector_bit(best), options);
    EXPECT_EQ(scores[int(best)], chosen);

    // Nothing to teach: all detectors excluded (SURF named); bad rectangles
    // (inverted, empty, off the image); no options; no count.
    options = 0x800 | RECOGNISER_POSITION;
    EXPECT_TRUE(teach(&options).empty());
    EXPECT_EQ(RECOGNISER_SURF | RECOGNISER_POSITION, options);
    const int32_t rects[][4] = {{120, 20, 20, 120}, {20, 20, 20, 120}, {5000, 5000, 6000, 6000}};
    for (const auto &r : rects) {
        int32_t count = 5;
        EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(reference.block(), &count, &options, r[0],
                                                   r[1], r[2], r[3]));
        EXPECT_EQ(-1, count);
    }
    int32_t count = 5;
    EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(reference.block(), &count, nullptr, 0, 0, 9, 9));
    EXPECT_EQ(-1, count);
    EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(reference.block(), nullptr, &options, 0, 0, 9, 9));
}

// Bounds allow for ORB's coarse pyramid levels and for one mismatch tilting
// the least-squares homography; rotation is counter-clockwise on screen.
TEST(PrcgFind, FindsThePatternForEveryDetectorAndMatcher) {
    const struct { uint32_t options; double position_px, rotation_deg; } setups[] = {
        {RECOGNISER_SIFT, 2.0, 2.0}, {RECOGNISER_SIFT | RECOGNISER_FLANN, 2.0, 2.0},
        {RECOGNISER_SURF, 2.0, 2.5}, {RECOGNISER_SURF | RECOGNISER_FLANN, 2.0, 2.5},
        {RECOGNISER_ORB, 3.0, 5.0},  {RECOGNISER_FLANN, 3.0, 5.0}}; // ORB: Hamming, never a KD-tree
    const struct { double angle, scale; cv::Point2d centre; } placements[] = {
        {0, 1.0, {170, 120}},   {-40, 1.0, {165, 118}}, {90, 1.0, {160, 120}},
        {-10, 0.9, {150, 110}}, {-15, 1.2, {160, 120}}};
    for (const auto &setup : setups) {
        RecogniserPtr rec = make(setup.options | RECOGNISER_POSITION | RECOGNISER_ROTATION);
        ASSERT_NE(nullptr, rec) << setup.options;
        EXPECT_TRUE((setup.options & RECOGNISER_DETECTOR_MASK) ||
                    (!rec->orb.empty() && rec->sift.empty() && rec->surf.empty()));
        for (const auto &p : placements) {
            SCOPED_TRACE(testing::Message() << setup.options << " " << p.angle << " " << p.scale);
            cv::Point2d truth;
            const RecognitionResult r = find(rec.get(), p.angle, p.scale, p.centre, &truth);
            ASSERT_EQ(int32_t(VEXO_OK), r.status);
            EXPECT_NEAR(truth.x, r.x, setup.position_px);
            EXPECT_NEAR(truth.y, r.y, setup.position_px);
            EXPECT_NEAR(p.angle, r.rotation, setup.rotation_deg);
        }
    }
    // What is not asked for is reported as 0.
    const cv::Point2d centre(160, 120);
    RecognitionResult r = find(make(RECOGNISER_SURF | RECOGNISER_POSITION).get(), 90, 1, centre);
    EXPECT_TRUE(r.status == int32_t(VEXO_OK) && r.x != 0.0f && r.rotation == 0.0f);
    r = find(make(RECOGNISER_SURF | RECOGNISER_ROTATION).get(), 90, 1, centre);
    EXPECT_TRUE(r.status == int32_t(VEXO_OK) && r.x == 0.0f && r.y == 0.0f);
    EXPECT_NEAR(90.0, r.rotation, 1.0);
}

TEST(PrcgFind, RefusalsAndStatusesWhenNothingCanBeFound) {
    uint32_t options = RECOGNISER_SURF | RECOGNISER_POSITION;
    const auto kps = teach(&options);
    ASSERT_GE(kps.size(), 4u);
    EXPECT_TRUE(!create(kps, 2, options) && !create(kps, -5, options)); // two keypoints, fewer
    EXPECT_EQ(nullptr, vexo_prcg_create_recogniser(nullptr, 10, options, reference.block(), 0, 0));

    // Three keypoints (/ 1000, default 64-float extractor): no homography.
    const RecogniserPtr three = create(kps, 3, options);
    ASSERT_NE(nullptr, three);
    EXPECT_EQ(cv::Size(64, 3), three->pattern_descriptors.size());
    EXPECT_EQ(float(kps[2].y) / 1000.0f, three->pattern_keypoints[2].pt.y);
    RecognitionResult r{};
    vexo_prcg_start_recogniser(three.get(), reference.block(), &r);
    EXPECT_TRUE(r.status == int32_t(VEXO_ERROR_INVALID_PARAMETER) ||
                r.status == int32_t(VEXO_ERROR_NO_RATIO_MATCH))
        << r.status;

    // A featureless frame: nothing to match, 9, figures 0.
    const RecogniserPtr rec = make(options | RECOGNISER_ROTATION);
    Frame flat(cv::Mat(240, 320, CV_8UC1, cv::Scalar(120)));
    r = {1, 2, 3, 0};
    vexo_prcg_start_recogniser(rec.get(), flat.block(), &r);
    EXPECT_TRUE(vt::only_status(r, VEXO_ERROR_NO_HANDLE)) << r.status;
    vexo_prcg_start_recogniser(rec.get(), reference.block(), nullptr); // nowhere to report

    // An unreadable reference gives a handle that never finds: 9.
    Frame unreadable(cv::Mat(20, 20, CV_8UC1, cv::Scalar(0)));
    unreadable.block()->kind = 0;
    const RecogniserPtr blind = create(kps, int32_t(kps.size()), options, unreadable);
    ASSERT_NE(nullptr, blind);
    vexo_prcg_start_recogniser(blind.get(), reference.block(), &r);
    EXPECT_EQ(int32_t(VEXO_ERROR_NO_HANDLE), r.status);
}

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
    ASSERT_TRUE(given.size() == kps.size() && desc.size() == cv::Size(64, int(kps.size())));
    for (size_t k = 0; k < kps.size(); ++k) {
        const double norm = cv::norm(desc.row(int(k)));
        EXPECT_TRUE((kps[k].pt == given[k].pt || k == 6) && kps[k].size == given[k].size &&
                    cv::checkRange(desc.row(int(k))) &&
                    std::fabs(norm - (k == 3 || k == 6 ? 0 : 1)) < 1e-4) // outside; no position
            << k << " " << norm;
    }
}

// A ramp rising along theta (from +x towards +y, rows growing downwards):
// the orientation is theta, and in the keypoint's frame every wavelet is
// (g, 0), so each 4x4 cell holds its Gaussian weight W (sigma 3.3 samples)
// in sum dx and sum |dx|, 0 elsewhere: W / sqrt(2 sum W^2) once normalised.
TEST(SurfDescribe, RampGivesItsDirectionAndTheWeightsAsDescriptor) {
    double weight[16] = {}, norm = 0;
    for (int v = 0; v < 20; ++v)
        for (int u = 0; u < 20; ++u)
            weight[v / 5 * 4 + u / 5] +=
                std::exp(-(std::pow(u - 9.5, 2) + std::pow(v - 9.5, 2)) / (2 * 3.3 * 3.3));
    for (double w : weight)
        norm += 2 * w * w;
    for (double theta : {0.0, 30.0, 90.0, 135.0, 200.0, 315.0}) {
        const double t = theta * CV_PI / 180;
        cv::Mat img(160, 160, CV_8UC1), desc;
        for (int r = 0; r < 160; ++r)
            for (int c = 0; c < 160; ++c)
                img.at<uint8_t>(r, c) = cv::saturate_cast<uint8_t>(
                    128 + (c - 80) * std::cos(t) + (r - 80) * std::sin(t));
        std::vector<cv::KeyPoint> kps{cv::KeyPoint(80, 80, 12)}; // scale 6
        Surf::create(100, 4, 3, false, false)->compute(img, kps, desc);
        EXPECT_NEAR(theta, kps[0].angle, 0.1);
        for (int k = 0; k < 64; ++k)
            EXPECT_NEAR(k % 2 ? 0.0 : weight[k / 4] / std::sqrt(norm), desc.at<float>(k), 0.002)
                << theta << " " << k;
    }
}

} // namespace
