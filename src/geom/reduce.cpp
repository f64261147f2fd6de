// SPDX-License-Identifier: MIT
#include "geom/reduce.hpp"

#include <cmath>

#include "core/constants.hpp"
#include "core/point_flags.hpp"
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
        surely_below_ = squares_are_safe ? square * (1.0 - 0x1p-40) : -1.0;
        surely_above_ = squares_are_safe ? square * (1.0 + 0x1p-40) : -1.0;
    }

    // True only where operator() is surely false, decided on the squares
    // alone; false where the root would be needed.
    bool surely_not(const GeomPoint &a, const GeomPoint &b) const {
        return surely_above_ >= 0.0 && squared_distance<WithZ>(a, b) > surely_above_;
    }

    bool operator()(const GeomPoint &a, const GeomPoint &b) const {
        const double squared = squared_distance<WithZ>(a, b);
        if (squared < surely_below_) return true;
        if (squared > surely_above_ && surely_above_ >= 0.0) return false;
        return limit_ > std::sqrt(squared);
    }

private:
    double limit_;
    double surely_below_;
    double surely_above_;
};

// Distance reduction in four steps: (1) drop points closer than min_dist
// to the anchor, (2) compact, (3) drop two-point lines shorter than
// min_dist, (4) compact.  The steps run as one pipeline: each later step
// trails the one before it over points that step can no longer change, so
// the array streams through the cache once instead of four times.  Every
// step still sees exactly the points it would see if run on its own.
template <bool WithZ> class DistanceReduction {
public:
    DistanceReduction(GeomPoint *points, uint32_t count, double min_dist)
        : points_(points), count_(count), closer_(min_dist) {}

    uint32_t run() {
        if (count_ > 1) drop_close_points();
        settle(count_, true);
        return kept_;
    }

private:
    // How far the later steps may lag behind step 1 (points).
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
                i = skip_quiet_points(i);
                anchor = i - 1;
                if (anchor - consumed_ >= kChunk) settle(anchor, false);
                if (i >= count_) break;
            }
            if (is_end(points_[i])) {
                ++anchor;
                ++i;
            } else if (closer_(points_[anchor], points_[i])) {
                points_[anchor].flags &= ~kEndAndMark;
                points_[i].flags |= VEXO_POINT_PROCESSED;
                ++i;
                continue;
            } else {
                do {
                    ++anchor;
                } while (is_processed(points_[anchor]) && anchor + 1 < count_);
                i = anchor + 1;
            }
            if (anchor - consumed_ >= kChunk) settle(anchor, false);
        }
    }

    // With the anchor right before i, a point that is no line end, not
    // marked and surely not closer than min_dist to its predecessor only
    // moves the anchor onto itself.  Most points are such points; they are
    // stepped over here with one flag test and one squared distance each.
    // Returns the first point that needs the full step (or the end of the
    // run, at most two chunks on, so that the later steps keep up).
    uint32_t skip_quiet_points(uint32_t i) const {
        const uint32_t stop = count_ - consumed_ > 2 * kChunk ? consumed_ + 2 * kChunk : count_;
        while (i < stop && (points_[i].flags & (VEXO_POINT_END | VEXO_POINT_PROCESSED)) == 0 &&
               closer_.surely_not(points_[i - 1], points_[i]))
            ++i;
        return i;
    }

    // Step 3 at compacted index k.  The scan starts at the third point, so
    // a short line at the very start of the array always stays; older
    // hosts' output depends on that.
    void drop_short_pair(uint32_t k) {
        if (!is_end(points_[k - 2]) || is_end(points_[k - 1]) || !is_end(points_[k])) return;
        if (closer_(points_[k], points_[k - 1])) {
            points_[k - 1].flags |= VEXO_POINT_PROCESSED;
            points_[k].flags |= VEXO_POINT_PROCESSED;
        }
    }

    // Runs steps 2 to 4 over the points before `final_below` (indices of the
    // original array), whose step-1 marks are final.
    void settle(uint32_t final_below, bool last) {
        compacted_ +=
            move_unprocessed(points_ + compacted_, points_ + consumed_, final_below - consumed_);
        consumed_ = final_below;
        for (; next_pair_ < compacted_; ++next_pair_) drop_short_pair(next_pair_);
        // Step 3 at k marks k - 1 and k and reads from k - 2 on: step 4
        // stays clear of all three until the end.
        uint32_t limit = compacted_;
        if (!last) limit = next_pair_ >= 3 ? next_pair_ - 3 : 0;
        if (limit > paired_) {
            kept_ += move_unprocessed(points_ + kept_, points_ + paired_, limit - paired_);
            paired_ = limit;
        }
    }

    GeomPoint *points_;
    uint32_t count_;
    CloserThan<WithZ> closer_;
    uint32_t consumed_ = 0;  // original points handed to step 2
    uint32_t compacted_ = 0; // points kept by step 2
    uint32_t next_pair_ = 2; // next compacted index for step 3
    uint32_t paired_ = 0;    // compacted points handed to step 4
    uint32_t kept_ = 0;      // points kept by step 4
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
