// SPDX-License-Identifier: MIT
// Runtime data against a hostile file system: a FIFO in place of a file,
// and a disk that fills up while a blob is replaced.
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "file_faults.hpp"
#include "vexo.h"

namespace {

namespace fs = std::filesystem;

const uint8_t *bytes(const std::string &s) {
    return reinterpret_cast<const uint8_t *>(s.data());
}
uint32_t save(const std::string &data) {
    return vexo_util_save_runtime_data("blob", bytes("k"), 1, bytes(data), uint32_t(data.size()));
}
// "blob." and the MD5 of "k".
const char kFileName[] = "blob.8CE4B16B22B58894AA86C421E8759DF3";

class RuntimeDataSafety : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "vexo_rtsafe_XXXXXX").string();
        ASSERT_NE(mkdtemp(&pattern[0]), nullptr);
        tmp = pattern;
        setenv("XDG_DATA_HOME", tmp.c_str(), 1);
        folder = tmp / ".vexo_rtdata";
    }
    void TearDown() override { fs::remove_all(tmp); }
    fs::path tmp, folder;
};

TEST_F(RuntimeDataSafety, FifoInPlaceOfTheFileIsRefusedAtOnce) {
    ASSERT_EQ(VEXO_OK, save("x")); // makes the folder
    fs::remove(folder / kFileName);
    ASSERT_EQ(0, mkfifo((folder / kFileName).c_str(), 0600));
    uint8_t buffer[4] = {};
    const vexo_test::Watchdog watchdog(20);
    EXPECT_EQ(VEXO_ERROR_FILE_ACCESS,
              vexo_util_load_runtime_data("blob", bytes("k"), 1, buffer, 4));
}

TEST_F(RuntimeDataSafety, FullDiskKeepsTheOldBlob) {
    const std::string old_blob(1000, 'a'), new_blob(20000, 'b');
    ASSERT_EQ(VEXO_OK, save(old_blob));
    uint32_t status;
    {
        const vexo_test::FileSizeLimit full(8192);
        status = save(new_blob);
    }
    EXPECT_EQ(VEXO_ERROR_WRITE_FILE, status);
    const std::vector<char> kept = vexo_test::file_bytes(folder / kFileName);
    EXPECT_EQ(old_blob, std::string(kept.begin(), kept.end()));
    EXPECT_EQ(std::set<std::string>{kFileName}, vexo_test::folder_names(folder));
}

} // namespace
