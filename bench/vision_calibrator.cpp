// SPDX-License-Identifier: MIT
// Rectifying one 1280 x 1024 colour frame, against the bare OpenCV warp of
// the same grey image that the calibrator is built around.  The ratio of
// the two is what the calibrator's own work (grey conversion, flip, copy
// back into the block) costs on top of the warp.
#include <cstdint>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include "bench_ratio.hpp"
#include "vexo.h"
#include "vision/image_block.hpp"

namespace {

constexpr int kWidth = 1280;
constexpr int kHeight = 1024;
constexpr double kPerspective[9] = {1.02, 0.05, -20.0, -0.03, 0.98, 15.0, 2e-5, 1e-5, 1.0};

std::vector<uint8_t> colour_frame() {
    std::vector<uint8_t> bytes(VEXO_IMAGE_HEADER_SIZE + size_t(kWidth) * kHeight * 3);
    auto *block = reinterpret_cast<ImageBlock *>(bytes.data());
    block->kind = VEXO_IMAGE_KIND;
    block->format = IMAGE_FORMAT_RGB24;
    const uint8_t size[8] = {0, 0, kWidth >> 8, kWidth & 0xFF, 0, 0, kHeight >> 8, kHeight & 0xFF};
    std::memcpy(bytes.data() + 16, size, 8);
    uint8_t *p = bytes.data() + VEXO_IMAGE_HEADER_SIZE;
    for (int r = 0; r < kHeight; ++r)
        for (int c = 0; c < kWidth; ++c, p += 3) {
            p[0] = uint8_t(((r / 32 + c / 32) & 1) ? 230 : 20);
            p[1] = uint8_t(p[0] + (c & 7));
            p[2] = uint8_t(p[0] - (r & 7));
        }
    return bytes;
}

CalibrationRecord record() {
    CalibrationRecord rec;
    std::memset(&rec, 0, sizeof rec);
    rec.width = kWidth;
    rec.height = kHeight;
    for (int i = 0; i < 9; ++i) vexo_util_dbl_to_block(kPerspective[i], rec.perspective[i]);
    return rec;
}

// Argument 1 runs everything on the calling thread (the steady figure on a
// busy machine); 0 lets OpenCV use its worker threads, as hosts get.
void use_threads(const benchmark::State &state) {
    cv::setNumThreads(state.range(0) ? 1 : -1);
}

void BM_WarpOnly(benchmark::State &state) {
    use_threads(state);
    std::vector<uint8_t> frame = colour_frame();
    const cv::Mat grey =
        vexo::image_block_to_grey(reinterpret_cast<const ImageBlock *>(frame.data()));
    const cv::Mat m(3, 3, CV_64F, const_cast<double *>(kPerspective));
    cv::Mat warped;
    for (auto _ : state) {
        cv::warpPerspective(grey, warped, m, cv::Size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                            cv::Scalar(0));
        benchmark::DoNotOptimize(warped.data);
    }
}
BENCHMARK(BM_WarpOnly)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_StartCalibrator(benchmark::State &state) {
    use_threads(state);
    const std::vector<uint8_t> original = colour_frame();
    std::vector<uint8_t> frame = original;
    const CalibrationRecord rec = record();
    Calibrator *cal = vexo_calib_create_calibrator(&rec);
    for (auto _ : state) {
        state.PauseTiming();
        std::memcpy(frame.data(), original.data(), original.size());
        state.ResumeTiming();
        const int32_t status =
            vexo_calib_start_calibrator(cal, reinterpret_cast<ImageBlock *>(frame.data()));
        benchmark::DoNotOptimize(status);
    }
    vexo_calib_release_calibrator(cal);
}
BENCHMARK(BM_StartCalibrator)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv) {
    // On one thread all the work is on the timed thread, so there the CPU
    // ratio is the one to read; with OpenCV's workers, the real one.
    return vexo_bench::run_with_ratios(
        argc, argv,
        {{"BM_StartCalibrator/1/real_time", "BM_WarpOnly/1/real_time"},
         {"BM_StartCalibrator/0/real_time", "BM_WarpOnly/0/real_time"}},
        "/1: one thread, /0: worker threads");
}
