// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/mosaic_layer.h"

#include <gtest/gtest.h>

#include "tests/viewer/viewer_test_mosaic.h"

namespace framequilt::viewer {
namespace {

/// A mosaic in which each pixel of 4 by 4 tells its place.
TestMosaic gradient(cv::Size size) {
  TestMosaic mosaic(size);
  for (int r = 0; r < size.height; ++r) {
    for (int c = 0; c < size.width; ++c) {
      mosaic.pixels.at<cv::Vec3b>(r, c) = {static_cast<unsigned char>(1 + c / 4 % 250),
                                           static_cast<unsigned char>(1 + r / 4 % 250), 90};
    }
  }
  return mosaic;
}

class MosaicLayerTest : public testing::Test {
 protected:
  MosaicLayerTest() { layer_.setBackground(Qt::red); }

  /// Loads whatever is missing until nothing is.
  const QImage& render(const ViewTransform& view) {
    for (bool missing = true; missing;) {
      missing = false;
      layer_.render(view, [&](const TileKey& key) {
        if (!tiles_.request(key)) return;
        missing = true;
        QImage pixels = pictureOf(mosaic_.reader()(TilePyramid::areaOf(key)));
        for (int i = 0; i < key.level; ++i) pixels = halved(pixels);
        tiles_.insert(key, pixels);
      });
      if (missing) layer_.invalidateAll();
    }
    return layer_.render(view, [](const TileKey&) {});
  }

  TestMosaic mosaic_ = gradient({1200, 900});
  TilePyramid tiles_;
  MosaicLayer layer_{tiles_};
};

TEST_F(MosaicLayerTest, LevelIsNotCoarserThanTheScreen) {
  EXPECT_EQ(MosaicLayer::levelFor(8), 0);
  EXPECT_EQ(MosaicLayer::levelFor(1), 0);
  EXPECT_EQ(MosaicLayer::levelFor(0.51), 0);
  EXPECT_EQ(MosaicLayer::levelFor(0.5), 1);
  EXPECT_EQ(MosaicLayer::levelFor(0.26), 1);
  EXPECT_EQ(MosaicLayer::levelFor(0.25), 2);
  EXPECT_EQ(MosaicLayer::levelFor(1e-6), TilePyramid::kTopLevel);
}

TEST_F(MosaicLayerTest, OneToOneShowsThePixelsThemselves) {
  tiles_.apply(mosaic_.whole());
  ViewTransform view;
  view.resize({300, 200});
  view.centerOn({600, 450});
  const QImage& picture = render(view);
  for (const QPoint& at : {QPoint(0, 0), QPoint(150, 100), QPoint(299, 199)}) {
    const QPointF there = view.toMosaic(at);
    const auto pixel =
        mosaic_.pixels.at<cv::Vec3b>(static_cast<int>(there.y()), static_cast<int>(there.x()));
    EXPECT_EQ(picture.pixel(at), qRgb(pixel[2], pixel[1], pixel[0]));
  }
}

TEST_F(MosaicLayerTest, OutsideIsTheBackground) {
  tiles_.apply(mosaic_.whole());
  ViewTransform view;
  view.resize({300, 200});
  view.centerOn({0, 0});
  const QImage& picture = render(view);
  EXPECT_EQ(picture.pixel(10, 10), qRgb(255, 0, 0));
  EXPECT_NE(picture.pixel(290, 190), qRgb(255, 0, 0));
}

TEST_F(MosaicLayerTest, AMovedViewDrawsOnlyWhatComesIn) {
  tiles_.apply(mosaic_.whole());
  ViewTransform view;
  view.resize({300, 200});
  view.centerOn({600, 450});
  render(view);
  for (const QPointF& by : {QPointF(7, 0), QPointF(-5, 0), QPointF(0, 9), QPointF(0, -4),
                            QPointF(6, -8), QPointF(-3, 5)}) {
    view.pan(by);
    layer_.render(view, [](const TileKey&) {});
    const double expected =
        300 * std::abs(by.y()) + 200 * std::abs(by.x()) - std::abs(by.x() * by.y());
    EXPECT_EQ(layer_.pixelsDrawn(), static_cast<qint64>(expected));
    MosaicLayer fresh(tiles_);
    fresh.setBackground(Qt::red);
    EXPECT_EQ(layer_.render(view, [](const TileKey&) {}),
              fresh.render(view, [](const TileKey&) {}));
  }
}

TEST_F(MosaicLayerTest, AnUnchangedViewDrawsNothing) {
  tiles_.apply(mosaic_.whole());
  ViewTransform view;
  view.resize({300, 200});
  render(view);
  layer_.render(view, [](const TileKey&) {});
  EXPECT_EQ(layer_.pixelsDrawn(), 0);
}

TEST_F(MosaicLayerTest, AChangeDrawsOnlyItsPlace) {
  tiles_.apply(mosaic_.whole());
  ViewTransform view;
  view.resize({300, 200});
  view.centerOn({600, 450});
  render(view);
  const cv::Rect changed(600, 448, 16, 8);
  mosaic_.pixels(changed).setTo(cv::Scalar(1, 2, 3));
  const MosaicPatch patch = mosaic_.patch(changed);
  tiles_.apply(patch);
  layer_.invalidate(patch.area);
  const QImage& picture = layer_.render(view, [](const TileKey&) {});
  EXPECT_EQ(layer_.pixelsDrawn(), (16 + 4) * (8 + 4));
  EXPECT_EQ(picture.pixel(view.toScreen(QPointF(604, 450)).toPoint()), qRgb(3, 2, 1));
}

TEST_F(MosaicLayerTest, ACoarserTileStandsInForAMissingOne) {
  mosaic_.pixels.setTo(cv::Scalar::all(120));
  tiles_.apply(mosaic_.whole());
  ViewTransform view;
  view.resize({300, 200});
  view.centerOn({600, 450});
  int missing = 0;
  const QImage& picture = layer_.render(view, [&missing](const TileKey&) { ++missing; });
  EXPECT_GT(missing, 0);
  EXPECT_EQ(picture.pixel(150, 100), qRgb(120, 120, 120));
}

TEST_F(MosaicLayerTest, TilesMeetWithoutSeamAtAnyZoom) {
  mosaic_.pixels.setTo(cv::Scalar::all(120));
  tiles_.apply(mosaic_.whole());
  for (const double scale : {0.13, 0.3, 0.77, 1.3, 2.7}) {
    ViewTransform view;
    view.resize({100, 80});
    view.setScaleAt({0, 0}, scale);
    view.centerOn({512, 512});
    const QImage& picture = render(view);
    for (int y = 20; y < 60; ++y) {
      for (int x = 20; x < 80; ++x) {
        ASSERT_EQ(picture.pixel(x, y), qRgb(120, 120, 120)) << scale << " " << x << " " << y;
      }
    }
  }
}

}  // namespace
}  // namespace framequilt::viewer
