// SPDX-License-Identifier: MIT
// From a rendered photo of a distorted, turned dot grid to a correction
// table, compared with the table the true landing positions give; and the
// lens and perspective mappings of the found centres.
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "corr/head_geometry.hpp"
#include "dot_render.hpp"
#include "fixtures.hpp"
#include "vexo.h"

namespace {

using vt::Disc;
using vt::Frame;
using vt::PointsPtr;

constexpr double kPi = 3.14159265358979323846;

// A 15 x 15 grid at 6.5 mm pitch marked through a neutral table by a
// two-mirror head without objective (300 mm to the field, 15 mm between
// the mirrors): the beam angles are linear in the commanded position, so
// the marks land pincushioned by up to about half a millimetre.
struct MarkedField {
    static constexpr uint32_t n = 15;
    static constexpr double pitch = 6.5, field = 100.0;
    CorrBase head{15.0, 300.0, field, 0.0, 0, 0};
    std::vector<GeomPoint> nominal, landed;
    MarkedField() {
        for (uint32_t i = 0; i < n; ++i)
            for (uint32_t j = 0; j < n; ++j) {
                const double x = (double(j) - 7) * pitch, y = (double(i) - 7) * pitch;
                nominal.push_back(GeomPoint{x, y, 0, 0, {}});
                const vexo::BeamAngles a{x / (head.mirror_gap + head.distance), y / head.distance};
                const vexo::FieldPosition p = vexo::position_for_angles(head, a);
                landed.push_back(GeomPoint{p.x, p.y, 0, 0, {}});
            }
    }
};

// The camera: 8 px per mm, field y up, image y down, turned by `turn`
// degrees (field frame, from +x towards +y) about the field centre, which
// sits at pixel (452.3, 447.8).
struct Camera {
    double px_per_mm = 8, turn = 2.5, cx = 452.3, cy = 447.8;
    cv::Point2d pixel(double x, double y) const {
        const double t = turn * kPi / 180;
        const double u = x * std::cos(t) - y * std::sin(t), v = x * std::sin(t) + y * std::cos(t);
        return {cx + u * px_per_mm, cy - v * px_per_mm};
    }
};

struct Photo {
    MarkedField marks;
    Camera camera;
    std::vector<Disc> discs;
    cv::Mat grey;
    Photo() {
        for (const GeomPoint &p : marks.landed) {
            const cv::Point2d c = camera.pixel(p.x, p.y);
            discs.push_back({c.x, c.y, 0.45 * camera.px_per_mm});
        }
        grey = vt::render(900, 900, discs);
    }
};

// Found dots, in mm about the middle dot, y up, unrotated and sorted.
struct Measured {
    PointsPtr dots;
    uint32_t count = 0, find_status = 0, unrotate_status = 0;
    double rotation = 0;
    explicit Measured(Photo &photo) {
        Frame f(photo.grey);
        const PrcgDotParams p = vt::dot_params();
        dots.reset(vexo_prcg_find_dots(f.block(), &p, &count, &find_status));
        if (!dots) return;
        vexo_prcg_scale_dots(dots.get(), count, 1 / photo.camera.px_per_mm,
                             1 / photo.camera.px_per_mm, nullptr, VEXO_PRCG_SCALE_FLIP_Y);
        unrotate_status = vexo_prcg_unrotate_dots(dots.get(), count, MarkedField::n, &rotation,
                                                  VEXO_PRCG_SORT_GRID);
    }
};

TEST(DotsField, EveryMarkFoundWithinFiveHundredthsOfAPixelRms) {
    Photo photo;
    Frame f(photo.grey);
    const PrcgDotParams p = vt::dot_params();
    uint32_t count = 0, status = 0;
    const PointsPtr dots(vexo_prcg_find_dots(f.block(), &p, &count, &status));
    EXPECT_EQ(status, VEXO_OK);
    ASSERT_EQ(count, MarkedField::n * MarkedField::n);
    const double rms = vt::centre_rms(dots.get(), count, photo.discs);
    RecordProperty("centroid_rms_px", std::to_string(rms));
    EXPECT_LE(rms, 0.05);
}

TEST(DotsField, RotationEstimatedWithinAHundredthOfADegree) {
    Photo photo;
    const Measured m(photo);
    ASSERT_EQ(m.unrotate_status, VEXO_OK);
    RecordProperty("rotation_error_deg", std::to_string(m.rotation - photo.camera.turn));
    EXPECT_NEAR(m.rotation, photo.camera.turn, 0.01);
}

TEST(DotsField, SortedDotsMatchTheirMarksInGridOrder) {
    Photo photo;
    const Measured m(photo);
    ASSERT_EQ(m.unrotate_status, VEXO_OK);
    double worst = 0;
    for (uint32_t k = 0; k < m.count; ++k)
        worst = std::max(worst, std::hypot(m.dots.get()[k].x - photo.marks.landed[k].x,
                                           m.dots.get()[k].y - photo.marks.landed[k].y));
    // 0.05 mm is 0.4 px: far below the 6.5 mm pitch, so no dot is mixed up.
    EXPECT_LT(worst, 0.05);
}

TEST(DotsField, TableFromFoundDotsMatchesTableFromTrueMarks) {
    Photo photo;
    const Measured m(photo);
    ASSERT_EQ(m.unrotate_status, VEXO_OK);
    const MarkedField &f = photo.marks;
    CorrTable from_truth, from_photo;
    ASSERT_EQ(
        vexo_corr_from_grid(f.n, f.landed.data(), f.nominal.data(), f.field, nullptr, &from_truth),
        VEXO_OK);
    ASSERT_EQ(
        vexo_corr_from_grid(f.n, m.dots.get(), f.nominal.data(), f.field, nullptr, &from_photo),
        VEXO_OK);
    double worst = 0;
    for (uint32_t k = 0; k < VEXO_CORR_CELLS; ++k)
        worst = std::max({worst, std::fabs(from_truth.cell[k].x - from_photo.cell[k].x),
                          std::fabs(from_truth.cell[k].y - from_photo.cell[k].y)});
    // One pixel is 1/8 mm, and a mm is 65535 / field output units.
    const double per_pixel = 65535 / f.field / photo.camera.px_per_mm;
    RecordProperty("table_error_px", std::to_string(worst / per_pixel));
    EXPECT_LE(worst, 0.2 * per_pixel);
}

// A mark missing (no result) or one too many (invalid data) is reported.
TEST(DotsField, MissingOrExtraMarkIsReportedNotGuessed) {
    for (const bool extra : {false, true}) {
        SCOPED_TRACE(extra ? "extra" : "missing");
        Photo photo;
        if (extra)
            photo.discs.push_back({870, 30, 3.6});
        else
            photo.discs.erase(photo.discs.begin() + 100);
        photo.grey = vt::render(900, 900, photo.discs);
        const Measured m(photo);
        EXPECT_EQ(m.count, extra ? 226u : 224u);
        EXPECT_EQ(m.unrotate_status, extra ? VEXO_ERROR_INVALID_DATA : VEXO_ERROR_NO_RESULT);
    }
}

// Camera record with a lens (fx = fy = 900, centre (330, 250)) and a
// perspective given as nine doubles (all 0: none).
CalibrationRecord lens_record(const double (&k)[4], const double (&perspective)[9]) {
    CalibrationRecord r{};
    const double camera[9] = {900, 0, 330, 0, 900, 250, 0, 0, 1};
    for (int i = 0; i < 9; ++i) vexo_util_dbl_to_block(camera[i], r.camera[i]);
    for (int i = 0; i < 4; ++i) vexo_util_dbl_to_block(k[i], r.distortion[i]);
    for (int i = 0; i < 9; ++i) vexo_util_dbl_to_block(perspective[i], r.perspective[i]);
    r.width = 660;
    r.height = 500;
    return r;
}

// The lens model written out: ideal pixel -> distorted pixel.
cv::Point2d distort(cv::Point2d ideal, const double (&k)[4]) {
    const double x = (ideal.x - 330) / 900, y = (ideal.y - 250) / 900;
    const double r2 = x * x + y * y, radial = 1 + k[0] * r2 + k[1] * r2 * r2;
    const double xd = x * radial + 2 * k[2] * x * y + k[3] * (r2 + 2 * x * x);
    const double yd = y * radial + k[2] * (r2 + 2 * y * y) + 2 * k[3] * x * y;
    return {330 + 900 * xd, 250 + 900 * yd};
}

TEST(DotsField, UndistortedCentresLandOnTheIdealCameraGrid) {
    const double k[4] = {-0.18, 0.05, 0.002, -0.001};
    const double none[9] = {};
    std::vector<cv::Point2d> ideal;
    std::vector<Disc> discs;
    for (int i = 0; i < 9; ++i)
        for (int j = 0; j < 12; ++j) {
            ideal.emplace_back(40.0 + 52.5 * j, 40.0 + 52.5 * i);
            const cv::Point2d d = distort(ideal.back(), k);
            discs.push_back({d.x, d.y, 6});
        }
    Frame f(vt::render(660, 500, discs));
    const CalibrationRecord record = lens_record(k, none);
    PrcgDotParams p = vt::dot_params();
    p.options = VEXO_PRCG_DOTS_UNDISTORT;
    p.record = &record;
    uint32_t count = 0, status = 0;
    const PointsPtr dots(vexo_prcg_find_dots(f.block(), &p, &count, &status));
    ASSERT_EQ(count, ideal.size());
    EXPECT_LE(vt::centre_rms(dots.get(), count, ideal), 0.05);
}

TEST(DotsField, PerspectiveMovesCentresByTheRecordsMatrix) {
    const double k[4] = {};
    const double shift[9] = {1, 0, 5.25, 0, 1, -3.5, 0, 0, 1};
    Frame f(vt::render(200, 200, {{80.3, 90.7, 7}}));
    const CalibrationRecord record = lens_record(k, shift);
    PrcgDotParams p = vt::dot_params();
    uint32_t count = 0, status = 0;
    const PointsPtr plain(vexo_prcg_find_dots(f.block(), &p, &count, &status));
    p.options = VEXO_PRCG_DOTS_PERSPECTIVE;
    p.record = &record;
    const PointsPtr moved(vexo_prcg_find_dots(f.block(), &p, &count, &status));
    ASSERT_EQ(count, 1u);
    EXPECT_NEAR(moved.get()[0].x, plain.get()[0].x + 5.25, 1e-9);
    EXPECT_NEAR(moved.get()[0].y, plain.get()[0].y - 3.5, 1e-9);
}

TEST(DotsField, UndistortWithUnusableCameraIsRefused) {
    const double k[4] = {};
    const double none[9] = {};
    Frame f(vt::render(200, 200, {{80, 90, 7}}));
    CalibrationRecord record = lens_record(k, none);
    vexo_util_dbl_to_block(0.0, record.camera[0]); // fx = 0
    PrcgDotParams p = vt::dot_params();
    p.options = VEXO_PRCG_DOTS_UNDISTORT;
    p.record = &record;
    uint32_t count = 0, status = 0;
    EXPECT_EQ(vexo_prcg_find_dots(f.block(), &p, &count, &status), nullptr);
    EXPECT_EQ(status, VEXO_ERROR_INVALID_PARAMETER);
}

} // namespace
