// SPDX-License-Identifier: MIT
// Loading, saving and measuring correction tables for the tool.
#pragma once

#include <memory>
#include <string>

#include "vexo.h"

namespace tool {

using Table = std::unique_ptr<CorrTable>;

struct LoadedTable {
    Table table;
    uint32_t format; // the format it was read as
    CorrHead head;   // the header that came with it (zero unless kxo)
};

Table neutral_table();
LoadedTable load_table(const std::string &path, uint32_t format);
// The writer is chosen by the extension of `path`: .kxo, .ctb or .cor.
// `field_mm` > 0 gives .cor files their galvo-units-per-mm scale.
void save_table(const std::string &path, const CorrTable &table, const CorrHead &head,
                double field_mm);

struct TableStats {
    double min_x, max_x, min_y, max_y, min_z, max_z;
    double max_deviation; // largest distance of a node from its neutral place
    double rms_deviation;
    bool rows_monotonic;    // x grows along every row
    bool columns_monotonic; // y grows along every column
};
TableStats measure(const CorrTable &table);

// Largest and RMS distance between corresponding nodes of a and b.
void difference(const CorrTable &a, const CorrTable &b, double *max, double *rms);

constexpr double kFieldUnits = 65535.0;

} // namespace tool
