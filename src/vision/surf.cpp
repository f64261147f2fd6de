// SPDX-License-Identifier: MIT
#include "vision/surf.hpp"

#include <opencv2/imgproc.hpp>

#include "vision/surf_internal.hpp"

namespace vexo {
namespace {

cv::Mat to_grey(cv::InputArray image) {
    const cv::Mat in = image.getMat();
    CV_Assert(in.depth() == CV_8U);
    if (in.channels() == 1) return in;
    cv::Mat grey;
    cv::cvtColor(in, grey, in.channels() == 4 ? cv::COLOR_BGRA2GRAY : cv::COLOR_BGR2GRAY);
    return grey;
}

} // namespace

cv::Ptr<Surf> Surf::create(double hessian_threshold, int octaves, int octave_layers, bool extended,
                           bool upright) {
    SurfParams params;
    params.hessian_threshold = hessian_threshold;
    params.octaves = octaves;
    params.octave_layers = octave_layers;
    params.extended = extended;
    params.upright = upright;
    return cv::makePtr<Surf>(params);
}

void Surf::detectAndCompute(cv::InputArray image, cv::InputArray mask,
                            std::vector<cv::KeyPoint> &keypoints, cv::OutputArray descriptors,
                            bool use_provided_keypoints) {
    const cv::Mat grey = to_grey(image);
    if (grey.empty()) {
        if (!use_provided_keypoints) keypoints.clear();
        if (descriptors.needed()) descriptors.release();
        return;
    }
    const IntegralImage integral(grey);
    if (!use_provided_keypoints) {
        keypoints = surf_find_blobs(integral, params_);
        if (!mask.empty()) {
            const cv::Mat m = mask.getMat();
            CV_Assert(m.type() == CV_8UC1 && m.size() == grey.size());
            cv::KeyPointsFilter::runByPixelsMask(keypoints, m);
        }
    }
    if (!descriptors.needed()) {
        surf_describe(integral, params_, keypoints, nullptr);
        return;
    }
    cv::Mat rows;
    surf_describe(integral, params_, keypoints, &rows);
    rows.copyTo(descriptors);
}

void Surf::detect_and_describe_as(const cv::Mat &image, const Surf &describer,
                                  std::vector<cv::KeyPoint> &keypoints,
                                  cv::Mat &descriptors) const {
    keypoints.clear();
    descriptors.release();
    const cv::Mat grey = to_grey(image);
    if (grey.empty()) return;
    const IntegralImage integral(grey);
    keypoints = surf_find_blobs(integral, params_);
    surf_describe(integral, describer.params_, keypoints, &descriptors);
}

} // namespace vexo
