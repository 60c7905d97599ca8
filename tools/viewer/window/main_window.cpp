// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/main_window.h"

#include <QStatusBar>

namespace framequilt::viewer {

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), canvas_(new MosaicCanvas), status_(new QLabel) {
  setCentralWidget(canvas_);
  statusBar()->addWidget(status_);
  resize(1280, 720);
  connect(&run_, &RunController::captureOpened, this, [this] {
    const CaptureOpened& opened = run_.opened();
    canvas_->open(opened.reader, {opened.shape.cols, opened.shape.rows}, opened.scale);
  });
  connect(&run_, &RunController::frameDone, this, [this](const FrameDone& frame) {
    canvas_->add(frame.result, frame.patch);
    status_->setText(QString::fromStdString(tool::outcomeText(frame.result)));
  });
}

}  // namespace framequilt::viewer
