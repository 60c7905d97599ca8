// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/generated_scene.h"

#include <opencv2/imgproc.hpp>

#include "tools/framequilt/seeded_random.h"

namespace framequilt::tool {
namespace {

constexpr int kSmallestSide = 3;
constexpr int kLargestSide = 36;
// Dense enough that hardly any ground is left uncovered.
constexpr std::int64_t kPixelsPerRectangle = 90;
// Brighter or darker frames of the scene do not saturate at once.
constexpr int kDarkest = 25;
constexpr int kLightest = 215;
constexpr int kGround = 120;

cv::Scalar drawColour(SeededRandom& random) {
  cv::Scalar colour;
  for (int channel = 0; channel < 3; ++channel) {
    colour[channel] = random.between(kDarkest, kLightest);
  }
  return colour;
}

cv::Rect drawRectangle(cv::Size scene, SeededRandom& random) {
  const int left = random.between(-kLargestSide, scene.width - 1);
  const int top = random.between(-kLargestSide, scene.height - 1);
  const int width = random.between(kSmallestSide, kLargestSide);
  const int height = random.between(kSmallestSide, kLargestSide);
  return cv::Rect(left, top, width, height) & cv::Rect({}, scene);
}

}  // namespace

cv::Mat generateScene(cv::Size size, std::uint32_t seed) {
  SeededRandom random(seed, RandomPurpose::kScene);
  cv::Mat scene(size, CV_8UC3, cv::Scalar::all(kGround));
  const std::int64_t count = std::int64_t{size.width} * size.height / kPixelsPerRectangle;
  for (std::int64_t i = 0; i < count; ++i) {
    const cv::Rect rectangle = drawRectangle(size, random);
    scene(rectangle).setTo(drawColour(random));
  }
  // In 8 bits OpenCV blurs by whole numbers, the same ones on every machine.
  cv::GaussianBlur(scene, scene, {3, 3}, 0.7);
  return scene;
}

}  // namespace framequilt::tool
