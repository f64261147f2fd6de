#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/calib3d.hpp>

#include "calib_fixtures.hpp"
#include "vision/chessboard.hpp"

namespace {

using namespace calib_test;

constexpr int kColumns = 9;
constexpr int kRows = 6;
constexpr int kCorners = kColumns * kRows;
const cv::Size kView(640, 480);

struct CornerList {
    int32_t *p = nullptr;
    ~CornerList() { vexo_calib_release_correction(p); }
};

// A record full of a marker byte, so every byte the call leaves alone shows.
CalibrationRecord marked_record() {
    CalibrationRecord record;
    std::memset(&record, 0xA5, sizeof record);
    return record;
}

bool untouched(const uint8_t *bytes, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (bytes[i] != 0xA5)
            return false;
    return true;
}

// The corners as OpenCV finds and refines them on its own, with the same
// parameters: an independent reference for the corner list.
std::vector<cv::Point2f> reference_corners(const cv::Mat &grey) {
    std::vector<cv::Point2f> corners;
    cv::findChessboardCorners(grey, cv::Size(kColumns, kRows), corners, 7);
    cv::cornerSubPix(grey, corners, cv::Size(11, 11), cv::Size(-1, -1),
                     cv::TermCriteria(3, 30, 0.1f));
    return corners;
}

// Bounding box of the four outer corners: x0, x1, y0, y1.
cv::Vec4f outer_bounds(const std::vector<cv::Point2f> &c) {
    cv::Vec4f b(1e6f, -1e6f, 1e6f, -1e6f);
    for (int k : {0, kColumns - 1, (kRows - 1) * kColumns, kCorners - 1}) {
        b[0] = std::min(b[0], c[k].x);
        b[1] = std::max(b[1], c[k].x);
        b[2] = std::min(b[2], c[k].y);
        b[3] = std::max(b[3], c[k].y);
    }
    return b;
}

cv::Point2d apply(const CalibrationRecord &record, cv::Point2d p) {
    double m[9];
    for (int i = 0; i < 9; ++i)
        m[i] = get_double(record.perspective[i]);
    const double w = m[6] * p.x + m[7] * p.y + m[8];
    return {(m[0] * p.x + m[1] * p.y + m[2]) / w, (m[3] * p.x + m[4] * p.y + m[5]) / w};
}

TEST(CalibChessboard, TiltedBoardIsSquaredUp) {
    cv::Mat tilt;
    const cv::Mat view = tilted_view(draw_board(kColumns, kRows, 40, 40), kView, &tilt);
    for (uint8_t format : {IMAGE_FORMAT_RGB24, IMAGE_FORMAT_GREY8}) {
        SCOPED_TRACE(int(format));
        Frame frame = frame_from_grey(view, format);
        CalibrationRecord record = marked_record();
        int32_t found = -1;
        CornerList list;
        list.p = vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, &found);
        ASSERT_NE(nullptr, list.p);
        EXPECT_EQ(kCorners, found);
        EXPECT_EQ(640, record.width);
        EXPECT_EQ(480, record.height);
        // Bytes 208..215, the option byte among them, are never written.
        EXPECT_TRUE(untouched(reinterpret_cast<const uint8_t *>(&record) + 208, 8));
        for (auto &block : record.reserved0)
            EXPECT_EQ(0.0, get_double(block));

        // Corners: OpenCV's own refined corners, rounded half away from zero,
        // and close to where the known tilt put the drawn corners.
        const std::vector<cv::Point2f> ref = reference_corners(view);
        ASSERT_EQ(size_t(kCorners), ref.size());
        for (int i = 0; i < kCorners; ++i) {
            EXPECT_EQ(std::lround(ref[i].x), list.p[2 * i]) << i;
            EXPECT_EQ(std::lround(ref[i].y), list.p[2 * i + 1]) << i;
            std::vector<cv::Point2f> drawn{{float(40 + 40 * (1 + i % kColumns)),
                                            float(40 + 40 * (1 + i / kColumns))}},
                ideal;
            cv::perspectiveTransform(drawn, ideal, tilt);
            EXPECT_NEAR(ideal[0].x, ref[i].x, 1.0) << i;
            EXPECT_NEAR(ideal[0].y, ref[i].y, 1.0) << i;
        }

        // Camera model: aspect ratio fixed at width / height, single precision.
        double camera[9], distortion[4];
        for (int i = 0; i < 9; ++i)
            camera[i] = get_double(record.camera[i]);
        for (int i = 0; i < 4; ++i)
            distortion[i] = get_double(record.distortion[i]);
        EXPECT_EQ(1.0, camera[8]);
        EXPECT_EQ(0.0, camera[1]);
        EXPECT_EQ(0.0, camera[3]);
        EXPECT_NEAR(640.0 / 480.0, camera[0] / camera[4], 1e-5);
        for (double v : camera)
            EXPECT_EQ(v, double(float(v)));
        for (double v : distortion)
            EXPECT_EQ(v, double(float(v)));

        // Perspective: the outer corners go to their bounding box, corner 0
        // to the larger y.
        const int outer[4] = {0, kColumns - 1, (kRows - 1) * kColumns, kCorners - 1};
        const cv::Vec4f b = outer_bounds(ref);
        const cv::Point2d target[4] = {{b[0], b[3]}, {b[1], b[3]}, {b[0], b[2]}, {b[1], b[2]}};
        for (int k = 0; k < 4; ++k) {
            const cv::Point2d p = apply(record, ref[outer[k]]);
            EXPECT_NEAR(target[k].x, p.x, 1e-3) << k;
            EXPECT_NEAR(target[k].y, p.y, 1e-3) << k;
        }
    }
}

