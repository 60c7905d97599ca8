// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLocale>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <algorithm>
#include <utility>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/progress_text.h"
#include "tools/viewer/model/texts.h"
#include "tools/viewer/window/keys.h"
#include "tools/viewer/window/save_dialog.h"
#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

constexpr double kKeyZoom = 1.25;
constexpr int kBannerDistance = 14;
/// A refusal stays readable for so long after frames join again.
constexpr int kBannerMilliseconds = 2500;
constexpr int kFactsMilliseconds = 100;

/// The refused frames by reason, as the command line lists them.
QString reasonsOf(const tool::StitchLog& log) {
  const QStringList lines = textOf(log.countsText()).trimmed().split('\n');
  QStringList reasons;
  for (const QString& line : lines) {
    if (line.startsWith("  ")) reasons << sentence(line.trimmed());
  }
  return reasons.join('\n');
}

}  // namespace

MainWindow::MainWindow(QSettings& store, QWidget* parent)
    : QMainWindow(parent),
      store_(store),
      settings_(loadSettings(store)),
      systemPalette_(QApplication::palette()) {
  setWindowTitle("Framequilt");
  setAppearance(settings_.appearance);
  makePages();
  makeActions();
  makeMenus();
  makeToolBar();
  makeStatusBar();
  connectViews();
  connectRun();
  bannerTimer_.setSingleShot(true);
  connect(&bannerTimer_, &QTimer::timeout, this, [this] {
    if (banner_->kind() == MessageBanner::Kind::kRefusal) banner_->hide();
  });
  factsTimer_.setSingleShot(true);
  connect(&factsTimer_, &QTimer::timeout, this, &MainWindow::updateFacts);
  resize(1280, 720);
  restoreGeometry(store_.value("window/geometry").toByteArray());
  updateActions();
  showStart(true);
}

MainWindow::~MainWindow() = default;

void MainWindow::makePages() {
  pages_ = new QStackedWidget;
  start_ = new StartPage(settings_);
  canvas_ = new MosaicCanvas;
  overview_ = new OverviewMap(canvas_);
  banner_ = new MessageBanner(canvas_);
  panel_ = new SidePanel;
  auto* splitter = new QSplitter(Qt::Horizontal);
  splitter->addWidget(canvas_);
  splitter->addWidget(panel_);
  splitter->setStretchFactor(0, 1);
  splitter->setStretchFactor(1, 0);
  splitter->setChildrenCollapsible(false);
  splitter->setSizes({840, 440});
  panel_->setMinimumWidth(320);
  work_ = splitter;
  pages_->addWidget(start_);
  pages_->addWidget(work_);
  setCentralWidget(pages_);
  canvas_->installEventFilter(this);
  canvas_->setShowsPath(settings_.showsPath);
  canvas_->setShowsOutlines(settings_.showsOutlines);
  overview_->setWanted(settings_.showsOverview);
  panel_->setVisible(settings_.showsPanel);
}

QAction* MainWindow::addAction(const QString& name, const QString& text,
                               const QList<QKeySequence>& keys, const QString& tip) {
  auto* action = new QAction(text, this);
  action->setObjectName(name);
  action->setShortcuts(keys);
  const QString key = keys.isEmpty() ? QString() : keys.front().toString();
  action->setToolTip(key.isEmpty() ? tip : tip + " (" + key + ")");
  action->setStatusTip({});
  QMainWindow::addAction(action);
  return action;
}

