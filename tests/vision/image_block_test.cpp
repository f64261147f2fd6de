// The grey conversion shared by calibration and recognition, and unusable
// image blocks refused by every entry point that takes one.
#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vision/calibrator.hpp"
#include "vision/image_block.hpp"

namespace {

using vt::Frame;

static_assert(offsetof(ImageBlock, kind) == 8 && offsetof(ImageBlock, width) == 16 &&
                  offsetof(ImageBlock, bits) == 24 && offsetof(ImageBlock, data_size) == 28,
              "image block header");

TEST(ImageBlock, GreyIsTheSignedChannelSumOverThreeTruncated) {
    // (-56 * 3) / 3 = -56 is 200; (100 + 100 - 126) / 3 = 24; -128 / 3 = -42.
    const uint8_t examples[][4] = {{200, 200, 200, 200}, {100, 100, 130, 24}, {128, 0, 0, 214},
                                   {1, 1, 0, 0}, {255, 255, 255, 255}, {128, 128, 128, 128}};
    // They lead a frame big enough to be split across workers, all checked.
    Frame frame(cv::Mat(203, 301, CV_8UC1), IMAGE_FORMAT_RGB24);
    std::memcpy(frame.pixels(), vt::noise(3 * 301, 203).data, 3 * 301 * 203);
    for (size_t k = 0; k < std::size(examples); ++k)
        std::memcpy(frame.pixels() + 3 * k, examples[k], 3);
    const cv::Mat grey = vexo::image_block_to_grey(frame.block());
    ASSERT_EQ(cv::Size(301, 203), grey.size());
    for (size_t k = 0; k < std::size(examples); ++k)
        EXPECT_EQ(examples[k][3], grey.data[k]) << k;
    const auto *p = reinterpret_cast<const int8_t *>(frame.pixels());
    for (size_t i = 0; i < grey.total(); ++i, p += 3)
        ASSERT_EQ(uint8_t((p[0] + p[1] + p[2]) / 3), grey.data[i]) << i;
}

TEST(ImageBlock, UnusableBlocksAreRefusedEverywhereAndLeftAlone) {
    constexpr int32_t kMax = vexo::kMaxImageSide;
    Frame good(vt::noise(64, 48));
    const PatternKeypoint kps[3] = {{20000, 20000, 8000, 0, 0, 0, 0},
                                    {40000, 20000, 8000, 0, 0, 0, 0},
                                    {30000, 30000, 8000, 0, 0, 0, 0}};
    const vt::RecogniserPtr rec(
        vexo_prcg_create_recogniser(kps, 3, RECOGNISER_SURF, good.block(), 0, 0));
    CalibrationRecord record{};
    record.width = 640;
    record.height = 480;
    const vt::CalibratorPtr cal(vexo_calib_create_calibrator(&record));
    ASSERT_TRUE(rec && cal);

    // Kind, format, width, height; kind 0: no block at all, nothing written.
    const int32_t cases[][4] = {{1, 17, 16, 16},      {2, 3, 16, 16},       {2, 0, 16, 16},
                                {2, 17, 0, 16},       {2, 1, 16, -1},       {2, 17, kMax + 1, 1},
                                {2, 17, 1, kMax + 1}, {2, 17, kMax, kMax},  {2, 1, INT32_MAX, 1},
                                {2, 17, 16, INT32_MIN}, {0, 17, 16, 16}};
    for (const auto &c : cases) {
        SCOPED_TRACE(::testing::Message() << c[0] << " " << c[1] << " " << c[2] << "x" << c[3]);
        Frame frame(vt::noise(16, 16));
        frame.block()->kind = uint8_t(c[0]);
        frame.block()->format = uint8_t(c[1]);
        frame.set_size(c[2], c[3]);
        ImageBlock *block = c[0] ? frame.block() : nullptr;
        const std::vector<uint8_t> before = frame.bytes;
        EXPECT_EQ(VEXO_ERROR_NO_MEMORY, vexo_calib_start_calibrator(cal.get(), block));
        EXPECT_TRUE(before == frame.bytes);
        int32_t found = -1, count = 5;
        record.width = -7;
        EXPECT_EQ(nullptr, vexo_calib_gen_correction(block, 9, 6, &record, &found));
        EXPECT_TRUE(found == 0 && record.width == (c[0] ? c[2] : -7)); // width copied first
        uint32_t options = 0x31;
        EXPECT_EQ(nullptr, vexo_prcg_gen_keypoints(block, &count, &options, 0, 0, 9, 9));
        EXPECT_TRUE(count == -1 && options == 0x31);
        RecognitionResult result{};
        vexo_prcg_start_recogniser(rec.get(), block, &result);
        EXPECT_EQ(int32_t(VEXO_ERROR_NO_MEMORY), result.status);
    }
    EXPECT_EQ(640, cal->width); // refused frames lower nothing
    Frame widest(vt::noise(kMax, 1)); // the largest side accepted
    EXPECT_EQ(VEXO_OK, vexo_calib_start_calibrator(cal.get(), widest.block()));

    // No handle: 9.
    EXPECT_EQ(VEXO_ERROR_NO_HANDLE, vexo_calib_start_calibrator(nullptr, good.block()));
    RecognitionResult result{};
    vexo_prcg_start_recogniser(nullptr, good.block(), &result);
    EXPECT_EQ(int32_t(VEXO_ERROR_NO_HANDLE), result.status);
}

} // namespace
