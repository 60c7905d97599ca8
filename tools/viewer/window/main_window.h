// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>
#include <QMainWindow>

#include "tools/viewer/model/run_controller.h"
#include "tools/viewer/window/mosaic_canvas.h"

namespace framequilt::viewer {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);
  RunController& run() { return run_; }

 private:
  RunController run_;
  MosaicCanvas* canvas_;
  QLabel* status_;
};

}  // namespace framequilt::viewer
