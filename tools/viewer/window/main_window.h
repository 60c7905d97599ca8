// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QSettings>
#include <QStackedWidget>
#include <QTimer>
#include <QToolBar>

#include "tools/viewer/model/run_controller.h"
#include "tools/viewer/model/viewer_settings.h"
#include "tools/viewer/window/message_banner.h"
#include "tools/viewer/window/mosaic_canvas.h"
#include "tools/viewer/window/overview_map.h"
#include "tools/viewer/window/side_panel.h"
#include "tools/viewer/window/start_page.h"

namespace framequilt::viewer {

/// The window of the program: the start page, and behind it the mosaic of the run.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// \param store  Where settings are kept; has to outlive the window.
  explicit MainWindow(QSettings& store, QWidget* parent = nullptr);
  ~MainWindow() override;

  /// Begins a run. An unsaved mosaic is asked about first.
  void begin(CaptureRequest request);
  void openInput(const QString& path);
  void openSimulation();
  /// Writes the mosaic and what else `outputs` names.
  void save(const tool::StitchOptions& outputs);
  void setAppearance(const QString& name);
  /// Whether an unsaved mosaic is asked about before it goes; true at first.
  void setAsksBeforeDiscarding(bool asks) { asks_ = asks; }

  RunController& run() { return run_; }
  MosaicCanvas& canvas() { return *canvas_; }
  SidePanel& panel() { return *panel_; }
  StartPage& startPage() { return *start_; }
  const MessageBanner& banner() const { return *banner_; }
  bool showsStartPage() const { return pages_->currentWidget() == start_; }
  QString statusText() const { return progressLabel_->text(); }

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QAction* addAction(const QString& name, const QString& text, const QList<QKeySequence>& keys,
                     const QString& tip);
  void makeActions();
  void makeMenus();
  void makeToolBar();
  void makePages();
  void makeStatusBar();
  void connectRun();
  void connectViews();
  void openFolder();
  void openVideo();
  void openCamera();
  void askAndSave();
  void goToFrame();
  void showKeys();
  bool mayDiscard();
  void showStart(bool shown);
  void onOpened();
  void onFrame(const FrameDone& frame);
  void onEnded(const QString& failure, bool full, bool interrupted);
  void updateActions();
  void updateProgress();
  void updateFacts();
  void placeBanner();
  void pick(int frame);
  void store();

  QSettings& store_;
  ViewerSettings settings_;
  QPalette systemPalette_;
  bool asks_ = true;
  bool unsaved_ = false;
  std::optional<std::size_t> count_;
  QElapsedTimer clock_;
  QTimer bannerTimer_;
  QTimer factsTimer_;

  QStackedWidget* pages_;
  StartPage* start_;
  QWidget* work_;
  MosaicCanvas* canvas_;
  OverviewMap* overview_;
  SidePanel* panel_;
  MessageBanner* banner_;
  QToolBar* toolBar_ = nullptr;
  QLabel* progressLabel_;
  QLabel* factsLabel_;
  QProgressBar* progress_;

  QAction* startAction_;
  QAction* pauseAction_;
  QAction* stopAction_;
  QAction* saveAction_;
  QAction* fitAction_;
  QAction* actualAction_;
  QAction* followAction_;
  QAction* zoomInAction_;
  QAction* zoomOutAction_;
  QAction* pathAction_;
  QAction* outlinesAction_;
  QAction* overviewAction_;
  QAction* panelAction_;
  QAction* goToAction_;
  QAction* nextRefusedAction_;
  QAction* formerRefusedAction_;
  QList<QAction*> openActions_;

  RunController run_;
};

}  // namespace framequilt::viewer
