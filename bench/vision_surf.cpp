// SPDX-License-Identifier: MIT
// Our SURF (the recogniser's stored detector, plus description) against
// OpenCV's SIFT on the same 640x480 frame, run in the same process; and
// recogniser frames per second for each detector.  SURF exists to be the
// fast choice: the goal is a time ratio SURF / SIFT of at most 0.5.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "bench_ratio.hpp"
#include "vision/keypoints_detectors.hpp"
#include "vision/surf.hpp"

namespace {

// Textured 640x480 frame: random shapes over a smooth relief.
cv::Mat make_frame() {
    cv::RNG rng(1234);
    cv::Mat coarse(32, 42, CV_32F);
    rng.fill(coarse, cv::RNG::UNIFORM, 60, 190);
    cv::Mat relief;
    cv::resize(coarse, relief, cv::Size(640, 480), 0, 0, cv::INTER_CUBIC);
    cv::Mat frame;
    relief.convertTo(frame, CV_8U);
    for (int k = 0; k < 1500; ++k) {
        const cv::Point p(rng.uniform(0, 640), rng.uniform(0, 480));
        const cv::Scalar grey(rng.uniform(0, 2) ? rng.uniform(0, 70) : rng.uniform(185, 256));
        if (rng.uniform(0, 2))
            cv::circle(frame, p, rng.uniform(2, 14), grey, cv::FILLED, cv::LINE_AA);
        else
            cv::rectangle(frame, p, p + cv::Point(rng.uniform(3, 20), rng.uniform(3, 20)), grey,
                          cv::FILLED);
    }
    cv::GaussianBlur(frame, frame, cv::Size(3, 3), 0.6);
    return frame;
}

const cv::Mat &frame() {
    static const cv::Mat f = make_frame();
    return f;
}

// What the recogniser does with each frame.
void detect_and_describe(benchmark::State &state, vexo::DetectorKind kind) {
    auto detector = vexo::make_detector(kind);
    size_t found = 0;
    for (auto _ : state) {
        std::vector<cv::KeyPoint> kps;
        cv::Mat desc;
        vexo::detect_and_describe(kind, *detector, frame(), kps, desc);
        found = kps.size();
        benchmark::DoNotOptimize(desc.data);
    }
    state.counters["keypoints"] = double(found);
}

void BM_SiftBaseline(benchmark::State &state) {
    detect_and_describe(state, vexo::DetectorKind::Sift);
}
void BM_OurSurf(benchmark::State &state) {
    detect_and_describe(state, vexo::DetectorKind::Surf);
}
void BM_OurSurfOneCall(benchmark::State &state) {
    auto surf = vexo::Surf::create(400, 4, 2, true, false);
    for (auto _ : state) {
        std::vector<cv::KeyPoint> kps;
        cv::Mat desc;
        surf->detectAndCompute(frame(), cv::noArray(), kps, desc);
        benchmark::DoNotOptimize(desc.data);
    }
}

BENCHMARK(BM_SiftBaseline)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OurSurf)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OurSurfOneCall)->Unit(benchmark::kMillisecond);

// A fast detector that finds little is no win: the keypoint counts on the
// same frame go beside the time ratio.
void print_counts() {
    std::vector<cv::KeyPoint> surf, sift;
    vexo::make_detector(vexo::DetectorKind::Surf)->detect(frame(), surf);
    vexo::make_detector(vexo::DetectorKind::Sift)->detect(frame(), sift);
    std::printf("keypoints on the 640x480 frame: SURF %zu, SIFT %zu, ratio SURF / SIFT %.2f "
                "(goal: comparable)\n",
                surf.size(), sift.size(), sift.empty() ? 0.0 : double(surf.size()) / sift.size());
}

} // namespace

int main(int argc, char **argv) {
    const int status = vexo_bench::run_with_ratios(
        argc, argv, {{"BM_OurSurf", "BM_SiftBaseline"}, {"BM_OurSurfOneCall", "BM_SiftBaseline"}},
        "goal <= 0.5");
    print_counts();
    return status;
}
