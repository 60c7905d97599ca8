// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/tile_loader.h"

#include <gtest/gtest.h>

#include <future>

#include "tests/viewer/viewer_test_mosaic.h"

namespace framequilt::viewer {
namespace {

/// Takes tiles from a loader as they come.
class TileLoaderTest : public testing::Test {
 protected:
  TileLoader::Tile next() {
    rung_.get_future().wait();
    rung_ = {};
    return loader_.take().front();
  }

  std::promise<void> rung_;
  TileLoader loader_{[this] { rung_.set_value(); }};
};

TEST_F(TileLoaderTest, ReadsTheTileAtItsLevel) {
  TestMosaic mosaic({1024, 1024}, 60);
  mosaic.pixels(cv::Rect(512, 0, 2, 2)).setTo(cv::Scalar::all(200));
  const int number = loader_.open(mosaic.reader());
  loader_.request({1, 1, 0});
  const TileLoader::Tile tile = next();
  EXPECT_EQ(tile.key, (TileKey{1, 1, 0}));
  EXPECT_EQ(tile.mosaic, number);
  ASSERT_EQ(tile.pixels.size(), QSize(256, 256));
  EXPECT_EQ(qRed(tile.pixels.pixel(0, 0)), 200);
  EXPECT_EQ(qRed(tile.pixels.pixel(1, 0)), 60);
}

TEST_F(TileLoaderTest, ATileThatCannotBeReadIsNull) {
  loader_.open([](const cv::Rect&) -> cv::Mat { throw std::bad_alloc(); });
  loader_.request({0, 0, 0});
  EXPECT_TRUE(next().pixels.isNull());
}

TEST_F(TileLoaderTest, TellsFromWhichMosaicATileIs) {
  const int first = loader_.open(TestMosaic({256, 256}).reader());
  loader_.request({0, 0, 0});
  EXPECT_EQ(next().mosaic, first);
  const int second = loader_.open(TestMosaic({256, 256}).reader());
  EXPECT_NE(second, first);
  loader_.request({0, 0, 0});
  EXPECT_EQ(next().mosaic, second);
}

}  // namespace
}  // namespace framequilt::viewer
