// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/simulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "same_pixels.h"
#include "scenes.h"
#include "tests/support/digest.h"
#include "tools/framequilt/generated_scene.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::generateScene;
using framequilt::tool::PathOptions;
using framequilt::tool::PathShape;
using framequilt::tool::roomyScene;
using framequilt::tool::SimulatedCapture;
using framequilt::tool::SimulationOptions;
using framequilt::tool::ToolError;

namespace {

SimulationOptions smallFrames(int frames = 12) {
  SimulationOptions options;
  options.path.frames = frames;
  options.path.frame = {64, 48};
  return options;
}

cv::Mat colourScene() { return generateScene({250, 200}, 3); }

bool sameTruth(const SimulatedCapture& a, const SimulatedCapture& b) {
  if (a.frames() != b.frames()) return false;
  for (int i = 0; i < a.frames(); ++i) {
    if (a.truth(i) != b.truth(i)) return false;
  }
  return true;
}

std::string digestOf(const SimulatedCapture& capture) {
  Digest digest;
  for (int i = 0; i < capture.frames(); ++i) {
    const cv::Mat frame = capture.frame(i);
    digest.addBytes(frame.data, frame.total() * frame.elemSize());
    digest.add(static_cast<float>(capture.truth(i).x));
    digest.add(static_cast<float>(capture.truth(i).y));
  }
  return digest.hex();
}

SimulationOptions everyEffect(PathShape shape) {
  SimulationOptions options = smallFrames(6);
  options.path.shape = shape;
  options.path.lowestOverlap = 0.5;
  options.path.highestOverlap = 0.7;
  options.path.subpixel = true;
  options.noise = 5;
  options.gain = 0.2;
  options.vignette = 0.3;
  options.blur = 0.8;
  options.rotation = 1;
  return options;
}

/// Brightness rises by one gray level a column, or a row, which the noise lets show between levels.
cv::Mat ramp(bool byColumn) {
  cv::Mat scene(200, 250, CV_8UC1);
  for (int r = 0; r < scene.rows; ++r) {
    for (int c = 0; c < scene.cols; ++c) {
      scene.at<unsigned char>(r, c) = static_cast<unsigned char>(byColumn ? c : r);
    }
  }
  return scene;
}

double meanOf(const cv::Mat& picture) { return cv::mean(picture)[0]; }

}  // namespace

TEST(Simulation, WithoutEffectsAFrameIsThatPartOfTheScene) {
  for (const PathShape shape : {PathShape::kSerpentine, PathShape::kDrift}) {
    SimulationOptions options = smallFrames();
    options.path.shape = shape;
    for (const cv::Mat& scene : {colourScene(), texture(200, 250)}) {
      const SimulatedCapture capture(scene, options);
      ASSERT_EQ(capture.frames(), 12);
      for (int i = 0; i < capture.frames(); ++i) {
        const cv::Rect box(cv::Point(capture.truth(i)), options.path.frame);
        EXPECT_TRUE(samePixels(capture.frame(i), scene(box))) << "frame " << i;
      }
    }
  }
}

TEST(Simulation, FramesAreTheCallersOwn) {
  const cv::Mat scene = colourScene();
  const SimulatedCapture capture(scene, smallFrames());
  cv::Mat frame = capture.frame(0);
  EXPECT_TRUE(frame.isContinuous());
  const cv::Mat before = frame.clone();
  frame.setTo(0);
  EXPECT_TRUE(samePixels(capture.frame(0), before));
  EXPECT_TRUE(samePixels(scene, colourScene()));
}

TEST(Simulation, FramesComeInAnyOrder) {
  const SimulatedCapture capture(colourScene(), everyEffect(PathShape::kDrift));
  const cv::Mat third = capture.frame(2);
  capture.frame(5);
  capture.frame(0);
  EXPECT_TRUE(samePixels(capture.frame(2), third));
}

TEST(Simulation, EffectsLeaveThePathAlone) {
  for (const PathShape shape : {PathShape::kSerpentine, PathShape::kDrift}) {
    SimulationOptions plain;
    plain.path = everyEffect(shape).path;
    EXPECT_TRUE(sameTruth({colourScene(), plain}, {colourScene(), everyEffect(shape)}));
  }
}

TEST(Simulation, TheSeedDecidesEverything) {
  const SimulationOptions options = everyEffect(PathShape::kDrift);
  SimulationOptions other = options;
  other.seed = 2;
  EXPECT_EQ(digestOf({colourScene(), options}), digestOf({colourScene(), options}));
  EXPECT_NE(digestOf({colourScene(), options}), digestOf({colourScene(), other}));
}

