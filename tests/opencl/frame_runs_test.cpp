// SPDX-License-Identifier: Apache-2.0
// Runs on a card, frame by frame: what is said, and what is made of random walks.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framequilt/framequilt.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"
#include "tests/run/captures.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

namespace layer = framequilt::opencl_layer;

const std::string kEntered = Journal::debug("stichingImagedJointCL in");
const std::string kFirst = Journal::debug("stitchingImageOffsetCL 0");
const std::string kLater = Journal::debug("stitchingImageOffsetCL 1");
const std::string kPreJudged = "pretJudgeCh1Kernel::::::::::::::0";
const std::string kEstimates = "imageMosaicFun in";
const std::string kByMotion = Journal::debug("1== GStitchMode");
const std::string kByOverlap = Journal::debug("0 == GStitchMode");
const std::string kQualifies = Journal::debug("flags.stitch_flags = 1;");
const std::string kDoesNot = Journal::debug("flags.stitch_flags = 0;");
const std::string kFailed = Journal::debug("stichingImagedJointCL failed");

std::string blendedAt(int distance) { return "kkkkkkkkkkkkkkkkkkkkkkk" + std::to_string(distance); }

class FrameRuns : public EitherMemory {
 protected:
  static std::unique_ptr<CaptureRun> openRun(const RunSettings& settings, bool onCard = true) {
    onCard ? withCard() : withoutCard();
    auto run = std::make_unique<CaptureRun>(settings);
    EXPECT_EQ(openclDeviceFlag, onCard);
    return run;
  }
};

FRAMEQUILT_IN_EITHER_MEMORY(FrameRuns);

// --- What is said ---

/// With so little contrast that moving it is no motion, at some brightness.
Frame faint(Frame frame, int brightness) { return withGain(std::move(frame), 26, brightness); }

TEST_P(FrameRuns, SayEverythingInOrder) {
  for (const int channels : {1, 3}) {
    SCOPED_TRACE(channels);
    const Scene scene(560, 700, channels, 11);
    RunSettings settings;
    settings.channels = channels;
    settings.staticDynamicFlag = 1;
    const auto run = openRun(settings);
    const auto frame = [&](int x, int y, int brightness) {
      return faint(scene.cut(x, y, settings.rows, settings.cols), brightness);
    };
    Journal journal;
    run->first(frame(200, 150, 105), frame(320, 150, 105));
    EXPECT_EQ(journal.take(), (Entries{kEntered, kFirst, kPreJudged, kEstimates, kByMotion,
                                       kQualifies, blendedAt(120)}));
    run->next(frame(320, 230, 105));
    EXPECT_EQ(journal.take(), (Entries{kEntered, kLater, kPreJudged, kEstimates, kByMotion,
                                       kQualifies, blendedAt(80)}));
    run->next(frame(260, 230, 125));
    EXPECT_EQ(journal.take(),
              (Entries{kEntered, kLater, kPreJudged, kEstimates, kByMotion, kDoesNot}));
    EXPECT_EQ(journal.takeOfWorkers(), Entries{});
  }
}

TEST_P(FrameRuns, SayEverythingInOrderWhenTheOverlapIsJudged) {
  const Scene scene(560, 700, 1, 11);
  RunSettings settings;
  settings.stitchMode = 0;
  const auto run = openRun(settings);
  const auto frame = [&](int x, int y) { return scene.cut(x, y, settings.rows, settings.cols); };
  Journal journal;
  run->first(frame(200, 150), frame(320, 150));
  EXPECT_EQ(journal.take(), (Entries{kEntered, kFirst, kPreJudged, kEstimates, kByOverlap,
                                     kQualifies, blendedAt(120)}));
  run->next(frame(320, 230));
  EXPECT_EQ(journal.take(), (Entries{kEntered, kLater, kPreJudged, kEstimates, kByOverlap,
                                     kQualifies, blendedAt(80)}));
  // Too little has moved to be blended.
  run->next(frame(322, 230));
  EXPECT_EQ(journal.take(),
            (Entries{kEntered, kLater, kPreJudged, kEstimates, kByOverlap, kQualifies}));
  EXPECT_EQ(run->next(noiseFrame(settings.rows, settings.cols, 1, 3)).result, -1);
  Entries lost = journal.take();
  ASSERT_GE(lost.size(), 5U);
  EXPECT_EQ(lost.back(), kFailed);
  lost.resize(4);
  EXPECT_EQ(lost, (Entries{kEntered, kLater, kPreJudged, kEstimates}));
}

// --- Random walks ---

/// A picture of which parts are black, so that the distance maps of a fusion have something to do.
Frame pictureWithHoles(const RunSettings& settings, std::uint64_t seed) {
  const int channels = settings.channels;
  Frame picture = Scene(420, 520, channels, seed).picture();
  if (settings.staticDynamicFlag != 0) picture = faint(std::move(picture), 105);
  Random random(seed);
  for (int i = 0; i < 12; ++i) {
    const int row = random.between(0, picture.rows - 60);
    const int col = random.between(0, picture.cols - 60);
    const int height = random.between(1, 60);
    const int width = random.between(1, 60);
    for (int r = row; r < row + height; ++r) {
      for (int c = col; c < col + width; ++c) {
        for (int k = 0; k < channels; ++k) picture.at(r, c, k) = 0;
      }
    }
  }
  return picture;
}

