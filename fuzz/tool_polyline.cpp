// SPDX-License-Identifier: MIT
// The tool's polyline text reader on arbitrary bytes: it either refuses the
// text with a message naming the input and a line, or returns finite points
// whose flags are 0 or end-of-polyline, the last one an end; what it returns,
// written and read again, comes back with the same bytes.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cli.hpp"
#include "fuzz_check.hpp"
#include "polyline_text.hpp"

namespace {

constexpr const char *kTarget = "tool_polyline";
constexpr uint32_t kEnd = VEXO_POINT_END | VEXO_POINT_END_MARK;

std::string written(const std::vector<GeomPoint> &points) {
    char *text = nullptr;
    size_t size = 0;
    std::FILE *out = open_memstream(&text, &size);
    if (out == nullptr) fuzz_fail(kTarget, "open_memstream failed", 0);
    const bool ok = tool::write_polylines(out, points.data(), points.size());
    std::fclose(out);
    std::string result(text, size);
    std::free(text);
    if (!ok) fuzz_fail(kTarget, "writing to memory failed", 0);
    return result;
}

void check_points(const std::vector<GeomPoint> &points) {
    for (size_t i = 0; i < points.size(); ++i) {
        const GeomPoint &p = points[i];
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            fuzz_fail(kTarget, "point not finite", (long long)i);
        if (p.flags != 0 && p.flags != kEnd) fuzz_fail(kTarget, "unexpected flags", p.flags);
    }
    if (!points.empty() && points.back().flags != kEnd)
        fuzz_fail(kTarget, "last point without the end flag", (long long)points.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<GeomPoint> points;
    try {
        points = tool::parse_polylines(data, size, "in");
    } catch (const cli::Failure &e) {
        if (std::strncmp(e.what(), "in: line ", 9) != 0)
            fuzz_fail(kTarget, "message without the name and line", (long long)size);
        return 0;
    }
    check_points(points);
    const std::string text = written(points);
    std::vector<GeomPoint> again;
    try {
        again = tool::parse_polylines(reinterpret_cast<const uint8_t *>(text.data()), text.size(),
                                      "out");
    } catch (const cli::Failure &e) {
        std::fprintf(stderr, "%s\n", e.what());
        fuzz_fail(kTarget, "written text refused", (long long)text.size());
    }
    if (again.size() != points.size())
        fuzz_fail(kTarget, "point count changed by writing", (long long)again.size());
    if (!points.empty() &&
        std::memcmp(again.data(), points.data(), points.size() * sizeof(GeomPoint)) != 0)
        fuzz_fail(kTarget, "points changed by writing", (long long)points.size());
    return 0;
}
