// SPDX-License-Identifier: MIT
// Finding 225 dots in a 5-megapixel grey frame, against one findContours
// of the same frame already thresholded: the ratio is what the finder adds
// to the contour search it is built around (copy, threshold, the shape
// filters and a centroid per dot).
#include <cstdint>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

constexpr int kWidth = 2592; // 5,038,848 pixels
constexpr int kHeight = 1944;
constexpr int kLevel = 128;

cv::Mat dot_frame() {
    cv::Mat grey(kHeight, kWidth, CV_8UC1, cv::Scalar(40));
    for (int i = 0; i < 15; ++i)
        for (int j = 0; j < 15; ++j)
            cv::circle(grey, cv::Point(200 + j * 155, 110 + i * 123), 12, cv::Scalar(220),
                       cv::FILLED, cv::LINE_AA);
    cv::GaussianBlur(grey, grey, cv::Size(0, 0), 1.0);
    cv::Mat noise(grey.size(), CV_8SC1);
    cv::RNG(9).fill(noise, cv::RNG::NORMAL, 0, 2);
    cv::add(grey, noise, grey, cv::noArray(), CV_8U);
    return grey;
}

std::vector<uint8_t> grey_block(const cv::Mat &grey) {
    std::vector<uint8_t> bytes(VEXO_IMAGE_HEADER_SIZE + grey.total());
    auto *block = reinterpret_cast<ImageBlock *>(bytes.data());
    block->kind = VEXO_IMAGE_KIND;
    block->format = IMAGE_FORMAT_GREY8;
    const uint8_t size[8] = {0, 0, kWidth >> 8, kWidth & 0xFF, 0, 0, kHeight >> 8, kHeight & 0xFF};
    std::memcpy(bytes.data() + 16, size, 8);
    std::memcpy(bytes.data() + VEXO_IMAGE_HEADER_SIZE, grey.data, grey.total());
    return bytes;
}

void BM_FindContoursOnly(benchmark::State &state) {
    cv::setNumThreads(1);
    cv::Mat binary;
    cv::threshold(dot_frame(), binary, kLevel, 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    for (auto _ : state) {
        cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
        benchmark::DoNotOptimize(contours.data());
    }
    state.counters["contours"] = double(contours.size());
}
BENCHMARK(BM_FindContoursOnly)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FindDots(benchmark::State &state) {
    cv::setNumThreads(1);
    const std::vector<uint8_t> frame = grey_block(dot_frame());
    const auto *block = reinterpret_cast<const ImageBlock *>(frame.data());
    PrcgDotParams params{};
    params.threshold_kind = VEXO_PRCG_THRESHOLD_FIXED;
    params.threshold = kLevel;
    params.min_area = 50;
    params.min_circularity = 0.7;
    uint32_t count = 0, status = 0;
    for (auto _ : state) {
        GeomPoint *dots = vexo_prcg_find_dots(block, &params, &count, &status);
        benchmark::DoNotOptimize(dots);
        std::free(dots);
    }
    state.counters["dots"] = double(count);
}
BENCHMARK(BM_FindDots)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(
        argc, argv, {{"BM_FindDots/real_time", "BM_FindContoursOnly/real_time"}}, "goal <= 3");
}
