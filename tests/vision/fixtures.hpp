// SPDX-License-Identifier: MIT
// Image blocks, textured scenes and handle owners for the vision tests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "vexo.h"

namespace vt {

template <auto Release> struct Releaser {
    template <class T> void operator()(T *p) const { Release(p); }
};
using CalibratorPtr = std::unique_ptr<Calibrator, Releaser<vexo_calib_release_calibrator>>;
using CornersPtr = std::unique_ptr<int32_t, Releaser<vexo_calib_release_correction>>;
using RecogniserPtr = std::unique_ptr<Recogniser, Releaser<vexo_prcg_release_recogniser>>;
using KeypointsPtr = std::unique_ptr<PatternKeypoint, Releaser<vexo_prcg_release_keypoints>>;

// An ImageBlock of `grey` and `extra` spare bytes; RGB24 repeats each value
// in all three channels, which the grey conversion maps back to it.
struct Frame {
    std::vector<uint8_t> bytes;
    explicit Frame(const cv::Mat &grey, uint8_t format = IMAGE_FORMAT_GREY8, size_t extra = 0) {
        const size_t bpp = format == IMAGE_FORMAT_RGB24 ? 3 : 1;
        bytes.assign(VEXO_IMAGE_HEADER_SIZE + grey.total() * bpp + extra, 0);
        block()->kind = VEXO_IMAGE_KIND;
        block()->format = format;
        set_size(grey.cols, grey.rows);
        for (size_t i = 0; i < grey.total(); ++i)
            std::fill_n(pixels() + i * bpp, bpp, grey.data[i]);
    }
    void set_size(int32_t width, int32_t height) { // big-endian fields
        for (int k = 0; k < 8; ++k)
            bytes[16 + k] = uint8_t(uint32_t(k < 4 ? width : height) >> (24 - 8 * (k % 4)));
    }
    ImageBlock *block() { return reinterpret_cast<ImageBlock *>(bytes.data()); }
    uint8_t *pixels() { return bytes.data() + VEXO_IMAGE_HEADER_SIZE; }
    cv::Mat output(int width, int height) { return cv::Mat(height, width, CV_8UC1, pixels()); }
};

// The status a recogniser reports for a frame, into a result that starts
// non-zero; -1 when figures come with it.
inline int64_t bare_status(Recogniser *rec, const ImageBlock *frame) {
    RecognitionResult r{1, 2, 3, 0};
    vexo_prcg_start_recogniser(rec, frame, &r);
    return r.x == 0.0f && r.y == 0.0f && r.rotation == 0.0f ? r.status : -1;
}

// Random grey pixels: every row and column differs.
inline cv::Mat noise(int width, int height, uint64_t seed = 1) {
    cv::Mat m(height, width, CV_8UC1);
    cv::RNG(seed).fill(m, cv::RNG::UNIFORM, 0, 256);
    return m;
}

// Textured grey pattern from a seed: random relief at three scales keeps
// every neighbourhood distinct; dark and bright shapes give strong features.
inline cv::Mat make_pattern(int width, int height, uint64_t seed) {
    cv::RNG rng(seed);
    cv::Mat relief(height, width, CV_32F, cv::Scalar(128)), up, img;
    for (int cell : {24, 10, 4}) {
        cv::Mat coarse(height / cell + 2, width / cell + 2, CV_32F);
        rng.fill(coarse, cv::RNG::UNIFORM, -40.0 * cell / 24 - 15, 40.0 * cell / 24 + 15);
        cv::resize(coarse, up, relief.size(), 0, 0, cv::INTER_CUBIC);
        relief += up;
    }
    relief.convertTo(img, CV_8U);
    for (int k = 0; k < width * height / 150; ++k) {
        const cv::Point p(rng.uniform(0, width), rng.uniform(0, height));
        const int level = rng.uniform(0, 70);
        const cv::Scalar grey(rng.uniform(0, 2) ? level : 255 - level);
        const int shape = rng.uniform(0, 4);
        if (shape == 0)
            cv::circle(img, p, rng.uniform(2, 12), grey, cv::FILLED, cv::LINE_AA);
        else if (shape == 1)
            cv::rectangle(img, p, p + cv::Point(rng.uniform(3, 18), rng.uniform(3, 18)), grey, -1);
        else if (shape == 2)
            cv::line(img, p, cv::Point(rng.uniform(0, width), rng.uniform(0, height)), grey,
                     rng.uniform(1, 4), cv::LINE_AA);
        else
            cv::putText(img, std::string(1, char('A' + rng.uniform(0, 26))), p,
                        cv::FONT_HERSHEY_SIMPLEX, rng.uniform(0.4, 1.0), grey, 2, cv::LINE_AA);
    }
    cv::GaussianBlur(img, img, cv::Size(3, 3), 0.6);
    return img;
}

// `pattern` warped into a flat, slightly noisy 320 x 240 frame.
inline cv::Mat scene(uint64_t seed, const cv::Mat &pattern, const cv::Matx23d &to_frame) {
    cv::Mat out = noise(320, 240, seed) / 64 + 118;
    cv::warpAffine(pattern, out, to_frame, out.size(), cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
    return out;
}

// Pattern-to-frame mapping: scaled and turned by angle_deg (positive is
// counter-clockwise on screen) about the pattern centre, put on `centre`.
inline cv::Matx23d placement(cv::Size pattern, double angle_deg, double scale, cv::Point2d centre) {
    const cv::Point2f mid(pattern.width / 2.0f, pattern.height / 2.0f);
    return cv::Matx23d(cv::getRotationMatrix2D(mid, angle_deg, scale)) +
           cv::Matx23d(0, 0, centre.x - mid.x, 0, 0, centre.y - mid.y);
}

// A recogniser taught on `reference` inside `rect` with the detector the
// option word names, the origin subtracted from its positions; NULL when
// nothing could be taught.
inline RecogniserPtr taught_recogniser(Frame &reference, cv::Rect rect, uint32_t options,
                                       cv::Point origin) {
    int32_t count = 0;
    uint32_t taught = options;
    const KeypointsPtr k(vexo_prcg_gen_keypoints(reference.block(), &count, &taught, rect.x, rect.y,
                                                 rect.x + rect.width, rect.y + rect.height));
    if (!k) return nullptr;
    return RecogniserPtr(
        vexo_prcg_create_recogniser(k.get(), count, taught, reference.block(), origin.x, origin.y));
}

// The seed-42 pattern (120 x 120) at (10, 10) of a reference scene, taught
// 10 pixels inside its edges, with the origin at its corner.
struct TaughtPattern {
    cv::Mat pattern = make_pattern(120, 120, 42);
    Frame reference{scene(1, pattern, placement(pattern.size(), 0, 1, {70, 70}))};
    RecogniserPtr rec;
    explicit TaughtPattern(uint32_t options)
        : rec(taught_recogniser(reference, {20, 20, 100, 100}, options, {10, 10})) {}
    // Where the reference's (0, 0) lands by `to_frame`, less the origin.
    cv::Point2d truth(const cv::Matx23d &to_frame) const {
        const cv::Vec2d p = to_frame * cv::Vec3d(-10, -10, 1);
        return {p[0] - 10, p[1] - 10};
    }
};

} // namespace vt