TEST(Simulation, ResultsAreTheSameOnEveryMachine) {
  EXPECT_EQ(digestOf({colourScene(), everyEffect(PathShape::kSerpentine)}), "5df926f15777fd14");
  EXPECT_EQ(digestOf({colourScene(), everyEffect(PathShape::kDrift)}), "76afb7fb0f1b839f");
}

TEST(Simulation, SubpixelTruthIsWhereTheFrameLies) {
  for (const bool byColumn : {true, false}) {
    SimulationOptions options = smallFrames();
    options.path.subpixel = true;
    options.noise = 2;
    const SimulatedCapture capture(ramp(byColumn), options);
    for (int i = 0; i < capture.frames(); ++i) {
      const double expected = byColumn ? capture.truth(i).x + 31.5 : capture.truth(i).y + 23.5;
      EXPECT_NEAR(meanOf(capture.frame(i)), expected, 0.15) << "frame " << i;
    }
  }
}

TEST(Simulation, RotationTurnsAboutTheMiddle) {
  SimulationOptions options = smallFrames();
  options.rotation = 8;
  options.noise = 2;
  // Away from the scene's edges, which go on outside of it.
  const SimulatedCapture x(ramp(true), options);
  for (int i = 1; i < 3; ++i) {
    const cv::Mat frame = x.frame(i);
    const double radians = x.degrees(i) * CV_PI / 180;
    EXPECT_NEAR(meanOf(frame), x.truth(i).x + 31.5, 0.2);
    EXPECT_NEAR(meanOf(frame.rowRange(0, 24)) - meanOf(frame.rowRange(24, 48)),
                24 * std::sin(radians), 0.3);
  }
}

TEST(Simulation, AnglesLieWithinTheRangeOnBothSides) {
  SimulationOptions options = smallFrames();
  options.rotation = 3;
  const SimulatedCapture capture(colourScene(), options);
  std::vector<double> angles;
  for (int i = 0; i < capture.frames(); ++i) angles.push_back(capture.degrees(i));
  const auto [low, high] = std::minmax_element(angles.begin(), angles.end());
  EXPECT_GE(*low, -3);
  EXPECT_LT(*low, -1);
  EXPECT_LE(*high, 3);
  EXPECT_GT(*high, 1);
}

TEST(Simulation, GainDriftsSmoothlyWithinItsRange) {
  SimulationOptions options = smallFrames(60);
  options.path.shape = PathShape::kDrift;
  options.gain = 0.3;
  const SimulatedCapture capture(colourScene(), options);
  double low = 1;
  double high = 1;
  double before = capture.gain(0);
  for (int i = 0; i < capture.frames(); ++i) {
    const double gain = capture.gain(i);
    EXPECT_LT(std::abs(gain - before), 0.1) << "frame " << i;
    low = std::min(low, gain);
    high = std::max(high, gain);
    before = gain;
  }
  EXPECT_GE(low, 0.7);
  EXPECT_LT(low, 0.83);
  EXPECT_LE(high, 1.3);
  EXPECT_GT(high, 1.17);
}

TEST(Simulation, GainIsTheBrightnessOfTheFrame) {
  SimulationOptions options = smallFrames();
  const SimulatedCapture plain(colourScene(), options);
  options.gain = 0.15;
  const SimulatedCapture drifting(colourScene(), options);
  for (const int i : {0, 5, 10}) {
    EXPECT_NEAR(meanOf(drifting.frame(i)) / meanOf(plain.frame(i)), drifting.gain(i), 0.01);
    EXPECT_EQ(plain.gain(i), 1);
  }
}

TEST(Simulation, NoiseDiffersFromFrameToFrameAndHasItsDeviation) {
  SimulationOptions options = smallFrames();
  const cv::Mat scene(200, 250, CV_8UC1, cv::Scalar(128));
  options.noise = 6;
  const SimulatedCapture capture(scene, options);
  cv::Scalar mean;
  cv::Scalar deviation;
  cv::meanStdDev(capture.frame(3), mean, deviation);
  EXPECT_NEAR(mean[0], 128, 0.5);
  EXPECT_NEAR(deviation[0], 6, 0.3);
  EXPECT_FALSE(samePixels(capture.frame(3), capture.frame(4)));
}

TEST(Simulation, TheVignetteBelongsToTheFrame) {
  SimulationOptions options = smallFrames();
  options.vignette = 0.5;
  const cv::Mat scene(200, 250, CV_8UC1, cv::Scalar(200));
  const SimulatedCapture capture(scene, options);
  for (const int i : {0, 7}) {
    EXPECT_EQ(capture.frame(i).at<unsigned char>(0, 0), 100);
    EXPECT_EQ(capture.frame(i).at<unsigned char>(24, 32), 200);
  }
}

