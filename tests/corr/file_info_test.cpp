// SPDX-License-Identifier: MIT
// The per-call load and save record: what each format carries beside the
// grid, read from files built here byte by byte and written back.
#include <fstream>
#include <iterator>

#include "fixtures.hpp"

using namespace vexo_test;

namespace {

ByteVec file_bytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return ByteVec(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string text(const ByteVec &b) {
    return std::string(b.begin(), b.end());
}

void put_le_f64(ByteVec &b, size_t at, double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, 8);
    for (int i = 0; i < 8; ++i) b[at + size_t(i)] = uint8_t(bits >> 8 * i);
}

double le_f64(const ByteVec &b, size_t at) {
    uint64_t bits = 0;
    for (int i = 7; i >= 0; --i) bits = bits << 8 | b[at + size_t(i)];
    double v;
    std::memcpy(&v, &bits, 8);
    return v;
}

// A ctb of words 32767 (a plane entry k reads back as -0.5), then `extra`.
ByteVec ctb_with(const ByteVec &extra) {
    ByteVec b;
    for (int k = 0; k < 2 * 4225; ++k) b.push_back(0xFF), b.push_back(0x7F);
    b.insert(b.end(), extra.begin(), extra.end());
    return b;
}

struct Loaded {
    uint32_t status;
    CorrTable table;
    CorrFileInfo info;
};

Loaded load(const std::string &path, uint32_t format = 0) {
    Loaded l;
    l.status = vexo_corr_load_ex(&l.table, path.c_str(), format, &l.info);
    return l;
}

} // namespace

// The scale goes to its offset with its flag; without it a scale in the
// record is not meant and 0 is written.  A load reads the field either way.
TEST(CorrFileInfo, CorScaleIsWrittenAtItsOffsetAndReadBack) {
    for (const uint32_t flags : {uint32_t(VEXO_CORR_INFO_SCALE), 0u}) {
        CorrFileInfo info{};
        info.flags = flags;
        info.scale = 595.781818;
        const std::string path = scratch_path("scale.cor");
        const CorrTable t = neutral_table();
        ASSERT_EQ(vexo_corr_save_ex(&t, path.c_str(), VEXO_CORR_FORMAT_COR, &info), VEXO_OK);
        const double written = flags ? 595.781818 : 0.0;
        EXPECT_EQ(le_f64(file_bytes(path), 28), written);
        Loaded l = load(path);
        EXPECT_EQ(l.status, VEXO_OK);
        EXPECT_EQ(l.info.format, VEXO_CORR_FORMAT_COR);
        EXPECT_EQ(l.info.flags, VEXO_CORR_INFO_SCALE | VEXO_CORR_INFO_NO_Z);
        EXPECT_EQ(l.info.scale, written);
    }
}

TEST(CorrFileInfo, CorFactorsOfTheFactorLayout) {
    ByteVec b = ByteVec(56 + 16 * 4225, 0);
    std::memcpy(b.data(), "JCZ_COR_3", 9);
    put_le_f64(b, 40, 2.5);
    put_le_f64(b, 48, -0.75);
    Loaded l = load(scratch_file("factors.cor", text(b)));
    EXPECT_EQ(l.status, VEXO_OK);
    EXPECT_EQ(l.info.flags, VEXO_CORR_INFO_FACTORS | VEXO_CORR_INFO_NO_Z);
    EXPECT_EQ(l.info.factors[0], 2.5);
    EXPECT_EQ(l.info.factors[1], -0.75);
}

TEST(CorrFileInfo, Ct5HeaderWordsLittleEndian) {
    ByteVec b(64 + 2 * 257 * 257 * 4, 0);
    for (int i = 0; i < 64; ++i) b[size_t(i)] = uint8_t(i);
    Loaded l = load(scratch_file("params.ct5", text(b)));
    EXPECT_EQ(l.status, VEXO_OK);
    EXPECT_EQ(l.info.flags, VEXO_CORR_INFO_PARAMS | VEXO_CORR_INFO_NO_Z);
    EXPECT_EQ(l.info.params[0], 0x03020100u);
    EXPECT_EQ(l.info.params[15], 0x3F3E3D3Cu);
}

TEST(CorrFileInfo, CtbTrailerRoundTripsByteForByte) {
    const ByteVec original = ctb_with({'T', 'R', 'A', 'I', 'L', 0, 0xFE});
    Loaded l = load(scratch_file("trailer.ctb", text(original)));
    ASSERT_EQ(l.status, VEXO_OK);
    EXPECT_EQ(l.info.flags, VEXO_CORR_INFO_TRAILER | VEXO_CORR_INFO_NO_Z);
    ASSERT_EQ(l.info.trailer_size, 7u);
    EXPECT_EQ(ByteVec(l.info.trailer, l.info.trailer + 7),
              ByteVec(original.end() - 7, original.end()));
    const std::string out = scratch_path("again.ctb");
    ASSERT_EQ(vexo_corr_save_ex(&l.table, out.c_str(), 0, &l.info), VEXO_OK);
    EXPECT_EQ(file_bytes(out), original);
    vexo_corr_release_info(&l.info);
}

