// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/tile_pyramid.h"

#include <gtest/gtest.h>

#include "tests/viewer/viewer_test_mosaic.h"

namespace framequilt::viewer {
namespace {

constexpr int kSide = TilePyramid::kTileSide;

QImage tileOf(int gray) {
  QImage tile(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
  tile.fill(qRgb(gray, gray, gray));
  return tile;
}

TEST(TilePyramid, KeepsEveryCoarseLevel) {
  const TestMosaic mosaic({2048, 1024}, 60);
  TilePyramid tiles;
  tiles.apply(mosaic.whole());
  EXPECT_EQ(tiles.area(), cv::Rect(0, 0, 2048, 1024));
  for (int level = TilePyramid::kKeptLevel; level <= TilePyramid::kTopLevel; ++level) {
    const QImage* tile = tiles.find({level, 0, 0});
    ASSERT_NE(tile, nullptr) << level;
    EXPECT_EQ(tile->pixel(0, 0), qRgba(60, 60, 60, 255)) << level;
  }
  EXPECT_NE(tiles.find({2, 1, 0}), nullptr);
  EXPECT_EQ(tiles.find({2, 2, 0}), nullptr);
  EXPECT_EQ(tiles.find({2, 0, 1}), nullptr);
}

TEST(TilePyramid, CoarseLevelsFollowAChangeAcrossTileBorders) {
  TestMosaic mosaic({4096, 4096}, 60);
  TilePyramid tiles;
  tiles.apply(mosaic.whole());
  const cv::Rect changed(1000, 1000, 64, 64);
  mosaic.pixels(changed).setTo(cv::Scalar::all(200));
  tiles.apply(mosaic.patch(changed));
  // At level 4 a pixel is 16 of the mosaic's: 1008 .. 1024 lies inside the change.
  EXPECT_EQ(qRed(tiles.find({4, 0, 0})->pixel(63, 63)), 200);
  EXPECT_EQ(qRed(tiles.find({4, 0, 0})->pixel(61, 61)), 60);
  EXPECT_EQ(qRed(tiles.find({2, 0, 0})->pixel(255, 255)), 200);
  EXPECT_EQ(qRed(tiles.find({2, 1, 1})->pixel(0, 0)), 200);
  EXPECT_EQ(qRed(tiles.find({2, 1, 1})->pixel(20, 20)), 60);
}

TEST(TilePyramid, LiesLeftOfAndAboveTheOriginToo) {
  TilePyramid tiles;
  tiles.apply(
      readPatch([](const cv::Rect& part) { return cv::Mat(part.size(), CV_8UC1, cv::Scalar(50)); },
                {-2000, -300, 64, 64}));
  EXPECT_EQ(tiles.area(), cv::Rect(-2000, -300, 64, 64));
  EXPECT_FALSE(tiles.empty({0, -8, -2}));
  EXPECT_EQ(qAlpha(tiles.find({2, -2, -1})->pixel(512 - 500, 256 - 75)), 255);
  EXPECT_NE(tiles.find({TilePyramid::kTopLevel, -1, -1}), nullptr);
}

TEST(TilePyramid, FineTilesAreAskedForOnce) {
  TilePyramid tiles;
  tiles.apply(TestMosaic({2048, 2048}).whole());
  const TileKey key{0, 1, 1};
  EXPECT_EQ(tiles.find(key), nullptr);
  EXPECT_TRUE(tiles.request(key));
  EXPECT_FALSE(tiles.request(key));
  EXPECT_TRUE(tiles.insert(key, tileOf(7)));
  ASSERT_NE(tiles.find(key), nullptr);
  EXPECT_FALSE(tiles.request(key));
}

TEST(TilePyramid, EmptyAndKeptTilesAreNotAskedFor) {
  TilePyramid tiles;
  tiles.apply(TestMosaic({1024, 1024}).whole());
  EXPECT_TRUE(tiles.empty({0, 4, 0}));
  EXPECT_FALSE(tiles.request({0, 4, 0}));
  EXPECT_FALSE(tiles.request({2, 0, 0}));
}

TEST(TilePyramid, ATileThatNobodyAskedForIsNotTaken) {
  TilePyramid tiles;
  tiles.apply(TestMosaic({1024, 1024}).whole());
  EXPECT_FALSE(tiles.insert({0, 0, 0}, tileOf(7)));
}

TEST(TilePyramid, AChangeReachesTilesThatAreHere) {
  TestMosaic mosaic({1024, 1024}, 60);
  TilePyramid tiles;
  tiles.apply(mosaic.whole());
  for (const TileKey& key : {TileKey{0, 0, 0}, TileKey{1, 0, 0}}) {
    tiles.request(key);
    tiles.insert(key, tileOf(60));
  }
  mosaic.pixels(cv::Rect(8, 8, 4, 4)).setTo(cv::Scalar::all(222));
  tiles.apply(mosaic.patch({8, 8, 4, 4}));
  EXPECT_EQ(qRed(tiles.find({0, 0, 0})->pixel(8, 8)), 222);
  EXPECT_EQ(qRed(tiles.find({0, 0, 0})->pixel(7, 8)), 60);
  EXPECT_EQ(qRed(tiles.find({1, 0, 0})->pixel(4, 4)), 222);
}

TEST(TilePyramid, ATileThatChangedWhileItWasLoadedIsAskedForAgain) {
  const TestMosaic mosaic({1024, 1024}, 60);
  TilePyramid tiles;
  tiles.apply(mosaic.whole());
  ASSERT_TRUE(tiles.request({0, 0, 0}));
  tiles.apply(mosaic.patch({8, 8, 4, 4}));
  EXPECT_FALSE(tiles.insert({0, 0, 0}, tileOf(1)));
  EXPECT_EQ(tiles.find({0, 0, 0}), nullptr);
  EXPECT_TRUE(tiles.request({0, 0, 0}));
}

TEST(TilePyramid, TilesThatWereNotSeenForLongestGiveWay) {
  constexpr std::size_t kTileBytes = std::size_t{kSide} * kSide * 4;
  TilePyramid tiles(4 * kTileBytes);
  tiles.apply(TestMosaic({2048, 1024}).whole());
  for (int x = 0; x < 4; ++x) {
    tiles.request({0, x, 0});
    tiles.insert({0, x, 0}, tileOf(x));
  }
  tiles.find({0, 0, 0});
  tiles.request({0, 4, 0});
  tiles.insert({0, 4, 0}, tileOf(4));
  EXPECT_LE(tiles.loadedBytes(), 4 * kTileBytes);
  EXPECT_NE(tiles.find({0, 0, 0}), nullptr);
  EXPECT_EQ(tiles.find({0, 1, 0}), nullptr);
  EXPECT_NE(tiles.find({0, 4, 0}), nullptr);
}

TEST(TilePyramid, ClearForgetsEverything) {
  TilePyramid tiles;
  tiles.apply(TestMosaic({1024, 1024}).whole());
  tiles.request({0, 0, 0});
  tiles.clear();
  EXPECT_TRUE(tiles.area().empty());
  EXPECT_EQ(tiles.find({2, 0, 0}), nullptr);
  EXPECT_FALSE(tiles.insert({0, 0, 0}, tileOf(1)));
}

}  // namespace
}  // namespace framequilt::viewer
