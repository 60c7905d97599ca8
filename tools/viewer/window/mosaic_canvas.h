// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPoint>
#include <QWidget>

#include "tools/viewer/model/camera_track.h"
#include "tools/viewer/model/mosaic_layer.h"
#include "tools/viewer/model/tile_loader.h"
#include "tools/viewer/model/tile_pyramid.h"
#include "tools/viewer/model/view_transform.h"

namespace framequilt::viewer {

/// What the view does by itself while the mosaic grows.
enum class ViewMode {
  kFree,    ///< Nothing.
  kFit,     ///< Shows all of it.
  kFollow,  ///< Keeps the newest frame in the middle.
};

/// Shows the mosaic, the way of the camera and the newest frame. The mouse drags it, the wheel
/// zooms at the cursor, a click chooses a frame, the arrow keys move it.
class MosaicCanvas : public QWidget {
  Q_OBJECT

 public:
  explicit MosaicCanvas(QWidget* parent = nullptr);
  ~MosaicCanvas() override;

  /// Begins with an empty mosaic. \param frame  In frame pixels.
  void open(MosaicReader reader, cv::Size frame, int scale);
  /// What one more frame has brought.
  void add(const FrameResult& result, const MosaicPatch& patch);

  const ViewTransform& view() const { return view_; }
  ViewMode viewMode() const { return mode_; }
  const CameraTrack& track() const { return track_; }
  TilePyramid& tiles() { return tiles_; }
  /// The box of the mosaic, in steady mosaic pixels.
  QRectF mosaicBox() const;
  int selected() const { return selected_; }
  bool showsPath() const { return showsPath_; }
  bool showsOutlines() const { return showsOutlines_; }

  void setViewMode(ViewMode mode);
  void showActualSize();
  void zoomBy(double factor);
  /// Brings a frame into view.
  void showFrame(int frame);
  void centerOn(QPointF mosaic);
  /// \param frame  -1: none.
  void select(int frame);
  void setShowsPath(bool shown);
  void setShowsOutlines(bool shown);

  /// Pixels that the last redraw changed in the picture of the mosaic.
  qint64 pixelsDrawn() const { return layer_.pixelsDrawn(); }

 Q_SIGNALS:
  void viewChanged();
  void viewModeChanged();
  void mosaicChanged();
  void framePicked(int frame);
  /// Everything that is in view has been drawn from tiles of its own level.
  void sharp();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  Q_SLOT void takeTiles();
  QPointF devicePoint(QPointF logical) const { return logical * devicePixelRatioF(); }
  void updateScreen(const QRect& devicePixels);
  void followMode();
  void moved();
  void panByHand(QPointF devicePixels);
  void drawTrack(QPainter& painter);
  void drawPath(QPainter& painter);
  void drawMark(QPainter& painter, const FrameMark& mark, const QColor& colour);
  int frameAt(QPointF mosaic) const;

  TilePyramid tiles_;
  MosaicLayer layer_{tiles_};
  ViewTransform view_;
  ViewMode mode_ = ViewMode::kFit;
  CameraTrack track_;
  cv::Size frame_;
  int selected_ = -1;
  bool showsPath_ = true;
  bool showsOutlines_ = false;
  int mosaic_ = 0;
  int loading_ = 0;  // Tiles asked for and not here yet.
  QPointF pressedAt_;
  QPointF draggedTo_;
  bool dragging_ = false;
  TileLoader loader_;  // Last: its thread calls back.
};

}  // namespace framequilt::viewer