void MainWindow::makeActions() {
  const auto open = [this](const QString& name, const QString& text, const QKeySequence& keys,
                           void (MainWindow::*slot)()) {
    QAction* action = addAction(name, text, {keys}, {});
    connect(action, &QAction::triggered, this, slot);
    openActions_ << action;
  };
  open("folder", tr("Open &folder..."), QKeySequence("Ctrl+O"), &MainWindow::openFolder);
  open("video", tr("Open &video..."), QKeySequence("Ctrl+Shift+O"), &MainWindow::openVideo);
  open("camera", tr("Open &camera"), QKeySequence("Ctrl+K"), &MainWindow::openCamera);
  open("simulation", tr("Open &simulated capture"), QKeySequence("Ctrl+T"),
       &MainWindow::openSimulation);

  startAction_ = addAction("start", tr("Start page"), {QKeySequence("Ctrl+N")},
                           tr("Open another capture, change parameters"));
  startAction_->setCheckable(true);
  connect(startAction_, &QAction::toggled, this, &MainWindow::showStart);
  pauseAction_ = addAction("pause", tr("Pause"), {QKeySequence("Space")}, tr("Pause or go on"));
  connect(pauseAction_, &QAction::triggered, this,
          [this] { run_.canPause() ? run_.pause() : run_.resume(); });
  stopAction_ = addAction("stop", tr("Stop"), {QKeySequence("Ctrl+E")},
                          tr("End the run; the mosaic so far stays"));
  connect(stopAction_, &QAction::triggered, &run_, &RunController::stop);
  saveAction_ = addAction("save", tr("Save..."), {QKeySequence("Ctrl+S")},
                          tr("Save the mosaic, placements and report"));
  connect(saveAction_, &QAction::triggered, this, &MainWindow::askAndSave);

  fitAction_ = addAction("fit", tr("Fit"), {QKeySequence("F")}, tr("Show the whole mosaic"));
  actualAction_ = addAction("actual", "1:1", {QKeySequence("1")}, tr("One pixel a pixel"));
  followAction_ = addAction("follow", tr("Follow"), {QKeySequence("C")},
                            tr("Keep the newest frame in the middle"));
  fitAction_->setCheckable(true);
  followAction_->setCheckable(true);
  zoomInAction_ = addAction("zoomIn", "+", {QKeySequence("+"), QKeySequence("=")}, tr("Larger"));
  zoomOutAction_ =
      addAction("zoomOut", QString::fromUtf8("\u2212"), {QKeySequence("-")}, tr("Smaller"));
  pathAction_ = addAction("path", tr("Path"), {QKeySequence("P")}, tr("The way of the camera"));
  outlinesAction_ =
      addAction("outlines", tr("Outlines"), {QKeySequence("O")}, tr("The border of every frame"));
  overviewAction_ = addAction("map", tr("Map"), {QKeySequence("M")}, tr("The overview map"));
  panelAction_ =
      addAction("panel", tr("Panel"), {QKeySequence("F9")}, tr("Plots and the list of frames"));
  const std::pair<QAction*, bool> toggles[] = {{pathAction_, settings_.showsPath},
                                               {outlinesAction_, settings_.showsOutlines},
                                               {overviewAction_, settings_.showsOverview},
                                               {panelAction_, settings_.showsPanel}};
  for (const auto& [action, on] : toggles) {
    action->setCheckable(true);
    action->setChecked(on);
  }
  goToAction_ = addAction("goTo", tr("&Go to frame..."), {QKeySequence("Ctrl+G")}, {});
  connect(goToAction_, &QAction::triggered, this, &MainWindow::goToFrame);
  nextRefusedAction_ = addAction("nextRefused", tr("&Next refused frame"), {QKeySequence("R")}, {});
  formerRefusedAction_ =
      addAction("formerRefused", tr("&Previous refused frame"), {QKeySequence("Shift+R")}, {});
  connect(nextRefusedAction_, &QAction::triggered, this,
          [this] { panel_->select(panel_->frames().nextRefused(panel_->selected(), 1)); });
  connect(formerRefusedAction_, &QAction::triggered, this, [this] {
    const int from = panel_->selected() < 0 ? 0 : panel_->selected();
    panel_->select(panel_->frames().nextRefused(from, -1));
  });
}

