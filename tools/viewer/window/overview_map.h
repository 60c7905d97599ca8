// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QWidget>

namespace framequilt::viewer {

class MosaicCanvas;

/// The whole mosaic, small, with the part that the canvas shows; a click or a drag moves it there.
class OverviewMap : public QWidget {
  Q_OBJECT

 public:
  /// A child of the canvas, in its lower right corner.
  explicit OverviewMap(MosaicCanvas* canvas);

  /// Then it is shown while a part of the mosaic is out of view.
  void setWanted(bool wanted);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  void place();
  void moveCanvas(QPointF to);

  MosaicCanvas* canvas_;
  bool wanted_ = true;
  QImage picture_;
};

}  // namespace framequilt::viewer
