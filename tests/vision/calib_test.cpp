// SPDX-License-Identifier: MIT
// Image blocks, the calibrator, and calibration from a chessboard the tests draw.
#include <cmath>
#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>
#include <opencv2/calib3d.hpp>

#include "fixtures.hpp"
#include "vision/calibrator.hpp"
#include "vision/chessboard.hpp"
#include "vision/image_block.hpp"
#include "vision/keypoints.hpp"

namespace {

using vt::Frame;

constexpr double kIdentity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

vt::CalibratorPtr make(int32_t width, int32_t height, const double *m, uint8_t options = 0) {
    CalibrationRecord record{};
    record.width = width;
    record.height = height;
    record.options = options;
    for (int i = 0; i < 9; ++i) vexo_util_dbl_to_block(m ? m[i] : 0.0, record.perspective[i]);
    return vt::CalibratorPtr(vexo_calib_create_calibrator(&record));
}

// Records start as 0xA5 bytes, so every byte a call leaves alone shows.
CalibrationRecord blank_record() {
    CalibrationRecord record;
    std::memset(&record, 0xA5, sizeof record);
    return record;
}
bool untouched(const void *from, size_t n) {
    const auto *p = static_cast<const uint8_t *>(from);
    return std::all_of(p, p + n, [](uint8_t b) { return b == 0xA5; });
}

TEST(ImageBlock, GreyIsTheSignedChannelSumOverThreeTruncatedAndUnusableBlocksAreRefused) {
    // (-56 * 3) / 3 = -56 is 200; (100 + 100 - 126) / 3 = 24; -128 / 3 = -42.
    const uint8_t examples[][4] = {{200, 200, 200, 200}, {100, 100, 130, 24},  {128, 0, 0, 214},
                                   {1, 1, 0, 0},         {255, 255, 255, 255}, {128, 128, 128, 128},
                                   {127, 127, 127, 127}};
    // Repeated over a frame big enough to be split across workers, rows out of step.
    Frame frame(cv::Mat(203, 300, CV_8UC1), IMAGE_FORMAT_RGB24);
    for (size_t i = 0; i < 300 * 203; ++i) std::memcpy(frame.pixels() + 3 * i, examples[i % 7], 3);
    const cv::Mat grey = vexo::image_block_to_grey(frame.block());
    ASSERT_EQ(cv::Size(300, 203), grey.size());
    for (size_t i = 0; i < grey.total(); ++i) ASSERT_EQ(examples[i % 7][3], grey.data[i]) << i;

    // Unusable blocks are refused everywhere and left alone.
    constexpr int32_t kMax = vexo::kMaxImageSide;
    Frame widest(vt::noise(kMax, 1)); // the largest side accepted
    const vt::KeypointsPtr kps(vexo_prcg_alloc_keypoints(3));
    for (int32_t k = 0; k < 3; ++k) kps.get()[k] = PatternKeypoint{1000 * k, 0, 2000, 0, 0, 0, 0};
    const vt::RecogniserPtr rec(
        vexo_prcg_create_recogniser(kps.get(), 3, RECOGNISER_SURF, widest.block(), 0, 0));
    const vt::CalibratorPtr cal = make(640, 480, nullptr);
    ASSERT_TRUE(rec);
    ASSERT_TRUE(cal);
    // Kind, format, width, height; kind 0: no block at all, nothing written.
    const int32_t cases[][4] = {{1, 17, 16, 16},        {2, 3, 16, 16},      {2, 0, 16, 16},
                                {2, 17, 0, 16},         {2, 1, 16, -1},      {2, 17, kMax + 1, 1},
                                {2, 17, 1, kMax + 1},   {2, 17, kMax, kMax}, {2, 1, INT32_MAX, 1},
                                {2, 17, 16, INT32_MIN}, {0, 17, 16, 16}};
    for (const auto &c : cases) {
        SCOPED_TRACE(::testing::Message() << c[0] << " " << c[1] << " " << c[2] << "x" << c[3]);
        Frame bad(vt::noise(16, 16), uint8_t(c[1]));
        bad.block()->kind = uint8_t(c[0]);
        bad.set_size(c[2], c[3]);
        ImageBlock *block = c[0] ? bad.block() : nullptr;
        const std::vector<uint8_t> before = bad.bytes;
        EXPECT_EQ(VEXO_ERROR_NO_MEMORY, vexo_calib_start_calibrator(cal.get(), block));
        EXPECT_TRUE(before == bad.bytes);
        CalibrationRecord record = blank_record();
        int32_t found = -1, count = 5;
        uint32_t options = 0x31;
        EXPECT_EQ(nullptr, vexo_calib_gen_correction(block, 9, 6, &record, &found));
        // Width and height copied first, the rest left alone.
        EXPECT_EQ(found, 0);
        if (c[0]) {
            EXPECT_EQ(record.width, c[2]);
            EXPECT_TRUE(untouched(record.reserved0, 104));
        } else {
            EXPECT_TRUE(untouched(&record, sizeof record));
        }
        EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(block, &count, &options, 0, 0, 9, 9));
        EXPECT_EQ(count, -1);
        EXPECT_EQ(options, 0x31);
        EXPECT_EQ(VEXO_ERROR_NO_MEMORY, vt::bare_status(rec.get(), block));
    }
    EXPECT_EQ(640, cal->width); // refused frames lower nothing
    EXPECT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), widest.block()));
    // No handle: 9, figures 0.
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, vexo_calib_start_calibrator(nullptr, widest.block()));
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, vt::bare_status(nullptr, widest.block()));
}

