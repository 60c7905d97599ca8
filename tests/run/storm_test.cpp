// SPDX-License-Identifier: Apache-2.0
// The entry points hundreds of times in any order, as no host should call them: each answers as it
// is documented, and nothing is left behind.
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "framequilt/framequilt.h"
#include "tests/support/process_threads.h"
#include "tests/support/random_images.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"

namespace {

constexpr int kRows = 180;
constexpr int kCols = 240;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryIsOurs = false;  // A sanitizer keeps what was freed.
constexpr int kRounds = 100;           // Each mosaic is cleared, which it makes slow.
#else
constexpr bool kMemoryIsOurs = true;
constexpr int kRounds = 600;
#endif

/// Waits until there are no more, and counts.
int threadsSettledAt(int expected) {
  waitForThreads(expected);
  return threadsOfProcess();
}

long residentKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kilobytes = 0;
    if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
  }
  return 0;
}

/// How a run is opened.
struct Opening {
  int channels, stitchMode, staticDynamicFlag;
};

class EntryPointsStorm : public testing::Test {
 protected:
  void TearDown() override { uinitJoint(); }

  void open(const Opening& opening) {
    opened_ = opening;
    started_ = false;
    ASSERT_TRUE(initJoint(kRows, kCols, opening.channels, 1, 20000, 20000, opening.stitchMode,
                          opening.staticDynamicFlag));
  }

  void stop() {
    opened_.reset();
    started_ = false;
    ASSERT_TRUE(uinitJoint());
  }

  /// Whether the frame was blended. \param later  With another frame index than that of the first.
  bool stitch(int x, bool later) {
    const int channels = opened_ ? opened_->channels : 1;
    const Scene& scene = channels == 1 ? gray_ : colour_;
    Frame reference = scene.cut(0, 0, kRows, kCols);
    Frame frame = scene.cut(x, 0, kRows, kCols);
    SPoint topLeft{}, bottomRight{};
    cv::Mat mosaic;
    stitchflags record{};
    const SPoint before = last_;
    const int result =
        stichingImagedJoint(later ? nullptr : reference.bytes.data(), frame.bytes.data(),
                            later ? 1 : 0, 1, 0, 0, false, topLeft, bottomRight, mosaic, record);
    last_ = record.position;
    if (!opened_) {
      EXPECT_EQ(result, -1);
      return false;
    }
    EXPECT_TRUE(result == -1 || result == 0) << result;
    // A first frame is missing: one of the run before, where that was not stopped, may serve.
    if (later && !started_) return false;
    if (!later) started_ = true;
    EXPECT_EQ(mosaic.type(), channels == 1 ? CV_8UC1 : CV_8UC3);
    EXPECT_GE(bottomRight.x - topLeft.x, kCols);
    EXPECT_GE(bottomRight.y - topLeft.y, kRows);
    return result == 0 && (last_.x != before.x || last_.y != before.y);
  }

  /// A frame that joins the reference 60 pixels to the left of it; the bytes of both.
  cv::Mat pair(const Opening& opening) {
    open(opening);
    const Scene& scene = opening.channels == 1 ? gray_ : colour_;
    Frame reference = scene.cut(0, 0, kRows, kCols);
    Frame frame = scene.cut(60, 0, kRows, kCols);
    SPoint topLeft{}, bottomRight{};
    cv::Mat mosaic;
    stitchflags record{};
    stichingImagedJoint(reference.bytes.data(), frame.bytes.data(), 0, 1, 0, 0, false, topLeft,
                        bottomRight, mosaic, record);
    cv::Mat box =
        mosaic(cv::Rect(cv::Point(topLeft.x, topLeft.y), cv::Point(bottomRight.x, bottomRight.y)))
            .clone();
    stop();
    return box;
  }

  std::optional<Opening> opened_;
  bool started_ = false;  ///< A first frame was given.
  SPoint last_{};
  const Scene gray_{kRows, 700, 1, 11};
  const Scene colour_{kRows, 700, 3, 11};
  const RecordedReports quiet_;
};

}  // namespace

TEST_F(EntryPointsStorm, LeavesNothingBehind) {
  const std::vector<Opening> ways = {{1, 1, 0}, {1, 1, 1}, {1, 0, 0}, {1, 0, 1},
                                     {3, 1, 0}, {3, 1, 1}, {3, 0, 0}, {3, 0, 1}};
  const int threads = threadsAtRest();
  std::vector<cv::Mat> expected;
  for (const Opening& way : ways) expected.push_back(pair(way));

  Random random(5);
  int blended = 0;
  long before = 0;
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(round);
    switch (random.between(0, 7)) {
      case 0:
      case 1:
        // Often while a run is open.
        open(ways[static_cast<std::size_t>(random.between(0, 7))]);
        EXPECT_EQ(threadsSettledAt(threads + 2), threads + 2);
        break;
      case 2:
        // Often without a run.
        stop();
        EXPECT_EQ(threadsSettledAt(threads), threads);
        break;
      case 3:
        blended += stitch(60, /*later=*/false) ? 1 : 0;
        break;
      default:
        blended += stitch(30 * random.between(0, 10), /*later=*/true) ? 1 : 0;
    }
    if (round == kRounds / 4) {
      stop();
      before = residentKilobytes();
    }
  }
  EXPECT_GT(blended, kRounds / 10);
  stop();
  EXPECT_EQ(threadsSettledAt(threads), threads);
  if (kMemoryIsOurs) {
    EXPECT_LT(residentKilobytes() - before, 4096);
  }
  for (std::size_t i = 0; i < ways.size(); ++i) {
    const cv::Mat again = pair(ways[i]);
    ASSERT_EQ(again.size(), expected[i].size()) << i;
    EXPECT_EQ(cv::norm(again, expected[i], cv::NORM_INF), 0.0) << i;
  }
}
