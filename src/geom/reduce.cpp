// SPDX-License-Identifier: MIT
#include "geom/reduce.hpp"

#include <algorithm>
#include <cmath>

#include "core/constants.hpp"
#include "core/point_flags.hpp"
#include "geom/kept_records.hpp"
#include "geom/quiet_bits.hpp"
#include "line/compact.hpp"
#include "line/measure.hpp"

namespace vexo {

namespace {

constexpr uint32_t kEndAndMark = VEXO_POINT_END | VEXO_POINT_END_MARK;

// The test limit > |a - b| on squared distances where that is safe: far
// from the limit the squares decide (a square root rounds correctly, so a
// margin of 2^-40 leaves no doubt), near it the root is taken.  The result
// is the same as always taking the root; the root's latency is what the
// hot loop saves.
template <bool WithZ> class CloserThan {
public:
    explicit CloserThan(double limit) : limit_(limit) {
        const bool squares_are_safe = limit >= 1e-100 && limit <= 1e100;
        const double square = limit * limit;
        // Out of the safe range no square is surely below or above: -1 and
        // infinity fail every test against a square (NaN included).
        surely_below_ = squares_are_safe ? square * (1.0 - 0x1p-40) : -1.0;
        surely_above_ = squares_are_safe ? square * (1.0 + 0x1p-40) : HUGE_VAL;
    }

    // Squared distances above this are surely not closer than the limit
    // (infinity where the squares cannot decide).
    double surely_above() const { return surely_above_; }

    // operator() decided on the squares alone: true or false only where it
    // is surely so, false where the root would be needed.
    bool surely(const GeomPoint &a, const GeomPoint &b) const {
        return squared_distance<WithZ>(a, b) < surely_below_;
    }
    bool surely_not(const GeomPoint &a, const GeomPoint &b) const {
        return squared_distance<WithZ>(a, b) > surely_above_;
    }

    bool operator()(const GeomPoint &a, const GeomPoint &b) const {
        const double squared = squared_distance<WithZ>(a, b);
        if (squared < surely_below_) return true;
        if (squared > surely_above_) return false;
        return limit_ > std::sqrt(squared);
    }

private:
    double limit_;
    double surely_below_;
    double surely_above_;
};

// Distance reduction in four steps: (1) drop points closer than min_dist
// to the anchor, (2) compact, (3) drop two-point lines shorter than
// min_dist, (4) compact.  Step 1 walks the array; whatever lies behind its
// anchor is final and goes through steps 2 to 4 at once, in one fused
// pass, while it is still in the cache.  Every step still sees exactly the
// points it would see if run on its own.
template <bool WithZ> class DistanceReduction {
public:
    DistanceReduction(GeomPoint *points, uint32_t count, double min_dist)
        : points_(points), count_(count), closer_(min_dist) {}

    uint32_t run() {
        if (count_ > 1) drop_close_points();
        emit_final(count_);
        return written_;
    }

private:
    // How far the emitting pass may lag behind step 1, and how far one
    // step over quiet points may go (points).
    static constexpr uint32_t kChunk = 1024;

    // Step 1.  Points before the anchor are never looked at again, so
    // they are final.  After a line end the anchor moves by one only, so a
    // line that starts within min_dist of the previous line's end is joined
    // onto it: hosts rely on this to mend polylines that were cut into
    // pieces.
    void drop_close_points() {
        uint32_t anchor = 0;
        uint32_t i = 1;
        while (i < count_) {
            if (anchor + 1 == i) {
                i = step_over_quiet_points(i);
                anchor = i - 1;
                if (i >= count_) break;
            }
            if (is_end(points_[i])) {
                ++anchor;
                ++i;
            } else if (closer_(points_[anchor], points_[i])) {
                points_[anchor].flags &= ~kEndAndMark;
                points_[i].flags |= VEXO_POINT_PROCESSED;
                ++i;
                touched_below_ = i;
                continue;
            } else {
                do {
                    ++anchor;
                } while (is_processed(points_[anchor]) && anchor + 1 < count_);
                i = anchor + 1;
            }
            if (anchor - emitted_ >= kChunk) emit_final(anchor);
        }
    }

    // With the anchor right before i, a quiet point (not processed, and a
    // line end or surely not closer than min_dist to its predecessor) only
    // moves the anchor onto itself.  Most points are quiet; they are found
    // 64 at a time in a bit mask and stepped over without a branch each.
    // The commonest other point is a lone close one, dropped here as the
    // full step would.  Returns the first point that needs the full step,
    // with the anchor right before it.
    uint32_t step_over_quiet_points(uint32_t i) {
        // A point step 1 has marked has a stale bit: take the full step.
        if (i < touched_below_) return i;
        const uint32_t stop = count_ - i > kChunk ? i + kChunk : count_;
        for (;;) {
            i = find_loud_point(i, stop);
            if (i >= stop || !drops_alone(i)) break;
            points_[i - 1].flags &= ~kEndAndMark;
            points_[i].flags |= VEXO_POINT_PROCESSED;
            touched_below_ = i + 1;
            i += 2;
        }
        if (i - 1 - emitted_ >= kChunk) emit_final(i - 1);
        return i;
    }

    // The first point in [i, stop) that is not quiet, or stop (i when i is
    // past stop already).
    uint32_t find_loud_point(uint32_t i, uint32_t stop) {
        while (i < stop) {
            const uint32_t base = i & ~63u;
            if (base != mask_base_) load_quiet_mask(base);
            const uint64_t loud = ~quiet_mask_ >> (i - base);
            if (loud != 0) return std::min(i + static_cast<uint32_t>(__builtin_ctzll(loud)), stop);
            i = base + 64;
        }
        return i;
    }

    // With the anchor at p - 1: whether the full step would drop p and then
    // move the anchor to p + 1 at once, decided on the squares alone.  p and
    // p + 1 are neither line ends nor processed, p is surely close to the
    // anchor and p + 1 surely not.
    bool drops_alone(uint32_t p) const {
        if (p + 1 >= count_) return false;
        const uint32_t special = VEXO_POINT_END | VEXO_POINT_PROCESSED;
        const bool plain = ((points_[p].flags | points_[p + 1].flags) & special) == 0;
        return plain & closer_.surely(points_[p - 1], points_[p]) &
               closer_.surely_not(points_[p - 1], points_[p + 1]);
    }

    void load_quiet_mask(uint32_t base) {
        const uint32_t first = base == 0 ? 1 : base;
        const uint32_t end = count_ - base > 64 ? base + 64 : count_;
        quiet_mask_ = quiet_bits<WithZ>(points_, base, first, end, closer_.surely_above());
        mask_base_ = base;
    }

    // Steps 2 to 4 over the points before `final_below`, whose step-1 marks
    // are final.  Step 2 keeps the unprocessed points.  Step 3 drops a kept
    // point k and the one kept before it when they form a line of their own
    // shorter than min_dist: k ends a line, k - 1 does not, k - 2 does.
    // Step 4 is the write position stepping back over such a pair.  Writes
    // stay at or before the point read, and before step 1's anchor.
    void emit_final(uint32_t final_below) {
        if (final_below <= emitted_) return;
        written_ = move_kept(points_, emitted_, final_below, written_, {&drops_pair, this});
        emitted_ = final_below;
    }

    static bool drops_pair(const void *self, uint32_t k) {
        return static_cast<const DistanceReduction *>(self)->ends_short_line(k);
    }

    // Step 3 at the line end just written at k, reading k - 1 and k - 2
    // from the written points.  A dropped pair is gone from them, but
    // reading past it decides the same: it ended in a line end, and so did
    // the point before it, which now takes its place.  Step 3 starts at
    // the third kept point, so a short line at the very start of the array
    // always stays; older hosts' output depends on that.
    bool ends_short_line(uint32_t k) const {
        return k >= 2 && !is_end(points_[k - 1]) && is_end(points_[k - 2]) &&
               closer_(points_[k], points_[k - 1]);
    }

    GeomPoint *points_;
    uint32_t count_;
    CloserThan<WithZ> closer_;
    uint32_t emitted_ = 0;       // original points handed to steps 2 to 4
    uint32_t written_ = 0;       // points kept so far
    uint32_t touched_below_ = 0; // step 1 has marked no point from here on
    uint32_t mask_base_ = 1;     // never a multiple of 64: no mask loaded yet
    uint64_t quiet_mask_ = 0;
};

struct Vec3 {
    double x;
    double y;
    double z;
};

Vec3 difference(const GeomPoint &from, const GeomPoint &to) {
    return Vec3{to.x - from.x, to.y - from.y, to.z - from.z};
}

// Turn at m between the legs a->m and m->k, in degrees.  Collinear legs give
// 0 and a zero-length leg NaN; neither passes the positive-angle test.
double turn_degrees(const GeomPoint &a, const GeomPoint &m, const GeomPoint &k) {
    const Vec3 u = difference(a, m);
    const Vec3 w = difference(m, k);
    const double lu = std::sqrt(u.x * u.x + u.y * u.y + u.z * u.z);
    const double lw = std::sqrt(w.x * w.x + w.y * w.y + w.z * w.z);
    double c = (u.x * w.x + u.y * w.y + u.z * w.z) / (lu * lw);
    if (c > 1.0) c = 1.0;
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
    if (c == -1.0) return max_radians > kPiF;
    const double angle = std::acos(c);
    return angle > 0.0 && max_radians > angle;
}

// The walk shared by both angle reducers: anchor a, middle m, far point k.
// A dropped middle leaves the anchor where it is, so slow curves are
// measured against the last kept point.
template <class Drops> uint32_t reduce_angle(GeomPoint *points, uint32_t count, Drops drops) {
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
    return measure_z ? DistanceReduction<true>(points, count, min_dist).run()
                     : DistanceReduction<false>(points, count, min_dist).run();
}

uint32_t reduce_by_angle_3d(GeomPoint *points, uint32_t count, double max_degrees) noexcept {
    return reduce_angle(points, count,
                        [max_degrees](const GeomPoint &a, const GeomPoint &m, const GeomPoint &k) {
                            return drops_3d(a, m, k, max_degrees);
                        });
}

uint32_t reduce_by_angle_2d(GeomPoint *points, uint32_t count, double max_radians) noexcept {
    return reduce_angle(points, count,
                        [max_radians](const GeomPoint &a, const GeomPoint &m, const GeomPoint &k) {
                            return drops_2d(a, m, k, max_radians);
                        });
}

} // namespace vexo
