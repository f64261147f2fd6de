// SPDX-License-Identifier: MIT
// Reading a caller's file whole: the bytes and their count, the spare byte
// of an empty file, and the refusals that must come before anything can
// block or be read.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "core/file_access.hpp"

namespace {

namespace fs = std::filesystem;
using vexo::ReadOutcome;

class FileRead : public testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("vexo_file_read_" + std::to_string(::getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override {
        std::free(data);
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    std::string write(const std::string &name, const std::vector<uint8_t> &bytes) {
        const std::string path = (folder / name).string();
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
        return path;
    }
    ReadOutcome read(const std::string &path, size_t limit = 1 << 20) {
        return vexo::read_regular_file(path.c_str(), limit, &data, &size);
    }
    fs::path folder;
    uint8_t *data = nullptr;
    size_t size = 12345;
};

TEST_F(FileRead, GivesEveryByteAndTheCount) {
    std::vector<uint8_t> bytes(70001);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 31 + (i >> 8));
    ASSERT_EQ(read(write("whole.bin", bytes)), ReadOutcome::Read);
    ASSERT_EQ(size, bytes.size());
    EXPECT_EQ(std::vector<uint8_t>(data, data + size), bytes);
}

TEST_F(FileRead, EmptyFileGetsABlockOfItsOwn) {
    ASSERT_EQ(read(write("empty.bin", {})), ReadOutcome::Read);
    EXPECT_EQ(size, 0u);
    EXPECT_NE(data, nullptr);
}

TEST_F(FileRead, FileAtTheLimitIsRead) {
    ASSERT_EQ(read(write("limit.bin", std::vector<uint8_t>(100, 7)), 100), ReadOutcome::Read);
    EXPECT_EQ(size, 100u);
}

TEST_F(FileRead, FileOverTheLimitIsRefusedUnread) {
    EXPECT_EQ(read(write("over.bin", std::vector<uint8_t>(101, 7)), 100), ReadOutcome::TooLarge);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 12345u);
}

TEST_F(FileRead, MissingFileOrFolderCannotBeOpened) {
    for (const fs::path &path : {folder / "absent.bin", folder}) {
        EXPECT_EQ(read(path.string()), ReadOutcome::CannotOpen) << path;
        EXPECT_EQ(data, nullptr) << path;
    }
}

// Without a writer, a blocking open or read would wait for ever (the test
// would hang and time out instead of failing).
TEST_F(FileRead, FifoWithoutWriterIsRefusedAtOnce) {
    const std::string path = (folder / "pipe").string();
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(read(path), ReadOutcome::CannotOpen);
    EXPECT_EQ(data, nullptr);
}

} // namespace