// Runs the view through a calibrator built from `record` and finds the
// board again in the output; corner (i, j) must sit on the regular grid
// spanned by the outer corners' bounding box.
void expect_squared_board(CalibrationRecord record, bool top_down) {
    const cv::Mat view = tilted_view(draw_board(kColumns, kRows, 40, 40), kView);
    const cv::Vec4f b = outer_bounds(reference_corners(view));
    const double min_x = b[0], max_x = b[1], min_y = b[2], max_y = b[3];
    record.options = top_down ? CALIB_OPTION_TOP_DOWN : 0;
    std::unique_ptr<Calibrator, void (*)(Calibrator *)> cal(vexo_calib_create_calibrator(&record),
                                                             vexo_calib_release_calibrator);
    ASSERT_TRUE(cal);
    Frame frame = frame_from_grey(view, IMAGE_FORMAT_RGB24);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    const cv::Mat out = output_image(frame, 640, 480);
    std::vector<cv::Point2f> again;
    ASSERT_TRUE(cv::findChessboardCorners(out, cv::Size(kColumns, kRows), again, 3));
    cv::cornerSubPix(out, again, cv::Size(11, 11), cv::Size(-1, -1),
                     cv::TermCriteria(3, 30, 0.01));

    // The warp turns the rows over and the bottom-up output turns them
    // back; a top-down output leaves them turned.
    const double step_x = (max_x - min_x) / (kColumns - 1);
    const double step_y = (max_y - min_y) / (kRows - 1);
    std::vector<cv::Point2d> grid;
    for (int j = 0; j < kRows; ++j)
        for (int i = 0; i < kColumns; ++i) {
            const double y = top_down ? max_y - j * step_y : 479.0 - max_y + j * step_y;
            grid.emplace_back(min_x + i * step_x, y);
        }
    // The search may number the board from any corner, so each grid point
    // must have its own found corner nearby.
    std::vector<bool> used(kCorners, false);
    for (int g = 0; g < kCorners; ++g) {
        int nearest = -1;
        double best = 1e9;
        for (int k = 0; k < kCorners; ++k) {
            const double d = cv::norm(cv::Point2d(again[k]) - grid[g]);
            if (d < best) {
                best = d;
                nearest = k;
            }
        }
        EXPECT_LT(best, 1.5) << "grid point " << g;
        EXPECT_FALSE(used[size_t(nearest)]) << "grid point " << g;
        used[size_t(nearest)] = true;
    }
}

TEST(CalibChessboard, CalibratorSquaresTheBoardUp) {
    const cv::Mat view = tilted_view(draw_board(kColumns, kRows, 40, 40), kView);
    Frame frame = frame_from_grey(view, IMAGE_FORMAT_GREY8);
    CalibrationRecord record = marked_record();
    int32_t found = 0;
    CornerList list;
    list.p = vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, &found);
    ASSERT_NE(nullptr, list.p);
    expect_squared_board(record, false);
    expect_squared_board(record, true);
}

