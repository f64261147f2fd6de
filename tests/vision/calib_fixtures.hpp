// Images and records that the calibration tests build for themselves.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "vexo.h"

namespace calib_test {

// An ImageBlock with its pixels, in one owned buffer.
struct Frame {
    std::vector<uint8_t> bytes;

    Frame(int32_t width, int32_t height, uint8_t format, size_t extra = 0) {
        const size_t bpp = format == IMAGE_FORMAT_RGB24 ? 3 : 1;
        bytes.assign(VEXO_IMAGE_HEADER_SIZE + size_t(width) * size_t(height) * bpp + extra, 0);
        block()->kind = VEXO_IMAGE_KIND;
        block()->format = format;
        set_size(width, height);
    }
    void set_size(int32_t width, int32_t height) {
        const uint32_t w = uint32_t(width), h = uint32_t(height);
        const uint8_t be[8] = {uint8_t(w >> 24), uint8_t(w >> 16), uint8_t(w >> 8), uint8_t(w),
                               uint8_t(h >> 24), uint8_t(h >> 16), uint8_t(h >> 8), uint8_t(h)};
        std::memcpy(bytes.data() + 16, be, 8);
    }
    ImageBlock *block() { return reinterpret_cast<ImageBlock *>(bytes.data()); }
    uint8_t *pixels() { return bytes.data() + VEXO_IMAGE_HEADER_SIZE; }
};

// A block holding `grey`: GREY8 copies it, RGB24 repeats each value in all
// three channels, which the signed channel sum turns back into the same byte.
inline Frame frame_from_grey(const cv::Mat &grey, uint8_t format) {
    Frame frame(grey.cols, grey.rows, format);
    uint8_t *out = frame.pixels();
    for (int r = 0; r < grey.rows; ++r)
        for (int c = 0; c < grey.cols; ++c) {
            const uint8_t g = grey.at<uint8_t>(r, c);
            if (format == IMAGE_FORMAT_GREY8) {
                *out++ = g;
            } else {
                *out++ = g;
                *out++ = g;
                *out++ = g;
            }
        }
    return frame;
}

// The block's output pixels as a width x height grey image.
inline cv::Mat output_image(Frame &frame, int32_t width, int32_t height) {
    return cv::Mat(height, width, CV_8UC1, frame.pixels()).clone();
}

// A chessboard of columns x rows inner corners, `square` pixels per square,
// on a white image with the given margin.  Inner corner (i, j) sits at
// (margin + (i + 1) * square, margin + (j + 1) * square).
inline cv::Mat draw_board(int columns, int rows, int square, int margin) {
    cv::Mat img((rows + 1) * square + 2 * margin, (columns + 1) * square + 2 * margin, CV_8UC1,
                cv::Scalar(255));
    for (int j = 0; j <= rows; ++j)
        for (int i = 0; i <= columns; ++i)
            if ((i + j) % 2 == 0)
                cv::rectangle(img,
                              cv::Rect(margin + i * square, margin + j * square, square, square),
                              cv::Scalar(0), cv::FILLED);
    return img;
}

// The board seen by a tilted camera: keystone (top edge narrower) plus a few
// degrees of rotation, into an image of `size`.
inline cv::Mat tilted_view(const cv::Mat &board, cv::Size size, cv::Mat *transform = nullptr) {
    const float w = float(board.cols), h = float(board.rows);
    const cv::Point2f from[4] = {{0, 0}, {w, 0}, {0, h}, {w, h}};
    const cv::Point2f to[4] = {{150, 60}, {500, 85}, {90, 420}, {560, 440}};
    const cv::Mat m = cv::getPerspectiveTransform(from, to);
    cv::Mat out;
    cv::warpPerspective(board, out, m, size, cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                        cv::Scalar(255));
    if (transform)
        *transform = m;
    return out;
}

inline void set_double(uint8_t *block, double v) { vexo_util_dbl_to_block(v, block); }
inline double get_double(const uint8_t *block) { return vexo_util_block_to_dbl(block); }

// A record of the given size whose perspective is the row-major matrix m
// (nullptr: all zero, i.e. none).
inline CalibrationRecord make_record(int32_t width, int32_t height, const double *m,
                                     uint8_t options = 0) {
    CalibrationRecord record;
    std::memset(&record, 0, sizeof record);
    record.width = width;
    record.height = height;
    for (int i = 0; i < 9; ++i)
        set_double(record.perspective[i], m ? m[i] : 0.0);
    record.options = options;
    return record;
}

constexpr double kIdentity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

} // namespace calib_test
