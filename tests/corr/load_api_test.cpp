// The file-level load: format by number or name, file errors, the header.
#include "corr/dispatch.hpp"
#include "corr/loaders.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

namespace {

CorrHead head_now() {
    CorrHead h;
    std::memset(&h, 0x77, sizeof h);
    EXPECT_EQ(vexo_corr_get_corr_head(&h), VEXO_OK);
    return h;
}

bool head_is_zero() {
    const CorrHead h = head_now(), zero{};
    return !std::memcmp(&h, &zero, sizeof h);
}

} // namespace

TEST(CorrDispatch, ExtensionSearchOrder) {
    const std::pair<const char *, uint32_t> cases[] = {
        {"head.scor", 11}, {"HEAD.SCOR", 11}, {"head.cor", 9}, {"head.COR", 9}, {"a.crt", 8},
        {"a.ucf", 1},      {"a.UCF", 1},      {"a.ctb", 2},    {"a.ct5", 3},    {"a.gcd", 4},
        {"a.kxo", 5},      {"a.KXO", 5},      {"a.xml", 6},    {"a.txt", 7},    {"a.fcr", 10},
        {"a.FCR", 10},     {"table.Kxo", 0},  {"table.bin", 0}, {"", 0},        {".sco", 0},
        // Anywhere in the name, in a fixed order of extensions.
        {"jobs.cor/table.txt", 9}, {"x.kxo.bak", 5}, {"lens.txt/old.ucf", 1}, {"a.fcrx.xml", 6}};
    for (const auto &[path, format] : cases)
        EXPECT_EQ(vexo::format_from_path(path), format) << path;
}

TEST(CorrLoadFile, EveryFailureStatusLeavesTheTableNeutral) {
    const CorrTable neutral = neutral_table();
    const CorrHead head{};
    const std::string kxo = scratch_path("t.kxo"), bin = scratch_path("t.bin"),
                      folder = scratch_path("folder.kxo"), missing = scratch_path("missing.kxo"),
                      empty_ucf = scratch_path("e.ucf"), empty_fcr = scratch_path("e.fcr"),
                      huge = scratch_path("huge.fcr"), fits = scratch_path("fits.fcr");
    ASSERT_EQ(vexo_corr_save_kxo(&neutral, kxo.c_str(), &head), VEXO_OK);
    write_file(bin, read_file(kxo));
    write_file(empty_ucf, {});
    write_file(empty_fcr, {});
    std::filesystem::create_directories(folder);
    std::ofstream(huge).close();
    std::filesystem::resize_file(huge, (uintmax_t{64} << 20) + 1); // sparse; refused unread
    write_file(fits, ByteVec(65536 + 1000, 0));
    const struct {
        const std::string &path;
        uint32_t format, status;
    } cases[] = {{kxo, 0, VEXO_OK},         {bin, 5, VEXO_OK},       {fits, 0, VEXO_OK},
                 {bin, 0, 34},              {bin, 12, 34},           {bin, 99, 34},
                 {bin, 0xFFFFFFFF, 34},     {kxo, 3, 21}, // the number decides, not the name
                 {missing, 0, 19},          {missing, 10, 19},       {folder, 0, 19},
                 {folder, 1, 19},           {folder, 3, 19},         {folder, 10, 19},
                 {empty_ucf, 0, 21},        {empty_fcr, 0, 21},      {huge, 0, 7}};
    for (const auto &c : cases) {
        CorrTable t;
        std::memset(&t, 0xAB, sizeof t);
        EXPECT_EQ(vexo_corr_load_corr65(&t, c.path.c_str(), c.format), c.status)
            << c.path << " " << c.format;
        EXPECT_TRUE(c.status == VEXO_OK || same(t, neutral)) << c.path << " " << c.format;
    }
    CorrTable t;
    EXPECT_EQ(vexo_corr_load_corr65(static_cast<CorrTable *>(nullptr), kxo.c_str(), 0),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_load_corr65(&t, nullptr, 0), VEXO_ERROR_INVALID_PARAMETER);
}

TEST(CorrLoadFile, TextFilesStartFromTheNeutralTable) {
    const std::pair<const char *, std::string> files[] = {
        {"grid.scor", "[LMCorrectData]\nXSize=2\nYSize=2\nX-1-1=10\nMY-0-0=-3\n"},
        {"grid.txt", "SIZE: 100\n0\n0\n0\n5\n6\n"},
        {"grid.xml", "<Data><x-axis>5,6<y-axis>7"}};
    for (const auto &[name, text] : files) {
        const std::string path = scratch_path(name);
        write_file(path, ByteVec(text.begin(), text.end()));
        CorrTable from_file, direct = neutral_table();
        std::memset(&from_file, 0xAB, sizeof from_file);
        ASSERT_EQ(vexo_corr_load_corr65(&from_file, path.c_str(), 0), VEXO_OK) << name;
        CorrHead ignored;
        ASSERT_EQ(vexo::parse_corr_bytes(vexo::format_from_path(name),
                                         {reinterpret_cast<const uint8_t *>(text.data()), text.size()},
                                         direct, ignored),
                  VEXO_OK);
        EXPECT_TRUE(same(from_file, direct)) << name;
    }
}

TEST(CorrLoadFile, HeaderFollowsTheLastLoad) {
    const CorrHead head{0, 0, 0x42, {}, 0xCAFEF00D};
    const CorrTable neutral = neutral_table();
    const std::string kxo = scratch_path("head.kxo"), ucf = scratch_path("head.ucf"),
                      cut = scratch_path("cut.kxo");
    ASSERT_EQ(vexo_corr_save_kxo(&neutral, kxo.c_str(), &head), VEXO_OK);
    write_file(ucf, ByteVec(16900, 0));
    CorrTable t;
    ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK);
    const CorrHead h = head_now();
    EXPECT_TRUE(h.version == 1 && h.header_size == 12 && h.tag == 0x42 && h.value == 0xCAFEF00D);
    // Any other format, a failed load or a refused argument zeroes it.
    const std::pair<const char *, uint32_t> loads[] = {
        {ucf.c_str(), 0}, {"no-such-file.kxo", 0}, {ucf.c_str(), 77}, {kxo.c_str(), 3}, {nullptr, 0}};
    for (const auto &[path, format] : loads) {
        ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK);
        EXPECT_EQ(head_now().tag, 0x42);
        vexo_corr_load_corr65(&t, path, format);
        EXPECT_TRUE(head_is_zero()) << (path ? path : "NULL") << " " << format;
    }
    // A truncated kxo file fails but still replaces the header.
    ByteVec bytes = read_file(kxo);
    bytes.resize(20);
    bytes[4] = 0x17;
    write_file(cut, bytes);
    EXPECT_EQ(vexo_corr_load_corr65(&t, cut.c_str(), 0), VEXO_ERROR_READ_FILE);
    EXPECT_EQ(head_now().tag, 0x17);
    EXPECT_EQ(head_now().value, 0xCAFEF00Du);
}
