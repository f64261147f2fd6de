// SPDX-License-Identifier: MIT
// MD5, runtime data (also against a hostile file system: a FIFO in place
// of a file, a disk that fills up while a blob is replaced) and entity types.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "file_faults.hpp"
#include "util/data_folder.hpp"
#include "util/md5.hpp"
#include "vexo.h"

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kBad = VEXO_ERROR_INVALID_PARAMETER, kNoFile = VEXO_ERROR_FILE_ACCESS;
constexpr uint32_t kShort = VEXO_ERROR_READ_FILE;
const std::string kEmptyKey = ".D41D8CD98F00B204E9800998ECF8427E"; // MD5 of no bytes
const std::string kBlob = "blob.8CE4B16B22B58894AA86C421E8759DF3"; // "blob", key "k"

const uint8_t *bytes(const std::string &s) {
    return reinterpret_cast<const uint8_t *>(s.data());
}
uint32_t save(const char *name, const std::string &key, const std::string &data) {
    return vexo_util_save_runtime_data(name, bytes(key), uint32_t(key.size()), bytes(data),
                                       uint32_t(data.size()));
}
using Loaded = std::pair<uint32_t, std::string>; // status, buffer afterwards ('#': untouched)
Loaded load(const char *name, const std::string &key, size_t size) {
    std::string b(size, '#');
    const uint32_t status = vexo_util_load_runtime_data(
        name, bytes(key), uint32_t(key.size()), reinterpret_cast<uint8_t *>(&b[0]), uint32_t(size));
    return {status, b};
}

// XDG_DATA_HOME two levels below a fresh temporary folder (saving creates both); left set.
class RuntimeData : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "vexo_rtdata_XXXXXX").string();
        ASSERT_NE(mkdtemp(&pattern[0]), nullptr);
        home = (tmp = pattern) / "share" / "deeper";
        setenv("XDG_DATA_HOME", home.c_str(), 1);
    }
    void TearDown() override { fs::remove_all(tmp); }
    fs::path file(const std::string &name) const { return home / ".vexo_rtdata" / name; }
    fs::path tmp, home;
};

} // namespace