void MainWindow::makeMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  file->addActions(openActions_);
  file->addSeparator();
  file->addActions({startAction_, saveAction_});
  file->addSeparator();
  file->addAction(tr("&Quit"), QKeySequence("Ctrl+Q"), this, &QWidget::close);
  QMenu* run = menuBar()->addMenu(tr("&Run"));
  run->addActions({pauseAction_, stopAction_});
  QMenu* view = menuBar()->addMenu(tr("&View"));
  view->addActions({fitAction_, actualAction_, followAction_, zoomInAction_, zoomOutAction_});
  view->addSeparator();
  view->addActions({pathAction_, outlinesAction_, overviewAction_, panelAction_});
  view->addSeparator();
  QMenu* appearance = view->addMenu(tr("&Appearance"));
  auto* group = new QActionGroup(this);
  const std::pair<QString, QString> appearances[] = {
      {"system", tr("As the &system")}, {"light", tr("&Light")}, {"dark", tr("&Dark")}};
  for (const auto& [name, text] : appearances) {
    QAction* action = appearance->addAction(text);
    action->setCheckable(true);
    action->setChecked(settings_.appearance == name);
    group->addAction(action);
    connect(action, &QAction::triggered, this, [this, name = name] { setAppearance(name); });
  }
  view->addAction(tr("F&ull screen"), QKeySequence("F11"), this,
                  [this] { setWindowState(windowState() ^ Qt::WindowFullScreen); });
  QMenu* frames = menuBar()->addMenu(tr("F&rames"));
  frames->addActions({goToAction_, nextRefusedAction_, formerRefusedAction_});
  frames->addAction(tr("&No frame"), QKeySequence("Esc"), this, [this] { panel_->select(-1); });
  QMenu* help = menuBar()->addMenu(tr("&Help"));
  help->addAction(tr("&Keys"), QKeySequence("F1"), this, &MainWindow::showKeys);
}

void MainWindow::makeToolBar() {
  toolBar_ = addToolBar(tr("Tools"));
  QToolBar* bar = toolBar_;
  bar->setObjectName("tools");
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  bar->setStyleSheet(
      "QToolBar { spacing: 4px; padding: 4px 8px; }"
      "QToolButton { padding: 4px 10px; }");
  bar->addAction(startAction_);
  bar->addSeparator();
  bar->addActions({pauseAction_, stopAction_, saveAction_});
  bar->addSeparator();
  bar->addActions({fitAction_, actualAction_, followAction_, zoomOutAction_, zoomInAction_});
  bar->addSeparator();
  bar->addActions({pathAction_, outlinesAction_, overviewAction_, panelAction_});
}

void MainWindow::makeStatusBar() {
  progressLabel_ = new QLabel;
  progressLabel_->setObjectName("progress");
  factsLabel_ = new QLabel;
  progress_ = new QProgressBar;
  progress_->setTextVisible(false);
  progress_->setFixedSize(160, 8);
  statusBar()->setSizeGripEnabled(false);
  statusBar()->setContentsMargins(8, 2, 8, 2);
  statusBar()->addWidget(progress_);
  statusBar()->addWidget(progressLabel_);
  statusBar()->addPermanentWidget(factsLabel_);
}

void MainWindow::connectViews() {
  connect(start_, &StartPage::folderWanted, this, &MainWindow::openFolder);
  connect(start_, &StartPage::videoWanted, this, &MainWindow::openVideo);
  connect(start_, &StartPage::cameraWanted, this, &MainWindow::openCamera);
  connect(start_, &StartPage::simulationWanted, this, &MainWindow::openSimulation);
  connect(fitAction_, &QAction::triggered, this,
          [this](bool on) { canvas_->setViewMode(on ? ViewMode::kFit : ViewMode::kFree); });
  connect(followAction_, &QAction::triggered, this,
          [this](bool on) { canvas_->setViewMode(on ? ViewMode::kFollow : ViewMode::kFree); });
  connect(actualAction_, &QAction::triggered, canvas_, &MosaicCanvas::showActualSize);
  connect(zoomInAction_, &QAction::triggered, this, [this] { canvas_->zoomBy(kKeyZoom); });
  connect(zoomOutAction_, &QAction::triggered, this, [this] { canvas_->zoomBy(1 / kKeyZoom); });
  connect(pathAction_, &QAction::toggled, canvas_, &MosaicCanvas::setShowsPath);
  connect(outlinesAction_, &QAction::toggled, canvas_, &MosaicCanvas::setShowsOutlines);
  connect(overviewAction_, &QAction::toggled, overview_, &OverviewMap::setWanted);
  connect(panelAction_, &QAction::toggled, panel_, &QWidget::setVisible);
  connect(canvas_, &MosaicCanvas::viewModeChanged, this, &MainWindow::updateActions);
  // Not with every step of a drag.
  connect(canvas_, &MosaicCanvas::viewChanged, this, [this] {
    if (!factsTimer_.isActive()) factsTimer_.start(kFactsMilliseconds);
  });
  connect(canvas_, &MosaicCanvas::framePicked, panel_, &SidePanel::select);
  connect(panel_, &SidePanel::framePicked, this, &MainWindow::pick);
  connect(banner_, &MessageBanner::resized, this, &MainWindow::placeBanner);
}

