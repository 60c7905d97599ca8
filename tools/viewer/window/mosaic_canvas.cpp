// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/mosaic_canvas.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QMetaObject>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

constexpr double kFitMargin = 24;      // Logical pixels.
constexpr double kWheelStep = 1.0015;  // Per eighth of a degree.
constexpr double kKeyPan = 64;         // Logical pixels.
constexpr double kPenWidth = 2.5;
constexpr double kPathWidth = 2;

}  // namespace

MosaicCanvas::MosaicCanvas(QWidget* parent)
    : QWidget(parent),
      loader_([this] { QMetaObject::invokeMethod(this, "takeTiles", Qt::QueuedConnection); }) {
  setObjectName("canvas");
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMinimumSize(240, 180);
  setCursor(Qt::OpenHandCursor);
  layer_.setBackground(themeFor(palette()).canvas);
}

MosaicCanvas::~MosaicCanvas() = default;

void MosaicCanvas::open(MosaicReader reader, cv::Size frame, int scale) {
  tiles_.clear();
  loading_ = 0;
  mosaic_ = loader_.open(std::move(reader));
  layer_.invalidateAll();
  track_.begin(frame, scale);
  frame_ = frame / scale;
  select(-1);
  setViewMode(ViewMode::kFit);
  Q_EMIT mosaicChanged();
  update();
}

void MosaicCanvas::add(const FrameResult& result, const MosaicPatch& patch) {
  track_.add(result);
  tiles_.apply(patch);
  layer_.invalidate(patch.area);
  followMode();
  if (!patch.area.empty()) Q_EMIT mosaicChanged();
  update();
}

QRectF MosaicCanvas::mosaicBox() const {
  const cv::Rect area = tiles_.area();
  return {static_cast<double>(area.x), static_cast<double>(area.y), static_cast<double>(area.width),
          static_cast<double>(area.height)};
}

void MosaicCanvas::setViewMode(ViewMode mode) {
  const bool changed = std::exchange(mode_, mode) != mode;
  followMode();
  if (changed) Q_EMIT viewModeChanged();
}

/// Does what the mode asks for.
void MosaicCanvas::followMode() {
  const ViewTransform before = view_;
  if (mode_ == ViewMode::kFit) {
    view_.fit(mosaicBox(), kFitMargin * devicePixelRatioF());
  } else if (mode_ == ViewMode::kFollow && !track_.marks().empty()) {
    view_.centerOn(track_.marks().back().place.center());
  }
  if (!(view_ == before)) moved();
}

void MosaicCanvas::moved() {
  update();
  Q_EMIT viewChanged();
}

void MosaicCanvas::showActualSize() {
  if (mode_ == ViewMode::kFit) setViewMode(ViewMode::kFree);
  view_.setScaleAt(QPointF(view_.viewport().width(), view_.viewport().height()) / 2, 1);
  followMode();
  moved();
}

void MosaicCanvas::zoomBy(double factor) {
  if (mode_ == ViewMode::kFit) setViewMode(ViewMode::kFree);
  view_.zoomAt(QPointF(view_.viewport().width(), view_.viewport().height()) / 2, factor);
  followMode();
  moved();
}

void MosaicCanvas::showFrame(int frame) {
  if (frame < 0 || frame >= static_cast<int>(track_.marks().size())) return;
  const QRectF place = track_.marks()[static_cast<std::size_t>(frame)].place;
  if (view_.visible().contains(place)) return;
  setViewMode(ViewMode::kFree);
  view_.centerOn(place.center());
  moved();
}

void MosaicCanvas::centerOn(QPointF mosaic) {
  setViewMode(ViewMode::kFree);
  view_.centerOn(mosaic);
  moved();
}

void MosaicCanvas::select(int frame) {
  if (std::exchange(selected_, frame) != frame) update();
}

void MosaicCanvas::setShowsPath(bool shown) {
  showsPath_ = shown;
  update();
}

void MosaicCanvas::setShowsOutlines(bool shown) {
  showsOutlines_ = shown;
  update();
}

