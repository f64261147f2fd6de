#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "calib_fixtures.hpp"
#include "vision/calibrator.hpp"
#include "vision/image_block.hpp"

namespace {

using namespace calib_test;

struct CalibratorDeleter {
    void operator()(Calibrator *c) const { vexo_calib_release_calibrator(c); }
};
using CalibratorPtr = std::unique_ptr<Calibrator, CalibratorDeleter>;

CalibratorPtr make(const CalibrationRecord &record) {
    return CalibratorPtr(vexo_calib_create_calibrator(&record));
}

// A grey test picture whose rows and columns all differ.
cv::Mat ramp(int width, int height) {
    cv::Mat m(height, width, CV_8UC1);
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c)
            m.at<uint8_t>(r, c) = uint8_t((r * 7 + c * 3) & 0xFF);
    return m;
}

TEST(CalibRecordLayout, Offsets) {
    static_assert(sizeof(CalibrationRecord) == 216, "record size");
    static_assert(offsetof(CalibrationRecord, camera) == 0, "camera");
    static_assert(offsetof(CalibrationRecord, distortion) == 72, "distortion");
    static_assert(offsetof(CalibrationRecord, width) == 104, "width");
    static_assert(offsetof(CalibrationRecord, height) == 108, "height");
    static_assert(offsetof(CalibrationRecord, reserved0) == 112, "reserved doubles");
    static_assert(offsetof(CalibrationRecord, perspective) == 136, "perspective");
    static_assert(offsetof(CalibrationRecord, options) == 213, "options");
    SUCCEED();
}

TEST(CalibCreate, SizeIsClampedAndPerspectiveRead) {
    struct Case {
        int32_t width, height, want_width, want_height;
    };
    const Case cases[] = {{50, 5000, 80, 5000},   {10000, 480, 8192, 480},
                          {640, 10, 640, 60},     {640, 9000, 640, 8192},
                          {80, 60, 80, 60},       {8192, 8192, 8192, 8192},
                          {0, 0, 80, 60},         {-5, INT32_MIN, 80, 60},
                          {INT32_MAX, 61, 8192, 61}};
    for (const Case &c : cases) {
        const CalibrationRecord record = make_record(c.width, c.height, kIdentity);
        CalibratorPtr cal = make(record);
        ASSERT_TRUE(cal);
        EXPECT_EQ(c.want_width, cal->width) << c.width;
        EXPECT_EQ(c.want_height, cal->height) << c.height;
    }

    const double m[9] = {1.5, -2, 3, 4, 5.25, 6, 7e-4, 8e-5, 1};
    CalibratorPtr cal = make(make_record(640, 480, m, 0xA5));
    ASSERT_TRUE(cal);
    ASSERT_EQ(CV_64F, cal->perspective.type());
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(m[i], cal->perspective.at<double>(i / 3, i % 3)) << i;
    EXPECT_EQ(0xA5, cal->options);

    // All nine exactly zero (negative zero included) means no perspective;
    // one tiny value is a perspective.
    CalibrationRecord none = make_record(640, 480, nullptr);
    set_double(none.perspective[4], -0.0);
    cal = make(none);
    ASSERT_TRUE(cal);
    EXPECT_TRUE(cal->perspective.empty());
    EXPECT_EQ(640, cal->width);
    set_double(none.perspective[8], 1e-300);
    cal = make(none);
    ASSERT_TRUE(cal);
    EXPECT_FALSE(cal->perspective.empty());

    EXPECT_EQ(nullptr, vexo_calib_create_calibrator(nullptr));
    vexo_calib_release_calibrator(nullptr);
}

