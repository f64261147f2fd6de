// SPDX-License-Identifier: MIT
// What a keypoint record must be before a detector's descriptor code sees
// it.  Records come from the host and may hold anything; OpenCV's SIFT
// writes past its buffers for keypoints under one pixel and sizes its
// scale space from the octaves it is given, so a set is checked whole
// before any of it reaches a detector.
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "vision/keypoints_detectors.hpp"

namespace vexo {

// SIFT octaves of a keypoint: the signed low byte is the octave (-1 is
// the doubled image), the next byte the layer inside it.
struct SiftOctave {
    int octave;
    int layer;
};
SiftOctave unpack_sift_octave(int packed);

// Largest SIFT octave an image of this size has: its scale space halves
// the image down to a few pixels.
int sift_max_octave(cv::Size image);

// The keypoint's diameter measured in its own octave's pixels must stay
// within this bound: SIFT's descriptor window, and the scratch it allocates
// per keypoint, grow with its square.  Detected keypoints measure 3.6 to
// 7.2 pixels there.
constexpr float kSiftMaxOctaveSize = 64.0f;

// A keypoint `kind` may describe on an image of `image` size: position
// finite and inside the image, size finite and at least one pixel, angle
// and response finite, and for SIFT an octave from -1 to sift_max_octave,
// a layer from 1 to 3, a diameter of 1 to kSiftMaxOctaveSize pixels in its
// octave and an angle of 0 to 360 degrees; for ORB an octave naming one of
// its pyramid levels.
bool keypoint_usable(const cv::KeyPoint &kp, DetectorKind kind, cv::Size image);

// Every keypoint of the set is usable.
bool keypoints_usable(const std::vector<cv::KeyPoint> &kps, DetectorKind kind, cv::Size image);

} // namespace vexo