void MosaicCanvas::takeTiles() {
  for (const TileLoader::Tile& tile : loader_.take()) {
    if (tile.mosaic != mosaic_) continue;
    --loading_;
    if (tile.pixels.isNull()) continue;
    // What has changed meanwhile is asked for again when it is drawn.
    tiles_.insert(tile.key, tile.pixels);
    updateScreen(layer_.invalidate(TilePyramid::areaOf(tile.key)));
  }
  // The signal `sharp` is sent when the last one has been drawn.
  if (loading_ == 0) update(QRect(0, 0, 1, 1));
}

void MosaicCanvas::updateScreen(const QRect& devicePixels) {
  const double ratio = devicePixelRatioF();
  const QRect screen = devicePixels & QRect(QPoint(), view_.viewport());
  if (screen.isEmpty()) return;
  update(QRectF(QPointF(screen.topLeft()) / ratio, QSizeF(screen.size()) / ratio).toAlignedRect());
}

void MosaicCanvas::paintEvent(QPaintEvent* event) {
  bool coarse = false;
  const QImage& picture = layer_.render(view_, [this, &coarse](const TileKey& key) {
    coarse = true;
    if (!tiles_.request(key)) return;
    ++loading_;
    loader_.request(key);
  });
  QPainter painter(this);
  const double ratio = devicePixelRatioF();
  // Even a scale of one would keep Qt from copying pixels plainly.
  if (ratio != 1) painter.scale(1 / ratio, 1 / ratio);
  for (const QRect& part : event->region()) {
    const QRect pixels = QRectF(QPointF(part.topLeft()) * ratio, QSizeF(part.size()) * ratio)
                             .toAlignedRect()
                             .adjusted(-1, -1, 1, 1)
                             .intersected(picture.rect());
    painter.drawImage(pixels.topLeft(), picture, pixels);
  }
  drawTrack(painter);
  if (!coarse && loading_ == 0) Q_EMIT sharp();
}

void MosaicCanvas::drawTrack(QPainter& painter) {
  const Theme theme = brightTheme();
  painter.setRenderHint(QPainter::Antialiasing);
  if (showsOutlines_) {
    QColor faint = theme.joined;
    faint.setAlphaF(0.55F);
    painter.setPen(QPen(faint, devicePixelRatioF()));
    painter.setBrush(Qt::NoBrush);
    for (const FrameMark& mark : track_.marks()) {
      if (mark.joined && mark.place.intersects(view_.visible())) {
        painter.drawRect(view_.toScreen(mark.place));
      }
    }
  }
  if (showsPath_) drawPath(painter);
  const auto& marks = track_.marks();
  if (selected_ >= 0 && selected_ < static_cast<int>(marks.size())) {
    drawMark(painter, marks[static_cast<std::size_t>(selected_)], theme.selected);
  }
  if (!marks.empty() && !tiles_.area().empty()) {
    drawMark(painter, marks.back(), marks.back().joined ? theme.joined : theme.refused);
  }
}

void MosaicCanvas::drawPath(QPainter& painter) {
  const std::vector<QPointF>& path = track_.path();
  if (path.size() < 2) return;
  const Theme theme = brightTheme();
  const double width = kPathWidth * devicePixelRatioF();
  const QRectF seen = view_.visible();
  // Single lines with square caps: Qt draws these far faster than a path.
  QList<QLineF> lines;
  for (std::size_t i = 1; i < path.size(); ++i) {
    const QRectF box = QRectF(path[i - 1], path[i]).normalized();
    if (box.right() < seen.left() || box.left() > seen.right() || box.bottom() < seen.top() ||
        box.top() > seen.bottom()) {
      continue;
    }
    lines.append({view_.toScreen(path[i - 1]), view_.toScreen(path[i])});
  }
  // A dark rim, so that the line can be told from a light mosaic.
  painter.setPen(QPen(QColor(40, 36, 30), width * 2, Qt::SolidLine, Qt::SquareCap));
  painter.drawLines(lines);
  painter.setPen(QPen(theme.path, width, Qt::SolidLine, Qt::SquareCap));
  painter.drawLines(lines);
  painter.setPen(Qt::NoPen);
  painter.setBrush(theme.path);
  painter.drawEllipse(view_.toScreen(path.front()), 2 * width, 2 * width);
}

