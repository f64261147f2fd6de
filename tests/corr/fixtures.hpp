// Test helpers for correction files: a little-endian/big-endian byte
// builder, scratch files, and the byte layout of each binary format built
// from known per-cell values, so loaders are checked against numbers the
// test chose rather than against files of unknown origin.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "vexo.h"

namespace vexo_test {

using ByteVec = std::vector<uint8_t>;

class Bytes {
  public:
    Bytes &u8(uint8_t v);
    Bytes &le16(uint16_t v);
    Bytes &le32(uint32_t v);
    Bytes &le_f32(float v);
    Bytes &le_f64(double v);
    Bytes &be16(uint16_t v);
    Bytes &be32(uint32_t v);
    Bytes &text(const std::string &s); // without a terminating zero
    Bytes &zeros(size_t n);
    const ByteVec &vec() const { return bytes_; }
    size_t size() const { return bytes_.size(); }

  private:
    ByteVec bytes_;
};

// A path inside a scratch folder private to this test process.
std::string scratch_path(const std::string &name);
void write_file(const std::string &path, const ByteVec &bytes);
ByteVec read_file(const std::string &path);

// axis: 0 = x, 1 = y, 2 = z.  Grid positions are table rows and columns,
// or for the fine grids of ct5 / fcr their own row and column.
using CellValue = std::function<double(int row, int column, int axis)>;

// Column-major u16 planes Y, X (, Z).  with_z false gives the 16,900-byte
// headerless form; true prefixes the 4 header bytes 'U','C','F','1'.
ByteVec ucf_file(const CellValue &word, bool with_z);
ByteVec ctb_file(const CellValue &word);
// 64-byte header, then 257x257 u32 Y and X planes; plane line = fine column,
// entry in line = fine row.
ByteVec ct5_file(const CellValue &fine_word);
// Row-major i16 triples Z, X, Y.
ByteVec gcd_file(const CellValue &offset);
// 12-byte header as given, then column-major big-endian i32 planes X, Y, Z.
ByteVec kxo_file(const uint8_t header[12], const CellValue &stored);
// 2048 bytes of filler, then row-major f32 quadruples (slot 0, 1 via axis
// 1 and 0: first value = axis 1, second = axis 0; slots 2, 3 = axis 2).
ByteVec crt_file(const CellValue &value);
// "JCZ_COR_3", factors at 40, f64 pairs from 56.
ByteVec cor3_file(double sx, double sy, const CellValue &delta);
// 519 bytes of filler, then f64 pairs.
ByteVec cor_plain_file(const CellValue &delta);
// "JCZ_COR_2_1", scale at 28, i32 pairs from 36, zero trailer.
ByteVec cor21_file(double scale, const CellValue &delta);
// `lead` filler bytes, then 128x128 row-major i16 planes X, Y.
ByteVec fcr_file(size_t lead, const CellValue &fine_delta);

// Neutral value of a grid line, computed independently of the library.
double neutral(int line);

// Table filled with a smooth, non-trivial distortion, inside the output
// range (|offset| < 300).
CorrTable distorted_table();

} // namespace vexo_test
