// SPDX-License-Identifier: MIT
// Shared by the correction tests: scratch files and table helpers.
#pragma once

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "vexo_test_util.hpp"

namespace vexo_test {

using ByteVec = std::vector<uint8_t>;

// A path in a folder of this process's own, removed at exit.
inline std::string scratch_path(const std::string &name) {
    static const std::filesystem::path *dir = [] {
        auto *p = new std::filesystem::path(std::filesystem::temp_directory_path() /
                                            ("vexo_corr_test_" + std::to_string(::getpid())));
        std::filesystem::create_directories(*p);
        std::atexit([] {
            std::error_code e;
            std::filesystem::remove_all(*dir, e);
        });
        return p;
    }();
    return (*dir / name).string();
}

// Writes a scratch file holding `bytes` and returns its path.
inline std::string scratch_file(const std::string &name, const std::string &bytes) {
    std::ofstream(scratch_path(name), std::ios::binary) << bytes;
    return scratch_path(name);
}

// Neutral value of grid line 0..64, computed apart from the library.
inline double neutral(int line) {
    return -32767.5 + line * (65535.0 / 64.0);
}

// Flags 0xABABABAB, as in a table memset to 0xAB before a load.
inline CorrTable neutral_table() {
    CorrTable t;
    std::memset(&t, 0xAB, sizeof t);
    vexo_corr_set_neutral(&t);
    return t;
}

// A head record of these sizes, mm (reserved bytes zero).
inline CorrBase head(double gap, double distance, double field, double focal = 0,
                     uint32_t options = 0) {
    CorrBase h;
    std::memset(&h, 0, sizeof h);
    h.mirror_gap = gap;
    h.distance = distance;
    h.field_size = field;
    h.focal_length = focal;
    h.options = options;
    return h;
}

inline bool same(const CorrTable &a, const CorrTable &b) {
    return same_bytes(a, b);
}
template <class Table> auto &at(Table &t, int r, int c) {
    return t.cell[r * 65 + c];
}

} // namespace vexo_test

// Failing cases name a head's sizes, not its bytes (found by argument lookup).
inline void PrintTo(const CorrBase &h, std::ostream *os) {
    *os << "gap " << h.mirror_gap << ", distance " << h.distance << ", field " << h.field_size
        << ", focal " << h.focal_length << ", options " << h.options;
}
