// SPDX-License-Identifier: MIT
// GEOS as an independent judge of the marking geometry: regions built from
// rings by symmetric difference (the even-odd rule, made valid ring by
// ring), lines cut by them, distances and coverage.
#pragma once

#include <geos_c.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "vexo.h"

namespace geos_oracle {

using XY = std::pair<double, double>;
using Piece = std::vector<XY>;

class Context {
public:
    Context() : h_(GEOS_init_r()) {}
    ~Context() { GEOS_finish_r(h_); }
    Context(const Context &) = delete;
    Context &operator=(const Context &) = delete;
    GEOSContextHandle_t get() const { return h_; }

private:
    GEOSContextHandle_t h_;
};

struct Geom {
    GEOSContextHandle_t h = nullptr;
    GEOSGeometry *g = nullptr;
    Geom(GEOSContextHandle_t h_, GEOSGeometry *g_) : h(h_), g(g_) {}
    Geom(Geom &&o) noexcept : h(o.h), g(o.g) { o.g = nullptr; }
    Geom &operator=(Geom &&o) noexcept {
        std::swap(h, o.h);
        std::swap(g, o.g);
        return *this;
    }
    Geom(const Geom &) = delete;
    ~Geom() {
        if (g) GEOSGeom_destroy_r(h, g);
    }
};

inline GEOSCoordSequence *sequence(GEOSContextHandle_t h, const std::vector<XY> &pts) {
    GEOSCoordSequence *s = GEOSCoordSeq_create_r(h, static_cast<unsigned>(pts.size()), 2);
    for (unsigned i = 0; i < pts.size(); ++i)
        GEOSCoordSeq_setXY_r(h, s, i, pts[i].first, pts[i].second);
    return s;
}

inline Geom line(const Context &c, const std::vector<XY> &pts) {
    return Geom(c.get(), GEOSGeom_createLineString_r(c.get(), sequence(c.get(), pts)));
}

// Even-odd region of rings given as point lists (closed implicitly).
inline Geom even_odd_region(const Context &c, const std::vector<std::vector<XY>> &rings) {
    GEOSContextHandle_t h = c.get();
    Geom region(h, GEOSGeom_createEmptyPolygon_r(h));
    for (std::vector<XY> ring : rings) {
        ring.push_back(ring.front());
        Geom poly(h, GEOSGeom_createPolygon_r(h, GEOSGeom_createLinearRing_r(h, sequence(h, ring)),
                                              nullptr, 0));
        Geom valid(h, GEOSMakeValid_r(h, poly.g));
        region = Geom(h, GEOSSymDifference_r(h, region.g, valid.g));
    }
    return region;
}

// The line pieces of a geometry (points and empty parts ignored), merged
// where they touch end to end.
inline std::vector<Piece> pieces(const Context &c, const Geom &g) {
    GEOSContextHandle_t h = c.get();
    std::vector<Piece> out;
    Geom merged(h, GEOSLineMerge_r(h, g.g));
    const GEOSGeometry *src = merged.g ? merged.g : g.g;
    const int n = GEOSGetNumGeometries_r(h, src);
    for (int i = 0; i < n; ++i) {
        const GEOSGeometry *part = GEOSGetGeometryN_r(h, src, i);
        if (GEOSGeomTypeId_r(h, part) != GEOS_LINESTRING) continue;
        const GEOSCoordSequence *s = GEOSGeom_getCoordSeq_r(h, part);
        unsigned size = 0;
        GEOSCoordSeq_getSize_r(h, s, &size);
        Piece p;
        for (unsigned k = 0; k < size; ++k) {
            double x, y;
            GEOSCoordSeq_getXY_r(h, s, k, &x, &y);
            p.emplace_back(x, y);
        }
        if (p.size() >= 2) out.push_back(p);
    }
    return out;
}

inline std::vector<Piece> clip_line(const Context &c, const Geom &region, XY a, XY b) {
    Geom l = line(c, {a, b});
    Geom cut(c.get(), GEOSIntersection_r(c.get(), region.g, l.g));
    return pieces(c, cut);
}

inline double distance(const Context &c, const Geom &a, const Geom &b) {
    double d = -1.0;
    GEOSDistance_r(c.get(), a.g, b.g, &d);
    return d;
}

inline Geom point(const Context &c, double x, double y) {
    return Geom(c.get(), GEOSGeom_createPointFromXY_r(c.get(), x, y));
}

inline Geom boundary(const Context &c, const Geom &g) {
    return Geom(c.get(), GEOSBoundary_r(c.get(), g.g));
}

inline bool contains(const Context &c, const Geom &region, double x, double y) {
    Geom p = point(c, x, y);
    return GEOSContains_r(c.get(), region.g, p.g) == 1;
}

inline double length(const Context &c, const Geom &g) {
    double l = 0.0;
    GEOSLength_r(c.get(), g.g, &l);
    return l;
}

} // namespace geos_oracle
