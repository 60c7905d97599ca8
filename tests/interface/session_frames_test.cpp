// SPDX-License-Identifier: Apache-2.0
// What a frame may look like, and what of it the engine gets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/random_images.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/thrown_error.h"

using framequilt::ErrorCode;
using framequilt::FrameView;
using framequilt::PixelOrder;
using framequilt::Session;
using framequilt::SessionOptions;

namespace {

using Bytes = std::vector<unsigned char>;

SessionOptions options(int rows, int cols, int channels) {
  SessionOptions options;
  options.rows = rows;
  options.cols = cols;
  options.channels = channels;
  return options;
}

/// What the engine gets of `view` as the reference and as the frame; both are to be the same.
Bytes engineBytes(const FrameView& view, int channels) {
  ScriptedEngine engine;
  Session session(options(view.rows, view.cols, channels));
  session.add(view);
  session.add(view);
  EXPECT_EQ(engine.calls.at(0).reference, engine.calls.at(0).frame);
  return engine.calls.at(0).frame;
}

// Two pixels; gray is (114 blue + 587 green + 299 red + 500) / 1000.
constexpr unsigned char kBgr[] = {10, 20, 30, 200, 100, 50};
constexpr unsigned char kRgb[] = {30, 20, 10, 50, 100, 200};
constexpr unsigned char kBgra[] = {10, 20, 30, 77, 200, 100, 50, 88};
const Bytes kColour = {10, 20, 30, 200, 100, 50};
const Bytes kGray = {22, 96};

FrameView twoPixels(const unsigned char* pixels, PixelOrder order) {
  return {pixels, 1, 2, 0, order};
}

/// Says why it takes none of these frames, and goes on.
class WrongFrames : public testing::Test {
 protected:
  static constexpr int kRows = 8, kCols = 10;

  template <class Frame>
  std::string refusalOf(const Frame& frame) {
    const ThrownError error = errorOf([&] { session_.add(frame); });
    EXPECT_EQ(error.code, ErrorCode::kInvalidFrame);
    return error.text;
  }

  static cv::Mat good(int value) { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(value)); }

  ScriptedEngine engine_;
  Session session_{options(kRows, kCols, 1)};
};

}  // namespace

TEST(SessionFrames, OfEachOrderBecomeBlueGreenRedInAColourSession) {
  EXPECT_EQ(engineBytes(twoPixels(kBgr, PixelOrder::kBgr), 3), kColour);
  EXPECT_EQ(engineBytes(twoPixels(kRgb, PixelOrder::kRgb), 3), kColour);
  EXPECT_EQ(engineBytes(twoPixels(kBgra, PixelOrder::kBgra), 3), kColour);
  EXPECT_EQ(engineBytes(twoPixels(kGray.data(), PixelOrder::kGray), 3),
            (Bytes{22, 22, 22, 96, 96, 96}));
}

TEST(SessionFrames, OfEachOrderBecomeGrayInAGraySession) {
  EXPECT_EQ(engineBytes(twoPixels(kBgr, PixelOrder::kBgr), 1), kGray);
  EXPECT_EQ(engineBytes(twoPixels(kRgb, PixelOrder::kRgb), 1), kGray);
  EXPECT_EQ(engineBytes(twoPixels(kBgra, PixelOrder::kBgra), 1), kGray);
  EXPECT_EQ(engineBytes(twoPixels(kGray.data(), PixelOrder::kGray), 1), kGray);
}

TEST(SessionFrames, ZerosBecomeOneInTheCopy) {
  const Bytes black(2 * 3 * 4, 0);
  for (const PixelOrder order :
       {PixelOrder::kBgr, PixelOrder::kRgb, PixelOrder::kBgra, PixelOrder::kGray}) {
    const FrameView view = {black.data(), 2, 3, 0, order};
    EXPECT_EQ(engineBytes(view, 3), Bytes(2 * 3 * 3, 1));
    EXPECT_EQ(engineBytes(view, 1), Bytes(2 * 3, 1));
  }
  EXPECT_EQ(black, Bytes(2 * 3 * 4, 0));
}

TEST(SessionFrames, OnlyZerosAreReplaced) {
  const Bytes values = {0, 1, 2, 127, 254, 255};
  EXPECT_EQ(engineBytes({values.data(), 2, 3, 0, PixelOrder::kGray}, 1),
            (Bytes{1, 1, 2, 127, 254, 255}));
  EXPECT_EQ(engineBytes({values.data(), 1, 2, 0, PixelOrder::kBgr}, 3),
            (Bytes{1, 1, 2, 127, 254, 255}));
}

TEST(SessionFrames, GrayOfColourIsTakenBeforeZerosAreReplaced) {
  // 114 * 9 + 500 is 1526, so 1; green and red of 1 would make 2 of it.
  const unsigned char blue[] = {9, 0, 0};
  EXPECT_EQ(engineBytes({blue, 1, 1, 0, PixelOrder::kBgr}, 1), Bytes{1});
  // 299 * 3 + 500 is 1397, with ones 2098.
  const unsigned char red[] = {0, 0, 3};
  EXPECT_EQ(engineBytes({red, 1, 1, 0, PixelOrder::kBgr}, 1), Bytes{1});
}

