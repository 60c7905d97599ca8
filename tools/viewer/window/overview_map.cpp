// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/overview_map.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "tools/viewer/model/mosaic_layer.h"
#include "tools/viewer/window/mosaic_canvas.h"
#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

constexpr int kLongestSide = 180;
constexpr int kShare = 4;  // Of the canvas's shorter side, at most.
constexpr int kDistance = 14;
constexpr int kBorder = 5;

}  // namespace

OverviewMap::OverviewMap(MosaicCanvas* canvas) : QWidget(canvas), canvas_(canvas) {
  setObjectName("overview");
  setCursor(Qt::PointingHandCursor);
  setToolTip(tr("Overview: click or drag to move the view"));
  connect(canvas, &MosaicCanvas::viewChanged, this, &OverviewMap::place);
  connect(canvas, &MosaicCanvas::mosaicChanged, this, [this] {
    picture_ = {};
    place();
  });
  hide();
}

void OverviewMap::setWanted(bool wanted) {
  wanted_ = wanted;
  place();
}

void OverviewMap::place() {
  const QRectF box = canvas_->mosaicBox();
  const QSizeF mosaic = box.size();
  const bool useful = !mosaic.isEmpty() && !canvas_->view().visible().contains(box);
  setVisible(wanted_ && useful);
  if (!wanted_ || !useful) return;
  const int side = std::min({kLongestSide, canvas_->width() / kShare + kShare * kBorder,
                             canvas_->height() / kShare + kShare * kBorder});
  const QSize size = mosaic.scaled(side, side, Qt::KeepAspectRatio).toSize().expandedTo({16, 16}) +
                     QSize(2 * kBorder, 2 * kBorder);
  setGeometry(QRect(QPoint(canvas_->width() - size.width() - kDistance,
                           canvas_->height() - size.height() - kDistance),
                    size));
  update();
}

void OverviewMap::paintEvent(QPaintEvent* /*event*/) {
  const Theme theme = themeFor(palette());
  const QRectF inner = QRectF(rect()).adjusted(kBorder, kBorder, -kBorder, -kBorder);
  const double ratio = devicePixelRatioF();
  const QSize pixels = (inner.size() * ratio).toSize();
  ViewTransform view;
  view.resize(pixels);
  view.fit(canvas_->mosaicBox(), 0);
  if (picture_.size() != pixels) {
    // Tiles of these levels are kept, so none is missing where the mosaic is larger than the map.
    MosaicLayer layer(canvas_->tiles());
    layer.setBackground(theme.canvas);
    picture_ = layer.render(view, [](const TileKey& /*key*/) {});
    picture_.setDevicePixelRatio(ratio);
  }
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(theme.line);
  painter.setBrush(theme.card);
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
  painter.drawImage(inner.topLeft(), picture_);

  const QRectF seen = view.toScreen(canvas_->view().visible());
  const QRectF frame =
      QRectF(seen.topLeft() / ratio + inner.topLeft(), seen.size() / ratio) & inner;
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(QColor(0, 0, 0, 150), 3));
  painter.drawRect(frame.adjusted(1, 1, -1, -1));
  painter.setPen(QPen(theme.selected, 1.5));
  painter.drawRect(frame.adjusted(1, 1, -1, -1));
}

void OverviewMap::moveCanvas(QPointF to) {
  const QRectF inner = QRectF(rect()).adjusted(kBorder, kBorder, -kBorder, -kBorder);
  ViewTransform view;
  view.resize(inner.size().toSize());
  view.fit(canvas_->mosaicBox(), 0);
  canvas_->centerOn(view.toMosaic(to - inner.topLeft()));
}

void OverviewMap::mousePressEvent(QMouseEvent* event) { moveCanvas(event->position()); }

void OverviewMap::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons() != Qt::NoButton) moveCanvas(event->position());
}

}  // namespace framequilt::viewer
