// SPDX-License-Identifier: MIT
#include "corr_table.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "cli.hpp"

namespace tool {
namespace {

// Correction files are at most a few hundred KiB; the library's own limit.
constexpr size_t kMaxTableFile = size_t{64} << 20;

const GeomPoint &cell(const CorrTable &t, int row, int column) {
    return t.cell[row * 65 + column];
}

double neutral_coordinate(int line) {
    return (line - 32) * 0.015625 * 65535.0;
}

std::string node_text(int row, int column) {
    return "node (row " + std::to_string(row) + ", column " + std::to_string(column) + ")";
}

// Standard input goes through a temporary file: the library loads paths.
struct TemporaryCopy {
    std::string path;
    ~TemporaryCopy() {
        if (!path.empty()) ::unlink(path.c_str());
    }
};

void copy_to_temporary(const std::vector<uint8_t> &bytes, TemporaryCopy &copy) {
    const char *dir = std::getenv("TMPDIR");
    std::string name = std::string(dir && *dir ? dir : "/tmp") + "/vexo-stdin.XXXXXX";
    const int fd = ::mkstemp(name.data());
    if (fd < 0) throw cli::Failure("standard input: cannot make a temporary copy");
    copy.path = name;
    const bool ok = ::write(fd, bytes.data(), bytes.size()) == ssize_t(bytes.size());
    ::close(fd);
    if (!ok) throw cli::Failure("standard input: cannot make a temporary copy");
}

const FormatSpec &detect(const std::string &path, const std::vector<uint8_t> &bytes) {
    if (path == "-") {
        const FormatSpec *f = format_of_content(bytes);
        if (!f) throw cli::Usage("standard input: give its format with --format");
        return *f;
    }
    const FormatSpec *f = format_of_path(path);
    if (!f)
        throw cli::Failure(path + ": no correction file extension (see vexo corr formats, or "
                                  "give --format)");
    const std::string mismatch = content_mismatch(*f, bytes);
    if (!mismatch.empty())
        throw cli::Failure(path + ": named ." + f->name + " but the content does not fit: " +
                           mismatch + " (give --format to read it anyway)");
    return *f;
}

// The worst problem the writer would hide; empty when there is none.
std::string check_for_writing(const CorrTable &t, const FormatSpec &f, bool has_z) {
    // Not finite: nothing to write at all.
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &p = cell(t, r, c);
            const double v[3] = {p.x, p.y, p.z};
            for (int a = 0; a < 3; ++a)
                if (!std::isfinite(v[a]))
                    return node_text(r, c) + " " + "xyz"[a] + " is " + std::to_string(v[a]);
        }
    // Outside the format's range: the writer would clamp.
    double worst = 0;
    std::string what;
    const int axes = f.has_z && has_z ? 3 : 2;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &p = cell(t, r, c);
            const double v[3] = {p.x, p.y, p.z};
            for (int a = 0; a < axes; ++a) {
                // ".cor" stores deltas from the neutral grid.
                double w = v[a];
                if (f.number == VEXO_CORR_FORMAT_COR && a < 2)
                    w = neutral_coordinate(a == 0 ? c : r) - v[a];
                const double over = std::max(f.lo - w, w - f.hi);
                if (over > worst) {
                    worst = over;
                    char text[200];
                    std::snprintf(text, sizeof text,
                                  " %c = %.3f lies %.3f units outside the %s range %.1f .. %.1f",
                                  "xyz"[a], v[a], over, f.name, f.lo, f.hi);
                    what = node_text(r, c) + text;
                }
            }
        }
    if (!what.empty()) return what + " (the writer would clamp it)";
    // Folded: x must grow along rows and y along columns.
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &p = cell(t, r, c);
            const double fold_x = c > 0 ? cell(t, r, c - 1).x - p.x : -1;
            const double fold_y = r > 0 ? cell(t, r - 1, c).y - p.y : -1;
            const double fold = std::max(fold_x, fold_y);
            if (fold >= 0 && fold >= worst) {
                worst = fold;
                char text[160];
                std::snprintf(text, sizeof text, " folds back by %.3f units in %c", fold,
                              fold_x >= fold_y ? 'x' : 'y');
                what = node_text(r, c) + text;
            }
        }
    return what.empty() ? "" : what + " (the table is not monotonic)";
}

} // namespace

LoadedTable::LoadedTable() : table(new CorrTable()), info() {}

LoadedTable::~LoadedTable() {
    vexo_corr_release_info(&info);
}

double LoadedTable::units_per_mm() const {
    return (info.flags & VEXO_CORR_INFO_SCALE) && info.scale > 0 ? info.scale : 0.0;
}

