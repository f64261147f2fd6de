// SPDX-License-Identifier: MIT
// Recogniser start on a 640x480 frame for each detector, reported as
// frames per second (items per second), with the SIFT recogniser as the
// in-process baseline for the printed ratios.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "bench_ratio.hpp"
#include "vexo.h"

namespace {

std::vector<uint32_t> grey_block(const cv::Mat &grey) {
    std::vector<uint32_t> words((VEXO_IMAGE_HEADER_SIZE + grey.total() + 3) / 4, 0u);
    auto *raw = reinterpret_cast<uint8_t *>(words.data());
    raw[8] = VEXO_IMAGE_KIND;
    raw[9] = IMAGE_FORMAT_GREY8;
    for (int k = 0; k < 4; ++k) {
        raw[16 + k] = uint8_t(uint32_t(grey.cols) >> (24 - 8 * k));
        raw[20 + k] = uint8_t(uint32_t(grey.rows) >> (24 - 8 * k));
    }
    for (int r = 0; r < grey.rows; ++r)
        std::copy(grey.ptr<uint8_t>(r), grey.ptr<uint8_t>(r) + grey.cols,
                  raw + VEXO_IMAGE_HEADER_SIZE + size_t(r) * grey.cols);
    return words;
}

cv::Mat textured(int w, int h, uint64_t seed) {
    cv::RNG rng(seed);
    cv::Mat img(h, w, CV_8UC1, cv::Scalar(128));
    for (int k = 0; k < w * h / 150; ++k) {
        const cv::Point p(rng.uniform(0, w), rng.uniform(0, h));
        const cv::Scalar grey(rng.uniform(0, 2) ? rng.uniform(0, 70) : rng.uniform(185, 256));
        if (rng.uniform(0, 2))
            cv::circle(img, p, rng.uniform(2, 12), grey, cv::FILLED, cv::LINE_AA);
        else
            cv::rectangle(img, p, p + cv::Point(rng.uniform(3, 18), rng.uniform(3, 18)), grey,
                          cv::FILLED);
    }
    cv::GaussianBlur(img, img, cv::Size(3, 3), 0.6);
    return img;
}

struct Scene {
    std::vector<uint32_t> reference, frame;
    Scene() {
        cv::Mat ref(480, 640, CV_8UC1, cv::Scalar(120));
        textured(160, 160, 42).copyTo(ref(cv::Rect(40, 40, 160, 160)));
        cv::Mat frame_img(480, 640, CV_8UC1, cv::Scalar(120));
        cv::Mat turned;
        cv::warpAffine(ref, turned, cv::getRotationMatrix2D({120, 120}, 20, 1.0), ref.size());
        turned(cv::Rect(0, 0, 240, 240)).copyTo(frame_img(cv::Rect(300, 150, 240, 240)));
        reference = grey_block(ref);
        frame = grey_block(frame_img);
    }
    const ImageBlock *ref_block() const {
        return reinterpret_cast<const ImageBlock *>(reference.data());
    }
    const ImageBlock *frame_block() const {
        return reinterpret_cast<const ImageBlock *>(frame.data());
    }
};

void start_recogniser(benchmark::State &state, uint32_t detector) {
    static const Scene scene;
    uint32_t options = detector | RECOGNISER_POSITION | RECOGNISER_ROTATION;
    int32_t count = 0;
    PatternKeypoint *kps =
        vexo_prcg_gen_keypoints(scene.ref_block(), &count, &options, 40, 40, 200, 200);
    Recogniser *rec = vexo_prcg_create_recogniser(kps, count, options, scene.ref_block(), 0, 0);
    vexo_prcg_release_keypoints(kps);
    if (!rec) {
        state.SkipWithError("no recogniser");
        return;
    }
    RecognitionResult result{};
    for (auto _ : state) {
        vexo_prcg_start_recogniser(rec, scene.frame_block(), &result);
        benchmark::DoNotOptimize(result);
    }
    state.counters["status"] = result.status;
    state.SetItemsProcessed(int64_t(state.iterations()));
    vexo_prcg_release_recogniser(rec);
}

void BM_RecogniserSift(benchmark::State &s) {
    start_recogniser(s, RECOGNISER_SIFT);
}
void BM_RecogniserSurf(benchmark::State &s) {
    start_recogniser(s, RECOGNISER_SURF);
}
void BM_RecogniserOrb(benchmark::State &s) {
    start_recogniser(s, RECOGNISER_ORB);
}
BENCHMARK(BM_RecogniserSift)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RecogniserSurf)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RecogniserOrb)->Unit(benchmark::kMillisecond);

} // namespace

// Frames per second are the items_per_second column.
int main(int argc, char **argv) {
    return vexo_bench::run_with_ratios(
        argc, argv,
        {{"BM_RecogniserSurf", "BM_RecogniserSift"}, {"BM_RecogniserOrb", "BM_RecogniserSift"}},
        "time per frame against SIFT");
}
