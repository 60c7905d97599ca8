// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/mosaic_layer.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "tools/viewer/model/grid.h"

namespace framequilt::viewer {
namespace {

/// From here on pixels are seen as squares.
constexpr double kSharpFrom = 2;

/// Moves the pixels of a picture; what comes in at the edges is left as it was.
void scroll(QImage& picture, QPoint by) {
  const int cols = picture.width() - std::abs(by.x());
  const int rows = picture.height() - std::abs(by.y());
  const qsizetype from = std::max(0, -by.x());
  const qsizetype to = std::max(0, by.x());
  const qsizetype stride = picture.bytesPerLine();
  uchar* const pixels = picture.bits();
  const auto moveRow = [&](int row) {
    std::memmove(pixels + (row + by.y()) * stride + 4 * to, pixels + row * stride + 4 * from,
                 4 * static_cast<std::size_t>(cols));
  };
  // Rows that are still to be read must not be written.
  if (by.y() > 0) {
    for (int r = rows - 1; r >= 0; --r) moveRow(r);
  } else {
    for (int r = -by.y(); r < -by.y() + rows; ++r) moveRow(r);
  }
}

}  // namespace

void MosaicLayer::setBackground(const QColor& colour) {
  background_ = colour;
  invalidateAll();
}

int MosaicLayer::levelFor(double scale) {
  const auto level = static_cast<int>(std::floor(-std::log2(scale) + 1e-9));
  return std::clamp(level, 0, TilePyramid::kTopLevel);
}

/// To whole pixels, so that neighbouring tiles meet without a seam.
QRect MosaicLayer::screenOf(const cv::Rect& mosaic) const {
  const QPointF first = view_.toScreen(QPointF(mosaic.x, mosaic.y));
  const QPointF end = view_.toScreen(QPointF(mosaic.br().x, mosaic.br().y));
  const QPoint corner(qRound(first.x()), qRound(first.y()));
  return {corner, QSize(qRound(end.x()) - corner.x(), qRound(end.y()) - corner.y())};
}

QRect MosaicLayer::invalidate(const cv::Rect& mosaic) {
  // Smooth scaling looks at the pixels beside.
  const QRect screen = screenOf(mosaic).adjusted(-2, -2, 2, 2);
  if (!whole_) changed_ += screen;
  return screen;
}

const QImage& MosaicLayer::render(const ViewTransform& view, const Missing& missing) {
  QRegion dirty = scrollTo(view);
  if (whole_) dirty = QRect(QPoint(), view.viewport());
  dirty += changed_;
  dirty &= QRect(QPoint(), view.viewport());
  changed_ = {};
  whole_ = false;
  pixelsDrawn_ = 0;
  for (const QRect& part : dirty) {
    draw(part, missing);
    pixelsDrawn_ += qint64{part.width()} * part.height();
  }
  return picture_;
}

/// Moves the picture to another view; returns what has come into it.
QRegion MosaicLayer::scrollTo(const ViewTransform& view) {
  const QPoint by = (view.offset() - view_.offset()).toPoint();
  const bool samePlace = view == view_;
  const bool sameSize = view.viewport() == picture_.size();
  const bool scrolls = sameSize && view.scale() == view_.scale() &&
                       std::abs(by.x()) < picture_.width() && std::abs(by.y()) < picture_.height();
  view_ = view;
  if (!sameSize) picture_ = QImage(view.viewport(), QImage::Format_RGB32);
  if (!scrolls) whole_ = true;
  if (samePlace || whole_) return {};
  changed_.translate(by);
  scroll(picture_, by);
  const QRect all(QPoint(), view.viewport());
  return QRegion(all) - QRegion(all.translated(by));
}

void MosaicLayer::draw(const QRect& screen, const Missing& missing) {
  QPainter painter(&picture_);
  painter.setClipRect(screen);
  painter.fillRect(screen, background_);

  const QPointF first = view_.toMosaic(screen.topLeft());
  const QPointF end = view_.toMosaic(screen.bottomRight() + QPoint(1, 1));
  const cv::Rect wanted(cv::Point(static_cast<int>(std::floor(first.x())) - 1,
                                  static_cast<int>(std::floor(first.y())) - 1),
                        cv::Point(static_cast<int>(std::ceil(end.x())) + 1,
                                  static_cast<int>(std::ceil(end.y())) + 1));
  const int level = levelFor(view_.scale());
  const cv::Rect keys = cellsOver(wanted & tiles_.area(), TilePyramid::kTileSide << level);
  for (int y = keys.y; y < keys.br().y; ++y) {
    for (int x = keys.x; x < keys.br().x; ++x) drawTile(painter, {level, x, y}, missing);
  }
}

void MosaicLayer::drawTile(QPainter& painter, const TileKey& key, const Missing& missing) {
  if (tiles_.empty(key)) return;
  const QRect target = screenOf(TilePyramid::areaOf(key));
  if (target.isEmpty()) return;
  // Pixels that are only copied are copied faster without it.
  const bool copied = target.size() == QSize(TilePyramid::kTileSide, TilePyramid::kTileSide);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, !copied && view_.scale() < kSharpFrom);
  if (const QImage* pixels = tiles_.find(key)) {
    painter.drawImage(target, *pixels);
    return;
  }
  missing(key);
  for (int up = 1; key.level + up <= TilePyramid::kTopLevel; ++up) {
    const int parts = 1 << up;
    const TileKey above{key.level + up, floorDiv(key.x, parts), floorDiv(key.y, parts)};
    const QImage* coarse = tiles_.find(above);
    if (coarse == nullptr) continue;
    const int side = TilePyramid::kTileSide / parts;
    const QRect source((key.x - above.x * parts) * side, (key.y - above.y * parts) * side, side,
                       side);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, view_.scale() < kSharpFrom);
    painter.drawImage(target, *coarse, source);
    return;
  }
}

}  // namespace framequilt::viewer