void MainWindow::connectRun() {
  connect(&run_, &RunController::stateChanged, this, &MainWindow::updateActions);
  connect(&run_, &RunController::captureOpened, this, &MainWindow::onOpened);
  connect(&run_, &RunController::frameDone, this, &MainWindow::onFrame);
  connect(&run_, &RunController::ended, this, &MainWindow::onEnded);
  connect(&run_, &RunController::openFailed, this, [this](const QString& text) {
    showStart(true);
    start_->showError(tr("Cannot open %1").arg(run_.captureName()), sentence(text));
  });
  connect(&run_, &RunController::remarked, this, [this](const QString& text) {
    banner_->show(MessageBanner::Kind::kInfo, run_.captureName(), sentence(text));
  });
  connect(&run_, &RunController::saved, this, [this](const QStringList& files) {
    unsaved_ = run_.state() != RunState::kEnded;
    banner_->show(MessageBanner::Kind::kDone, tr("Saved"), files.join('\n'));
  });
  connect(&run_, &RunController::saveFailed, this, [this](const QString& text) {
    banner_->show(MessageBanner::Kind::kError, tr("Not saved"), sentence(text));
  });
}

void MainWindow::openFolder() {
  const QString folder =
      QFileDialog::getExistingDirectory(this, tr("Folder of pictures"), settings_.folder);
  if (folder.isEmpty()) return;
  settings_.folder = folder;
  openInput(folder);
}

void MainWindow::openVideo() {
  const QString video = QFileDialog::getOpenFileName(
      this, tr("Video file"), settings_.video,
      tr("Videos (*.mp4 *.avi *.mov *.mkv *.webm *.m4v *.mpg *.mpeg *.wmv);;All files (*)"));
  if (video.isEmpty()) return;
  settings_.video = video;
  openInput(video);
}

void MainWindow::openInput(const QString& path) {
  start_->read(settings_);
  begin(requestForInput(path, settings_.stitching));
}

void MainWindow::openCamera() {
  start_->read(settings_);
  begin(requestForCamera(settings_.camera, settings_.stitching));
}

void MainWindow::openSimulation() {
  start_->read(settings_);
  begin(requestForSimulation(settings_.simulation, settings_.stitching));
}

void MainWindow::begin(CaptureRequest request) {
  if (!run_.canOpen() || !mayDiscard()) return;
  start_->hideError();
  const QString problem = limitProblem(request.options);
  if (!problem.isEmpty()) {
    showStart(true);
    return start_->showError(tr("Mosaic too large"), sentence(problem));
  }
  store();
  unsaved_ = false;
  count_.reset();
  banner_->hide();
  run_.open(std::move(request));
}

void MainWindow::onOpened() {
  const CaptureOpened& opened = run_.opened();
  const tool::StitchOptions& options = run_.options();
  count_ = opened.count;
  clock_.start();
  panel_->begin(options.mode == "overlap" ? Criterion::kOverlap : Criterion::kMotion,
                options.dynamicScene);
  canvas_->open(opened.reader, {opened.shape.cols, opened.shape.rows}, opened.scale);
  setWindowTitle(run_.captureName() + " - Framequilt");
  showStart(false);
  canvas_->setFocus();
  updateFacts();
}

