// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>

#include "tools/framequilt/seeded_random.h"

namespace framequilt::tool {

// What a camera does to the light of a scene, in the order in which it happens. Light is in gray
// levels, as floats; the results are the same to the bit on every machine.

/// A camera over a scene of 8 bits and 1 or 3 channels.
struct CameraView {
  cv::Point2d topLeft;  ///< Of the frame in scene pixels, before the camera is turned.
  double degrees = 0;   ///< The camera is turned clockwise about the frame's middle.
  cv::Size frame;
};

/// The light that falls on the frame and on `border` pixels around it: the scene by bicubic
/// interpolation, exact at whole pixels. Outside the scene its edge goes on.
cv::Mat lightOf(const cv::Mat& scene, const CameraView& view, int border);

/// Pixels at each side that blurring takes. \param sigma  In pixels; 0: no blur.
int blurRadius(double sigma);

/// Gaussian blur; the result is smaller than `light` by blurRadius(sigma) at each side.
cv::Mat blurred(const cv::Mat& light, double sigma);

/// What the sensor makes of the light.
struct Exposure {
  double gain = 1;      ///< Factor of the brightness.
  double vignette = 0;  ///< Share of the light, 0 to 1, that the corners lose.
  double noise = 0;     ///< Standard deviation in gray levels.
};

/// The picture in 8 bits, rounded and saturated.
cv::Mat exposed(const cv::Mat& light, const Exposure& exposure, SeededRandom& noise);

}  // namespace framequilt::tool