TEST(Simulation, BlurSeesTheSceneBesideTheFrame) {
  SimulationOptions options = smallFrames();
  const SimulatedCapture sharp(colourScene(), options);
  options.blur = 1.2;
  const SimulatedCapture soft(colourScene(), options);
  cv::Mat wholeScene;
  cv::GaussianBlur(colourScene(), wholeScene, {9, 9}, 1.2, 1.2, cv::BORDER_REPLICATE);
  for (const int i : {0, 6}) {
    const cv::Mat expected = wholeScene(cv::Rect(cv::Point(soft.truth(i)), options.path.frame));
    EXPECT_LE(cv::norm(soft.frame(i), expected, cv::NORM_INF), 2);
    EXPECT_GT(cv::norm(sharp.frame(i), expected, cv::NORM_INF), 20);
  }
}

TEST(Simulation, GrayTurnsColourOff) {
  SimulationOptions options = smallFrames();
  EXPECT_EQ(SimulatedCapture(colourScene(), options).frame(0).type(), CV_8UC3);
  EXPECT_EQ(SimulatedCapture(texture(200, 250), options).frame(0).type(), CV_8UC1);
  options.gray = true;
  EXPECT_EQ(SimulatedCapture(texture(200, 250), options).frame(0).type(), CV_8UC1);
  const SimulatedCapture capture(colourScene(), options);
  cv::Mat expected;
  cv::cvtColor(colourScene(), expected, cv::COLOR_BGR2GRAY);
  EXPECT_TRUE(samePixels(capture.frame(2),
                         expected(cv::Rect(cv::Point(capture.truth(2)), options.path.frame))));
}

TEST(Simulation, ASceneThatIsTooSmallIsNamed) {
  try {
    const SimulatedCapture capture(texture(60, 80), smallFrames(), "scene 'a.png'");
    ADD_FAILURE();
  } catch (const ToolError& failure) {
    EXPECT_STREQ(failure.what(),
                 "scene 'a.png' has 80 x 60 pixels but a frame and a step need 90 x 48 or 64 x 67: "
                 "give a larger scene or lower --cols and --rows");
  }
}

TEST(RoomyScene, HoldsEveryFrameAskedFor) {
  for (const PathShape shape : {PathShape::kSerpentine, PathShape::kDrift}) {
    for (const int frames : {2, 20, 37, 100}) {
      for (const auto& [low, high] : {std::pair(0.6, 0.6), std::pair(0.2, 0.9)}) {
        PathOptions options = smallFrames(frames).path;
        options.shape = shape;
        options.lowestOverlap = low;
        options.highestOverlap = high;
        for (std::uint32_t seed = 0; seed < 20; ++seed) {
          EXPECT_EQ(cameraPath(roomyScene(options), options, seed).size(),
                    static_cast<std::size_t>(frames));
        }
      }
    }
  }
}

TEST(RoomyScene, ADriftNeedsNoMoreForMoreFrames) {
  PathOptions options = smallFrames(100000).path;
  options.shape = PathShape::kDrift;
  EXPECT_EQ(roomyScene(options), cv::Size(64 + 7 * 26, 48 + 7 * 19));
}

TEST(RoomyScene, MorePixelsThanMemoryHoldsAreRefused) {
  PathOptions options;
  options.frames = 900;
  options.frame = {3840, 2160};
  try {
    roomyScene(options);
    ADD_FAILURE();
  } catch (const ToolError& failure) {
    EXPECT_STREQ(failure.what(),
                 "a scene for this capture would have 51456 x 28944 pixels, too many: lower "
                 "--frames, --cols or --rows");
  }
}

TEST(GeneratedScene, IsTheSameOnEveryMachine) {
  const cv::Mat scene = generateScene({120, 90}, 3);
  Digest digest;
  digest.addBytes(scene.data, scene.total() * scene.elemSize());
  EXPECT_EQ(digest.hex(), "b687a3a23e8b4252");
  EXPECT_FALSE(samePixels(generateScene({120, 90}, 4), scene));
}

TEST(GeneratedScene, EveryPartIsFullOfEdges) {
  const cv::Mat scene = generateScene({320, 240}, 3);
  for (int r = 0; r < 240; r += 40) {
    for (int c = 0; c < 320; c += 40) {
      cv::Scalar mean;
      cv::Scalar deviation;
      cv::meanStdDev(scene(cv::Rect(c, r, 40, 40)), mean, deviation);
      for (int channel = 0; channel < 3; ++channel) EXPECT_GT(deviation[channel], 15);
    }
  }
}
