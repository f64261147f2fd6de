#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "util/data_folder.hpp"
#include "util/runtime_data.hpp"
#include "vexo.h"

namespace fs = std::filesystem;

namespace {

// Sets an environment variable for one test and restores it afterwards.
class ScopedEnv {
  public:
    ScopedEnv(const char *name, const char *value) : name_(name) {
        const char *old = std::getenv(name);
        had_ = old != nullptr;
        if (had_)
            old_ = old;
        if (value != nullptr)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~ScopedEnv() {
        if (had_)
            setenv(name_.c_str(), old_.c_str(), 1);
        else
            unsetenv(name_.c_str());
    }

  private:
    std::string name_, old_;
    bool had_ = false;
};

// A unique temporary folder, removed with everything in it.
class TempDir {
  public:
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "vexo_rtdata_XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path_, ec);
    }
    const fs::path &path() const { return path_; }

  private:
    fs::path path_;
};

const uint8_t *bytes(const char *s) { return reinterpret_cast<const uint8_t *>(s); }

uint32_t save(const char *name, const char *key, const std::string &data) {
    return vexo_util_save_runtime_data(name, bytes(key), (uint32_t)std::strlen(key),
                                       bytes(data.data()), (uint32_t)data.size());
}

uint32_t load(const char *name, const char *key, std::vector<uint8_t> &buffer) {
    return vexo_util_load_runtime_data(name, bytes(key), (uint32_t)std::strlen(key),
                                       buffer.data(), (uint32_t)buffer.size());
}

class RuntimeData : public ::testing::Test {
  protected:
    TempDir tmp;
    // A data folder two levels below the temporary one: saving creates it.
    fs::path data_home = tmp.path() / "share" / "deeper";
    ScopedEnv xdg{"XDG_DATA_HOME", data_home.c_str()};
    fs::path folder = data_home / ".vexo_rtdata";
};

} // namespace