TEST(CalibStart, ColourFrameIsRewrittenGreyAndFlipped) {
    const cv::Mat grey = ramp(640, 480);
    for (uint8_t format : {IMAGE_FORMAT_RGB24, IMAGE_FORMAT_GREY8}) {
        CalibratorPtr cal = make(make_record(640, 480, kIdentity));
        Frame frame = frame_from_grey(grey, format);
        frame.block()->header[3] = 0x77;
        ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
        EXPECT_EQ(IMAGE_FORMAT_GREY8, frame.block()->format);
        EXPECT_EQ(8u, frame.block()->bits);
        EXPECT_EQ(307200u, frame.block()->data_size);
        EXPECT_EQ(VEXO_IMAGE_KIND, frame.block()->kind);
        EXPECT_EQ(0x77, frame.block()->header[3]);
        // Width and height stay as they were.
        vexo::ImageGeometry g{};
        ASSERT_TRUE(vexo::image_geometry(frame.block(), &g));
        EXPECT_EQ(640, g.width);
        EXPECT_EQ(480, g.height);
        // The identity warp is exact, so output row r is grey row 479 - r.
        const cv::Mat out = output_image(frame, 640, 480);
        cv::Mat flipped;
        cv::flip(grey, flipped, 0);
        EXPECT_EQ(0, cv::norm(out, flipped, cv::NORM_INF)) << int(format);
        EXPECT_EQ(0, std::memcmp(out.ptr(0), grey.ptr(479), 640));
    }
}

TEST(CalibStart, TopDownKeepsRowOrder) {
    const cv::Mat grey = ramp(200, 100);
    CalibratorPtr cal = make(make_record(200, 100, kIdentity, CALIB_OPTION_TOP_DOWN));
    Frame frame = frame_from_grey(grey, IMAGE_FORMAT_RGB24);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    EXPECT_EQ(0, cv::norm(output_image(frame, 200, 100), grey, cv::NORM_INF));

    // Other option bits do not turn the flip off.
    cal = make(make_record(200, 100, kIdentity, 0xFE));
    frame = frame_from_grey(grey, IMAGE_FORMAT_RGB24);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    cv::Mat flipped;
    cv::flip(grey, flipped, 0);
    EXPECT_EQ(0, cv::norm(output_image(frame, 200, 100), flipped, cv::NORM_INF));
}

TEST(CalibStart, PerspectiveIsReadRowByRow) {
    // A whole-pixel shift by (+5, +3): translation sits in elements 2 and 5.
    const double shift[9] = {1, 0, 5, 0, 1, 3, 0, 0, 1};
    const cv::Mat grey = ramp(120, 90);
    CalibratorPtr cal = make(make_record(120, 90, shift, CALIB_OPTION_TOP_DOWN));
    Frame frame = frame_from_grey(grey, IMAGE_FORMAT_GREY8);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    const cv::Mat out = output_image(frame, 120, 90);
    int mismatches = 0;
    for (int r = 0; r < 90; ++r)
        for (int c = 0; c < 120; ++c) {
            const int sr = r - 3, sc = c - 5;
            const uint8_t want = (sr >= 0 && sc >= 0) ? grey.at<uint8_t>(sr, sc) : 0;
            mismatches += out.at<uint8_t>(r, c) != want;
        }
    EXPECT_EQ(0, mismatches);
}

TEST(CalibStart, NoPerspectiveCopiesTheGreyImage) {
    const cv::Mat grey = ramp(100, 70);
    CalibratorPtr cal = make(make_record(100, 70, nullptr));
    ASSERT_TRUE(cal->perspective.empty());
    Frame frame = frame_from_grey(grey, IMAGE_FORMAT_RGB24);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    cv::Mat flipped;
    cv::flip(grey, flipped, 0);
    EXPECT_EQ(0, cv::norm(output_image(frame, 100, 70), flipped, cv::NORM_INF));
    EXPECT_EQ(7000u, frame.block()->data_size);
}

TEST(CalibStart, SmallerFrameLowersTheCalibratorForGood) {
    CalibratorPtr cal = make(make_record(640, 480, kIdentity));
    const cv::Mat small = ramp(320, 240);
    Frame frame = frame_from_grey(small, IMAGE_FORMAT_GREY8);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    EXPECT_EQ(320, cal->width);
    EXPECT_EQ(240, cal->height);
    EXPECT_EQ(76800u, frame.block()->data_size);

    // A full-size frame afterwards still gets 320 x 240: the first 76800
    // bytes are written, the rest of the pixel area is left alone.
    const cv::Mat big = ramp(640, 480);
    Frame later = frame_from_grey(big, IMAGE_FORMAT_GREY8);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), later.block()));
    EXPECT_EQ(76800u, later.block()->data_size);
    const cv::Mat out = output_image(later, 320, 240);
    for (int r = 0; r < 240; ++r)
        ASSERT_EQ(0, std::memcmp(out.ptr(r), big.ptr(239 - r), 320)) << r;
    for (size_t i = 76800; i < 640 * 480; ++i)
        ASSERT_EQ(big.data[i], later.pixels()[i]) << i;

    // Only the side that is too large is lowered.
    cal = make(make_record(640, 480, kIdentity));
    Frame narrow(100, 600, IMAGE_FORMAT_GREY8);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), narrow.block()));
    EXPECT_EQ(100, cal->width);
    EXPECT_EQ(480, cal->height);
}

