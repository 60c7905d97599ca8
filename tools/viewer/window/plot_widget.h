// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include "tools/viewer/model/run_plots.h"

namespace framequilt::viewer {

/// Draws one of the plots of a run: values over the frames, limits dashed, refused frames red. The
/// mouse tells values; a click chooses the frame.
class PlotWidget : public QWidget {
  Q_OBJECT

 public:
  /// \param plots  Has to outlive the widget.
  PlotWidget(const RunPlots& plots, std::size_t plot, QWidget* parent = nullptr);

  void select(int frame);
  /// Below the plot, for the lowest of several.
  void showFrameNumbers();
  QSize sizeHint() const override { return {300, 118}; }

 Q_SIGNALS:
  void framePicked(int frame);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  const Plot& plot() const { return plots_.plots()[plot_]; }
  QRectF inner() const;
  double across(int frame) const;
  int frameAt(double x) const;
  void drawHeading(QPainter& painter) const;
  void drawAxis(QPainter& painter, const PlotAxis& axis) const;
  void drawFrameNumbers(QPainter& painter) const;
  void drawLimits(QPainter& painter, const PlotAxis& axis) const;
  void drawSeries(QPainter& painter, const PlotAxis& axis, std::size_t series) const;
  double up(const PlotAxis& axis, double value) const;

  const RunPlots& plots_;
  std::size_t plot_;
  int selected_ = -1;
  double bottom_;  // Room below the plot, in pixels.
};

}  // namespace framequilt::viewer
