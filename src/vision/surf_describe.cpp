// SPDX-License-Identifier: MIT
// Description half of SURF: the dominant orientation from Haar wavelet
// responses around the keypoint, then 4x4 subregions of rotated wavelet
// sums over a 20-scale window.
#include <algorithm>
#include <array>
#include <cmath>

#include "vision/surf_internal.hpp"

namespace vexo {
namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kWindow = kTwoPi / 6.0; // the 60 degree orientation window
// Keypoint scales are kept below this, so that wavelet boxes (4 scales
// wide) stay within the exact-sum limit of the integral image.
constexpr float kMaxScale = float(kSurfMaxBoxSide) / 4.0f - 1.0f;
constexpr float kMinScale = 0.5f;
// Sample coordinates beyond this are clamped first; every box is then cut
// to the image anyway.
constexpr double kCoordinateLimit = 1 << 24;

struct Wavelet {
    float dx, dy;
};

// Haar wavelet responses of side 2h whose boxes meet at the pixel corner
// (x - 0.5, y - 0.5), i.e. centred there.
Wavelet haar_on_grid(const IntegralImage &ii, int x, int y, int h) {
    if (x - h >= 0 && y - h >= 0 && x + h <= ii.width() && y + h <= ii.height()) {
        // Wholly inside: eight corners of the 3 x 3 grid of running sums.
        // The wrapping differences are exact, |response| < 255 * 2h * h < 2^31.
        const uint32_t *top = ii.row(y - h), *mid = ii.row(y), *bottom = ii.row(y + h);
        const int l = x - h, r = x + h;
        const uint32_t dx =
            (bottom[r] - 2u * bottom[x] + bottom[l]) - (top[r] - 2u * top[x] + top[l]);
        const uint32_t dy = (bottom[r] - 2u * mid[r] + top[r]) - (bottom[l] - 2u * mid[l] + top[l]);
        return {float(int32_t(dx)), float(int32_t(dy))};
    }
    const float left = ii.box_clamped(y - h, x - h, y + h, x);
    const float right = ii.box_clamped(y - h, x, y + h, x + h);
    const float top = ii.box_clamped(y - h, x - h, y, x + h);
    const float bottom = ii.box_clamped(y, x - h, y + h, x + h);
    return {right - left, bottom - top};
}

// Haar wavelet responses of side `side` (even) centred on the point
// (px, py) (pixel i has its centre at i).  A box whose edges sit at a
// fraction f between pixel borders covers the pixels at its two ends by
// 1 - f and f: its sum is the blend of the two grid boxes around it, so
// the response is the bilinear blend of the four grid responses.  Sample
// points then move smoothly with the keypoint instead of jumping by whole
// pixels, which keeps descriptors of turned and shifted copies alike.
Wavelet haar(const IntegralImage &ii, double px, double py, int side) {
    const double u = std::clamp(px + 0.5, -kCoordinateLimit, kCoordinateLimit);
    const double v = std::clamp(py + 0.5, -kCoordinateLimit, kCoordinateLimit);
    const double fu = std::floor(u), fv = std::floor(v);
    const int x = int(fu), y = int(fv), h = side / 2;
    const float ax = float(u - fu), ay = float(v - fv);
    const Wavelet w00 = haar_on_grid(ii, x, y, h), w10 = haar_on_grid(ii, x + 1, y, h);
    const Wavelet w01 = haar_on_grid(ii, x, y + 1, h), w11 = haar_on_grid(ii, x + 1, y + 1, h);
    const auto blend = [&](float a, float b, float c, float d) {
        return (1 - ay) * ((1 - ax) * a + ax * b) + ay * ((1 - ax) * c + ax * d);
    };
    return {blend(w00.dx, w10.dx, w01.dx, w11.dx), blend(w00.dy, w10.dy, w01.dy, w11.dy)};
}

int wavelet_side(double scale, double factor) {
    return std::max(2, 2 * int(std::lround(factor * scale / 2.0)));
}

// Integer offsets (i, j) with i^2 + j^2 < 36.
constexpr size_t kOrientationSamples = 109;

struct OrientationSample {
    int i, j;
    float weight;
};

// Sample offsets (in scales) within radius 6 and their Gaussian weights
// (sigma 2 scales).
const std::vector<OrientationSample> &orientation_samples() {
    static const std::vector<OrientationSample> samples = [] {
        std::vector<OrientationSample> out;
        for (int j = -6; j <= 6; ++j)
            for (int i = -6; i <= 6; ++i)
                if (i * i + j * j < 36)
                    out.push_back({i, j, float(std::exp(-(i * i + j * j) / (2.0 * 2.0 * 2.0)))});
        CV_Assert(out.size() == kOrientationSamples);
        return out;
    }();
    return samples;
}

// Direction (radians) of the largest summed response inside any 60 degree
// window of response angles.
double dominant_orientation(const IntegralImage &ii, float x, float y, float scale) {
    const auto &samples = orientation_samples();
    const int side = wavelet_side(scale, 4.0);
    // Single precision keeps the sort cheap; the window sums and the final
    // direction are taken in double.
    struct Polar {
        float angle;
        float dx, dy;
    };
    // On the stack: one keypoint's samples (113) fit, and every keypoint of
    // a frame passes here.
    std::array<Polar, kOrientationSamples> responses;
    size_t n = 0;
    for (const auto &s : samples) {
        const Wavelet w = haar(ii, x + s.i * double(scale), y + s.j * double(scale), side);
        if (w.dx == 0.0f && w.dy == 0.0f) continue;
        const float dx = s.weight * w.dx, dy = s.weight * w.dy;
        float angle = std::atan2(dy, dx);
        if (angle < 0) angle += float(kTwoPi);
        responses[n++] = {angle, dx, dy};
    }
    if (n == 0) return 0.0;
    std::sort(responses.begin(), responses.begin() + n,
              [](const Polar &a, const Polar &b) { return a.angle < b.angle; });
    double best_dx = 0, best_dy = 0, best_norm = -1;
    // Window [angle of k, + 60 degrees), walked once round with two indices.
    double sum_dx = 0, sum_dy = 0;
    size_t end = 0; // exclusive, may run past n (wraps round)
    for (size_t k = 0; k < n; ++k) {
        if (end < k) {
            end = k;
            sum_dx = sum_dy = 0;
        }
        while (end < k + n) {
            const Polar &p = responses[end % n];
            const double a = p.angle + (end >= n ? kTwoPi : 0.0);
            if (a - responses[k].angle >= kWindow) break;
            sum_dx += p.dx;
            sum_dy += p.dy;
            ++end;
        }
        const double norm = sum_dx * sum_dx + sum_dy * sum_dy;
        if (norm > best_norm) {
            best_norm = norm;
            best_dx = sum_dx;
            best_dy = sum_dy;
        }
        sum_dx -= responses[k].dx;
        sum_dy -= responses[k].dy;
    }
    double angle = std::atan2(best_dy, best_dx);
    if (angle < 0) angle += kTwoPi;
    return angle;
}

// Weights of the 20x20 descriptor samples (sigma 3.3 scales).
const std::array<float, 400> &descriptor_weights() {
    static const std::array<float, 400> weights = [] {
        std::array<float, 400> out{};
        for (int v = 0; v < 20; ++v)
            for (int u = 0; u < 20; ++u) {
                const double du = u - 9.5, dv = v - 9.5;
                out[size_t(v * 20 + u)] = float(std::exp(-(du * du + dv * dv) / (2.0 * 3.3 * 3.3)));
            }
        return out;
    }();
    return weights;
}

void describe_one(const IntegralImage &ii, const cv::KeyPoint &kp, double orientation,
                  bool extended, float *out) {
    const int length = extended ? 128 : 64;
    std::fill(out, out + length, 0.0f);
    if (!std::isfinite(kp.pt.x) || !std::isfinite(kp.pt.y)) return;
    const double scale = surf_scale_of(kp);
    const double co = std::cos(orientation), si = std::sin(orientation);
    const int side = wavelet_side(scale, 2.0);
    const auto &weights = descriptor_weights();
    for (int v = 0; v < 20; ++v) {
        for (int u = 0; u < 20; ++u) {
            const double du = (u - 9.5) * scale, dv = (v - 9.5) * scale;
            const Wavelet w =
                haar(ii, kp.pt.x + du * co - dv * si, kp.pt.y + du * si + dv * co, side);
            const float weight = weights[size_t(v * 20 + u)];
            const float rx = weight * float(w.dx * co + w.dy * si);
            const float ry = weight * float(-w.dx * si + w.dy * co);
            float *cell = out + ((v / 5) * 4 + (u / 5)) * (extended ? 8 : 4);
            if (!extended) {
                cell[0] += rx;
                cell[1] += ry;
                cell[2] += std::fabs(rx);
                cell[3] += std::fabs(ry);
            } else {
                // dx sums split by the sign of dy, and dy sums by the sign of dx.
                float *by_dy = cell + (ry < 0 ? 0 : 2);
                by_dy[0] += rx;
                by_dy[1] += std::fabs(rx);
                float *by_dx = cell + 4 + (rx < 0 ? 0 : 2);
                by_dx[0] += ry;
                by_dx[1] += std::fabs(ry);
            }
        }
    }
    double norm = 0;
    for (int k = 0; k < length; ++k) norm += double(out[k]) * out[k];
    if (norm > 0) {
        const float inv = float(1.0 / std::sqrt(norm));
        for (int k = 0; k < length; ++k) out[k] *= inv;
    }
}

} // namespace

