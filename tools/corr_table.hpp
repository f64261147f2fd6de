// SPDX-License-Identifier: MIT
// Correction tables as the tool handles them: loaded with their file
// record, checked before writing, measured and compared.
#pragma once

#include <memory>
#include <string>

#include "formats.hpp"
#include "vexo.h"

namespace tool {

constexpr double kFieldUnits = 65535.0;

// A table with the record of the file it came from (released with it).
struct LoadedTable {
    LoadedTable();
    ~LoadedTable();
    LoadedTable(const LoadedTable &) = delete;
    LoadedTable &operator=(const LoadedTable &) = delete;

    std::unique_ptr<CorrTable> table;
    CorrFileInfo info;
    const FormatSpec *format = nullptr;
    bool forced = false; // format given by --format rather than detected
    bool has_z = true;   // false: z is 0 because the file has none
    // Galvo units per mm when the file says (".cor" scale), else 0.
    double units_per_mm() const;
};

// Loads path ("-": standard input).  Without `forced` the format comes from
// the final extension (or, on standard input, the content's own labels) and
// the content must fit it.  Tables from formats without z get z = 0.
std::unique_ptr<LoadedTable> load_table(const std::string &path, const FormatSpec *forced);

// A neutral table with an empty record.
std::unique_ptr<LoadedTable> neutral_table();

// Writes table as format to path (atomic, "-" for stdout) after checking it
// (finite, monotonic, within the format's range) unless --force.
void save_table(const std::string &path, const FormatSpec &format, const LoadedTable &table);

// The output format: `name` if given, else the final extension of path.
const FormatSpec &output_format(const std::string &path, const std::string &name);

struct Node {
    int row = 0, column = 0;
};

struct TableStats {
    double min[3], max[3]; // x, y, z
    double max_deviation;  // largest 2D distance of a node from its neutral place
    double rms_deviation;
    Node worst;             // where the largest deviation is
    bool rows_monotonic;    // x grows along every row
    bool columns_monotonic; // y grows along every column
    bool finite;
};
TableStats measure(const CorrTable &table);

struct Difference {
    double max = 0, rms = 0; // distance over x, y (and z when compared)
    Node worst;
    double dx = 0, dy = 0, dz = 0; // b - a at the worst node
};
Difference difference(const CorrTable &a, const CorrTable &b, bool with_z);

} // namespace tool
