#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "calib_fixtures.hpp"
#include "vision/image_block.hpp"

namespace {

using calib_test::Frame;

uint8_t grey_of(uint8_t r, uint8_t g, uint8_t b) {
    Frame frame(1, 1, IMAGE_FORMAT_RGB24);
    frame.pixels()[0] = r;
    frame.pixels()[1] = g;
    frame.pixels()[2] = b;
    const cv::Mat grey = vexo::image_block_to_grey(frame.block());
    EXPECT_EQ(1, grey.rows);
    EXPECT_EQ(1, grey.cols);
    return grey.empty() ? 0 : grey.at<uint8_t>(0, 0);
}

TEST(ImageBlockGrey, ColourUsesSignedChannelSum) {
    // (-56 * 3) / 3 = -56, stored as 200.
    EXPECT_EQ(200, grey_of(200, 200, 200));
    // 100 + 100 + (130 - 256) = 74, / 3 = 24.
    EXPECT_EQ(24, grey_of(100, 100, 130));
    // The quotient truncates toward zero: -128 / 3 = -42 -> byte 214.
    EXPECT_EQ(214, grey_of(128, 0, 0));
    EXPECT_EQ(0, grey_of(1, 1, 0));
    EXPECT_EQ(255, grey_of(255, 255, 255));
    EXPECT_EQ(127, grey_of(127, 127, 127));
    // -384 / 3 = -128 -> 128, the most negative sum.
    EXPECT_EQ(128, grey_of(128, 128, 128));
}

TEST(ImageBlockGrey, RowsAndColumnsLandInPlace) {
    // A 5 x 3 colour frame where every pixel is distinct.
    Frame colour(5, 3, IMAGE_FORMAT_RGB24);
    Frame mono(5, 3, IMAGE_FORMAT_GREY8);
    for (int i = 0; i < 15; ++i) {
        const uint8_t v = uint8_t(i * 17);
        std::memset(colour.pixels() + 3 * i, v, 3);
        mono.pixels()[i] = v;
    }
    const cv::Mat a = vexo::image_block_to_grey(colour.block());
    const cv::Mat b = vexo::image_block_to_grey(mono.block());
    ASSERT_EQ(cv::Size(5, 3), a.size());
    ASSERT_EQ(cv::Size(5, 3), b.size());
    for (int i = 0; i < 15; ++i) {
        EXPECT_EQ(uint8_t(i * 17), a.at<uint8_t>(i / 5, i % 5)) << i;
        EXPECT_EQ(uint8_t(i * 17), b.at<uint8_t>(i / 5, i % 5)) << i;
    }
}

TEST(ImageBlockGrey, LargeColourFrameMatchesPixelFormula) {
    // Enough rows to be split across workers; every byte value occurs.
    Frame frame(301, 203, IMAGE_FORMAT_RGB24);
    cv::Mat noise(1, 301 * 203 * 3, CV_8UC1, frame.pixels());
    cv::randu(noise, 0, 256);
    cv::Mat grey(7, 7, CV_8UC1, cv::Scalar(9));
    ASSERT_TRUE(vexo::image_block_to_grey(frame.block(), grey));
    ASSERT_EQ(cv::Size(301, 203), grey.size());
    int mismatches = 0;
    for (int i = 0; i < 301 * 203; ++i) {
        const uint8_t *p = frame.pixels() + 3 * i;
        const int sum = (p[0] < 128 ? p[0] : p[0] - 256) + (p[1] < 128 ? p[1] : p[1] - 256) +
                        (p[2] < 128 ? p[2] : p[2] - 256);
        const int q = sum >= 0 ? sum / 3 : -(-sum / 3);
        mismatches += grey.at<uint8_t>(i / 301, i % 301) != uint8_t(q & 0xFF);
    }
    EXPECT_EQ(0, mismatches);

    // An unusable block leaves the caller's image as it was.
    const cv::Mat before = grey.clone();
    frame.block()->format = 0;
    EXPECT_FALSE(vexo::image_block_to_grey(frame.block(), grey));
    EXPECT_EQ(0, cv::norm(before, grey, cv::NORM_INF));
}

TEST(ImageBlockGrey, UnusableBlocksGiveNoImage) {
    EXPECT_TRUE(vexo::image_block_to_grey(nullptr).empty());
    vexo::ImageGeometry g{};
    EXPECT_FALSE(vexo::image_geometry(nullptr, &g));

    Frame frame(4, 4, IMAGE_FORMAT_GREY8);
    ASSERT_TRUE(vexo::image_geometry(frame.block(), &g));
    EXPECT_EQ(4, g.width);
    EXPECT_EQ(1, g.bytes_per_pixel);

    frame.block()->kind = 3;
    EXPECT_TRUE(vexo::image_block_to_grey(frame.block()).empty());
    frame.block()->kind = VEXO_IMAGE_KIND;
    for (uint8_t format : {0, 2, 16, 18, 255}) {
        frame.block()->format = format;
        EXPECT_TRUE(vexo::image_block_to_grey(frame.block()).empty()) << int(format);
    }
    frame.block()->format = IMAGE_FORMAT_GREY8;
    const int32_t bad_sizes[][2] = {{0, 4}, {4, 0}, {-1, 4}, {4, INT32_MIN},
                                    {vexo::kMaxImageSide + 1, 1}, {1, vexo::kMaxImageSide + 1},
                                    {vexo::kMaxImageSide, vexo::kMaxImageSide}};
    for (const auto &size : bad_sizes) {
        frame.set_size(size[0], size[1]);
        EXPECT_FALSE(vexo::image_geometry(frame.block(), &g)) << size[0] << "x" << size[1];
    }
    // The largest accepted side, as a single row.
    frame.set_size(vexo::kMaxImageSide, 1);
    EXPECT_TRUE(vexo::image_geometry(frame.block(), &g));
}

TEST(ImageBlockLayout, HeaderOffsets) {
    static_assert(sizeof(ImageBlock) == 32, "32-byte header");
    static_assert(offsetof(ImageBlock, kind) == 8, "kind");
    static_assert(offsetof(ImageBlock, format) == 9, "format");
    static_assert(offsetof(ImageBlock, width) == 16, "width");
    static_assert(offsetof(ImageBlock, height) == 20, "height");
    static_assert(offsetof(ImageBlock, bits) == 24, "bits");
    static_assert(offsetof(ImageBlock, data_size) == 28, "data size");
    // Width and height are big-endian whatever the host.
    Frame frame(0x0102, 0x0304, IMAGE_FORMAT_GREY8);
    const uint8_t expected[8] = {0, 0, 1, 2, 0, 0, 3, 4};
    EXPECT_EQ(0, std::memcmp(frame.bytes.data() + 16, expected, 8));
}

} // namespace