TEST(Calibrator, SizeClampedFrameBecomesGreyWarpedCutAndFlippedUnlessTopDown) {
    const int32_t sizes[][4] = {{50, 5000, 80, 5000},
                                {10000, 59, 8192, 60},
                                {80, 60, 80, 60},
                                {8192, 8193, 8192, 8192},
                                {-5, INT32_MIN, 80, 60}};
    for (const auto &s : sizes) {
        const vt::CalibratorPtr cal = make(s[0], s[1], kIdentity);
        EXPECT_EQ(cv::Size(s[2], s[3]), cv::Size(cal->width, cal->height)) << s[0] << "x" << s[1];
    }
    // Negative zero is zero; one tiny value is a perspective.
    const double minus_zero[9] = {0, 0, 0, 0, -0.0}, tiny[9] = {0, 0, 0, 0, 0, 0, 0, 0, 1e-300};
    EXPECT_TRUE(make(640, 480, minus_zero)->perspective.empty());
    EXPECT_FALSE(make(640, 480, tiny)->perspective.empty());
    EXPECT_EQ(nullptr, vexo_calib_create_calibrator(nullptr));

    // Output: grey, warped, cut to the calibrator's size as lowered (for
    // good) to the frame's, flipped unless top-down; nothing past it written.
    const double shift[9] = {1, 0, 5, 0, 1, 3, 0, 0, 1}; // (+5, +3): read row by row
    const uint8_t rgb = IMAGE_FORMAT_RGB24, grey = IMAGE_FORMAT_GREY8, top_down = 1;
    const struct {
        const double *m;
        uint8_t options, format;
        int cal_w, cal_h, frame_w, frame_h, out_w, out_h;
    } cases[] = {{kIdentity, top_down, grey, 200, 100, 200, 100, 200, 100},
                 {nullptr, 0, rgb, 100, 70, 100, 70, 100, 70}, // the grey image itself
                 {shift, top_down, grey, 120, 90, 120, 90, 120, 90},
                 {shift, 0xFE, rgb, 120, 90, 120, 90, 120, 90}, // other bits still flip
                 {kIdentity, 0, grey, 640, 480, 320, 240, 320, 240},
                 {kIdentity, 0, grey, 640, 480, 100, 600, 100, 480},
                 {kIdentity, 0, grey, 10, 10, 7, 5, 7, 5}, // below the minimum size
                 {kIdentity, 0, rgb, 80, 60, 300, 200, 80, 60}};
    for (const auto &c : cases) {
        SCOPED_TRACE(::testing::Message() << c.frame_w << "x" << c.frame_h << " " << +c.options);
        const cv::Mat image = vt::noise(c.frame_w, c.frame_h);
        const int dx = c.m == shift ? 5 : 0, dy = c.m == shift ? 3 : 0;
        cv::Mat want; // shifted by (dx, dy) and cut
        cv::copyMakeBorder(image, want, dy, 0, dx, 0, cv::BORDER_CONSTANT, cv::Scalar(0));
        want = want(cv::Rect(0, 0, c.out_w, c.out_h)).clone();
        if (!(c.options & top_down))
            cv::flip(want, want, 0); // output row r is warped row height - 1 - r
        const vt::CalibratorPtr cal = make(c.cal_w, c.cal_h, c.m, c.options);
        Frame frame(image, c.format, 16);
        const std::vector<uint8_t> before = frame.bytes;
        ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
        EXPECT_EQ(frame.block()->format, grey);
        EXPECT_EQ(frame.block()->bits, 8u);
        EXPECT_EQ(frame.block()->data_size, uint32_t(c.out_w * c.out_h));
        frame.block()->format = c.format; // the rest of the header, sizes included, is kept
        EXPECT_TRUE(std::equal(&before[0], &before[24], frame.bytes.begin()));
        EXPECT_EQ(0, cv::norm(frame.output(c.out_w, c.out_h), want, cv::NORM_INF));
        const size_t end = VEXO_IMAGE_HEADER_SIZE + size_t(c.out_w * c.out_h);
        EXPECT_TRUE(std::equal(before.begin() + end, before.end(), frame.bytes.begin() + end));
        Frame full(vt::noise(c.cal_w, c.cal_h)); // a later full-size frame
        ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), full.block()));
        EXPECT_EQ(uint32_t(c.out_w * c.out_h), full.block()->data_size);
    }
    // A non-finite or singular perspective gives some image, no fault.
    const double singular[9] = {0, 0, 0, 0, 0, 0, 0, 0, 1};
    const double odd[9] = {NAN, 0, 0, 0, INFINITY, 0, 0, 0, 1};
    for (const double *m : {singular, odd})
        EXPECT_EQ(VEXO_OK, vexo_calib_start_calibrator(make(100, 80, m).get(),
                                                       Frame(vt::noise(100, 80)).block()));
}

