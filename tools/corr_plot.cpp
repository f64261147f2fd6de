// SPDX-License-Identifier: MIT
// vexo corr plot: the neutral grid faint, the corrected grid bold with its
// displacements exaggerated, z as a colour scale with a legend.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "cli.hpp"
#include "commands.hpp"
#include "corr_table.hpp"

namespace tool {

namespace {

constexpr int kSubpixelBits = 4;

struct Canvas {
    int size;    // square plot area in pixels
    int margin;  // around the plot area
    int legend;  // width of the z legend on the right
    int caption; // height of the caption below

    // Output units to pixels in 1/16 steps (drawn with kSubpixelBits), so
    // smooth grids do not zigzag on whole pixels; Y grows upwards.
    cv::Point to_pixel(double x, double y) const {
        const double scale = (size - 1) / (2.0 * 32767.5 * 1.15);
        return {int(std::lround(16.0 * (margin + size / 2.0 + x * scale))),
                int(std::lround(16.0 * (margin + size / 2.0 - y * scale)))};
    }
};

cv::Vec3b z_colour(double z, double z_min, double z_max) {
    const double t = z_max > z_min ? (z - z_min) / (z_max - z_min) : 0.5;
    cv::Mat1b grey(1, 1, static_cast<uint8_t>(std::lround(255.0 * std::clamp(t, 0.0, 1.0))));
    cv::Mat3b colour;
    cv::applyColorMap(grey, colour, cv::COLORMAP_VIRIDIS);
    return colour(0, 0);
}

void draw_grid(cv::Mat3b &img, const Canvas &cv, const CorrTable &t, const CorrTable &neutral,
               double k, const cv::Scalar &colour, int thickness) {
    auto at = [&](int r, int c) {
        const GeomPoint &p = t.cell[r * 65 + c], &n = neutral.cell[r * 65 + c];
        return cv.to_pixel(n.x + k * (p.x - n.x), n.y + k * (p.y - n.y));
    };
    for (int r = 0; r < 65; r += 4)
        for (int c = 0; c + 1 < 65; ++c)
            cv::line(img, at(r, c), at(r, c + 1), colour, thickness, cv::LINE_AA, kSubpixelBits);
    for (int c = 0; c < 65; c += 4)
        for (int r = 0; r + 1 < 65; ++r)
            cv::line(img, at(r, c), at(r + 1, c), colour, thickness, cv::LINE_AA, kSubpixelBits);
}

void draw_nodes(cv::Mat3b &img, const Canvas &cv, const CorrTable &t, const CorrTable &neutral,
                double k, double z_min, double z_max) {
    for (int r = 0; r < 65; r += 4)
        for (int c = 0; c < 65; c += 4) {
            const GeomPoint &p = t.cell[r * 65 + c], &n = neutral.cell[r * 65 + c];
            const cv::Vec3b col = z_colour(p.z, z_min, z_max);
            cv::circle(img, cv.to_pixel(n.x + k * (p.x - n.x), n.y + k * (p.y - n.y)),
                       16 * std::max(2, cv.size / 160), cv::Scalar(col[0], col[1], col[2]),
                       cv::FILLED, cv::LINE_AA, kSubpixelBits);
        }
}

void draw_legend(cv::Mat3b &img, const Canvas &cv, double z_min, double z_max) {
    const int x0 = cv.margin * 2 + cv.size, top = cv.margin, height = cv.size;
    for (int i = 0; i < height; ++i) {
        const double z = z_max - (z_max - z_min) * i / std::max(1, height - 1);
        const cv::Vec3b col = z_colour(z, z_min, z_max);
        cv::line(img, {x0, top + i}, {x0 + 20, top + i}, cv::Scalar(col[0], col[1], col[2]));
    }
    char text[64];
    const double font = std::max(0.35, cv.size / 1600.0);
    std::snprintf(text, sizeof text, "z %.1f", z_max);
    cv::putText(img, text, {x0, top - 6}, cv::FONT_HERSHEY_SIMPLEX, font, {40, 40, 40}, 1,
                cv::LINE_AA);
    std::snprintf(text, sizeof text, "z %.1f", z_min);
    cv::putText(img, text, {x0, top + height + 16}, cv::FONT_HERSHEY_SIMPLEX, font, {40, 40, 40}, 1,
                cv::LINE_AA);
}

} // namespace

int corr_plot(cli::Args &args) {
    const uint32_t format = corr_format_option(args);
    const auto ex = args.option("--exaggerate");
    const auto px = args.option("--size");
    const std::string path = args.next("FILE"), out = args.next("OUT.png");
    args.finish();
    const long size = px.empty() ? 800 : cli::to_long(px[0], "--size");
    if (size < 200 || size > 8000) throw cli::Failure("--size must be 200..8000 pixels");

    const LoadedTable loaded = load_table(path, format);
    const Table neutral = neutral_table();
    const TableStats s = measure(*loaded.table);
    // By default the largest displacement is drawn as 5 % of the field.
    double k = s.max_deviation > 0 ? std::max(1.0, 0.05 * kFieldUnits / s.max_deviation) : 1.0;
    if (!ex.empty()) k = cli::to_double(ex[0], "--exaggerate");

    // A square picture of the requested size: plot area, legend to the
    // right, caption below.
    const int side = int(size), margin = std::max(6, side / 40), legend = std::max(50, side / 8);
    const int plot = side - 3 * margin - legend;
    const Canvas canvas{plot, margin, legend, side - 2 * margin - plot};
    cv::Mat3b img(side, side, cv::Vec3b(255, 255, 255));
    draw_grid(img, canvas, *neutral, *neutral, 1.0, {215, 215, 215}, 1);
    draw_grid(img, canvas, *loaded.table, *neutral, k, {60, 40, 20}, std::max(1, plot / 400));
    draw_nodes(img, canvas, *loaded.table, *neutral, k, s.min_z, s.max_z);
    draw_legend(img, canvas, s.min_z, s.max_z);

    char caption[512];
    std::snprintf(caption, sizeof caption, "%s   max deviation %.1f units (%.3f %%), x%.1f",
                  path.c_str(), s.max_deviation, 100.0 * s.max_deviation / kFieldUnits, k);
    cv::putText(img, caption, {canvas.margin, canvas.margin * 2 + plot + canvas.caption / 2},
                cv::FONT_HERSHEY_SIMPLEX, std::max(0.35, plot / 1600.0), {20, 20, 20}, 1,
                cv::LINE_AA);
    bool written = false;
    try {
        written = cv::imwrite(out, img);
    } catch (const cv::Exception &e) {
        throw cli::Failure(out + ": cannot write the picture: " + e.what());
    }
    if (!written) throw cli::Failure(out + ": cannot write the picture (use a .png name)");
    std::printf("plot of %s written to %s (%dx%d)\n", path.c_str(), out.c_str(), img.cols,
                img.rows);
    return 0;
}

} // namespace tool
