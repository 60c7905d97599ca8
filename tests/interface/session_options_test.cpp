// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/thrown_error.h"

using framequilt::ErrorCode;
using framequilt::Session;
using framequilt::SessionOptions;

namespace {

using Change = std::function<void(SessionOptions&)>;

SessionOptions with(const Change& change) {
  SessionOptions options;
  options.rows = 8;
  options.cols = 10;
  change(options);
  return options;
}

/// What the session says of options that are right but for `change`; the engine is not started.
std::string refusalOf(const Change& change) {
  ScriptedEngine engine;
  const ThrownError error = errorOf([&] { const Session session(with(change)); });
  EXPECT_EQ(error.code, ErrorCode::kInvalidOption);
  EXPECT_EQ(engine.starts, error.text == "nothing" ? 1 : 0);
  return error.text;
}

std::string ofSize(int rows, int cols, int scale = framequilt::kAutoScale) {
  return refusalOf([=](SessionOptions& options) {
    options.rows = rows;
    options.cols = cols;
    options.scale = scale;
  });
}

std::string ofLimits(int maxRows, int maxCols) {
  return refusalOf([=](SessionOptions& options) {
    options.maxRows = maxRows;
    options.maxCols = maxCols;
  });
}

std::vector<int> startedWith(const Change& change) {
  ScriptedEngine engine;
  const Session session(with(change));
  return engine.startArguments;
}

int scaleOf(int rows, int cols, int scale) {
  ScriptedEngine engine;
  const Session session(with([=](SessionOptions& options) {
    options.rows = rows;
    options.cols = cols;
    options.scale = scale;
  }));
  return session.scale();
}

}  // namespace

TEST(SessionOptions, ReachTheEngine) {
  EXPECT_EQ(startedWith([](SessionOptions& options) {
              options.criterion = framequilt::Criterion::kOverlap;
              options.dynamicScene = true;
              options.cornerBudget = 5;
              options.maxRows = 700;
              options.maxCols = 900;
            }),
            (std::vector<int>{8, 10, 3, 5, 700, 900, 0, 1}));
  EXPECT_EQ(startedWith([](SessionOptions& options) { options.channels = 1; }),
            (std::vector<int>{8, 10, 1, 8, 20000, 20000, 1, 0}));
}

TEST(SessionOptions, NeedASize) {
  const std::string start = "rows and cols have to be the size of the frames, not ";
  ScriptedEngine engine;
  EXPECT_EQ(errorOf([] { const Session session{SessionOptions{}}; }).text, start + "0 x 0");
}

TEST(SessionOptions, NeedAPositiveSize) {
  const std::string start = "rows and cols have to be the size of the frames, not ";
  EXPECT_EQ(ofSize(0, 10), start + "0 x 10");
  EXPECT_EQ(ofSize(8, 0), start + "8 x 0");
  EXPECT_EQ(ofSize(-1, 10), start + "-1 x 10");
  EXPECT_EQ(ofSize(8, -3), start + "8 x -3");
  EXPECT_EQ(ofSize(1, 1), "nothing");
}

TEST(SessionOptions, NeedOneOrThreeChannels) {
  const auto ofChannels = [](int channels) {
    return refusalOf([=](SessionOptions& options) { options.channels = channels; });
  };
  EXPECT_EQ(ofChannels(1), "nothing");
  EXPECT_EQ(ofChannels(3), "nothing");
  for (const int channels : {-1, 0, 2, 4}) {
    EXPECT_EQ(ofChannels(channels),
              "channels has to be 3 (colour) or 1 (gray), not " + std::to_string(channels));
  }
}

TEST(SessionOptions, NeedAScaleThatFindsCorners) {
  EXPECT_EQ(ofSize(8, 10, 0), "nothing");
  EXPECT_EQ(ofSize(8, 10, 1), "nothing");
  EXPECT_EQ(ofSize(8, 10, 2), "nothing");
  for (const int scale : {-1, 3, 4}) {
    EXPECT_EQ(ofSize(8, 10, scale), "scale has to be 1, 2 or automatic, not " +
                                        std::to_string(scale) +
                                        ": with other scales no corners are found");
  }
}

TEST(SessionOptions, LimitTheCornerBudget) {
  const auto ofBudget = [](int budget) {
    return refusalOf([=](SessionOptions& options) { options.cornerBudget = budget; });
  };
  EXPECT_EQ(ofBudget(0), "nothing");
  EXPECT_EQ(ofBudget(1000), "nothing");
  EXPECT_EQ(ofBudget(-1), "cornerBudget has to be 0 to 1000, not -1");
  EXPECT_EQ(ofBudget(1001), "cornerBudget has to be 0 to 1000, not 1001");
}