std::unique_ptr<LoadedTable> load_table(const std::string &path, const FormatSpec *forced) {
    const std::vector<uint8_t> bytes = cli::read_input(path, kMaxTableFile);
    const FormatSpec &format = forced ? *forced : detect(path, bytes);
    TemporaryCopy copy;
    if (path == "-") copy_to_temporary(bytes, copy);
    const std::string &source = path == "-" ? copy.path : path;
    auto loaded = std::make_unique<LoadedTable>();
    loaded->format = &format;
    loaded->forced = forced != nullptr;
    const uint32_t status =
        vexo_corr_load_ex(loaded->table.get(), source.c_str(), format.number, &loaded->info);
    if (status != VEXO_OK)
        throw cli::Failure((path == "-" ? std::string("standard input") : path) +
                           ": cannot read as " + format.name + ": " + cli::status_text(status));
    if (loaded->info.flags & VEXO_CORR_INFO_NO_Z) {
        // The loader's fill value is not a focus; hand on a flat z.
        loaded->has_z = false;
        for (GeomPoint &p : loaded->table->cell) p.z = 0.0;
    }
    return loaded;
}

std::unique_ptr<LoadedTable> neutral_table() {
    auto t = std::make_unique<LoadedTable>();
    vexo_corr_set_neutral(t->table.get());
    t->format = &format_number(VEXO_CORR_FORMAT_KXO);
    return t;
}

const FormatSpec &output_format(const std::string &path, const std::string &name) {
    const FormatSpec *f = nullptr;
    if (!name.empty())
        f = &format_named(name);
    else if (path == "-")
        throw cli::Usage("standard output: give its format with --to");
    else
        f = format_of_path(path);
    if (!f) throw cli::Usage(path + ": no correction file extension (use .kxo, .ctb or .cor)");
    if (!f->writable)
        throw cli::Usage(path + ": " + f->name + " files cannot be written (kxo, ctb or cor can)");
    return *f;
}

void save_table(const std::string &path, const FormatSpec &format, const LoadedTable &t) {
    const std::string problem = check_for_writing(*t.table, format, t.has_z);
    const std::string name = path == "-" ? "standard output" : path;
    if (!problem.empty()) {
        if (!cli::global().force)
            throw cli::Failure(name + ": not written: " + problem + "; --force writes it anyway");
        std::fprintf(stderr, "vexo: warning: %s: %s\n", name.c_str(), problem.c_str());
    }
    cli::write_output(path, [&](const std::string &tmp) {
        const uint32_t status =
            vexo_corr_save_ex(t.table.get(), tmp.c_str(), format.number, &t.info);
        if (status != VEXO_OK)
            throw cli::Failure(name + ": cannot write: " + cli::status_text(status));
    });
}

TableStats measure(const CorrTable &t) {
    TableStats s{};
    for (int a = 0; a < 3; ++a) s.min[a] = INFINITY, s.max[a] = -INFINITY;
    s.rows_monotonic = s.columns_monotonic = s.finite = true;
    double sum_sq = 0;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &p = cell(t, r, c);
            const double v[3] = {p.x, p.y, p.z};
            for (int a = 0; a < 3; ++a) {
                s.finite = s.finite && std::isfinite(v[a]);
                s.min[a] = std::min(s.min[a], v[a]);
                s.max[a] = std::max(s.max[a], v[a]);
            }
            const double d = std::hypot(p.x - neutral_coordinate(c), p.y - neutral_coordinate(r));
            if (d > s.max_deviation) s.max_deviation = d, s.worst = {r, c};
            sum_sq += d * d;
            if (c > 0 && !(p.x > cell(t, r, c - 1).x)) s.rows_monotonic = false;
            if (r > 0 && !(p.y > cell(t, r - 1, c).y)) s.columns_monotonic = false;
        }
    s.rms_deviation = std::sqrt(sum_sq / 4225.0);
    return s;
}

Difference difference(const CorrTable &a, const CorrTable &b, bool with_z) {
    Difference d;
    double sum_sq = 0;
    for (int r = 0; r < 65; ++r)
        for (int c = 0; c < 65; ++c) {
            const GeomPoint &p = cell(a, r, c), &q = cell(b, r, c);
            const double dx = q.x - p.x, dy = q.y - p.y, dz = with_z ? q.z - p.z : 0.0;
            const double dist = std::sqrt(dx * dx + dy * dy + dz * dz);
            sum_sq += dist * dist;
            // NaN counts as the worst difference there is.
            if (dist > d.max || (std::isnan(dist) && !std::isnan(d.max)))
                d.max = dist, d.worst = {r, c}, d.dx = dx, d.dy = dy, d.dz = dz;
        }
    d.rms = std::sqrt(sum_sq / 4225.0);
    return d;
}

} // namespace tool
