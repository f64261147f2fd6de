// The file-level load: format by number or name, file errors, the header.
#include "corr/dispatch.hpp"
#include "fixtures.hpp"

using namespace vexo_test;

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

// A load starts from the neutral table, and every failure leaves it neutral.
TEST(CorrLoadFile, StatusesAndTheNeutralStart) {
    const std::string fcr = scratch_path("zero.fcr"), bin = scratch_path("zero.bin"),
                      txt = scratch_path("size.txt"), folder = scratch_path("folder.kxo"),
                      missing = scratch_path("missing.kxo"), empty_ucf = scratch_path("e.ucf"),
                      empty_fcr = scratch_path("e.fcr"), huge = scratch_path("huge.fcr");
    write_file(fcr, ByteVec(65536 + 1000, 0)); // zero deltas
    write_file(bin, ByteVec(65536, 0));
    write_file(txt, {'S', 'I', 'Z', 'E', ':', '9'});
    write_file(empty_ucf, {});
    write_file(empty_fcr, {});
    std::filesystem::create_directories(folder);
    std::ofstream(huge).close();
    std::filesystem::resize_file(huge, (uintmax_t{64} << 20) + 1); // sparse; refused unread
    const struct { const std::string &path; uint32_t format, status; } cases[] = {
        {fcr, 0, VEXO_OK},      {bin, 10, VEXO_OK},     {txt, 0, VEXO_OK},
        {bin, 0, 34},           {bin, 12, 34},          {bin, 99, 34},     {bin, 0xFFFFFFFF, 34},
        {fcr, 3, 21}, // the number decides, not the name
        {missing, 0, 19},       {missing, 10, 19},      {folder, 0, 19},   {folder, 1, 19},
        {folder, 3, 19},        {folder, 10, 19},       {empty_ucf, 0, 21}, {empty_fcr, 0, 21},
        {huge, 0, 7}};
    const CorrTable neutral = neutral_table();
    for (const auto &c : cases) {
        CorrTable t;
        std::memset(&t, 0xAB, sizeof t);
        EXPECT_EQ(vexo_corr_load_corr65(&t, c.path.c_str(), c.format), c.status) << c.path;
        EXPECT_TRUE(same(t, neutral)) << c.path << " " << c.format;
    }
    CorrTable t;
    EXPECT_EQ(vexo_corr_load_corr65(static_cast<CorrTable *>(nullptr), fcr.c_str(), 0),
              VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_load_corr65(&t, nullptr, 0), VEXO_ERROR_INVALID_PARAMETER);
}

TEST(CorrLoadFile, HeaderFollowsTheLastLoad) {
    auto head_now = [] {
        CorrHead h;
        std::memset(&h, 0x77, sizeof h);
        EXPECT_EQ(vexo_corr_get_corr_head(&h), VEXO_OK);
        return h;
    };
    const CorrHead head{0, 0, 0x42, {}, 0xCAFEF00D}, zero{};
    const CorrTable neutral = neutral_table();
    const std::string kxo = scratch_path("head.kxo"), ucf = scratch_path("head.ucf"),
                      cut = scratch_path("cut.kxo");
    ASSERT_EQ(vexo_corr_save_kxo(&neutral, kxo.c_str(), &head), VEXO_OK);
    write_file(ucf, ByteVec(16900, 0));
    // Any other format, a failed load or a refused argument zeroes it.
    const std::pair<const char *, uint32_t> loads[] = {
        {ucf.c_str(), 0}, {"no-such.kxo", 0}, {ucf.c_str(), 77}, {kxo.c_str(), 3}, {nullptr, 0}};
    for (const auto &[path, format] : loads) {
        CorrTable t;
        ASSERT_EQ(vexo_corr_load_corr65(&t, kxo.c_str(), 0), VEXO_OK);
        CorrHead h = head_now();
        EXPECT_TRUE(h.version == 1 && h.header_size == 12 && h.tag == 0x42 && h.value == 0xCAFEF00D)
            << format;
        vexo_corr_load_corr65(&t, path, format);
        h = head_now();
        EXPECT_EQ(std::memcmp(&h, &zero, sizeof h), 0) << (path ? path : "NULL") << " " << format;
    }
    // A cut kxo file fails, yet its header is taken from as many bytes as it
    // has (the rest zero); reserved bytes are kept as read.
    const struct { size_t length; uint16_t version, header_size; uint8_t tag; uint32_t value; }
        cuts[] = {{0, 0, 0, 0, 0},      {3, 1, 0, 0, 0},  {6, 1, 12, 0x42, 0},
                  {12, 1, 12, 0x42, 0xCAFEF00D}, {50711, 1, 12, 0x42, 0xCAFEF00D}};
    for (const auto &c : cuts) {
        ByteVec bytes = read_file(kxo);
        bytes[7] = 0xCC;
        bytes.resize(c.length);
        write_file(cut, bytes);
        CorrTable t;
        EXPECT_EQ(vexo_corr_load_corr65(&t, cut.c_str(), 0), VEXO_ERROR_READ_FILE);
        const CorrHead h = head_now();
        EXPECT_TRUE(h.version == c.version && h.header_size == c.header_size && h.tag == c.tag &&
                    h.reserved[2] == (c.length >= 8 ? 0xCC : 0) && h.value == c.value)
            << c.length;
    }
}