constexpr int kColumns = 9, kRows = 6, kCorners = kColumns * kRows;

// A board with 40-pixel squares as a tilted camera sees it: keystone, turn.
cv::Mat tilted_board(int columns, int rows) {
    cv::Mat board((rows + 3) * 40, (columns + 3) * 40, CV_8UC1, cv::Scalar(255)), view;
    for (int j = 0; j <= rows; ++j)
        for (int i = j % 2; i <= columns; i += 2)
            board(cv::Rect(40 + i * 40, 40 + j * 40, 40, 40)).setTo(0);
    const float w = float(board.cols), h = float(board.rows);
    const cv::Point2f from[4] = {{0, 0}, {w, 0}, {0, h}, {w, h}};
    const cv::Point2f to[4] = {{150, 60}, {500, 85}, {90, 420}, {560, 440}};
    cv::warpPerspective(board, view, cv::getPerspectiveTransform(from, to), cv::Size(640, 480),
                        cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(255));
    return view;
}

// OpenCV's own search and refinement: the independent reference.
std::vector<cv::Point2f> find_corners(const cv::Mat &grey, int flags, float eps) {
    std::vector<cv::Point2f> corners;
    if (cv::findChessboardCorners(grey, cv::Size(kColumns, kRows), corners, flags))
        cv::cornerSubPix(grey, corners, cv::Size(11, 11), cv::Size(-1, -1),
                         cv::TermCriteria(3, 30, eps));
    return corners;
}

