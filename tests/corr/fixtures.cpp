#include "fixtures.hpp"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace vexo_test {

Bytes &Bytes::u8(uint8_t v) {
    bytes_.push_back(v);
    return *this;
}
Bytes &Bytes::le16(uint16_t v) { return u8(uint8_t(v)).u8(uint8_t(v >> 8)); }
Bytes &Bytes::le32(uint32_t v) { return le16(uint16_t(v)).le16(uint16_t(v >> 16)); }
Bytes &Bytes::le_f32(float v) {
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    return le32(bits);
}
Bytes &Bytes::le_f64(double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, 8);
    return le32(uint32_t(bits)).le32(uint32_t(bits >> 32));
}
Bytes &Bytes::be16(uint16_t v) { return u8(uint8_t(v >> 8)).u8(uint8_t(v)); }
Bytes &Bytes::be32(uint32_t v) { return be16(uint16_t(v >> 16)).be16(uint16_t(v)); }
Bytes &Bytes::text(const std::string &s) {
    bytes_.insert(bytes_.end(), s.begin(), s.end());
    return *this;
}
Bytes &Bytes::zeros(size_t n) {
    bytes_.insert(bytes_.end(), n, 0);
    return *this;
}

namespace {

// Never destroyed, so the exit handler can still use it.
const std::filesystem::path &scratch_folder() {
    static const auto *folder = [] {
        auto *p = new std::filesystem::path(std::filesystem::temp_directory_path() /
                                            ("vexo_corr_test_" + std::to_string(::getpid())));
        std::filesystem::create_directories(*p);
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(scratch_folder(), ignored);
        });
        return p;
    }();
    return *folder;
}

void column_major_u16(Bytes &b, const CellValue &word, int axis) {
    for (int c = 0; c < 65; ++c)
        for (int r = 0; r < 65; ++r)
            b.le16(uint16_t(word(r, c, axis)));
}

} // namespace

std::string scratch_path(const std::string &name) { return (scratch_folder() / name).string(); }

void write_file(const std::string &path, const ByteVec &bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
    if (!out)
        throw std::runtime_error("cannot write " + path);
}

ByteVec read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return ByteVec((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

ByteVec ucf_file(const CellValue &word, bool with_z) {
    Bytes b;
    if (with_z)
        b.text("UCF1");
    column_major_u16(b, word, 1);
    column_major_u16(b, word, 0);
    if (with_z)
        column_major_u16(b, word, 2);
    return b.vec();
}

ByteVec ctb_file(const CellValue &word) {
    Bytes b;
    column_major_u16(b, word, 1);
    column_major_u16(b, word, 0);
    return b.vec();
}

ByteVec ct5_file(const CellValue &fine_word) {
    Bytes b;
    b.text("CT5 header").zeros(54);
    for (int axis : {1, 0})
        for (int line = 0; line < 257; ++line)
            for (int entry = 0; entry < 257; ++entry)
                b.le32(uint32_t(fine_word(entry, line, axis)));
    return b.vec();
}

ByteVec gcd_file(const CellValue &offset) {
    Bytes b;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            b.le16(uint16_t(int16_t(offset(r, c, 2))))
                .le16(uint16_t(int16_t(offset(r, c, 0))))
                .le16(uint16_t(int16_t(offset(r, c, 1))));
    return b.vec();
}

ByteVec kxo_file(const uint8_t header[12], const CellValue &stored) {
    Bytes b;
    for (int i = 0; i < 12; ++i)
        b.u8(header[i]);
    for (int axis = 0; axis < 3; ++axis)
        for (int c = 0; c < 65; ++c)
            for (int r = 0; r < 65; ++r)
                b.be32(uint32_t(int32_t(stored(r, c, axis))));
    return b.vec();
}

ByteVec crt_file(const CellValue &value) {
    Bytes b;
    b.text("CRT").zeros(2045);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            b.le_f32(float(value(r, c, 1)))
                .le_f32(float(value(r, c, 0)))
                .le_f32(float(value(r, c, 2)))
                .le_f32(float(value(r, c, 2)));
    return b.vec();
}

ByteVec cor3_file(double sx, double sy, const CellValue &delta) {
    Bytes b;
    b.text("JCZ_COR_3").zeros(31).le_f64(sx).le_f64(sy);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            b.le_f64(delta(r, c, 0)).le_f64(delta(r, c, 1));
    return b.vec();
}

ByteVec cor_plain_file(const CellValue &delta) {
    Bytes b;
    b.text("JCZ_COR_").zeros(511); // near miss of the scaled label
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            b.le_f64(delta(r, c, 0)).le_f64(delta(r, c, 1));
    return b.vec();
}

ByteVec cor21_file(double scale, const CellValue &delta) {
    Bytes b;
    b.text("JCZ_COR_2_1").zeros(17).le_f64(scale);
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c)
            b.le32(uint32_t(int32_t(delta(r, c, 0)))).le32(uint32_t(int32_t(delta(r, c, 1))));
    b.zeros(4);
    return b.vec();
}

ByteVec fcr_file(size_t lead, const CellValue &fine_delta) {
    Bytes b;
    for (size_t i = 0; i < lead; ++i)
        b.u8(uint8_t(0xA5 ^ i));
    for (int axis : {0, 1})
        for (int r = 0; r < 128; ++r)
            for (int c = 0; c < 128; ++c)
                b.le16(uint16_t(int16_t(fine_delta(r, c, axis))));
    return b.vec();
}

double neutral(int line) { return -32767.5 + line * (65535.0 / 64.0); }

CorrTable distorted_table() {
    CorrTable t;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            GeomPoint &p = t.cell[r * 65 + c];
            p.x = 0.99 * neutral(c) + 250.0 * std::sin(0.1 * r + 0.05 * c) + 0.123456789 * r;
            p.y = 0.99 * neutral(r) - 180.0 * std::cos(0.07 * c) + 1e-3 * c * r;
            p.z = 40.0 * std::sin(0.2 * (r - c)) - 0.3;
            p.flags = uint32_t(r * 65 + c);
        }
    return t;
}

} // namespace vexo_test