TEST(CalibStart, NeverWritesPastTheFrame) {
    // A grey frame smaller than the minimum calibrator size, followed by
    // guard bytes: the output must fit the frame's own pixel area.
    CalibratorPtr cal = make(make_record(10, 10, kIdentity));
    ASSERT_EQ(80, cal->width);
    Frame frame(7, 5, IMAGE_FORMAT_GREY8, 64);
    std::memset(frame.pixels() + 35, 0x5A, 64);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), frame.block()));
    EXPECT_EQ(35u, frame.block()->data_size);
    for (int i = 0; i < 64; ++i)
        ASSERT_EQ(0x5A, frame.pixels()[35 + i]);

    // A calibrator smaller than the frame takes the top-left part of the
    // warped image, flipped within its own height.
    const cv::Mat grey = ramp(300, 200);
    cal = make(make_record(80, 60, kIdentity));
    Frame big = frame_from_grey(grey, IMAGE_FORMAT_RGB24);
    ASSERT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), big.block()));
    EXPECT_EQ(4800u, big.block()->data_size);
    const cv::Mat out = output_image(big, 80, 60);
    for (int r = 0; r < 60; ++r)
        ASSERT_EQ(0, std::memcmp(out.ptr(r), grey.ptr(59 - r), 80)) << r;
}

TEST(CalibStart, BadArgumentsLeaveTheFrameAlone) {
    CalibratorPtr cal = make(make_record(640, 480, kIdentity));
    Frame frame(16, 16, IMAGE_FORMAT_RGB24);
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, vexo_calib_start_calibrator(nullptr, frame.block()));
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, vexo_calib_start_calibrator(nullptr, nullptr));
    EXPECT_EQ(VEXO_ERROR_NO_MEMORY, vexo_calib_start_calibrator(cal.get(), nullptr));

    auto rejected = [&](Frame &f) {
        const std::vector<uint8_t> before = f.bytes;
        EXPECT_EQ(VEXO_ERROR_NO_MEMORY, vexo_calib_start_calibrator(cal.get(), f.block()));
        EXPECT_TRUE(before == f.bytes);
    };
    frame.block()->kind = 1;
    rejected(frame);
    frame.block()->kind = VEXO_IMAGE_KIND;
    frame.block()->format = 3;
    rejected(frame);
    frame.block()->format = IMAGE_FORMAT_RGB24;
    for (const auto &size : {std::make_pair(0, 16), std::make_pair(16, -1),
                             std::make_pair(100000, 100000), std::make_pair(INT32_MAX, 1)}) {
        frame.set_size(size.first, size.second);
        rejected(frame);
    }
    // Nothing was lowered by the rejected frames.
    EXPECT_EQ(640, cal->width);
    EXPECT_EQ(480, cal->height);
}

TEST(CalibStart, NonFinitePerspectiveDoesNotCrash) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const double singular[9] = {0, 0, 0, 0, 0, 0, 0, 0, 1};
    const double odd[9] = {nan, 0, 0, 0, inf, 0, 0, 0, 1};
    for (const double *m : {singular, odd}) {
        CalibratorPtr cal = make(make_record(100, 80, m));
        Frame frame = frame_from_grey(ramp(100, 80), IMAGE_FORMAT_GREY8);
        const int32_t status = vexo_calib_start_calibrator(cal.get(), frame.block());
        EXPECT_TRUE(status == VEXO_OK || status == VEXO_ERROR_NO_MEMORY) << status;
    }
}

} // namespace