TEST(CalibChessboard, TiltedBoardCalibratedThenSquaredUpByTheCalibrator) {
    const cv::Mat view = tilted_board(kColumns, kRows);
    Frame frame(view, IMAGE_FORMAT_RGB24), small(tilted_board(5, 4), IMAGE_FORMAT_RGB24);
    // Not found on a smaller board (OpenCV's count: 0), sides outside 3..1024,
    // no record: NULL, count 0, the record's size alone written.
    const int32_t sides[][2] = {{kColumns, kRows}, {2, 6},    {9, 2},    {0, 0},
                                {-9, 6},           {9, 1025}, {1025, 6}, {INT32_MIN, 3}};
    for (const auto &s : sides) {
        CalibrationRecord record = blank_record();
        int32_t found = -1;
        EXPECT_EQ(nullptr, vexo_calib_gen_correction((s[0] == kColumns ? small : frame).block(),
                                                     s[0], s[1], &record, &found));
        EXPECT_EQ(found, 0) << s[0] << s[1];
        EXPECT_EQ(record.width, 640) << s[0] << s[1];
        EXPECT_EQ(record.height, 480) << s[0] << s[1];
        EXPECT_TRUE(untouched(&record, 104));
        EXPECT_TRUE(untouched(record.reserved0, 104));
    }
    int32_t found = -1;
    EXPECT_EQ(nullptr, vexo_calib_gen_correction(frame.block(), kColumns, kRows, nullptr, &found));
    EXPECT_EQ(0, found);
    CalibrationRecord record = blank_record();
    EXPECT_NE(nullptr, vt::CornersPtr(vexo_calib_gen_correction(frame.block(), kColumns, kRows,
                                                                &record, nullptr))); // no count
    vt::CornersPtr list(vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, &found));
    ASSERT_TRUE(list) << found;
    ASSERT_EQ(found, kCorners) << found;
    EXPECT_TRUE(untouched(record.reserved1, 8)); // 208..215, the option byte among them
    for (auto &block : record.reserved0) EXPECT_EQ(0.0, vexo_util_block_to_dbl(block));

    // Corners: OpenCV's refined corners rounded half away from zero.
    const std::vector<cv::Point2f> ref = find_corners(view, 7, 0.1f);
    ASSERT_EQ(size_t(kCorners), ref.size());
    for (int i = 0; i < 2 * kCorners; ++i)
        EXPECT_EQ(std::lround(i % 2 ? ref[i / 2].y : ref[i / 2].x), list.get()[i]) << i;

    // Camera: aspect ratio fixed at width / height, single-precision values.
    double camera[13];
    for (int i = 0; i < 13; ++i) {
        camera[i] = vexo_util_block_to_dbl(i < 9 ? record.camera[i] : record.distortion[i - 9]);
        EXPECT_EQ(camera[i], double(float(camera[i]))) << i;
    }
    EXPECT_EQ(camera[8], 1.0);
    EXPECT_EQ(camera[1], 0.0);
    EXPECT_EQ(camera[3], 0.0);
    EXPECT_NEAR(640.0 / 480.0, camera[0] / camera[4], 1e-5);

    // Perspective: outer corners onto their bounding box, corner 0 lowest.
    std::vector<cv::Point2f> mapped, outer = {ref[0], ref[8], ref[45], ref[53]}; // 9 x 6
    const auto [x0, x1] = std::minmax({outer[0].x, outer[1].x, outer[2].x, outer[3].x});
    const auto [y0, y1] = std::minmax({outer[0].y, outer[1].y, outer[2].y, outer[3].y});
    cv::Matx33d h;
    for (int i = 0; i < 9; ++i) h.val[i] = vexo_util_block_to_dbl(record.perspective[i]);
    cv::perspectiveTransform(outer, mapped, h);
    const std::vector<cv::Point2f> target = {{x0, y1}, {x1, y1}, {x0, y0}, {x1, y0}};
    EXPECT_LT(cv::norm(mapped, target, cv::NORM_INF), 1e-3);

    // Round trip: the bottom-up calibrator puts the outer corners (numbered
    // from any of them) on that rectangle, turned over.
    record.options = 0;
    const vt::CalibratorPtr cal(vexo_calib_create_calibrator(&record));
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    const std::vector<cv::Point2f> seen = find_corners(frame.output(640, 480), 3, 0.01f);
    ASSERT_EQ(size_t(kCorners), seen.size());
    for (const cv::Point2f want : {cv::Point2f(x0, 479 - y1), cv::Point2f(x1, 479 - y1),
                                   cv::Point2f(x0, 479 - y0), cv::Point2f(x1, 479 - y0)}) {
        double nearest = 1e9;
        for (int k : {0, 8, 45, 53}) // outer corners
            nearest = std::min(nearest, cv::norm(seen[k] - want));
        EXPECT_LT(nearest, 1.5) << want;
    }
}

// Corners and taught keypoint figures (x 1000) both round half away from
// zero and saturate; NaN is the lowest corner but keypoint figure 0.
TEST(CalibChessboard, ThousandthFieldsRoundHalfAwayFromZeroThenSaturate) {
    constexpr int32_t kMin = INT32_MIN, kMax = INT32_MAX;
    const std::tuple<float, int32_t, int32_t> cases[] = {
        {12.5f, 13, 12500}, {-12.5f, -13, -12500}, {12.49f, 12, 12490}, {-12.49f, -12, -12490},
        {-0.0f, 0, 0},      {0.5f, 1, 500},        {-0.5f, -1, -500},   {0.49999997f, 0, 500},
        {-2.5f, -3, -2500}, {10.0004f, 10, 10000}, {0.0005f, 0, 1},     {-0.0005f, 0, -1},
        {0.00049f, 0, 0},   {-1e10f, kMin, kMin},  {1e10f, kMax, kMax}, {NAN, kMin, 0}};
    for (const auto &[v, corner, thousandths] : cases) {
        EXPECT_EQ(corner, vexo::round_corner_coordinate(v)) << v;
        EXPECT_EQ(thousandths, vexo::to_thousandths(v)) << v;
    }
}

} // namespace