TEST(CorrFileInfo, PlainCtbHasNoTrailer) {
    Loaded l = load(scratch_file("plain.ctb", text(ctb_with({}))));
    EXPECT_EQ(l.status, VEXO_OK);
    EXPECT_EQ(l.info.flags, VEXO_CORR_INFO_NO_Z);
    EXPECT_EQ(l.info.trailer, nullptr);
    EXPECT_EQ(l.table.cell[0].z, -32767.5); // the loader's own fill is kept
}

TEST(CorrFileInfo, TrailerSizeWithoutBytesIsRefused) {
    CorrFileInfo info{};
    info.flags = VEXO_CORR_INFO_TRAILER;
    info.trailer_size = 4;
    const CorrTable t = neutral_table();
    EXPECT_EQ(vexo_corr_save_ex(&t, scratch_path("x.ctb").c_str(), 0, &info),
              VEXO_ERROR_INVALID_PARAMETER);
}

TEST(CorrFileInfo, KxoHeaderInRecordLibraryHeaderUntouched) {
    const CorrTable t = neutral_table();
    const CorrHead first{1, 12, 0x11, {0, 0, 0}, 0xAAAA0001};
    const CorrHead second{1, 12, 0x22, {0, 0, 0}, 0xBBBB0002};
    const std::string a = scratch_path("first.kxo"), b = scratch_path("second.kxo");
    ASSERT_EQ(vexo_corr_save_kxo(&t, a.c_str(), &first), VEXO_OK);
    CorrFileInfo write{};
    write.head = second;
    ASSERT_EQ(vexo_corr_save_ex(&t, b.c_str(), VEXO_CORR_FORMAT_KXO, &write), VEXO_OK);
    CorrTable scratch;
    ASSERT_EQ(vexo_corr_load_corr65(&scratch, a.c_str(), 0), VEXO_OK);
    Loaded l = load(b);
    EXPECT_EQ(l.status, VEXO_OK);
    EXPECT_EQ(l.info.flags, VEXO_CORR_INFO_HEAD);
    EXPECT_EQ(l.info.head.tag, 0x22);
    EXPECT_EQ(l.info.head.value, 0xBBBB0002u);
    CorrHead global{};
    vexo_corr_get_corr_head(&global);
    EXPECT_EQ(global.tag, 0x11);
    EXPECT_EQ(global.value, 0xAAAA0001u);
}

// ucf has z only in its long form, xml only with a z list.
TEST(CorrFileInfo, NoZFlagForFormsWithoutZ) {
    std::string list;
    for (int i = 0; i < 4225; ++i) list += "0,";
    const std::string xml = "<Data><x-axis>" + list + "</x-axis><y-axis>" + list + "</y-axis>";
    const struct {
        const char *name;
        std::string bytes;
        uint32_t flags;
    } cases[] = {{"short.ucf", text(ctb_with({})), VEXO_CORR_INFO_NO_Z},
                 {"long.ucf", std::string(4 + 25350, '\x01'), 0},
                 {"flat.xml", xml + "</Data>", VEXO_CORR_INFO_NO_Z},
                 {"z.xml", xml + "<z-axis>" + list + "</z-axis></Data>", 0}};
    for (const auto &c : cases) {
        const Loaded l = load(scratch_file(c.name, c.bytes));
        EXPECT_EQ(l.status, VEXO_OK) << c.name;
        EXPECT_EQ(l.info.flags, c.flags) << c.name;
    }
}

TEST(CorrFileInfo, FailedLoadKeepsOnlyTheFormat) {
    Loaded l = load(scratch_path("missing.ctb"));
    EXPECT_EQ(l.status, VEXO_ERROR_OPEN_FILE);
    EXPECT_EQ(l.info.format, VEXO_CORR_FORMAT_CTB);
    EXPECT_EQ(l.info.flags, 0u);
    EXPECT_EQ(l.info.trailer, nullptr);
}

TEST(CorrFileInfo, SaveRefusesFormatsWithoutWriter) {
    const CorrTable t = neutral_table();
    const std::string path = scratch_path("no.xml");
    EXPECT_EQ(vexo_corr_save_ex(&t, path.c_str(), 0, nullptr), VEXO_ERROR_UNKNOWN_FORMAT);
    EXPECT_EQ(vexo_corr_save_ex(&t, path.c_str(), 12, nullptr), VEXO_ERROR_UNKNOWN_FORMAT);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(CorrFileInfo, NullArgumentsAndRelease) {
    const CorrTable t = neutral_table();
    CorrTable out;
    EXPECT_EQ(vexo_corr_save_ex(nullptr, "a.kxo", 0, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_save_ex(&t, nullptr, 0, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vexo_corr_load_ex(&out, nullptr, 0, nullptr), VEXO_ERROR_INVALID_PARAMETER);
    CorrFileInfo info{};
    info.flags = 7;
    info.trailer = static_cast<uint8_t *>(std::malloc(3));
    vexo_corr_release_info(&info);
    EXPECT_EQ(info.flags, 0u);
    EXPECT_EQ(info.trailer, nullptr);
    vexo_corr_release_info(nullptr);
}