TEST(SessionFrames, RowsMayLieApart) {
  constexpr int kRows = 5;
  constexpr int kCols = 7;
  for (const PixelOrder order :
       {PixelOrder::kBgr, PixelOrder::kRgb, PixelOrder::kBgra, PixelOrder::kGray}) {
    const int pixelBytes = order == PixelOrder::kGray ? 1 : order == PixelOrder::kBgra ? 4 : 3;
    const int rowBytes = kCols * pixelBytes;
    const int stride = rowBytes + 13;
    const Bytes apart = Random(3).bytes(static_cast<std::size_t>(kRows * stride));
    Bytes packed;
    for (int r = 0; r < kRows; ++r) {
      packed.insert(packed.end(), apart.begin() + r * stride,
                    apart.begin() + r * stride + rowBytes);
    }
    const FrameView packedView = {packed.data(), kRows, kCols, 0, order};
    const FrameView apartView = {apart.data(), kRows, kCols, static_cast<std::size_t>(stride),
                                 order};
    for (const int channels : {1, 3}) {
      EXPECT_EQ(engineBytes(apartView, channels), engineBytes(packedView, channels));
    }
  }
}

TEST(SessionFrames, NothingBehindTheLastPixelIsRead) {
  // The last row ends without the gap; a checker of memory accesses would notice.
  const Bytes apart(2 * 9 + 6, 5);
  EXPECT_EQ(engineBytes({apart.data(), 3, 2, 9, PixelOrder::kBgr}, 3), Bytes(18, 5));
}

TEST(SessionFrames, MayBePartOfAMatrix) {
  for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
    cv::Mat whole(9, 11, type);
    const Bytes noise = Random(4).bytes(whole.total() * whole.elemSize());
    std::copy(noise.begin(), noise.end(), whole.data);
    const cv::Mat part = whole(cv::Rect(2, 3, 6, 4));
    ASSERT_FALSE(part.isContinuous());
    ScriptedEngine engine;
    Session session(options(4, 6, 3));
    session.add(part);
    session.add(part.clone());
    EXPECT_EQ(engine.calls.at(0).reference, engine.calls.at(0).frame);
    EXPECT_TRUE(std::equal(noise.begin(), noise.end(), whole.data));
  }
}

TEST(SessionFrames, OfAMatrixWithFourChannelsLoseTheLast) {
  const cv::Mat pixel(1, 1, CV_8UC4, cv::Scalar(10, 20, 30, 40));
  ScriptedEngine engine;
  Session session(options(1, 1, 3));
  session.add(pixel);
  session.add(pixel);
  EXPECT_EQ(engine.calls.at(0).frame, (Bytes{10, 20, 30}));
}

TEST_F(WrongFrames, OfAnotherSize) {
  const std::string end = ", the session's frames have 10 x 8 pixels: give frames of one size";
  EXPECT_EQ(refusalOf(cv::Mat(10, 8, CV_8UC1)), "frame 0 has 8 x 10 pixels" + end);
  EXPECT_EQ(refusalOf(cv::Mat(8, 9, CV_8UC1)), "frame 0 has 9 x 8 pixels" + end);
  EXPECT_EQ(refusalOf(cv::Mat(7, 10, CV_8UC1)), "frame 0 has 10 x 7 pixels" + end);
  EXPECT_EQ(refusalOf(cv::Mat()), "frame 0 has 0 x 0 pixels" + end);
  session_.add(good(1));
  EXPECT_EQ(refusalOf(FrameView{}), "frame 1 has 0 x 0 pixels" + end);
}

TEST_F(WrongFrames, WithoutPixels) {
  EXPECT_EQ(refusalOf(FrameView{nullptr, kRows, kCols, 0, PixelOrder::kGray}),
            "frame 0 has no pixels: give a pointer to them");
}

TEST_F(WrongFrames, OfOtherPixels) {
  const std::string refusal = "a frame has to have 8 bits and 1, 3 or 4 channels: convert it first";
  for (const int type : {CV_8SC1, CV_16UC1, CV_32FC3, CV_8UC2, CV_8UC(5)}) {
    EXPECT_EQ(refusalOf(cv::Mat(kRows, kCols, type)), refusal);
  }
  const int sizes[] = {kRows, kCols, 2};
  EXPECT_EQ(refusalOf(cv::Mat(3, sizes, CV_8UC1)), refusal);
}

TEST_F(WrongFrames, DoNotEndTheSessionNorCount) {
  engine_.answers = {ScriptedEngine::blended(3, 1), ScriptedEngine::blended(2, 0)};
  refusalOf(cv::Mat(3, 3, CV_8UC1));
  EXPECT_EQ(session_.add(good(1)).frame, 0);
  refusalOf(cv::Mat(kRows, kCols, CV_16UC1));
  EXPECT_EQ(session_.add(good(2)).frame, 1);
  refusalOf(FrameView{nullptr, kRows, kCols, 0, PixelOrder::kGray});
  const framequilt::FrameResult third = session_.add(good(3));
  EXPECT_EQ(third.frame, 2);
  EXPECT_EQ(third.placement, cv::Point(5, 1));
  EXPECT_EQ(engine_.calls.size(), 2U);
}

TEST_F(WrongFrames, WithRowsThatRunIntoEachOther) {
  const cv::Mat pixels = good(9);
  EXPECT_EQ(
      refusalOf(FrameView{pixels.data, kRows, kCols, kCols - 1, PixelOrder::kGray}),
      "frame 0 has rows of 10 bytes that begin every 9 bytes: give the bytes from row to row");
  EXPECT_NO_THROW(session_.add(FrameView{pixels.data, kRows, kCols, kCols, PixelOrder::kGray}));
}
