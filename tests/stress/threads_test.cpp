// SPDX-License-Identifier: MIT
// Several host threads at once, each on records of its own, through the
// shared library as a host calls it: correction loads, the colour pipeline
// and pattern recognition.  Every thread must get exactly what one thread
// alone gets; CI runs this under ThreadSanitizer.
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "fixtures.hpp"
#include "vexo.h"

namespace {

namespace fs = std::filesystem;

constexpr int kThreads = 4;
constexpr int kRounds = 3;

// What one thread does, and what it found, round after round.
struct Work {
    std::string kxo_path;
    CorrTable loaded;
    std::vector<uint8_t> pixels, coloured;
    vt::Frame reference{vt::make_pattern(160, 120, 1)};
    std::vector<PatternKeypoint> keypoints;
    uint32_t options = 0;
    RecognitionResult found{};
    uint32_t load_status = 0, colour_status = 0;
};

// The thread's whole job once: load, colour, teach, recognise.
void run_once(Work &w) {
    CorrFileInfo info;
    w.load_status = vexo_corr_load_ex(&w.loaded, w.kxo_path.c_str(), 0, &info);
    vexo_corr_release_info(&info);
    w.colour_status =
        vexo_gfx_process_colours(w.coloured.data(), w.pixels.data(), 64, 48, 10, 30, 20, 1, -2, 3);
    const vt::RecogniserPtr rec(
        vexo_prcg_create_recogniser(w.keypoints.data(), int32_t(w.keypoints.size()),
                                    w.options | RECOGNISER_POSITION, w.reference.block(), 0, 0));
    w.found = RecognitionResult{};
    if (rec) vexo_prcg_start_recogniser(rec.get(), w.reference.block(), &w.found);
}

Work prepared(int index, const fs::path &folder) {
    Work w;
    w.reference = vt::Frame(vt::make_pattern(160, 120, uint64_t(100 + index)));
    CorrTable table;
    vexo_corr_set_neutral(&table);
    for (auto &cell : table.cell) cell.x += 7.0 * (index + 1);
    const CorrHead head{1, 12, uint8_t(index), {}, uint32_t(index)};
    w.kxo_path = (folder / ("t" + std::to_string(index) + ".kxo")).string();
    vexo_corr_save_kxo(&table, w.kxo_path.c_str(), &head);
    w.pixels.resize(64 * 48 * 3);
    for (size_t i = 0; i < w.pixels.size(); ++i) w.pixels[i] = uint8_t(i * (index + 3));
    w.coloured.resize(w.pixels.size());
    // Each thread teaches with a detector of its own.
    const uint32_t detectors[] = {RECOGNISER_SIFT, RECOGNISER_SURF, RECOGNISER_ORB};
    w.options = detectors[index % 3];
    int32_t count = 0;
    PatternKeypoint *kps =
        vexo_prcg_gen_keypoints(w.reference.block(), &count, &w.options, 10, 10, 150, 110);
    if (kps) w.keypoints.assign(kps, kps + count);
    vexo_prcg_release_keypoints(kps);
    return w;
}

TEST(ThreadStress, DistinctRecordsOnSeveralThreadsMatchOneThread) {
    const fs::path folder = fs::temp_directory_path() / ("vexo_stress_" + std::to_string(getpid()));
    fs::create_directories(folder);
    std::vector<Work> alone, together;
    for (int t = 0; t < kThreads; ++t) {
        alone.push_back(prepared(t, folder));
        ASSERT_GE(alone.back().keypoints.size(), 3u) << t;
        run_once(alone.back());
        ASSERT_EQ(VEXO_OK, alone.back().load_status) << t;
        ASSERT_EQ(int32_t(VEXO_OK), alone.back().found.status) << t;
        together.push_back(prepared(t, folder));
    }
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&together, t] {
            for (int round = 0; round < kRounds; ++round) run_once(together[size_t(t)]);
        });
    for (auto &thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) {
        SCOPED_TRACE(t);
        const Work &a = alone[size_t(t)], &b = together[size_t(t)];
        EXPECT_EQ(a.load_status, b.load_status);
        int differing_cells = 0; // x, y, z: the loaders leave flags and padding alone
        for (int k = 0; k < 4225; ++k)
            differing_cells +=
                std::memcmp(&a.loaded.cell[k], &b.loaded.cell[k], 3 * sizeof(double)) != 0;
        EXPECT_EQ(0, differing_cells);
        EXPECT_EQ(a.colour_status, b.colour_status);
        EXPECT_EQ(a.coloured, b.coloured);
        EXPECT_EQ(a.found.status, b.found.status);
        EXPECT_EQ(a.found.x, b.found.x);
        EXPECT_EQ(a.found.y, b.found.y);
    }
    fs::remove_all(folder);
}

} // namespace
