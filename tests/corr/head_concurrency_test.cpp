// SPDX-License-Identifier: MIT
// Loads on several threads while others read the header: a reader must see
// a whole header (from one load, or zero), never a mix of two.
#include <atomic>
#include <thread>

#include "fixtures.hpp"

using namespace vexo_test;

TEST(CorrHeadConcurrency, LoadsNeverTearTheHeader) {
    const CorrTable neutral = neutral_table();
    std::vector<std::string> files = {scratch_file("mt.ctb", std::string(16900, 0x11))};
    for (uint8_t tag = 1; tag <= 4; ++tag) {
        const CorrHead head{0, 0, tag, {}, 0x01010101u * tag}; // the value repeats the tag
        files.push_back(scratch_path("mt" + std::to_string(tag) + ".kxo"));
        ASSERT_EQ(vexo_corr_save_kxo(&neutral, files.back().c_str(), &head), VEXO_OK);
    }
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0}, failed_loads{0};
    std::vector<std::thread> loaders, readers;
    for (int w = 0; w < 3; ++w)
        loaders.emplace_back([&, w] {
            CorrTable t;
            for (int i = 0; i < 60; ++i)
                failed_loads += vexo_corr_load_corr65(&t, files[(w + i) % 5].c_str(), 0) != 1;
        });
    for (int r = 0; r < 2; ++r)
        readers.emplace_back([&] {
            for (CorrHead h; !stop;) {
                vexo_corr_get_corr_head(&h);
                const CorrHead whole{1, 12, h.tag, {}, 0x01010101u * h.tag}; // tag 0: a mix
                torn += !same_bytes(h, CorrHead{}) && !(h.tag && same_bytes(h, whole));
            }
        });
    for (std::thread &t : loaders) t.join();
    stop = true;
    for (std::thread &t : readers) t.join();
    EXPECT_EQ(failed_loads, 0);
    EXPECT_EQ(torn, 0);
}