TEST(SessionOptions, LimitTheMosaic) {
  EXPECT_EQ(ofLimits(1, 1), "nothing");
  EXPECT_EQ(ofLimits(0, 5), "maxRows and maxCols have to be positive, not 0 and 5");
  EXPECT_EQ(ofLimits(5, -2), "maxRows and maxCols have to be positive, not 5 and -2");
  EXPECT_EQ(ofLimits(1, 2147483647), "nothing");
  EXPECT_EQ(ofLimits(46340, 46341), "nothing");
  const std::string tooLarge =
      "maxRows x maxCols has to stay below 2147483648 pixels: lower one of them";
  EXPECT_EQ(ofLimits(2, 1073741824), tooLarge);
  EXPECT_EQ(ofLimits(46341, 46341), tooLarge);
  EXPECT_EQ(ofLimits(2147483647, 2147483647), tooLarge);
}

TEST(SessionOptions, NameTheFirstThatIsWrong) {
  EXPECT_EQ(refusalOf([](SessionOptions& options) {
              options.channels = 2;
              options.maxRows = 0;
            }),
            "channels has to be 3 (colour) or 1 (gray), not 2");
}

TEST(SessionScale, IsTheLargestThatKeepsEveryPixelUnlessItIsGiven) {
  using framequilt::kAutoScale;
  EXPECT_EQ(scaleOf(8, 10, kAutoScale), 1);
  EXPECT_EQ(scaleOf(6000, 6000, kAutoScale), 1);
  EXPECT_EQ(scaleOf(5, 6001, kAutoScale), 2);
  EXPECT_EQ(scaleOf(6001, 5, kAutoScale), 2);
  EXPECT_EQ(scaleOf(12001, 5, kAutoScale), 2);
  EXPECT_EQ(scaleOf(5, 12001, kAutoScale), 2);
  EXPECT_EQ(scaleOf(8, 10, 1), 1);
  EXPECT_EQ(scaleOf(8, 10, 2), 2);
  EXPECT_EQ(scaleOf(12001, 5, 2), 2);
}

TEST(SessionScale, IsOneWithOpencl) {
  const auto ofOpencl = [](int rows, int scale) {
    return refusalOf([=](SessionOptions& options) {
      options.rows = rows;
      options.scale = scale;
      options.backend = framequilt::Backend::kOpencl;
    });
  };
  EXPECT_EQ(ofOpencl(8, 2), "OpenCL works at scale 1, not 2: use scale 1 or another backend");
  EXPECT_EQ(ofOpencl(6001, framequilt::kAutoScale),
            "OpenCL works at scale 1, not 2, which frames of this size need: use another backend");
}

TEST(SessionOptions, OfADynamicOverlapAreNotForOpencl) {
  const auto ofScene = [](bool dynamic, framequilt::Criterion criterion) {
    SessionOptions asked = with([=](SessionOptions& options) {
      options.dynamicScene = dynamic;
      options.criterion = criterion;
      options.backend = framequilt::Backend::kOpencl;
    });
    ScriptedEngine engine(ScriptedEngine::Device::kServes);
    asked.kernelFile = "/proc/self/exe";
    return errorOf([&] { const Session session(asked); }).text;
  };
  using framequilt::Criterion;
  EXPECT_EQ(ofScene(true, Criterion::kOverlap),
            "OpenCL has no narrow limits for the overlap of a dynamic scene: use the motion "
            "criterion or another backend");
  EXPECT_EQ(ofScene(false, Criterion::kOverlap), "nothing");
  EXPECT_EQ(ofScene(true, Criterion::kMotion), "nothing");
}

TEST(SessionScale, FramesHaveToFitIntoTheMosaicThatARunBeginsWith) {
  EXPECT_EQ(ofSize(6000, 6000, 1), "nothing");
  EXPECT_EQ(ofSize(5, 6001, 1), "frames of 6001 x 5 pixels are more than 6000 a side: use scale 2");
  EXPECT_EQ(ofSize(12001, 5, 1),
            "frames of 5 x 12001 pixels are more than 6000 a side: use scale 2");
  const std::string halved =
      "frames of 5 x 12002 pixels are more than 6000 a side even halved: make them smaller";
  EXPECT_EQ(ofSize(12002, 5, 1), halved);
  EXPECT_EQ(ofSize(12002, 5, 2), halved);
  EXPECT_EQ(ofSize(12002, 5), halved);
}