TEST(Md5, ReferenceSuiteAndPaddingBoundaries) {
    const std::pair<std::string, const char *> known[] = {
        // RFC 1321's suite, then padding
        {"", "D41D8CD98F00B204E9800998ECF8427E"},
        {"a", "0CC175B9C0F1B6A831C399E269772661"},
        {"abc", "900150983CD24FB0D6963F7D28E17F72"},
        {"message digest", "F96B697D7CB7938D525A2F31AAF161D0"},
        {"abcdefghijklmnopqrstuvwxyz", "C3FCD3D76192E4007DFB496CCA67E13B"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "D174AB98D277D9F5A5611C2C9F419D9F"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57EDF4A22BE3C955AC49DA2E2107B67A"},
        {std::string(55, 'a'), "EF1772B6DFF9A122358552954AD0DF65"}, // the last one-block length
        {std::string(56, 'a'), "3B0C8AC703F828B04C6C197006D17218"}, // spills into a 2nd block
        {std::string(64, 'a'), "014842D480B571495A4A0363793F7367"}};
    for (const auto &[text, hex] : known)
        EXPECT_EQ(vexo::md5_hex_upper(vexo::md5(bytes(text), text.size())), hex) << text;
    // However a message around the padding limits is split, the digest is the same.
    std::vector<uint8_t> m(300);
    std::iota(m.begin(), m.end(), uint8_t(7));
    for (size_t length : {0u, 1u, 55u, 56u, 57u, 63u, 64u, 65u, 119u, 120u, 128u, 300u})
        for (size_t chunk : {1u, 3u, 17u, 64u}) {
            vexo::Md5 h;
            for (size_t at = 0; at < length; at += chunk)
                h.update(m.data() + at, std::min(chunk, length - at));
            EXPECT_EQ(h.finish(), vexo::md5(m.data(), length)) << length << " by " << chunk;
        }
}

TEST_F(RuntimeData, RoundTripsUnderTheKeyDigest) {
    // Nothing saved, nothing created; the file name is the name, a dot and the key's MD5.
    EXPECT_EQ(load("pen", "", 5), Loaded(kNoFile, "#####"));
    EXPECT_FALSE(fs::exists(file("")));
    ASSERT_EQ(vexo_util_save_runtime_data("pen", nullptr, 0, bytes("hello"), 5), VEXO_OK);
    EXPECT_EQ(fs::status(file("")).permissions(), fs::perms::owner_all); // private
    ASSERT_EQ(vexo_util_save_runtime_data("empty", bytes("k"), 1, nullptr, 0), VEXO_OK);
    EXPECT_EQ(vexo_util_load_runtime_data("empty", bytes("k"), 1, nullptr, 0), VEXO_OK);

    // Saves (S: data, status) and loads (L: status, the buffer as long as the read); key
    // bytes, an embedded zero too, and names each select their own file.
    const std::string blob("\x00\x01\xff\n\r\n binary", 13);
    constexpr bool S = true, L = false;
    const struct {
        bool save;
        const char *name;
        std::string key, data;
        uint32_t want;
    } steps[] = {
        {L, "pen", "", "hello", VEXO_OK},  {L, "pen", "", "he", VEXO_OK}, // the rest is ignored
        {L, "pen", "", "hello##", kShort}, {L, "empty", "k", "#", kShort},
        {S, "tool", "abc", blob, VEXO_OK}, {L, "tool", "abc", blob, VEXO_OK},
        {S, "tool", "abc", "xy", VEXO_OK}, {L, "tool", "abc", "xy#", kShort}, // replaced
        {S, "laser", "a", "A", VEXO_OK},   {S, "laser", {"a\0", 2}, "B", VEXO_OK},
        {L, "laser", "a", "A", VEXO_OK},   {L, "laser", {"a\0", 2}, "B", VEXO_OK},
        {L, "laser", "abc", "#", kNoFile}, {L, "tool", "a", "#", kNoFile}};
    for (const auto &s : steps)
        EXPECT_EQ(s.save ? Loaded(save(s.name, s.key, s.data), s.data)
                         : load(s.name, s.key, s.data.size()),
                  Loaded(s.want, s.data))
            << &s - steps;
    EXPECT_TRUE(fs::exists(file("tool.900150983CD24FB0D6963F7D28E17F72")));
    EXPECT_EQ(std::distance(fs::directory_iterator(file("")), fs::directory_iterator()), 5);
}

TEST_F(RuntimeData, FailuresRefusalsAndFolderFallbacks) {
    fs::create_directories(file("dir" + kEmptyKey)); // a folder where the file should be
    EXPECT_EQ(save("dir", "", "data"), kNoFile);
    EXPECT_EQ(load("dir", "", 4).first, kNoFile);
    // NULL name, bytes or key with a size, and names that would leave the folder.
    uint8_t b[4] = {};
    const struct {
        const char *name;
        const uint8_t *key;
        uint32_t n;
        uint8_t *data;
    } bad[] = {{nullptr, b, 1, b},     {"p", b, 1, nullptr}, {"p", nullptr, 3, b},
               {"../escape", b, 1, b}, {"a/b", b, 1, b},     {"/abs", b, 1, b},
               {"..\\up", b, 1, b},    {"sub\\x", b, 1, b}};
    for (const auto &c : bad) {
        EXPECT_EQ(vexo_util_save_runtime_data(c.name, c.key, c.n, c.data, 4), kBad) << &c - bad;
        EXPECT_EQ(vexo_util_load_runtime_data(c.name, c.key, c.n, c.data, 4), kBad) << &c - bad;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(home), fs::directory_iterator()), 1);
    EXPECT_EQ(save("..", "", "d"), VEXO_OK); // dots alone are an ordinary name: the file
    setenv("XDG_DATA_HOME", (file(".." + kEmptyKey) / "sub").c_str(), 1); // is in the way
    EXPECT_EQ(save("pen", "", "data"), kNoFile);

    // XDG_DATA_HOME unset or relative: $HOME/.local/share.
    const std::string expected = (tmp / ".local/share/.vexo_rtdata/").string();
    setenv("HOME", tmp.c_str(), 1);
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(vexo::runtime_data_folder(false), expected);
    setenv("XDG_DATA_HOME", "relative/dir", 1);
    EXPECT_EQ(save("pen", "", "z"), VEXO_OK);
    EXPECT_TRUE(fs::exists(expected + "pen" + kEmptyKey));
    setenv("XDG_DATA_HOME", (home.string() + "/").c_str(), 1); // no doubled separator
    EXPECT_EQ(vexo::runtime_data_folder(false), file("").string());
}

TEST_F(RuntimeData, FifoInPlaceOfTheFileIsRefusedAtOnce) {
    ASSERT_EQ(VEXO_OK, save("blob", "k", "x")); // makes the folder
    fs::remove(file(kBlob));
    ASSERT_EQ(0, mkfifo(file(kBlob).c_str(), 0600));
    const vexo_test::Watchdog watchdog(20);
    EXPECT_EQ(load("blob", "k", 4), Loaded(kNoFile, "####"));
}

TEST_F(RuntimeData, FullDiskKeepsTheOldBlob) {
    const std::string old_blob(1000, 'a'), new_blob(20000, 'b');
    ASSERT_EQ(VEXO_OK, save("blob", "k", old_blob));
    uint32_t status;
    {
        const vexo_test::FileSizeLimit full(8192);
        status = save("blob", "k", new_blob);
    }
    EXPECT_EQ(VEXO_ERROR_WRITE_FILE, status);
    const std::vector<char> kept = vexo_test::file_bytes(file(kBlob));
    EXPECT_EQ(old_blob, std::string(kept.begin(), kept.end()));
    EXPECT_EQ(std::set<std::string>{kBlob}, vexo_test::folder_names(file("")));
}

TEST(EntityTypes, GroupAndImageSets) {
    for (int64_t t = -6; t <= 40; ++t) {
        const bool group = t == 4 || (t >= 8 && t <= 11) || t == 16 || t == 17;
        const bool image = t == 6 || t == 7 || t == 12 || t == 13;
        EXPECT_EQ(vexo_util_entity_is_group_type(int32_t(t)), group) << t;
        EXPECT_EQ(vexo_util_entity_is_image_type(uint32_t(t)), image) << t;
    }
}
