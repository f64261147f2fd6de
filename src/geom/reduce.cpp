#include "geom/reduce.hpp"

#include <cmath>

#include "core/constants.hpp"
#include "line/compact.hpp"
#include "line/measure.hpp"

namespace vexo {

namespace {

constexpr uint32_t kEndAndMark = VEXO_POINT_END | VEXO_POINT_END_MARK;

bool is_end(const GeomPoint &p) { return (p.flags & VEXO_POINT_END) != 0; }
bool is_processed(const GeomPoint &p) { return (p.flags & VEXO_POINT_PROCESSED) != 0; }

// The test limit > |a - b| on squared distances where that is safe: far
// from the limit the squares decide (a square root rounds correctly, so a
// margin of 2^-40 leaves no doubt), near it the root is taken.  The result
// is the same as always taking the root; the root's latency is what the
// hot loop saves.
template <bool WithZ>
class CloserThan {
  public:
    explicit CloserThan(double limit) : limit_(limit) {
        const bool squares_are_safe = limit >= 1e-100 && limit <= 1e100;
        const double square = limit * limit;
        surely_below_ = squares_are_safe ? square * (1.0 - 0x1p-40) : -1.0;
        surely_above_ = squares_are_safe ? square * (1.0 + 0x1p-40) : -1.0;
    }

    bool operator()(const GeomPoint &a, const GeomPoint &b) const {
        const double squared = squared_distance(a, b);
        if (squared < surely_below_)
            return true;
        if (squared > surely_above_ && surely_above_ >= 0.0)
            return false;
        return limit_ > std::sqrt(squared);
    }

  private:
    // Summed in the order of point_distance, so the root is the same.
    static double squared_distance(const GeomPoint &a, const GeomPoint &b) {
        const double dx = a.x - b.x;
        const double dy = a.y - b.y;
        if constexpr (WithZ) {
            const double dz = a.z - b.z;
            return dx * dx + dy * dy + dz * dz;
        } else {
            return dx * dx + dy * dy;
        }
    }

