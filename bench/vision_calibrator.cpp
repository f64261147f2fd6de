// Rectifying one 1280 x 1024 colour frame, against the bare OpenCV warp of
// the same grey image that the calibrator is built around.  The ratio of
// the two is what the calibrator's own work (grey conversion, flip, copy
// back into the block) costs on top of the warp.
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

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
    for (int i = 0; i < 9; ++i)
        vexo_util_dbl_to_block(kPerspective[i], rec.perspective[i]);
    return rec;
}

// Argument 1 runs everything on the calling thread (the steady figure on a
// busy machine); 0 lets OpenCV use its worker threads, as hosts get.
void use_threads(const benchmark::State &state) { cv::setNumThreads(state.range(0) ? 1 : -1); }

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

// Prints the calibrator's cost as a multiple of the bare warp, from the
// median when the runs are repeated.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.run_type == Run::RT_Aggregate && !median)
                continue;
            // On one thread all the work is on the timed thread, so its CPU
            // time is the figure that a busy machine does not disturb.
            const double t = run.run_name.args == "1" ? run.GetAdjustedCPUTime()
                                                      : run.GetAdjustedRealTime();
            if (run.run_name.function_name == "BM_WarpOnly")
                baseline_[run.run_name.args] = t;
            else if (run.run_name.function_name == "BM_StartCalibrator")
                measured_[run.run_name.args] = t;
        }
    }
    void Finalize() override {
        for (const auto &[args, t] : measured_) {
            const auto base = baseline_.find(args);
            if (base != baseline_.end() && base->second > 0)
                GetOutputStream() << "ratio start_calibrator / warpPerspective ("
                                  << (args == "1" ? "one thread, CPU time" : "worker threads, real time")
                                  << "): " << t / base->second << "\n";
        }
        ConsoleReporter::Finalize();
    }

  private:
    std::map<std::string, double> baseline_;
    std::map<std::string, double> measured_;
};

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
