// SPDX-License-Identifier: Apache-2.0
// The road of a blend, with ways to fuse that the tests choose.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "cpu/mosaic_blend.h"
#include "tests/support/points.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kRows = 10, kCols = 12;
constexpr SPoint kPlace = {23, 16};
constexpr unsigned char kFused = 222;

class BlendFrame : public testing::Test {
 protected:
  BlendFrame() : mosaic_(60, 70, CV_8UC1) { cv::randu(mosaic_, 0, 200); }

  bool blend(const framequilt::FuseInMosaic& fuseInMosaic, const framequilt::Fuse& fuse) {
    stitchflags flags = {};
    flags.position = {20, 20};
    flags.offsetX = kPlace.x - 20;
    flags.offsetY = kPlace.y - 20;
    framequilt::BlendResult result = {topLeft_,    bottomRight_, position_,
                                      regionInfo_, mosaicOut_,   region_.data()};
    return framequilt::blendFrame(
        {mosaic_, kRows, kCols, {0, 1, kRows, kCols}, flags, {18, 18}, {40, 40}}, fuseInMosaic,
        fuse, result);
  }

  /// The mosaic where the frame lies.
  Bytes underFrame() const {
    const cv::Mat part = mosaic_(cv::Rect(kPlace.x, kPlace.y, kCols, kRows)).clone();
    return {part.datastart, part.dataend};
  }

  cv::Mat mosaic_, mosaicOut_;
  Bytes region_ = Bytes(kRows * kCols, 1);
  SPoint topLeft_ = {-1, -2}, bottomRight_ = {-3, -4}, position_ = {-5, -6};
  imgInfo regionInfo_ = {};
};

TEST_F(BlendFrame, FusesTheRegionWhereTheMosaicIsNotTaken) {
  int refused = 0;
  const auto refuses = [&](unsigned char* /*ground*/, std::ptrdiff_t /*stride*/,
                           unsigned char* /*region*/, int /*channels*/) {
    ++refused;
    return false;
  };
  const Bytes before = underFrame();
  EXPECT_TRUE(blend(refuses, [&](unsigned char* region, int channels) {
    EXPECT_EQ(channels, 1);
    EXPECT_EQ(Bytes(region, region + before.size()), before);
    std::fill_n(region, before.size(), kFused);
    return true;
  }));
  EXPECT_EQ(refused, 1);
  EXPECT_EQ(underFrame(), Bytes(before.size(), kFused));
  EXPECT_EQ(position_, kPlace);
  EXPECT_EQ(topLeft_, (SPoint{18, 16}));
  EXPECT_EQ(bottomRight_, (SPoint{40, 40}));
}

TEST_F(BlendFrame, WhatIsFusedInTheMosaicIsNotFusedAgain) {
  const auto fuses = [&](unsigned char* ground, std::ptrdiff_t stride, unsigned char* region,
                         int /*channels*/) {
    EXPECT_EQ(ground, mosaic_.ptr(kPlace.y, kPlace.x));
    EXPECT_EQ(stride, 70);
    EXPECT_EQ(region, region_.data());
    return true;
  };
  EXPECT_TRUE(blend(fuses, [](unsigned char* /*region*/, int /*channels*/) {
    ADD_FAILURE() << "it is done";
    return false;
  }));
  EXPECT_EQ(position_, kPlace);
}

TEST_F(BlendFrame, AFailedFusionChangesNeitherTheMosaicNorItsPlace) {
  const cv::Mat before = mosaic_.clone();
  EXPECT_FALSE(blend({}, [](unsigned char* region, int /*channels*/) {
    *region = kFused;
    return false;
  }));
  EXPECT_EQ(cv::norm(mosaic_, before, cv::NORM_INF), 0.0);
  EXPECT_EQ(topLeft_, (SPoint{-1, -2}));
  EXPECT_EQ(bottomRight_, (SPoint{-3, -4}));
  EXPECT_EQ(position_, (SPoint{-5, -6}));
  EXPECT_TRUE(mosaicOut_.empty());
}

}  // namespace
