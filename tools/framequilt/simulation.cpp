// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/simulation.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "tools/framequilt/frame_optics.h"
#include "tools/framequilt/seeded_random.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

constexpr int kFramesPerSwing = 10;    // From one extreme of the brightness to the next.
constexpr int kFramesAcrossDrift = 6;  // In a scene made for one.
constexpr std::int64_t kMostScenePixels = std::int64_t{1} << 28;

std::string sizeText(cv::Size size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

void requireRoom(cv::Size scene, const PathOptions& options, const std::string& name) {
  if (holdsStep(scene, options)) return;
  const cv::Size frame = options.frame;
  const cv::Size step = longestStep(options);
  throw ToolError(name + " has " + sizeText(scene) + " pixels but a frame and a step need " +
                  sizeText({frame.width + step.width, frame.height}) + " or " +
                  sizeText({frame.width, frame.height + step.height}) +
                  ": give a larger scene or lower --cols and --rows");
}

cv::Mat asAsked(const cv::Mat& scene, bool gray) {
  if (!gray || scene.channels() == 1) return scene;
  cv::Mat converted;
  cv::cvtColor(scene, converted, cv::COLOR_BGR2GRAY);
  return converted;
}

/// From -1 to 1: an extreme of the brightness, lighter and darker ones in turn.
double extreme(int swing, std::uint32_t seed) {
  SeededRandom random(seed, RandomPurpose::kGain, static_cast<std::uint32_t>(swing));
  return (swing % 2 == 0 ? 1 : -1) * random.within(0.6, 1);
}

}  // namespace

SimulatedCapture::SimulatedCapture(const cv::Mat& scene, const SimulationOptions& options,
                                   const std::string& name)
    : options_(options) {
  requireRoom(scene.size(), options.path, name);
  scene_ = asAsked(scene, options.gray);
  path_ = cameraPath(scene.size(), options.path, options.seed);
}

double SimulatedCapture::gain(int index) const {
  const int swing = index / kFramesPerSwing;
  const double t = static_cast<double>(index % kFramesPerSwing) / kFramesPerSwing;
  const double smooth = t * t * (3 - 2 * t);
  const double before = extreme(swing, options_.seed);
  const double after = extreme(swing + 1, options_.seed);
  return 1 + options_.gain * (before + (after - before) * smooth);
}

double SimulatedCapture::degrees(int index) const {
  SeededRandom random(options_.seed, RandomPurpose::kRotation, static_cast<std::uint32_t>(index));
  return random.within(-options_.rotation, options_.rotation);
}

cv::Mat SimulatedCapture::frame(int index) const {
  const CameraView view{truth(index), degrees(index), options_.path.frame};
  const cv::Mat light = blurred(lightOf(scene_, view, blurRadius(options_.blur)), options_.blur);
  SeededRandom noise(options_.seed, RandomPurpose::kNoise, static_cast<std::uint32_t>(index));
  return exposed(light, {gain(index), options_.vignette, options_.noise}, noise);
}

cv::Size roomyScene(const PathOptions& options) {
  auto across = static_cast<int>(std::ceil(std::sqrt(options.frames)));
  if (options.shape == PathShape::kDrift) across = std::min(across, kFramesAcrossDrift);
  // Nearly a step may be left over at the end of a row, and the next one begins unevenly.
  const std::int64_t steps = across + 1;
  const std::int64_t cols = options.frame.width + steps * longestStep(options).width;
  const std::int64_t rows = options.frame.height + steps * longestStep(options).height;
  if (cols * rows > kMostScenePixels) {
    throw ToolError("a scene for this capture would have " + std::to_string(cols) + " x " +
                    std::to_string(rows) + " pixels, too many: lower --frames, --cols or --rows");
  }
  return {static_cast<int>(cols), static_cast<int>(rows)};
}

}  // namespace framequilt::tool