Frame cutFrom(const Frame& picture, SPoint corner, int rows, int cols) {
  Frame frame(rows, cols, picture.channels);
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      for (int k = 0; k < picture.channels; ++k) {
        frame.at(r, c, k) = picture.at(corner.y + r, corner.x + c, k);
      }
    }
  }
  return frame;
}

Frame withoutZeros(Frame frame) {
  std::replace(frame.bytes.begin(), frame.bytes.end(), 0, 1);
  return frame;
}

struct Step {
  Frame frame;
  Hint hint;
};

/// The frames of a walk; one after another they overlap by a third or more.
std::vector<Step> randomWalk(const RunSettings& settings, std::uint64_t seed) {
  const Frame picture = pictureWithHoles(settings, seed);
  Random random(seed + 1);
  const int farthestX = picture.cols - settings.cols;
  const int farthestY = picture.rows - settings.rows;
  SPoint corner = {random.between(0, farthestX), random.between(0, farthestY)};
  std::vector<Step> steps = {{cutFrom(picture, corner, settings.rows, settings.cols), {}}};
  while (steps.size() < 7) {
    const SPoint next = {
        std::clamp(corner.x + random.between(-settings.cols / 3, settings.cols / 3), 0, farthestX),
        std::clamp(corner.y + random.between(-settings.rows / 3, settings.rows / 3), 0, farthestY)};
    const SPoint moved = next - corner;
    corner = next;
    Hint hint = {moved.x, moved.x < 0 ? -moved.y : moved.y, random.between(0, 2) > 0};
    // Some hints are wrong, or lie outside the frame.
    if (random.between(0, 5) == 0) hint.dx = random.between(-2 * settings.cols, 2 * settings.cols);
    steps.push_back({cutFrom(picture, corner, settings.rows, settings.cols), hint});
  }
  return steps;
}

/// What a frame gave, with the pixels of that time.
struct Seen {
  int result, offsetX, offsetY, matchNum, stitchFlag;
  SPoint position, topLeft, bottomRight;
  std::string digest;
  bool joined;
};

Seen seenIn(const FrameOutcome& outcome) {
  Digest digest;
  addOutcome(digest, outcome);
  const stitchflags& flags = outcome.flags;
  return {outcome.result, flags.offsetX,   flags.offsetY,       flags.matchNum, flags.stitch_flags,
          flags.position, outcome.topLeft, outcome.bottomRight, digest.hex(),   outcome.joined()};
}

void expectSame(const Seen& card, const Seen& host) {
  EXPECT_EQ(card.result, host.result);
  EXPECT_EQ(card.offsetX, host.offsetX);
  EXPECT_EQ(card.offsetY, host.offsetY);
  EXPECT_EQ(card.matchNum, host.matchNum);
  EXPECT_EQ(card.stitchFlag, host.stitchFlag);
  EXPECT_EQ(card.position, host.position);
  EXPECT_EQ(card.topLeft, host.topLeft);
  EXPECT_EQ(card.bottomRight, host.bottomRight);
  EXPECT_EQ(card.digest, host.digest);
}

std::vector<Seen> play(CaptureRun& run, const std::vector<Step>& steps, bool preJudge) {
  const auto given = [preJudge](const Frame& frame) {
    return preJudge ? withoutZeros(frame) : frame;
  };
  std::vector<Seen> seen;
  for (std::size_t i = 1; i < steps.size(); ++i) {
    const Frame frame = given(steps[i].frame);
    seen.push_back(seenIn(i == 1 ? run.first(given(steps[0].frame), frame, steps[i].hint)
                                 : run.next(frame, steps[i].hint)));
  }
  return seen;
}

TEST_P(FrameRuns, OfRandomWalksMakeTheHostsMosaics) {
  int joined = 0;
  int refused = 0;
  std::uint64_t seed = 100;
  for (const auto& [rows, cols] : {std::pair{240, 320}, {201, 233}, {120, 160}}) {
    for (const int channels : {1, 3}) {
      ++seed;
      SCOPED_TRACE("seed " + std::to_string(seed));
      RunSettings settings;
      settings.rows = rows;
      settings.cols = cols;
      settings.channels = channels;
      settings.staticDynamicFlag = static_cast<int>(seed / 2 % 2);
      const std::vector<Step> steps = randomWalk(settings, seed);
      const std::vector<Seen> card = play(*openRun(settings, true), steps, false);
      // The host's run is given each frame as the card pre-judges it.
      const std::vector<Seen> host = play(*openRun(settings, false), steps, true);
      for (std::size_t i = 0; i < card.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i + 1));
        expectSame(card[i], host[i]);
        (card[i].joined ? joined : refused) += 1;
      }
    }
  }
  EXPECT_GT(joined, 10);
  EXPECT_GT(refused, 5);
}

TEST_P(FrameRuns, DoNotDependOnHowTheThreadsMeet) {
  RunSettings settings;
  settings.rows = 200;
  settings.cols = 240;
  const std::vector<Step> steps = randomWalk(settings, 7);
  const std::vector<Seen> usual = play(*openRun(settings), steps, false);
  for (unsigned seed = 1; seed <= 3; ++seed) {
    layer::jitter(seed, std::chrono::microseconds(300));
    const std::vector<Seen> other = play(*openRun(settings), steps, false);
    for (std::size_t i = 0; i < usual.size(); ++i) EXPECT_EQ(other[i].digest, usual[i].digest);
  }
  layer::jitter(0, std::chrono::microseconds(0));
}

}  // namespace