float surf_scale_of(const cv::KeyPoint &keypoint) {
    const float scale = keypoint.size / 2.0f;
    if (!(scale >= kMinScale)) // also catches NaN
        return kMinScale;
    return std::min(scale, kMaxScale);
}

void surf_describe(const IntegralImage &integral, const SurfParams &params,
                   std::vector<cv::KeyPoint> &keypoints, cv::Mat *descriptors) {
    const int length = params.extended ? 128 : 64;
    if (descriptors) descriptors->create(int(keypoints.size()), length, CV_32F);
    cv::parallel_for_(cv::Range(0, int(keypoints.size())), [&](const cv::Range &range) {
        for (int k = range.start; k < range.end; ++k) {
            cv::KeyPoint &kp = keypoints[size_t(k)];
            double orientation = 0.0;
            if (!params.upright) {
                if (std::isfinite(kp.pt.x) && std::isfinite(kp.pt.y))
                    orientation =
                        dominant_orientation(integral, kp.pt.x, kp.pt.y, surf_scale_of(kp));
                kp.angle = float(orientation * 360.0 / kTwoPi);
                if (kp.angle >= 360.0f) kp.angle = 0.0f;
            }
            if (descriptors)
                describe_one(integral, kp, orientation, params.extended,
                             descriptors->ptr<float>(k));
        }
    });
}

} // namespace vexo
