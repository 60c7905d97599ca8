// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/view_transform.h"

#include <algorithm>
#include <cmath>

namespace framequilt::viewer {
namespace {

/// Zooming in steps comes back to 1:1 in spite of rounding.
constexpr double kNearOne = 0.02;

}  // namespace

QRectF ViewTransform::toScreen(const QRectF& mosaic) const {
  return {toScreen(mosaic.topLeft()), mosaic.size() * scale_};
}

QRectF ViewTransform::visible() const {
  return {toMosaic(QPointF(0, 0)), QSizeF(viewport_) / scale_};
}

/// Brings a point of the mosaic to one of the screen, to the nearest whole offset.
void ViewTransform::place(QPointF mosaic, QPointF screen) {
  const QPointF exact = screen - mosaic * scale_;
  offset_ = {std::round(exact.x()), std::round(exact.y())};
}

void ViewTransform::resize(QSize viewport) {
  const QPointF centre = toMosaic(middle());
  viewport_ = viewport;
  place(centre, middle());
}

void ViewTransform::pan(QPointF by) { offset_ += {std::round(by.x()), std::round(by.y())}; }

void ViewTransform::zoomAt(QPointF at, double factor) {
  double scale = scale_ * factor;
  if (std::fabs(scale - 1) < kNearOne) scale = 1;
  setScaleAt(at, scale);
}

void ViewTransform::setScaleAt(QPointF at, double scale) {
  const QPointF mosaic = toMosaic(at);
  scale_ = std::clamp(scale, kSmallestScale, kLargestScale);
  place(mosaic, at);
}

void ViewTransform::fit(const QRectF& mosaic, double margin) {
  const double width = viewport_.width() - 2 * margin;
  const double height = viewport_.height() - 2 * margin;
  if (mosaic.isEmpty() || width <= 0 || height <= 0) return;
  scale_ =
      std::clamp(std::min(width / mosaic.width(), height / mosaic.height()), kSmallestScale, 1.0);
  place(mosaic.center(), middle());
}

void ViewTransform::centerOn(QPointF mosaic) { place(mosaic, middle()); }

}  // namespace framequilt::viewer
