// SPDX-License-Identifier: MIT
// The tool's measured-grid reader on arbitrary bytes: it either refuses the
// text with a message naming the input, or returns an n x n grid (n >= 2)
// whose nominal places are finite, rectilinear and growing in x along rows
// and in y along columns; written and read again, it comes back the same.
#include <cmath>
#include <cstring>
#include <string>

#include "cli.hpp"
#include "fuzz_check.hpp"
#include "grid_text.hpp"

namespace {

constexpr const char *kTarget = "tool_grid";

void check_grid(const tool::MeasuredGrid &g) {
    const size_t n = g.n;
    if (n < 2 || g.nominal.size() != n * n || g.measured.size() != n * n)
        fuzz_fail(kTarget, "not an n x n grid", (long long)n);
    for (size_t k = 0; k < n * n; ++k) {
        const GeomPoint &p = g.nominal[k], &m = g.measured[k];
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(m.x) ||
            !std::isfinite(m.y))
            fuzz_fail(kTarget, "value not finite", (long long)k);
        const size_t i = k / n, j = k % n;
        if (p.x != g.nominal[j].x || p.y != g.nominal[i * n].y)
            fuzz_fail(kTarget, "nominal grid not rectilinear", (long long)k);
        if (j > 0 && !(p.x > g.nominal[k - 1].x))
            fuzz_fail(kTarget, "x not growing along a row", (long long)k);
        if (i > 0 && !(p.y > g.nominal[k - n].y))
            fuzz_fail(kTarget, "y not growing along a column", (long long)k);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    tool::MeasuredGrid grid;
    try {
        grid = tool::parse_measured_grid(data, size, "in");
    } catch (const cli::Failure &e) {
        if (std::strncmp(e.what(), "in: ", 4) != 0)
            fuzz_fail(kTarget, "message without the input's name", (long long)size);
        return 0;
    }
    check_grid(grid);
    const std::string text = tool::measured_grid_text(grid);
    tool::MeasuredGrid again;
    try {
        again = tool::parse_measured_grid(reinterpret_cast<const uint8_t *>(text.data()),
                                          text.size(), "out");
    } catch (const cli::Failure &) {
        fuzz_fail(kTarget, "written text refused", (long long)text.size());
    }
    if (again.n != grid.n ||
        std::memcmp(again.nominal.data(), grid.nominal.data(),
                    grid.nominal.size() * sizeof(GeomPoint)) != 0 ||
        std::memcmp(again.measured.data(), grid.measured.data(),
                    grid.measured.size() * sizeof(GeomPoint)) != 0)
        fuzz_fail(kTarget, "grid changed by writing", (long long)grid.n);
    return 0;
}
