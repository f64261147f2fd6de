// Loads on several threads while others read the header: a reader must see
// a whole header (from one load or zero), never a mix of two.
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "fixtures.hpp"
#include "vexo.h"

using namespace vexo_test;

namespace {

// value is derived from tag, so a torn header breaks the pairing.
uint32_t value_for(uint8_t tag) { return 0x01010101u * tag; }

} // namespace

TEST(CorrHeadConcurrency, LoadsNeverTearTheHeader) {
    std::vector<std::string> files;
    for (uint8_t tag = 1; tag <= 4; ++tag) {
        CorrTable t;
        vexo_corr_set_neutral(&t);
        CorrHead head{};
        head.tag = tag;
        head.value = value_for(tag);
        files.push_back(scratch_path("mt" + std::to_string(tag) + ".kxo"));
        ASSERT_EQ(vexo_corr_save_kxo(&t, files.back().c_str(), &head), VEXO_OK);
    }
    files.push_back(scratch_path("mt.ctb"));
    write_file(files.back(), ByteVec(16900, 0x11));

    std::atomic<bool> stop{false};
    std::atomic<int> torn{0}, failed_loads{0};
    std::vector<std::thread> threads;
    for (int w = 0; w < 3; ++w)
        threads.emplace_back([&, w] {
            CorrTable t;
            for (int i = 0; i < 60; ++i) {
                const std::string &path = files[size_t(w + i) % files.size()];
                if (vexo_corr_load_corr65(&t, path.c_str(), 0) != VEXO_OK)
                    ++failed_loads;
            }
        });
    for (int r = 0; r < 2; ++r)
        threads.emplace_back([&] {
            while (!stop.load()) {
                CorrHead h;
                vexo_corr_get_corr_head(&h);
                const bool zero = h.version == 0 && h.header_size == 0 && h.tag == 0 &&
                                  h.value == 0;
                const bool whole = h.version == 1 && h.header_size == 12 && h.tag >= 1 &&
                                   h.tag <= 4 && h.value == value_for(h.tag);
                if (!zero && !whole)
                    ++torn;
            }
        });
    for (int w = 0; w < 3; ++w)
        threads[size_t(w)].join();
    stop = true;
    for (size_t i = 3; i < threads.size(); ++i)
        threads[i].join();
    EXPECT_EQ(failed_loads.load(), 0);
    EXPECT_EQ(torn.load(), 0);
}
