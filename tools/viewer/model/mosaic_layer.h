// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRegion>
#include <functional>

#include "tools/viewer/model/tile_pyramid.h"
#include "tools/viewer/model/view_transform.h"

namespace framequilt::viewer {

/// The picture of the mosaic as it is on the screen. Only what is new in it is drawn: the rest of
/// the last picture stays, or is scrolled along with the view.
class MosaicLayer {
 public:
  /// Called for a tile that would be drawn but is not here; a coarser one is drawn in its place.
  using Missing = std::function<void(const TileKey&)>;

  explicit MosaicLayer(TilePyramid& tiles) : tiles_(tiles) {}

  void setBackground(const QColor& colour);

  /// That part of the mosaic (steady mosaic pixels) has changed. \returns where it lies on the
  /// screen as it was drawn last, whether in view or not.
  QRect invalidate(const cv::Rect& mosaic);
  void invalidateAll() { whole_ = true; }

  /// Brings the picture up to date with a view. It stays valid until the next call.
  const QImage& render(const ViewTransform& view, const Missing& missing);

  /// Screen pixels that the last call of `render` drew.
  qint64 pixelsDrawn() const { return pixelsDrawn_; }

  /// The level whose tiles are drawn at a scale: not coarser than the screen.
  static int levelFor(double scale);

 private:
  QRegion scrollTo(const ViewTransform& view);
  void draw(const QRect& screen, const Missing& missing);
  void drawTile(QPainter& painter, const TileKey& key, const Missing& missing);
  QRect screenOf(const cv::Rect& mosaic) const;

  TilePyramid& tiles_;
  QColor background_ = Qt::black;
  QImage picture_;
  ViewTransform view_;  // That `picture_` shows.
  QRegion changed_;     // In pixels of the screen.
  bool whole_ = true;
  qint64 pixelsDrawn_ = 0;
};

}  // namespace framequilt::viewer