    double limit_;
    double surely_below_;
    double surely_above_;
};

// Phase 1: every inner point closer than min_dist to the anchor goes, and
// the anchor gives up its end flag.  After a line end the anchor moves by
// one only, so a line that starts within min_dist of the previous line's
// end is joined onto it: hosts rely on this to mend polylines that were cut
// into pieces.
template <bool WithZ>
void drop_close_points(GeomPoint *points, uint32_t count, double min_dist) {
    const CloserThan<WithZ> closer(min_dist);
    uint32_t anchor = 0;
    uint32_t i = 1;
    while (i < count) {
        if (is_end(points[i])) {
            ++anchor;
            ++i;
        } else if (closer(points[anchor], points[i])) {
            points[anchor].flags &= ~kEndAndMark;
            points[i].flags |= VEXO_POINT_PROCESSED;
            ++i;
        } else {
            do {
                ++anchor;
            } while (is_processed(points[anchor]) && anchor + 1 < count);
            i = anchor + 1;
        }
    }
}

// Phase 2: a two-point polyline shorter than min_dist goes whole.  The scan
// starts at the third point, so such a line at the very start of the array
// always stays; older hosts' output depends on that.
// Returns the index of the first dropped point (count when none).
template <bool WithZ>
uint32_t drop_short_pairs(GeomPoint *points, uint32_t count, double min_dist) {
    const CloserThan<WithZ> closer(min_dist);
    uint32_t first_dropped = count;
    for (uint32_t k = 2; k < count; ++k) {
        if (!is_end(points[k - 2]) || is_end(points[k - 1]) || !is_end(points[k]))
            continue;
        if (closer(points[k], points[k - 1])) {
            points[k - 1].flags |= VEXO_POINT_PROCESSED;
            points[k].flags |= VEXO_POINT_PROCESSED;
            if (first_dropped == count)
                first_dropped = k - 1;
        }
    }
    return first_dropped;
}

// Compaction of an array whose points before `first` are known unmarked.
uint32_t compact_from(GeomPoint *points, uint32_t count, uint32_t first) {
    return first + remove_processed(points + first, count - first);
}

template <bool WithZ>
uint32_t reduce_distance(GeomPoint *points, uint32_t count, double min_dist) {
    if (count > 1)
        drop_close_points<WithZ>(points, count, min_dist);
    count = remove_processed(points, count);
    // After the first compaction only the pair pass marks points, so the
    // second compaction starts at its first mark.
    const uint32_t first = count >= 3 ? drop_short_pairs<WithZ>(points, count, min_dist) : count;
    return compact_from(points, count, first);
}

struct Vec3 {
    double x;
    double y;
    double z;
};

Vec3 difference(const GeomPoint &from, const GeomPoint &to) {
    return Vec3{to.x - from.x, to.y - from.y, to.z - from.z};
}

double snap_to_zero(double v) { return std::fabs(v) < kZeroTolerance ? 0.0 : v; }

// Turn at m between the legs a->m and m->k, in degrees.  Collinear legs give
// 0 and a zero-length leg NaN; neither passes the positive-angle test.
double turn_degrees(const GeomPoint &a, const GeomPoint &m, const GeomPoint &k) {
    const Vec3 u = difference(a, m);
    const Vec3 w = difference(m, k);
    const double lu = std::sqrt(u.x * u.x + u.y * u.y + u.z * u.z);
    const double lw = std::sqrt(w.x * w.x + w.y * w.y + w.z * w.z);
    double c = (u.x * w.x + u.y * w.y + u.z * w.z) / (lu * lw);
    if (c > 1.0)
        c = 1.0;
    return radians_to_degrees(std::acos(c));
}

bool drops_3d(const GeomPoint &a, const GeomPoint &m, const GeomPoint &k, double max_degrees) {
    const double angle = turn_degrees(a, m, k);
    return angle > 0.0 && max_degrees > angle;
}

// The planar test snaps tiny components, treats a zero-length leg as a right
// angle and a full reversal as exactly pi.
bool drops_2d(const GeomPoint &a, const GeomPoint &m, const GeomPoint &k, double max_radians) {
    const double ux = snap_to_zero(m.x - a.x);
    const double uy = snap_to_zero(m.y - a.y);
    const double wx = snap_to_zero(k.x - m.x);
    const double wy = snap_to_zero(k.y - m.y);
    const double lengths = std::sqrt(ux * ux + uy * uy) * std::sqrt(wx * wx + wy * wy);
    const double c = lengths == 0.0 ? 0.0 : (ux * wx + uy * wy) / lengths;
    if (c == -1.0)
        return max_radians > kPiF;
    const double angle = std::acos(c);
    return angle > 0.0 && max_radians > angle;
}

// The walk shared by both angle reducers: anchor a, middle m, far point k.
// A dropped middle leaves the anchor where it is, so slow curves are
// measured against the last kept point.
template <class Drops>
uint32_t reduce_angle(GeomPoint *points, uint32_t count, Drops drops) {
    if (count >= 3) {
        uint32_t a = 0;
        uint32_t m = 1;
        uint32_t k = 2;
        while (k < count) {
            if (is_end(points[a]) || is_end(points[m])) {
                ++a;
                ++m;
                ++k;
            } else if (drops(points[a], points[m], points[k])) {
                points[m].flags |= VEXO_POINT_PROCESSED;
                ++m;
                ++k;
            } else {
                do {
                    ++a;
                } while (is_processed(points[a]) && a + 2 < count);
                m = a + 1;
                k = a + 2;
            }
        }
    }
    return remove_processed(points, count);
}

} // namespace

uint32_t reduce_by_distance(GeomPoint *points, uint32_t count, double min_dist,
                            bool measure_z) noexcept {
    return measure_z ? reduce_distance<true>(points, count, min_dist)
                     : reduce_distance<false>(points, count, min_dist);
}

uint32_t reduce_by_angle_3d(GeomPoint *points, uint32_t count, double max_degrees) noexcept {
    return reduce_angle(points, count, [max_degrees](const GeomPoint &a, const GeomPoint &m,
                                                     const GeomPoint &k) {
        return drops_3d(a, m, k, max_degrees);
    });
}

uint32_t reduce_by_angle_2d(GeomPoint *points, uint32_t count, double max_radians) noexcept {
    return reduce_angle(points, count, [max_radians](const GeomPoint &a, const GeomPoint &m,
                                                     const GeomPoint &k) {
        return drops_2d(a, m, k, max_radians);
    });
}

} // namespace vexo