void MainWindow::onFrame(const FrameDone& frame) {
  count_ = frame.count;
  canvas_->add(frame.result, frame.patch);
  panel_->add(frame);
  unsaved_ = unsaved_ || frame.result.verdict == Verdict::kJoined;
  if (frame.result.verdict == Verdict::kRefused) {
    bannerTimer_.stop();
    const QString reason = textOf(explain(frame.result));
    const QString advice = textOf(wordsFor(frame.result.reason).advice);
    banner_->show(MessageBanner::Kind::kRefusal,
                  tr("Frame %1 refused, %2")
                      .arg(static_cast<qulonglong>(frame.number))
                      .arg(textOf(wordsFor(frame.result.reason).reason)),
                  sentence(reason.section(": ", 1)) + "\n" + sentence(advice));
  } else if (banner_->isVisible() && !bannerTimer_.isActive()) {
    bannerTimer_.start(kBannerMilliseconds);
  }
  updateProgress();
  updateFacts();
}

void MainWindow::onEnded(const QString& failure, bool full, bool interrupted) {
  panel_->end();
  const tool::StitchLog& log = panel_->frames().log();
  const QString counts = tr("%1 of %2 frames joined").arg(log.joined()).arg(log.entries().size());
  const QString reasons = reasonsOf(log);
  if (!failure.isEmpty()) {
    banner_->show(MessageBanner::Kind::kError, tr("Broken off, ") + counts, sentence(failure));
  } else if (log.joined() == 0) {
    banner_->show(MessageBanner::Kind::kError, tr("Nothing could be joined"),
                  tr("Each frame should share about half with the one before.") +
                      (reasons.isEmpty() ? "" : "\n" + reasons));
  } else if (full) {
    banner_->show(MessageBanner::Kind::kRefusal, tr("The mosaic is full, ") + counts,
                  sentence(textOf(wordsFor(Refusal::kMosaicFull).advice)));
  } else {
    banner_->show(MessageBanner::Kind::kDone,
                  (interrupted ? tr("Stopped, ") : tr("Finished, ")) + counts, reasons);
  }
  updateProgress();
}

void MainWindow::askAndSave() {
  if (!run_.canSave()) return;
  const QString base = QFileInfo(run_.captureName()).completeBaseName().replace(' ', '-');
  SaveDialog dialog(settings_, base + "-mosaic.png", this);
  if (dialog.exec() != QDialog::Accepted) return;
  dialog.remember(settings_);
  save(dialog.outputs());
}

void MainWindow::save(const tool::StitchOptions& outputs) {
  if (!run_.canSave()) return;
  banner_->show(MessageBanner::Kind::kInfo, tr("Saving..."),
                QString::fromStdString(outputs.output));
  run_.save(outputs);
}

void MainWindow::goToFrame() {
  const auto& entries = panel_->frames().log().entries();
  if (entries.empty()) return;
  bool chosen = false;
  const int first = static_cast<int>(entries.front().number);
  const int last = static_cast<int>(entries.back().number);
  const int number = QInputDialog::getInt(this, tr("Go to frame"), tr("Number of the frame:"), last,
                                          first, last, 1, &chosen);
  if (chosen) panel_->select(panel_->frames().rowOf(static_cast<std::size_t>(number)));
}

void MainWindow::showKeys() {
  QMessageBox box(this);
  box.setWindowTitle(tr("Keys"));
  box.setTextFormat(Qt::RichText);
  box.setText(keysTable());
  box.exec();
}

bool MainWindow::mayDiscard() {
  if (!unsaved_ || !asks_) return true;
  return QMessageBox::question(
             this, tr("Mosaic not saved"),
             tr("The mosaic of %1 has not been saved. Discard it?").arg(run_.captureName()),
             QMessageBox::Discard | QMessageBox::Cancel,
             QMessageBox::Cancel) == QMessageBox::Discard;
}

void MainWindow::setAppearance(const QString& name) {
  settings_.appearance = name;
  const Appearance appearance = name == "dark"    ? Appearance::kDark
                                : name == "light" ? Appearance::kLight
                                                  : Appearance::kSystem;
  QApplication::setPalette(paletteFor(appearance, systemPalette_));
}

void MainWindow::showStart(bool shown) {
  pages_->setCurrentWidget(shown ? static_cast<QWidget*>(start_) : work_);
  startAction_->setChecked(shown);
  statusBar()->setVisible(!shown);
  updateActions();
}