TEST(CalibChessboard, BoardNotFound) {
    // A blank page, and a smaller board than the one asked for.
    const cv::Mat blank(kView.height, kView.width, CV_8UC1, cv::Scalar(255));
    const cv::Mat small = tilted_view(draw_board(5, 4, 60, 40), kView);
    for (const cv::Mat &img : {blank, small}) {
        Frame frame = frame_from_grey(img, IMAGE_FORMAT_RGB24);
        CalibrationRecord record = marked_record();
        int32_t found = -1;
        EXPECT_EQ(nullptr,
                  vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, &found));
        std::vector<cv::Point2f> direct;
        cv::findChessboardCorners(img, cv::Size(kColumns, kRows), direct, 3);
        EXPECT_EQ(int32_t(direct.size()), found);
        EXPECT_EQ(640, record.width);
        EXPECT_EQ(480, record.height);
        EXPECT_TRUE(untouched(record.camera[0], 104));
        EXPECT_TRUE(untouched(record.reserved0[0], sizeof record - 112));
    }
}

TEST(CalibChessboard, BadArgumentsGiveNullAndNoCount) {
    const cv::Mat view = tilted_view(draw_board(kColumns, kRows, 40, 40), kView);
    Frame frame = frame_from_grey(view, IMAGE_FORMAT_GREY8);
    const int32_t sizes[][2] = {{2, 6},    {9, 2},         {1, 1},       {0, 0},
                                {-9, 6},   {9, -6},        {100000, 6},  {9, 100000},
                                {INT32_MAX, INT32_MAX},    {INT32_MIN, 3}};
    for (const auto &s : sizes) {
        CalibrationRecord record = marked_record();
        int32_t found = -1;
        EXPECT_EQ(nullptr, vexo_calib_gen_correction(frame.block(), s[0], s[1], &record, &found));
        EXPECT_EQ(0, found) << s[0] << "x" << s[1];
        EXPECT_EQ(640, record.width);
        EXPECT_EQ(480, record.height);
        EXPECT_TRUE(untouched(record.camera[0], 104));
    }

    // Unusable blocks: the size is still copied from their header.
    CalibrationRecord record = marked_record();
    int32_t found = -1;
    frame.block()->format = 4;
    EXPECT_EQ(nullptr, vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, &found));
    EXPECT_EQ(0, found);
    EXPECT_EQ(640, record.width);
    frame.block()->format = IMAGE_FORMAT_GREY8;
    frame.block()->kind = 0;
    found = -1;
    EXPECT_EQ(nullptr, vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, &found));
    EXPECT_EQ(0, found);
    frame.block()->kind = VEXO_IMAGE_KIND;
    frame.set_size(-640, 480);
    found = -1;
    EXPECT_EQ(nullptr, vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, &found));
    EXPECT_EQ(0, found);
    EXPECT_EQ(-640, record.width);
    frame.set_size(640, 480);

    // Missing pointers.
    record = marked_record();
    found = -1;
    EXPECT_EQ(nullptr, vexo_calib_gen_correction(nullptr, kColumns, kRows, &record, &found));
    EXPECT_EQ(0, found);
    EXPECT_TRUE(untouched(reinterpret_cast<uint8_t *>(&record), sizeof record));
    found = -1;
    EXPECT_EQ(nullptr, vexo_calib_gen_correction(frame.block(), kColumns, kRows, nullptr, &found));
    EXPECT_EQ(0, found);
    // Without a count pointer the corners still come back.
    CornerList list;
    list.p = vexo_calib_gen_correction(frame.block(), kColumns, kRows, &record, nullptr);
    EXPECT_NE(nullptr, list.p);
    vexo_calib_release_correction(nullptr);
}

TEST(CalibChessboard, CornersRoundHalfAwayFromZero) {
    struct Case {
        float v;
        int32_t want;
    };
    const Case cases[] = {{12.5f, 13},   {-12.5f, -13},  {12.49f, 12},      {-12.49f, -12},
                          {0.0f, 0},     {-0.0f, 0},     {0.5f, 1},         {-0.5f, -1},
                          {0.49999997f, 0}, {639.5f, 640}, {-1e10f, INT32_MIN}, {1e10f, INT32_MAX},
                          {std::numeric_limits<float>::quiet_NaN(), INT32_MIN}};
    for (const Case &c : cases)
        EXPECT_EQ(c.want, vexo::round_corner_coordinate(c.v)) << c.v;
}

} // namespace
