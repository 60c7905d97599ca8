// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>
#include <QWidget>
#include <vector>

#include "tools/viewer/model/frame_list_model.h"
#include "tools/viewer/model/run_plots.h"
#include "tools/viewer/window/plot_widget.h"

namespace framequilt::viewer {

/// Beside the mosaic: the plots of the run, the list of its frames, and the chosen frame in words.
class SidePanel : public QWidget {
  Q_OBJECT

 public:
  explicit SidePanel(QWidget* parent = nullptr);

  void begin(Criterion criterion, bool dynamicScene);
  void add(const FrameDone& frame);
  /// No more frames come.
  void end();
  /// \param frame  -1: none.
  void select(int frame);
  int selected() const;

  const FrameListModel& frames() const { return frames_; }
  const RunPlots& plots() const { return plots_; }

 Q_SIGNALS:
  void framePicked(int frame);

 private:
  void describe();

  FrameListModel frames_;
  RunPlots plots_;
  QWidget* plotArea_;
  QVBoxLayout* plotLayout_;
  std::vector<PlotWidget*> plotWidgets_;
  QTableView* list_;
  QLabel* description_;
};

}  // namespace framequilt::viewer