TEST_F(RuntimeData, RoundTripAndFileNaming) {
    std::vector<uint8_t> buffer(5);
    // Nothing saved yet: the file (and folder) cannot be opened.
    EXPECT_EQ(load("pen", "k", buffer), VEXO_ERROR_FILE_ACCESS);
    EXPECT_FALSE(fs::exists(folder));

    EXPECT_EQ(vexo_util_save_runtime_data("pen", nullptr, 0, bytes("hello"), 5), VEXO_OK);
    EXPECT_TRUE(fs::is_regular_file(folder / "pen.D41D8CD98F00B204E9800998ECF8427E"));
    struct stat st;
    ASSERT_EQ(stat(folder.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    EXPECT_EQ(fs::file_size(folder / "pen.D41D8CD98F00B204E9800998ECF8427E"), 5u);

    ASSERT_EQ(vexo_util_load_runtime_data("pen", nullptr, 0, buffer.data(), 5), VEXO_OK);
    EXPECT_EQ(std::string(buffer.begin(), buffer.end()), "hello");
    // A shorter read is fine; the rest of the file is ignored.
    std::vector<uint8_t> two(2);
    EXPECT_EQ(vexo_util_load_runtime_data("pen", nullptr, 0, two.data(), 2), VEXO_OK);
    EXPECT_EQ(two[1], 'e');

    // The key's digest names the file: "abc" -> 9001...7F72.
    std::string blob("\x00\x01\xff\n\r\n binary", 13);
    EXPECT_EQ(save("tool", "abc", blob), VEXO_OK);
    EXPECT_TRUE(fs::exists(folder / "tool.900150983CD24FB0D6963F7D28E17F72"));
    std::vector<uint8_t> back(blob.size());
    EXPECT_EQ(load("tool", "abc", back), VEXO_OK);
    EXPECT_EQ(std::string(back.begin(), back.end()), blob);

    // Saving again replaces the content.
    EXPECT_EQ(save("tool", "abc", "xy"), VEXO_OK);
    EXPECT_EQ(fs::file_size(folder / "tool.900150983CD24FB0D6963F7D28E17F72"), 2u);
}

TEST_F(RuntimeData, KeysAndNamesSelectDifferentFiles) {
    EXPECT_EQ(save("pen", "one", "AAAA"), VEXO_OK);
    EXPECT_EQ(save("pen", "two", "BBBB"), VEXO_OK);
    EXPECT_EQ(save("laser", "one", "CCCC"), VEXO_OK);
    std::vector<uint8_t> b(4);
    EXPECT_EQ(load("pen", "one", b), VEXO_OK);
    EXPECT_EQ(b[0], 'A');
    EXPECT_EQ(load("pen", "two", b), VEXO_OK);
    EXPECT_EQ(b[0], 'B');
    EXPECT_EQ(load("laser", "one", b), VEXO_OK);
    EXPECT_EQ(b[0], 'C');
    EXPECT_EQ(load("laser", "two", b), VEXO_ERROR_FILE_ACCESS);
    size_t files = 0;
    for (const auto &entry : fs::directory_iterator(folder)) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 3u);
    // Key bytes, not a C string: an embedded zero counts.
    const uint8_t k1[2] = {'a', 0}, k2[2] = {'a', 1};
    EXPECT_NE(vexo::runtime_data_file_name("n", k1, 2), vexo::runtime_data_file_name("n", k2, 2));
    EXPECT_NE(vexo::runtime_data_file_name("n", k1, 2), vexo::runtime_data_file_name("n", k1, 1));
}

TEST_F(RuntimeData, EmptyAndShortData) {
    EXPECT_EQ(vexo_util_save_runtime_data("empty", bytes("k"), 1, nullptr, 0), VEXO_OK);
    EXPECT_EQ(fs::file_size(folder / vexo::runtime_data_file_name("empty", bytes("k"), 1)), 0u);
    EXPECT_EQ(vexo_util_load_runtime_data("empty", bytes("k"), 1, nullptr, 0), VEXO_OK);
    // More requested than stored: 21, with what was there already copied.
    EXPECT_EQ(save("short", "k", "abc"), VEXO_OK);
    std::vector<uint8_t> b(8, '#');
    EXPECT_EQ(load("short", "k", b), VEXO_ERROR_READ_FILE);
    EXPECT_EQ(std::string(b.begin(), b.begin() + 4), "abc#");
    b.assign(1, 0);
    EXPECT_EQ(load("empty", "k", b), VEXO_ERROR_READ_FILE);
}

TEST_F(RuntimeData, OpenAndWriteFailures) {
    // A folder where the file should be: neither end can use it.
    fs::create_directories(folder / vexo::runtime_data_file_name("dir", bytes("k"), 1));
    EXPECT_EQ(save("dir", "k", "data"), VEXO_ERROR_FILE_ACCESS);
    std::vector<uint8_t> b(4);
    EXPECT_EQ(load("dir", "k", b), VEXO_ERROR_READ_FILE);
    // A device that accepts the open but no bytes: the short write shows.
    if (fs::exists("/dev/full")) {
        fs::create_symlink("/dev/full", folder / vexo::runtime_data_file_name("full", bytes("k"), 1));
        EXPECT_EQ(save("full", "k", "data"), VEXO_ERROR_WRITE_FILE);
    }
    // A data folder that cannot be created (a file is in the way).
    std::ofstream(tmp.path() / "plain_file") << "x";
    ScopedEnv blocked("XDG_DATA_HOME", (tmp.path() / "plain_file" / "sub").c_str());
    EXPECT_EQ(save("pen", "k", "data"), VEXO_ERROR_FILE_ACCESS);
}

TEST_F(RuntimeData, FolderFallbacks) {
    {
        // Unset or relative XDG_DATA_HOME: $HOME/.local/share.
        ScopedEnv no_xdg("XDG_DATA_HOME", nullptr);
        ScopedEnv home("HOME", tmp.path().c_str());
        const std::string expected = (tmp.path() / ".local/share/.vexo_rtdata/").string();
        EXPECT_EQ(vexo::runtime_data_folder(false), expected);
        ScopedEnv relative("XDG_DATA_HOME", "relative/dir");
        EXPECT_EQ(vexo::runtime_data_folder(false), expected);
        EXPECT_EQ(save("pen", "", "z"), VEXO_OK);
        EXPECT_TRUE(fs::exists(expected + "pen.D41D8CD98F00B204E9800998ECF8427E"));
    }
    // A trailing slash does not double the separator.
    ScopedEnv slash("XDG_DATA_HOME", (data_home.string() + "/").c_str());
    EXPECT_EQ(vexo::runtime_data_folder(false), (folder.string() + "/"));
}

TEST_F(RuntimeData, BadArgumentsAreRefused) {
    std::vector<uint8_t> b(4);
    EXPECT_EQ(vexo_util_save_runtime_data(nullptr, bytes("k"), 1, bytes("d"), 1),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_util_save_runtime_data("pen", bytes("k"), 1, nullptr, 1),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_util_save_runtime_data("pen", nullptr, 3, bytes("d"), 1),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_util_load_runtime_data(nullptr, bytes("k"), 1, b.data(), 4),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_util_load_runtime_data("pen", bytes("k"), 1, nullptr, 4),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_util_load_runtime_data("pen", nullptr, 2, b.data(), 4),
              VEXO_ERROR_INVALID_PARAMETER);
    // Names cannot reach outside the folder.
    for (const char *name : {"../escape", "a/b", "/abs", "..\\up", "sub\\x"}) {
        EXPECT_EQ(vexo_util_save_runtime_data(name, bytes("k"), 1, bytes("d"), 1),
                  VEXO_ERROR_INVALID_PARAMETER)
            << name;
        EXPECT_EQ(vexo_util_load_runtime_data(name, bytes("k"), 1, b.data(), 1),
                  VEXO_ERROR_INVALID_PARAMETER)
            << name;
    }
    EXPECT_FALSE(fs::exists(data_home / "escape.8CE4B16B22B58894AA86C421E8759DF3"));
    EXPECT_FALSE(fs::exists(folder));
    // Dots alone are an ordinary name inside the folder.
    EXPECT_EQ(vexo_util_save_runtime_data("..", bytes("k"), 1, bytes("d"), 1), VEXO_OK);
    EXPECT_TRUE(fs::exists(folder / "...8CE4B16B22B58894AA86C421E8759DF3"));
}

TEST(EntityTypes, GroupAndImageSets) {
    for (int32_t t = -3; t <= 40; ++t) {
        const bool group = t == 4 || t == 8 || t == 9 || t == 10 || t == 11 || t == 16 || t == 17;
        EXPECT_EQ(vexo_util_entity_is_group_type(t), group) << t;
        const bool image = t == 6 || t == 7 || t == 12 || t == 13;
        EXPECT_EQ(vexo_util_entity_is_image_type((uint32_t)t), image) << t;
    }
    EXPECT_FALSE(vexo_util_entity_is_group_type(5));
    EXPECT_FALSE(vexo_util_entity_is_group_type(12));
    EXPECT_FALSE(vexo_util_entity_is_image_type(8));
    EXPECT_FALSE(vexo_util_entity_is_group_type(INT32_MIN));
    EXPECT_FALSE(vexo_util_entity_is_image_type(UINT32_MAX));
    EXPECT_FALSE(vexo_util_entity_is_image_type((uint32_t)-6));
}
