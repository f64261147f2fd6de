// SPDX-License-Identifier: MIT
#include "corr_table.hpp"

#include <algorithm>
#include <cmath>

#include "cli.hpp"

namespace tool {

Table neutral_table() {
    Table t(new CorrTable());
    vexo_corr_set_neutral(t.get());
    return t;
}

LoadedTable load_table(const std::string &path, uint32_t format) {
    LoadedTable loaded{Table(new CorrTable()), format ? format : cli::format_from_name(path), {}};
    const uint32_t status = vexo_corr_load_corr65(loaded.table.get(), path.c_str(), format);
    if (status != VEXO_OK)
        throw cli::Failure(path + ": cannot load as " + cli::format_label(loaded.format) +
                           " correction file: " + cli::status_name(status));
    vexo_corr_get_corr_head(&loaded.head);
    return loaded;
}

namespace {
bool ends_with(const std::string &s, const char *suffix) {
    const std::string x(suffix);
    if (s.size() < x.size()) return false;
    return std::equal(x.rbegin(), x.rend(), s.rbegin(), [](char a, char b) {
        return a == std::tolower(static_cast<unsigned char>(b));
    });
}
} // namespace

void save_table(const std::string &path, const CorrTable &table, const CorrHead &head,
                double field_mm) {
    uint32_t status;
    if (ends_with(path, ".kxo"))
        status = vexo_corr_save_kxo(&table, path.c_str(), &head);
    else if (ends_with(path, ".ctb"))
        status = vexo_corr_save_ctb(&table, path.c_str());
    else if (ends_with(path, ".cor"))
        status = vexo_corr_save_cor(&table, path.c_str(), field_mm > 0 ? 65536.0 / field_mm : 0.0);
    else
        throw cli::Failure(path + ": cannot write this kind of file (use .kxo, .ctb or .cor)");
    if (status != VEXO_OK) throw cli::Failure(path + ": cannot write: " + cli::status_name(status));
}

TableStats measure(const CorrTable &table) {
    const Table neutral = neutral_table();
    TableStats s{};
    s.min_x = s.min_y = s.min_z = INFINITY;
    s.max_x = s.max_y = s.max_z = -INFINITY;
    s.rows_monotonic = s.columns_monotonic = true;
    double sum_sq = 0;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &p = table.cell[r * 65 + c];
            const GeomPoint &n = neutral->cell[r * 65 + c];
            s.min_x = std::min(s.min_x, p.x), s.max_x = std::max(s.max_x, p.x);
            s.min_y = std::min(s.min_y, p.y), s.max_y = std::max(s.max_y, p.y);
            s.min_z = std::min(s.min_z, p.z), s.max_z = std::max(s.max_z, p.z);
            const double d = std::hypot(p.x - n.x, p.y - n.y);
            s.max_deviation = std::max(s.max_deviation, d);
            sum_sq += d * d;
            if (c > 0 && !(p.x > table.cell[r * 65 + c - 1].x)) s.rows_monotonic = false;
            if (r > 0 && !(p.y > table.cell[(r - 1) * 65 + c].y)) s.columns_monotonic = false;
        }
    s.rms_deviation = std::sqrt(sum_sq / 4225.0);
    return s;
}

void difference(const CorrTable &a, const CorrTable &b, double *max, double *rms) {
    double worst = 0, sum_sq = 0;
    for (int i = 0; i < 4225; ++i) {
        const double d = std::hypot(a.cell[i].x - b.cell[i].x, a.cell[i].y - b.cell[i].y);
        worst = std::max(worst, d);
        sum_sq += d * d;
    }
    *max = worst;
    *rms = std::sqrt(sum_sq / 4225.0);
}

} // namespace tool