/// A refused frame whose place is a guess is dashed.
void MosaicCanvas::drawMark(QPainter& painter, const FrameMark& mark, const QColor& colour) {
  const double width = kPenWidth * devicePixelRatioF();
  const QRectF place = view_.toScreen(mark.place);
  QColor veil = colour;
  veil.setAlphaF(mark.joined ? 0.06F : 0.16F);
  painter.fillRect(place, veil);
  const QList<QLineF> border = {{place.topLeft(), place.topRight()},
                                {place.topRight(), place.bottomRight()},
                                {place.bottomRight(), place.bottomLeft()},
                                {place.bottomLeft(), place.topLeft()}};
  painter.setPen(QPen(QColor(24, 26, 24), width * 2, Qt::SolidLine, Qt::SquareCap));
  painter.drawLines(border);
  painter.setPen(QPen(colour, width, mark.measured ? Qt::SolidLine : Qt::DashLine, Qt::SquareCap));
  painter.drawLines(border);
}

void MosaicCanvas::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  view_.resize(
      QSize(qRound(width() * devicePixelRatioF()), qRound(height() * devicePixelRatioF())));
  followMode();
  Q_EMIT viewChanged();
}

void MosaicCanvas::panByHand(QPointF devicePixels) {
  setViewMode(ViewMode::kFree);
  view_.pan(devicePixels);
  moved();
}

void MosaicCanvas::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton && event->button() != Qt::MiddleButton) return;
  pressedAt_ = draggedTo_ = event->position();
  dragging_ = false;
  setFocus(Qt::MouseFocusReason);
}

void MosaicCanvas::mouseMoveEvent(QMouseEvent* event) {
  if ((event->buttons() & (Qt::LeftButton | Qt::MiddleButton)) == 0) return;
  const double way = (event->position() - pressedAt_).manhattanLength();
  if (!dragging_ && way < QApplication::startDragDistance()) return;
  dragging_ = true;
  setCursor(Qt::ClosedHandCursor);
  panByHand(devicePoint(event->position() - draggedTo_));
  draggedTo_ = event->position();
}

void MosaicCanvas::mouseReleaseEvent(QMouseEvent* event) {
  setCursor(Qt::OpenHandCursor);
  if (std::exchange(dragging_, false) || event->button() != Qt::LeftButton) return;
  const int frame = frameAt(view_.toMosaic(devicePoint(event->position())));
  if (frame >= 0) Q_EMIT framePicked(frame);
}

/// The newest joined frame there; -1 where none lies.
int MosaicCanvas::frameAt(QPointF mosaic) const {
  const auto& marks = track_.marks();
  for (std::size_t i = marks.size(); i-- > 0;) {
    if (marks[i].joined && marks[i].place.contains(mosaic)) return static_cast<int>(i);
  }
  return -1;
}

void MosaicCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
  setViewMode(ViewMode::kFree);
  view_.zoomAt(devicePoint(event->position()), 2);
  moved();
}

void MosaicCanvas::wheelEvent(QWheelEvent* event) {
  const int turned = event->angleDelta().y();
  if (turned == 0) return;
  if (mode_ == ViewMode::kFit) setViewMode(ViewMode::kFree);
  view_.zoomAt(devicePoint(event->position()), std::pow(kWheelStep, turned));
  followMode();
  moved();
  event->accept();
}

void MosaicCanvas::keyPressEvent(QKeyEvent* event) {
  const bool page = event->modifiers().testFlag(Qt::ShiftModifier);
  const double x = page ? view_.viewport().width() * 0.8 : kKeyPan * devicePixelRatioF();
  const double y = page ? view_.viewport().height() * 0.8 : kKeyPan * devicePixelRatioF();
  switch (event->key()) {
    case Qt::Key_Left:
      return panByHand({x, 0});
    case Qt::Key_Right:
      return panByHand({-x, 0});
    case Qt::Key_Up:
      return panByHand({0, y});
    case Qt::Key_Down:
      return panByHand({0, -y});
    default:
      QWidget::keyPressEvent(event);
  }
}

void MosaicCanvas::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() != QEvent::PaletteChange) return;
  layer_.setBackground(themeFor(palette()).canvas);
  update();
}

}  // namespace framequilt::viewer
