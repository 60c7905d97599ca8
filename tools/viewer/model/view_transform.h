// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSize>

namespace framequilt::viewer {

/// Where the mosaic lies on the screen: screen = mosaic * scale + offset, both in pixels.
///
/// The offset is whole, so that a view that is moved can be scrolled.
class ViewTransform {
 public:
  static constexpr double kLargestScale = 32;
  static constexpr double kSmallestScale = 1.0 / 512;

  double scale() const { return scale_; }
  QPointF offset() const { return offset_; }
  QSize viewport() const { return viewport_; }

  /// Keeps what lies in the middle there.
  void resize(QSize viewport);

  QPointF toScreen(QPointF mosaic) const { return mosaic * scale_ + offset_; }
  QPointF toMosaic(QPointF screen) const { return (screen - offset_) / scale_; }
  QRectF toScreen(const QRectF& mosaic) const;
  /// The part of the plane that is in view.
  QRectF visible() const;

  /// Moves the picture by screen pixels.
  void pan(QPointF by);
  /// Scales by `factor`; what lies under `at` (screen) stays there. Near 1:1 it becomes exact.
  void zoomAt(QPointF at, double factor);
  void setScaleAt(QPointF at, double scale);
  /// Shows the whole of `mosaic`, not larger than 1:1, with a margin of screen pixels. Without
  /// effect while either is empty.
  void fit(const QRectF& mosaic, double margin);
  void centerOn(QPointF mosaic);

  friend bool operator==(const ViewTransform& a, const ViewTransform& b) {
    return a.scale_ == b.scale_ && a.offset_ == b.offset_ && a.viewport_ == b.viewport_;
  }

 private:
  QPointF middle() const { return {viewport_.width() / 2.0, viewport_.height() / 2.0}; }
  void place(QPointF mosaic, QPointF screen);

  double scale_ = 1;
  QPointF offset_;
  QSize viewport_;
};

}  // namespace framequilt::viewer
