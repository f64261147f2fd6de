// SPDX-License-Identifier: MIT
// Colour pipeline throughput on a 4K RGB frame, reported against memcpy of
// the same bytes and against the per-byte formula, all in this process.
// The call is timed on each walk this processor runs (the 64-byte walk
// where it has 512-bit byte permutes, the 96-byte walk where it has 256-bit
// shuffles, the portable walk everywhere), and the portable walk on its own.
#include "bench_ratio.hpp"

#include <math.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "gfx/colour.hpp"
#include "vexo.h"

namespace {

constexpr uint32_t kWidth = 3840;
constexpr uint32_t kHeight = 2160;
constexpr size_t kBytes = size_t{kWidth} * kHeight * 3;

struct Frame {
    std::vector<uint8_t> src, dst;
    Frame() : src(kBytes), dst(kBytes) {
        std::mt19937 rng(3);
        for (auto &b : src) b = static_cast<uint8_t>(rng());
    }
};

Frame &frame() {
    static Frame f;
    return f;
}

// The formula evaluated byte by byte, with the gamma table precomputed as
// the library does once per process.
struct PerByte {
    float table[256];
    PerByte() {
        for (int k = 0; k < 256; ++k) {
            float v = powf((float)(k + 1) * 0.00390625f, 1.0f) * 65535.0f + 0.5f;
            v = v > 65535.0f ? 65535.0f : v;
            table[k] = (float)(uint16_t)v / 65535.0f;
        }
    }
    void run(uint8_t *dst, const uint8_t *src, size_t n, int32_t brightness, int32_t contrast,
             const int32_t offsets[3]) const {
        const float c = (float)(contrast + 100) / 100.0f;
        const float c2 = c * c;
        for (size_t i = 0; i < n; ++i) {
            float r = ((table[src[i]] - 0.5f) * c2 + 0.5f) * 255.0f + (float)brightness +
                      (float)offsets[i % 3];
            r = r < 0.0f ? 0.0f : (r > 255.0f ? 255.0f : r);
            dst[i] = (uint8_t)r;
        }
    }
};

void BM_Memcpy(benchmark::State &state) {
    Frame &f = frame();
    for (auto _ : state) {
        std::memcpy(f.dst.data(), f.src.data(), kBytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kBytes));
}

void BM_ProcessColours(benchmark::State &state) {
    Frame &f = frame();
    for (auto _ : state) {
        vexo_gfx_process_colours(f.dst.data(), f.src.data(), kWidth, kHeight, 12, 25, 0, 3, -4, 5);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kBytes));
}

// The call with its walk limited to `walk`, or skipped where the
// processor lacks it: the figure for processors without the faster walks.
void BM_ProcessColoursLimited(benchmark::State &state, vexo::ColourWalk walk) {
    vexo::limit_colour_walk(walk);
    if (vexo::colour_walk() != walk) state.SkipWithError("processor lacks this walk");
    BM_ProcessColours(state);
    vexo::limit_colour_walk(vexo::ColourWalk::Wide);
}

void BM_PortableWalk(benchmark::State &state) {
    Frame &f = frame();
    vexo::ChannelTables tables;
    for (int ch = 0; ch < 3; ++ch)
        for (int v = 0; v < 256; ++v) tables[ch][v] = static_cast<uint8_t>(255 - v + ch);
    for (auto _ : state) {
        vexo::map_bytes_portable(f.dst.data(), f.src.data(), kBytes, 0, tables);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kBytes));
}

void BM_PerByteFormula(benchmark::State &state) {
    Frame &f = frame();
    static const PerByte reference;
    const int32_t offsets[3] = {3, -4, 5};
    for (auto _ : state) {
        reference.run(f.dst.data(), f.src.data(), kBytes, 12, 25, offsets);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kBytes));
}

BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ProcessColours)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_ProcessColoursLimited, Shuffle, vexo::ColourWalk::Shuffle)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_ProcessColoursLimited, Portable, vexo::ColourWalk::Portable)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_PortableWalk)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PerByteFormula)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    vexo_bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratio("BM_ProcessColours/real_time", "BM_Memcpy/real_time",
                         "time over memcpy's, goal <= 2.0");
    reporter.print_ratio("BM_ProcessColoursLimited/Shuffle/real_time", "BM_Memcpy/real_time",
                         "the call on the 96-byte walk (no 512-bit byte permutes), goal <= 2.0");
    reporter.print_ratio("BM_ProcessColoursLimited/Portable/real_time", "BM_Memcpy/real_time",
                         "the call on the portable walk");
    reporter.print_ratio("BM_PortableWalk/real_time", "BM_Memcpy/real_time",
                         "portable walk's time over memcpy's");
    reporter.print_ratio("BM_PerByteFormula/real_time", "BM_ProcessColours/real_time",
                         "speed-up over the per-byte formula");
    benchmark::Shutdown();
    return 0;
}
