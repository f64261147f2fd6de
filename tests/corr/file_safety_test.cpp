// SPDX-License-Identifier: MIT
// Correction files against a hostile file system: FIFOs and devices in
// place of files, a disk that fills up during a write, links and
// permissions of the file being replaced.
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "file_faults.hpp"
#include "fixtures.hpp"

namespace {

namespace fs = std::filesystem;
using vexo_test::FileSizeLimit;
using vexo_test::folder_names;
using vexo_test::scratch_path;

// A folder of its own per test, so that its listing shows leftovers.
class CorrFileSafety : public ::testing::Test {
protected:
    void SetUp() override {
        folder = scratch_path(::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    std::string path(const std::string &name) const { return (folder / name).string(); }
    fs::path folder;
};

// A table unlike the neutral one in every cell.
CorrTable shifted_table(double by) {
    CorrTable t = vexo_test::neutral_table();
    for (auto &cell : t.cell) {
        cell.x += by;
        cell.y -= by;
    }
    return t;
}

struct Writer {
    const char *name;
    const char *file;
    uint32_t (*save)(const CorrTable &, const char *);
};

const Writer kWriters[] = {
    {"Kxo", "table.kxo",
     [](const CorrTable &t, const char *p) {
         const CorrHead head{1, 12, 0, {}, 0};
         return vexo_corr_save_kxo(&t, p, &head);
     }},
    {"Ctb", "table.ctb",
     [](const CorrTable &t, const char *p) { return vexo_corr_save_ctb(&t, p); }},
    {"Cor", "table.cor",
     [](const CorrTable &t, const char *p) { return vexo_corr_save_cor(&t, p, 0.0); }}};

class CorrWriteFailure : public CorrFileSafety, public ::testing::WithParamInterface<Writer> {};

TEST_P(CorrWriteFailure, FullDiskKeepsTheOldFileByteForByte) {
    const Writer &w = GetParam();
    const std::string target = path(w.file);
    ASSERT_EQ(VEXO_OK, w.save(shifted_table(1.0), target.c_str()));
    const std::vector<char> before = vexo_test::file_bytes(target);
    const auto names = folder_names(folder);
    uint32_t status;
    {
        const FileSizeLimit full(4096); // every format is larger
        status = w.save(shifted_table(2.0), target.c_str());
    }
    EXPECT_EQ(VEXO_ERROR_WRITE_FILE, status);
    EXPECT_EQ(before, vexo_test::file_bytes(target));
    EXPECT_EQ(names, folder_names(folder)); // no temporary left behind
}

TEST_P(CorrWriteFailure, FullDiskCreatesNothingWhereNoFileWas) {
    const Writer &w = GetParam();
    uint32_t status;
    {
        const FileSizeLimit full(4096);
        status = w.save(shifted_table(2.0), path(w.file).c_str());
    }
    EXPECT_EQ(VEXO_ERROR_WRITE_FILE, status);
    EXPECT_EQ(std::set<std::string>{}, folder_names(folder));
}

TEST_P(CorrWriteFailure, SuccessLeavesOnlyTheTarget) {
    const Writer &w = GetParam();
    ASSERT_EQ(VEXO_OK, w.save(shifted_table(1.0), path(w.file).c_str()));
    ASSERT_EQ(VEXO_OK, w.save(shifted_table(2.0), path(w.file).c_str()));
    EXPECT_EQ(std::set<std::string>{w.file}, folder_names(folder));
}

INSTANTIATE_TEST_SUITE_P(Formats, CorrWriteFailure, ::testing::ValuesIn(kWriters),
                         [](const ::testing::TestParamInfo<Writer> &info) {
                             return std::string(info.param.name);
                         });

TEST_F(CorrFileSafety, FifoWithoutWriterIsRefusedAtOnce) {
    const std::string fifo = path("table.kxo");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    CorrTable table;
    const vexo_test::Watchdog watchdog(20);
    EXPECT_EQ(VEXO_ERROR_OPEN_FILE, vexo_corr_load_corr65(&table, fifo.c_str(), 0));
}

TEST_F(CorrFileSafety, FifoAsWriteTargetIsRefusedAndKept) {
    const std::string fifo = path("table.ctb");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    const CorrTable table = shifted_table(1.0);
    const vexo_test::Watchdog watchdog(20);
    EXPECT_EQ(VEXO_ERROR_OPEN_FILE, vexo_corr_save_ctb(&table, fifo.c_str()));
    EXPECT_TRUE(fs::is_fifo(fifo));
    EXPECT_EQ(std::set<std::string>{"table.ctb"}, folder_names(folder));
}

TEST_F(CorrFileSafety, DeviceAsWriteTargetIsRefused) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    const CorrTable table = shifted_table(1.0);
    EXPECT_EQ(VEXO_ERROR_OPEN_FILE, vexo_corr_save_ctb(&table, "/dev/full"));
}

TEST_F(CorrFileSafety, LinkIsFollowedAndKept) {
    const std::string real = path("real.ctb"), link = path("link.ctb");
    const CorrTable first = shifted_table(1.0), second = shifted_table(2.0);
    ASSERT_EQ(VEXO_OK, vexo_corr_save_ctb(&first, real.c_str()));
    fs::create_symlink(real, link);
    ASSERT_EQ(VEXO_OK, vexo_corr_save_ctb(&second, link.c_str()));
    EXPECT_TRUE(fs::is_symlink(link));
    CorrTable back;
    ASSERT_EQ(VEXO_OK, vexo_corr_load_corr65(&back, real.c_str(), 0));
    EXPECT_NEAR(second.cell[100].x, back.cell[100].x, 0.5); // the first is 1 away
}

TEST_F(CorrFileSafety, ReplacedFileKeepsItsPermissions) {
    const std::string target = path("table.cor");
    const CorrTable first = shifted_table(1.0), second = shifted_table(2.0);
    ASSERT_EQ(VEXO_OK, vexo_corr_save_cor(&first, target.c_str(), 0.0));
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    ASSERT_EQ(VEXO_OK, vexo_corr_save_cor(&second, target.c_str(), 0.0));
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read,
              fs::status(target).permissions() & fs::perms::mask);
}

TEST_F(CorrFileSafety, ReadOnlyFileIsNotReplaced) {
    if (geteuid() == 0) GTEST_SKIP() << "root may write any file";
    const std::string target = path("table.kxo");
    const CorrHead head{1, 12, 0, {}, 0};
    const CorrTable first = shifted_table(1.0), second = shifted_table(2.0);
    ASSERT_EQ(VEXO_OK, vexo_corr_save_kxo(&first, target.c_str(), &head));
    fs::permissions(target, fs::perms::owner_read);
    const std::vector<char> before = vexo_test::file_bytes(target);
    EXPECT_EQ(VEXO_ERROR_OPEN_FILE, vexo_corr_save_kxo(&second, target.c_str(), &head));
    EXPECT_EQ(before, vexo_test::file_bytes(target));
}

} // namespace
