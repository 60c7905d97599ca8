// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/generated_landscape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "tools/framequilt/seeded_random.h"

namespace framequilt::tool {
namespace {

constexpr int kLargestHill = 640;  // Pixels.
constexpr int kSmallestStone = 2;
// Of the next finer texture's height; more than half, so that fine texture does not vanish.
constexpr double kRoughness = 0.66;
constexpr double kWaterLevel = -0.45;
constexpr double kHighest = 1.0;
constexpr double kSlopeOfFullLight = 0.05;

struct Ground {
  double height;  ///< Above the water, 0 to 1.
  cv::Vec3d colour;
};
constexpr int kGrounds = 6;
const std::array<Ground, kGrounds> kGroundColours{{{0.0, {150, 196, 212}},
                                                   {0.06, {118, 170, 182}},
                                                   {0.14, {72, 138, 108}},
                                                   {0.45, {52, 98, 74}},
                                                   {0.75, {96, 112, 122}},
                                                   {1.0, {226, 228, 232}}}};
const cv::Vec3d kShallow(158, 148, 84);
const cv::Vec3d kDeep(104, 62, 26);

/// Random heights in [-1, 1] at every `spacing` pixels, smooth in between.
cv::Mat1f bumps(cv::Size size, int spacing, SeededRandom& random) {
  cv::Mat1f heights(size.height / spacing + 3, size.width / spacing + 3);
  for (float& height : heights) height = static_cast<float>(random.within(-1, 1));
  cv::Mat1f smooth;
  cv::resize(heights, smooth, heights.size() * spacing, 0, 0, cv::INTER_CUBIC);
  return smooth({spacing, spacing, size.width, size.height});
}

cv::Mat1f heightsOf(cv::Size size, SeededRandom& random) {
  cv::Mat1f heights(size, 0.F);
  double share = 1;
  for (int spacing = kLargestHill; spacing >= kSmallestStone; spacing /= 2) {
    cv::scaleAdd(bumps(size, spacing, random), share, heights, heights);
    share *= kRoughness;
  }
  return heights;
}

cv::Vec3d between(const cv::Vec3d& from, const cv::Vec3d& to, double share) {
  return from * (1 - share) + to * share;
}

cv::Vec3d colourAt(double aboveWater) {
  if (aboveWater < 0) return between(kShallow, kDeep, std::min(1.0, -aboveWater));
  const double height = std::min(1.0, aboveWater / (kHighest - kWaterLevel));
  const auto* upper = std::find_if(kGroundColours.begin() + 1, kGroundColours.end() - 1,
                                   [&](const Ground& ground) { return height <= ground.height; });
  const Ground& lower = *(upper - 1);
  return between(lower.colour, upper->colour,
                 (height - lower.height) / (upper->height - lower.height));
}

/// How much light a slope towards the top left gets, 1 where the ground is even.
double lightAt(double slope, bool water) {
  const double light = std::clamp(slope / kSlopeOfFullLight, -1.0, 1.0);
  return 1 + light * (water ? 0.3 : 0.45);
}

}  // namespace

cv::Mat generateLandscape(cv::Size size, std::uint32_t seed) {
  SeededRandom random(seed, RandomPurpose::kScene);
  const cv::Mat1f heights = heightsOf(size, random);
  cv::Mat3b picture(size);
  for (int r = 0; r < size.height; ++r) {
    for (int c = 0; c < size.width; ++c) {
      const double height = heights(r, c) - kWaterLevel;
      const double before = heights(std::max(r - 1, 0), std::max(c - 1, 0)) - kWaterLevel;
      picture(r, c) = colourAt(height) * lightAt(height - before, height < 0);
    }
  }
  return picture;
}

}  // namespace framequilt::tool