void MainWindow::updateActions() {
  const bool working = !showsStartPage();
  const bool hasRun = run_.state() != RunState::kIdle && run_.state() != RunState::kOpening;
  for (QAction* action : openActions_) action->setEnabled(run_.canOpen());
  start_->setEnabled(run_.canOpen());
  startAction_->setEnabled(hasRun || working);
  if (toolBar_ != nullptr) toolBar_->setVisible(hasRun || working);
  pauseAction_->setEnabled(run_.canPause() || run_.canResume());
  pauseAction_->setText(run_.canResume() ? tr("Go on") : tr("Pause"));
  stopAction_->setEnabled(run_.canStop());
  saveAction_->setEnabled(run_.canSave());
  for (QAction* action : {fitAction_, actualAction_, followAction_, zoomInAction_, zoomOutAction_,
                          pathAction_, outlinesAction_, overviewAction_, panelAction_, goToAction_,
                          nextRefusedAction_, formerRefusedAction_}) {
    action->setEnabled(working);
  }
  fitAction_->setChecked(canvas_->viewMode() == ViewMode::kFit);
  followAction_->setChecked(canvas_->viewMode() == ViewMode::kFollow);
  if (run_.state() == RunState::kOpening)
    setWindowTitle(tr("Opening %1...").arg(run_.captureName()));
  if (run_.state() == RunState::kIdle) setWindowTitle("Framequilt");
  updateProgress();
}

void MainWindow::updateProgress() {
  const tool::StitchLog& log = panel_->frames().log();
  const std::size_t done = log.entries().size();
  const bool ended = run_.state() == RunState::kEnded;
  const std::size_t refused = log.refused() - (log.firstWaits() && !ended ? 1 : 0);
  const double seconds =
      clock_.isValid() && !ended ? static_cast<double>(clock_.elapsed()) / 1000 : 0;
  QString text = textOf(tool::progressText({done, count_, log.joined(), refused, seconds}));
  if (run_.state() == RunState::kPaused) text = tr("Paused: ") + text;
  if (run_.state() == RunState::kStopping) text = tr("Stopping: ") + text;
  progressLabel_->setText(text);
  // A camera has no end.
  progress_->setVisible(count_.has_value());
  progress_->setRange(0, static_cast<int>(count_.value_or(1)));
  progress_->setValue(static_cast<int>(done));
}

void MainWindow::updateFacts() {
  const CaptureOpened& opened = run_.opened();
  const QRectF box = canvas_->mosaicBox();
  QStringList facts;
  facts << tr("frames %1 x %2").arg(opened.shape.cols).arg(opened.shape.rows)
        << (opened.shape.channels == 1 ? tr("gray") : tr("colour"))
        << (opened.backend == "opencl" ? tr("GPU") : tr("processor"));
  if (opened.scale != 1) facts << tr("scale %1").arg(opened.scale);
  if (box.isEmpty()) {
    facts << tr("no mosaic yet");
  } else {
    facts << tr("mosaic %1 x %2").arg(box.width()).arg(box.height())
          << tr("zoom %1 %").arg(canvas_->view().scale() * 100, 0, 'g', 3);
  }
  factsLabel_->setText(facts.join(QString::fromUtf8("  \u00b7  ")));
}

void MainWindow::placeBanner() {
  banner_->setFixedWidth(std::min(440, canvas_->width() - 2 * kBannerDistance));
  banner_->move(kBannerDistance, kBannerDistance);
}

void MainWindow::pick(int frame) {
  canvas_->select(frame);
  canvas_->showFrame(frame);
}

void MainWindow::store() {
  start_->read(settings_);
  settings_.showsPath = pathAction_->isChecked();
  settings_.showsOutlines = outlinesAction_->isChecked();
  settings_.showsOverview = overviewAction_->isChecked();
  settings_.showsPanel = panelAction_->isChecked();
  saveSettings(settings_, store_);
  store_.setValue("window/geometry", saveGeometry());
  store_.sync();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!mayDiscard()) return event->ignore();
  store();
  QMainWindow::closeEvent(event);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == canvas_ && event->type() == QEvent::Resize) placeBanner();
  return QMainWindow::eventFilter(watched, event);
}

}  // namespace framequilt::viewer
