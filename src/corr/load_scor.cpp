// SPDX-License-Identifier: MIT
// ".scor" key files: a "[LMCorrectData]" header with the field ranges and
// grid sizes, then one "key-i-j=value" line per nominal or measured grid
// coordinate.  The table is interpolated from the two grids.
#include <cstdlib>
#include <string_view>
#include <type_traits>

#include "corr/interpolate.hpp"
#include "corr/loaders.hpp"
#include "corr/text_lines.hpp"
#include "corr/text_numbers.hpp"

namespace vexo {
namespace {

constexpr size_t kFirstLineBuffer = 20;
constexpr size_t kLineBuffer = 100;
constexpr int32_t kMaxGridSide = 15;

struct ScorHeader {
    float range_x = 100;
    float range_y = 100;
    int32_t size_x = 0;
    int32_t size_y = 0;

    bool complete() const { return range_x != 0 && range_y != 0 && size_x != 0 && size_y != 0; }
};

// "Key=%f" / "Key=%d": a value that does not convert leaves the old one.
template <class T> void set_from(std::string_view line, std::string_view key, T &target) {
    if (!starts_with(line, key)) return;
    T value{};
    size_t used = 0;
    if constexpr (std::is_same_v<T, float>)
        used = read_float(line.substr(key.size()), value);
    else
        used = read_int32(line.substr(key.size()), value);
    if (used > 0) target = value;
}

// Header lines up to the point where both ranges and both sizes are known.
bool read_header(TextLineReader &lines, ScorHeader &header) {
    std::string_view line;
    while (!header.complete()) {
        if (!lines.next(kLineBuffer, line)) return false;
        set_from(line, "RangeX=", header.range_x);
        set_from(line, "RangeY=", header.range_y);
        set_from(line, "XSize=", header.size_x);
        set_from(line, "YSize=", header.size_y);
        // "ZBasePos=" carries nothing the table needs.
    }
    return true;
}

// "%d-%d=%f" after the key; false unless all three convert.
bool read_entry(std::string_view rest, int32_t &i, int32_t &j, float &value) {
    size_t used = read_int32(rest, i);
    if (used == 0 || used >= rest.size() || rest[used] != '-') return false;
    rest.remove_prefix(used + 1);
    used = read_int32(rest, j);
    if (used == 0 || used >= rest.size() || rest[used] != '=') return false;
    rest.remove_prefix(used + 1);
    return read_float(rest, value) > 0;
}

struct Grids {
    GeomPoint *nominal = nullptr;
    GeomPoint *measured = nullptr;
    ~Grids() {
        std::free(nominal);
        std::free(measured);
    }
};

// One data line.  VEXO_OK for a stored value or a line that is not a grid
// entry; VEXO_ERROR_INVALID_DATA for an index off the grid.
uint32_t apply_line(std::string_view line, int32_t n, Grids &grids) {
    struct Key {
        std::string_view text;
        bool measured;
        bool is_y;
    };
    static constexpr Key kKeys[] = {
        {"X-", false, false}, {"Y-", false, true}, {"MX-", true, false}, {"MY-", true, true}};
    for (const Key &key : kKeys) {
        if (!starts_with(line, key.text)) continue;
        int32_t i = 0;
        int32_t j = 0;
        float value = 0;
        if (!read_entry(line.substr(key.text.size()), i, j, value)) return VEXO_OK;
        if (i < 0 || i >= n || j < 0 || j >= n) return VEXO_ERROR_INVALID_DATA;
        // The second index counts the other way along its axis.
        GeomPoint &cell = (key.measured ? grids.measured : grids.nominal)[i * n + (n - 1 - j)];
        (key.is_y ? cell.y : cell.x) = value;
        return VEXO_OK;
    }
    return VEXO_OK;
}

} // namespace

uint32_t parse_scor(ByteSpan file, CorrTable &table) {
    TextLineReader lines(file);
    std::string_view line;
    if (!lines.next(kFirstLineBuffer, line) || !starts_with(line, "[LMCorrectData]"))
        return VEXO_ERROR_READ_FILE;

    ScorHeader header;
    if (!read_header(lines, header)) return VEXO_ERROR_INVALID_HEADER;
    if (header.size_x < 1 || header.size_x > kMaxGridSide || header.size_x != header.size_y)
        return VEXO_ERROR_INVALID_HEADER;
    const int32_t n = header.size_x;

    Grids grids;
    const size_t cells = static_cast<size_t>(n) * static_cast<size_t>(n);
    grids.nominal = static_cast<GeomPoint *>(std::calloc(cells, sizeof(GeomPoint)));
    grids.measured = static_cast<GeomPoint *>(std::calloc(cells, sizeof(GeomPoint)));
    if (!grids.nominal || !grids.measured) return VEXO_ERROR_NO_MEMORY;

    while (lines.next(kLineBuffer, line)) {
        const uint32_t status = apply_line(line, n, grids);
        if (status != VEXO_OK) return status;
    }
    // RangeY is read but the table is normalised on the X range alone.
    return interpolate_grid(static_cast<uint32_t>(n), grids.measured, grids.nominal, header.range_x,
                            table);
}

} // namespace vexo
