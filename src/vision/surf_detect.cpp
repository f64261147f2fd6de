// SPDX-License-Identifier: MIT
// Detection half of SURF: Hessian determinant of box-filtered second
// derivatives over octaves and layers, 3x3x3 non-maximum suppression and a
// quadratic fit for sub-sample position and scale.
#include <cmath>

#include "vision/surf_internal.hpp"

namespace vexo {
namespace {

// Weight that balances the box approximation of Dxy against Dxx and Dyy.
constexpr float kDxyWeight = 0.9f;

struct OctaveGrid {
    int octave;
    int step;           // pixels between samples
    int rows, cols;     // samples stored per layer
    int r0, r1, c0, c1; // inclusive range where every layer's filter fits
    std::vector<int> sizes;
};

bool plan_octave(int octave, int layers, int width, int height, OctaveGrid *grid) {
    grid->octave = octave;
    grid->step = 1 << octave;
    grid->sizes.resize(size_t(layers));
    for (int l = 0; l < layers; ++l) grid->sizes[size_t(l)] = surf_filter_size(octave, l);
    const int largest = grid->sizes.back();
    if (largest > kSurfMaxBoxSide || largest > width || largest > height) return false;
    const int border = (largest - 1) / 2;
    const int step = grid->step;
    grid->cols = (width - 1) / step + 1;
    grid->rows = (height - 1) / step + 1;
    grid->c0 = (border + step - 1) / step;
    grid->r0 = (border + step - 1) / step;
    grid->c1 = (width - 1 - border) / step;
    grid->r1 = (height - 1 - border) / step;
    // Non-maximum suppression needs a sample on each side.
    return grid->c1 - grid->c0 >= 2 && grid->r1 - grid->r0 >= 2;
}

} // namespace

float surf_hessian_response(const IntegralImage &ii, int x, int y, int size) {
    const int lobe = size / 3;
    const int border = (size - 1) / 2;
    const int half_lobe = (lobe - 1) / 2;
    // Dxx and Dyy: three lobes of lobe x (2 lobe - 1) weighted 1, -2, 1,
    // taken as the whole band minus 3 times the middle lobe.
    const float dyy = ii.box(y - border, x - lobe + 1, y + border + 1, x + lobe) -
                      3.0f * ii.box(y - half_lobe, x - lobe + 1, y + half_lobe + 1, x + lobe);
    const float dxx = ii.box(y - lobe + 1, x - border, y + lobe, x + border + 1) -
                      3.0f * ii.box(y - lobe + 1, x - half_lobe, y + lobe, x + half_lobe + 1);
    // Dxy: four lobe x lobe squares round the centre pixel's row and column.
    const float dxy =
        ii.box(y - lobe, x - lobe, y, x) + ii.box(y + 1, x + 1, y + lobe + 1, x + lobe + 1) -
        ii.box(y - lobe, x + 1, y, x + lobe + 1) - ii.box(y + 1, x - lobe, y + lobe + 1, x);
    // Each box weighs in by its mean, not its sum: the responses then keep
    // one scale whatever the filter size, the scale on which the Hessian
    // thresholds (400 for detection, 100 for description) are stated.
    const float inv_lobe_area = 1.0f / (float(lobe) * float(2 * lobe - 1));
    const float inv_square_area = 1.0f / (float(lobe) * float(lobe));
    const float nxx = dxx * inv_lobe_area, nyy = dyy * inv_lobe_area;
    const float nxy = dxy * inv_square_area;
    return nxx * nyy - (kDxyWeight * nxy) * (kDxyWeight * nxy);
}

namespace {

using LayerStack = std::vector<std::vector<float>>;

LayerStack compute_responses(const IntegralImage &ii, const OctaveGrid &g) {
    LayerStack stack(g.sizes.size(), std::vector<float>(size_t(g.rows) * g.cols, 0.0f));
    const int valid_rows = g.r1 - g.r0 + 1;
    const int layers = int(g.sizes.size());
    cv::parallel_for_(cv::Range(0, layers * valid_rows), [&](const cv::Range &range) {
        for (int job = range.start; job < range.end; ++job) {
            const int layer = job / valid_rows;
            const int r = g.r0 + job % valid_rows;
            float *out = &stack[size_t(layer)][size_t(r) * g.cols];
            const int size = g.sizes[size_t(layer)];
            for (int c = g.c0; c <= g.c1; ++c)
                out[c] = surf_hessian_response(ii, c * g.step, r * g.step, size);
        }
    });
    return stack;
}

struct Neighbourhood {
    const float *below, *here, *above; // layer l-1, l, l+1 at (r, c)
    int cols;
    float at(const float *layer, int dr, int dc) const { return layer[dr * cols + dc]; }
};

bool is_local_maximum(const Neighbourhood &n, float value) {
    for (const float *layer : {n.below, n.here, n.above})
        for (int dr = -1; dr <= 1; ++dr)
            for (int dc = -1; dc <= 1; ++dc) {
                if (layer == n.here && dr == 0 && dc == 0) continue;
                if (n.at(layer, dr, dc) >= value) return false;
            }
    return true;
}

// Offset (column, row, layer) of the fitted quadratic's extremum; false
// when the fit is degenerate or the extremum lies a whole sample away.
bool fit_quadratic(const Neighbourhood &n, double offset[3]) {
    const double v = n.at(n.here, 0, 0);
    const double gx = (n.at(n.here, 0, 1) - n.at(n.here, 0, -1)) / 2.0;
    const double gy = (n.at(n.here, 1, 0) - n.at(n.here, -1, 0)) / 2.0;
    const double gs = (n.at(n.above, 0, 0) - n.at(n.below, 0, 0)) / 2.0;
    const double hxx = n.at(n.here, 0, 1) + n.at(n.here, 0, -1) - 2.0 * v;
    const double hyy = n.at(n.here, 1, 0) + n.at(n.here, -1, 0) - 2.0 * v;
    const double hss = n.at(n.above, 0, 0) + n.at(n.below, 0, 0) - 2.0 * v;
    const double hxy =
        (n.at(n.here, 1, 1) - n.at(n.here, 1, -1) - n.at(n.here, -1, 1) + n.at(n.here, -1, -1)) /
        4.0;
    const double hxs =
        (n.at(n.above, 0, 1) - n.at(n.above, 0, -1) - n.at(n.below, 0, 1) + n.at(n.below, 0, -1)) /
        4.0;
    const double hys =
        (n.at(n.above, 1, 0) - n.at(n.above, -1, 0) - n.at(n.below, 1, 0) + n.at(n.below, -1, 0)) /
        4.0;
    const cv::Matx33d h(hxx, hxy, hxs, hxy, hyy, hys, hxs, hys, hss);
    const double det = cv::determinant(h);
    if (!(std::fabs(det) > 1e-12)) return false;
    const cv::Vec3d solution = -(h.inv() * cv::Vec3d(gx, gy, gs));
    for (int i = 0; i < 3; ++i) {
        if (!(std::fabs(solution[i]) < 1.0)) return false;
        offset[i] = solution[i];
    }
    return true;
}

void find_maxima_in_row(const LayerStack &stack, const OctaveGrid &g, int layer, int r,
                        float threshold, std::vector<cv::KeyPoint> *found) {
    const size_t row_start = size_t(r) * g.cols;
    const int layer_step = g.sizes[1] - g.sizes[0];
    for (int c = g.c0 + 1; c <= g.c1 - 1; ++c) {
        const size_t at = row_start + size_t(c);
        const float value = stack[size_t(layer)][at];
        if (!(value > threshold)) continue;
        const Neighbourhood n{&stack[size_t(layer) - 1][at], &stack[size_t(layer)][at],
                              &stack[size_t(layer) + 1][at], g.cols};
        if (!is_local_maximum(n, value)) continue;
        double offset[3];
        if (!fit_quadratic(n, offset)) continue;
        const double filter = g.sizes[size_t(layer)] + offset[2] * layer_step;
        const double scale = 1.2 / 9.0 * filter;
        cv::KeyPoint kp(float((c + offset[0]) * g.step), float((r + offset[1]) * g.step),
                        float(2.0 * scale), 0.0f, value, g.octave);
        found->push_back(kp);
    }
}

void find_maxima(const LayerStack &stack, const OctaveGrid &g, float threshold,
                 std::vector<cv::KeyPoint> *found) {
    const int layers = int(g.sizes.size());
    const int inner_rows = g.r1 - g.r0 - 1;
    const int jobs = (layers - 2) * inner_rows;
    // One list per (layer, row), joined in order, so the result does not
    // depend on how the rows were spread over threads.
    std::vector<std::vector<cv::KeyPoint>> per_row(size_t(std::max(jobs, 0)));
    cv::parallel_for_(cv::Range(0, std::max(jobs, 0)), [&](const cv::Range &range) {
        for (int job = range.start; job < range.end; ++job) {
            const int layer = 1 + job / inner_rows;
            const int r = g.r0 + 1 + job % inner_rows;
            find_maxima_in_row(stack, g, layer, r, threshold, &per_row[size_t(job)]);
        }
    });
    for (const auto &row : per_row) found->insert(found->end(), row.begin(), row.end());
}

} // namespace

std::vector<cv::KeyPoint> surf_find_blobs(const IntegralImage &integral, const SurfParams &params) {
    std::vector<cv::KeyPoint> found;
    const int layers = std::max(params.octave_layers, 1) + 2;
    const float threshold = float(std::max(params.hessian_threshold, 0.0));
    // No filter of octave 10 or beyond fits the exact-sum limit.
    const int octaves = std::min(params.octaves, 10);
    for (int octave = 0; octave < octaves; ++octave) {
        OctaveGrid grid;
        if (!plan_octave(octave, layers, integral.width(), integral.height(), &grid)) break;
        const LayerStack stack = compute_responses(integral, grid);
        find_maxima(stack, grid, threshold, &found);
    }
    return found;
}

} // namespace vexo
