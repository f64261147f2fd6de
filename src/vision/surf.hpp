// SPDX-License-Identifier: MIT
// libvexo's own SURF detector and descriptor (Bay, Ess, Tuytelaars, Van
// Gool, "Speeded-Up Robust Features", CVIU 2008), written as a
// cv::Feature2D so the recogniser drives it exactly like SIFT and ORB.
//
// Keypoint conventions (shared by detect and compute):
//   pt       centre in pixels (pixel i has its centre at i);
//   size     diameter = 2 * scale, scale = 1.2 / 9 * box filter size;
//   angle    dominant orientation in degrees, 0..360, measured from +x
//            towards +y (image rows grow downwards); 0 when upright;
//   response Hessian determinant (box responses divided by filter area);
//   octave   octave index, 0 for the finest.
#pragma once

#include <opencv2/features2d.hpp>

namespace vexo {

struct SurfParams {
    double hessian_threshold = 100.0;
    int octaves = 4;
    int octave_layers = 3;
    bool extended = false; // 128 instead of 64 floats per descriptor
    bool upright = false;  // skip the orientation, angle 0
};

class Surf : public cv::Feature2D {
public:
    explicit Surf(const SurfParams &params) : params_(params) {}

    static cv::Ptr<Surf> create(double hessian_threshold = 100.0, int octaves = 4,
                                int octave_layers = 3, bool extended = false, bool upright = false);

    // With use_provided_keypoints the given keypoints are kept (none is
    // dropped, in order) and only their orientation and descriptor are
    // computed; otherwise keypoints are detected, honouring the mask.
    void detectAndCompute(cv::InputArray image, cv::InputArray mask,
                          std::vector<cv::KeyPoint> &keypoints, cv::OutputArray descriptors,
                          bool use_provided_keypoints = false) override;

    // The keypoints detect() finds with these parameters, described as
    // `describer`.compute() would describe them on the same image: the same
    // keypoints and descriptors bit for bit, from one integral image and one
    // orientation pass instead of two.
    void detect_and_describe_as(const cv::Mat &image, const Surf &describer,
                                std::vector<cv::KeyPoint> &keypoints, cv::Mat &descriptors) const;

    int descriptorSize() const override { return params_.extended ? 128 : 64; }
    int descriptorType() const override { return CV_32F; }
    int defaultNorm() const override { return cv::NORM_L2; }
    bool empty() const override { return false; }
    cv::String getDefaultName() const override { return "vexo.Surf"; }

    const SurfParams &params() const { return params_; }

private:
    SurfParams params_;
};

} // namespace vexo
