// SPDX-License-Identifier: MIT
// The dot tests' own renderer: anti-aliased discs by supersampling, a blur
// and seeded noise.  Nothing here uses OpenCV's drawing, so the finder is
// judged against coverage computed independently of it.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "vexo.h"
#include "vexo_test_util.hpp"

namespace vt {

struct Disc {
    double x; // centre, pixels (pixel (c, r) covers c - 0.5 .. c + 0.5)
    double y;
    double radius;
};

struct Look {
    double ground = 40; // grey level of the ground
    double ink = 220;   // grey level inside a disc
    double blur = 0.8;  // Gaussian sigma, pixels; 0: none
    double noise = 2.0; // Gaussian noise sigma, grey levels; 0: none
    uint64_t seed = 7;  // noise seed
    int samples = 8;    // supersamples per pixel side
};

// Fraction of pixel (c, r) inside the disc, from samples x samples points.
inline double coverage(const Disc &d, int c, int r, int samples) {
    int inside = 0;
    for (int i = 0; i < samples; ++i)
        for (int j = 0; j < samples; ++j) {
            const double x = c - 0.5 + (j + 0.5) / samples - d.x;
            const double y = r - 0.5 + (i + 0.5) / samples - d.y;
            inside += x * x + y * y <= d.radius * d.radius;
        }
    return double(inside) / (samples * samples);
}

// An 8-bit grey photo of the discs (overlapping coverage adds, capped at 1).
inline cv::Mat render(int width, int height, const std::vector<Disc> &discs,
                      const Look &look = {}) {
    cv::Mat cover(height, width, CV_64F, cv::Scalar(0));
    for (const Disc &d : discs) {
        const int c0 = std::max(0, int(std::floor(d.x - d.radius - 1)));
        const int c1 = std::min(width - 1, int(std::ceil(d.x + d.radius + 1)));
        const int r0 = std::max(0, int(std::floor(d.y - d.radius - 1)));
        const int r1 = std::min(height - 1, int(std::ceil(d.y + d.radius + 1)));
        for (int r = r0; r <= r1; ++r)
            for (int c = c0; c <= c1; ++c)
                cover.at<double>(r, c) =
                    std::min(1.0, cover.at<double>(r, c) + coverage(d, c, r, look.samples));
    }
    cv::Mat level = look.ground + cover * (look.ink - look.ground);
    if (look.blur > 0) cv::GaussianBlur(level, level, cv::Size(0, 0), look.blur);
    if (look.noise > 0) {
        cv::Mat n(height, width, CV_64F);
        cv::RNG(look.seed).fill(n, cv::RNG::NORMAL, 0, look.noise);
        level += n;
    }
    cv::Mat out;
    level.convertTo(out, CV_8U); // rounds and saturates
    return out;
}

using PointsPtr = vexo_test::Points;

// RMS distance from each found dot to the nearest true centre (anything
// with x and y: discs, points).
template <class Centre>
double centre_rms(const GeomPoint *found, uint32_t count, const std::vector<Centre> &truth) {
    double sum = 0;
    for (uint32_t k = 0; k < count; ++k) {
        double best = 1e300;
        for (const Centre &c : truth)
            best = std::min(best, std::hypot(found[k].x - c.x, found[k].y - c.y));
        sum += best * best;
    }
    return std::sqrt(sum / count);
}

// Otsu's level, areas 20..2000 pixels, circularity from 0.75: what the
// rendered dots of these tests (radius 3.6 to 10 pixels) pass and two
// merged ones do not.
inline PrcgDotParams dot_params() {
    PrcgDotParams p{};
    p.threshold_kind = VEXO_PRCG_THRESHOLD_OTSU;
    p.min_area = 20;
    p.max_area = 2000;
    p.min_circularity = 0.75;
    return p;
}

} // namespace vt
