// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/start_page.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "tools/viewer/window/capture_card.h"

namespace framequilt::viewer {
namespace {

constexpr int kFormWidth = 410;
constexpr int kChoicesWidth = 640;

/// "Default 8, from 0 to 1000." below what the parameter does.
template <class Number>
QString hint(const QString& text, Range<Number> range, Number standard, const QString& unit = {}) {
  const QString suffix = unit.isEmpty() ? QString() : " " + unit;
  return text + "\n" +
         QObject::tr("Default %1, from %2 to %3%4.")
             .arg(standard)
             .arg(range.low)
             .arg(range.high)
             .arg(suffix);
}

void setRange(QSpinBox* box, Range<int> range, const QString& suffix) {
  box->setRange(range.low, range.high);
  if (!suffix.isEmpty()) box->setSuffix(" " + suffix);
}

void setRange(QDoubleSpinBox* box, Range<double> range, const QString& suffix, int decimals) {
  box->setRange(range.low, range.high);
  box->setDecimals(decimals);
  if (!suffix.isEmpty()) box->setSuffix(" " + suffix);
}

void addRow(QFormLayout& form, const QString& name, QWidget* field, const QString& tip) {
  auto* label = new QLabel(name);
  label->setBuddy(field);
  label->setToolTip(tip);
  field->setToolTip(tip);
  field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  form.addRow(label, field);
}

QWidget* sideBySide(QWidget* left, const QString& between, QWidget* right) {
  auto* pair = new QWidget;
  auto* layout = new QHBoxLayout(pair);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(left, 1);
  layout->addWidget(new QLabel(between));
  layout->addWidget(right, 1);
  return pair;
}

void choose(QComboBox* box, const QVariant& data) { box->setCurrentIndex(box->findData(data)); }

QGroupBox* groupOf(const QString& title, QFormLayout*& form) {
  auto* group = new QGroupBox(title);
  form = new QFormLayout(group);
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  form->setLabelAlignment(Qt::AlignLeft);
  form->setHorizontalSpacing(18);
  form->setVerticalSpacing(6);
  form->setContentsMargins(14, 12, 14, 12);
  return group;
}

}  // namespace

StartPage::StartPage(const ViewerSettings& settings, QWidget* parent)
    : QWidget(parent), banner_(new MessageBanner) {
  banner_->setFixedWidth(kChoicesWidth);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(32, 20, 24, 20);
  layout->setSpacing(36);
  layout->addStretch(2);
  layout->addWidget(makeChoices());
  layout->addWidget(makeParameters());
  layout->addStretch(2);
  write(settings);
}

QWidget* StartPage::makeChoices() {
  auto* column = new QWidget;
  column->setFixedWidth(kChoicesWidth);
  auto* title = new QLabel("Framequilt");
  QFont large = font();
  large.setPointSizeF(large.pointSizeF() * 2.4);
  large.setBold(true);
  title->setFont(large);
  auto* text =
      new QLabel(tr("Stitches the frames of a moving camera into one mosaic, and shows it grow."));
  text->setWordWrap(true);

  auto* folder = new CaptureCard(CaptureCard::Kind::kFolder, tr("Folder of pictures"),
                                 tr("Taken in natural order: f2 before f10"), "Ctrl+O");
  auto* video = new CaptureCard(CaptureCard::Kind::kVideo, tr("Video file"),
                                tr("Each frame, or each Nth one"), "Ctrl+Shift+O");
  auto* camera = new CaptureCard(CaptureCard::Kind::kCamera, tr("Camera"),
                                 tr("Live, until it is stopped"), "Ctrl+K");
  auto* simulation = new CaptureCard(CaptureCard::Kind::kSimulation, tr("Simulated capture"),
                                     tr("Nothing at hand? See how it works"), "Ctrl+T");
  folder->setObjectName("openFolder");
  video->setObjectName("openVideo");
  camera->setObjectName("openCamera");
  simulation->setObjectName("openSimulation");
  connect(folder, &QAbstractButton::clicked, this, &StartPage::folderWanted);
  connect(video, &QAbstractButton::clicked, this, &StartPage::videoWanted);
  connect(camera, &QAbstractButton::clicked, this, &StartPage::cameraWanted);
  connect(simulation, &QAbstractButton::clicked, this, &StartPage::simulationWanted);

  auto* cards = new QGridLayout;
  cards->setSpacing(16);
  cards->addWidget(folder, 0, 0);
  cards->addWidget(video, 0, 1);
  cards->addWidget(camera, 1, 0);
  cards->addWidget(simulation, 1, 1);
  auto* layout = new QVBoxLayout(column);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addStretch(1);
  layout->addWidget(title);
  layout->addWidget(text);
  layout->addSpacing(20);
  layout->addLayout(cards);
  layout->addSpacing(16);
  layout->addWidget(banner_);
  layout->addStretch(2);
  return column;
}

QWidget* StartPage::makeParameters() {
  auto* column = new QWidget;
  auto* layout = new QVBoxLayout(column);
  layout->setContentsMargins(0, 0, 6, 0);
  layout->setSpacing(12);
  QFormLayout* form = nullptr;
  layout->addStretch(1);
  layout->addWidget(groupOf(tr("Stitching"), form));
  addStitching(*form);
  layout->addWidget(groupOf(tr("Camera and simulated capture"), form));
  addSimulation(*form);
  auto* defaults = new QPushButton(tr("Defaults"));
  defaults->setObjectName("defaults");
  defaults->setToolTip(tr("Sets every parameter of this page to its default"));
  connect(defaults, &QPushButton::clicked, this, [this] { write(ViewerSettings()); });
  layout->addWidget(defaults, 0, Qt::AlignRight);
  layout->addStretch(2);
  auto* area = new QScrollArea;
  area->setWidget(column);
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setFixedWidth(kFormWidth);
  return area;
}

void StartPage::addStitching(QFormLayout& form) {
  const tool::StitchOptions standard;
  mode_ = new QComboBox;
  mode_->addItem(tr("by motion"), "motion");
  mode_->addItem(tr("by brightness and sharpness"), "overlap");
  addRow(form, tr("Judge frames"), mode_,
         tr("By how the view changed, or by brightness and sharpness of the overlap.\n"
            "Default: by motion."));
  scene_ = new QComboBox;
  scene_->addItem(tr("only the camera moves"), false);
  scene_->addItem(tr("the scene moves too"), true);
  addRow(form, tr("Scene"), scene_,
         tr("In a scene that moves only frames that differ little are joined.\n"
            "Default: only the camera moves."));
  scale_ = new QComboBox;
  scale_->addItem(tr("automatic"), kAutoScale);
  scale_->addItem("1", 1);
  scale_->addItem("2", 2);
  addRow(form, tr("Scale"), scale_,
         tr("Frame pixels per mosaic pixel. Automatic is 2 for frames above 6000 pixels a side, "
            "else 1.\nDefault: automatic."));
  cornerBudget_ = new QSpinBox;
  cornerBudget_->setObjectName("cornerBudget");
  setRange(cornerBudget_, kCornerBudgetRange, tr("steps"));
  addRow(form, tr("Corner budget"), cornerBudget_,
         hint(tr("More corners join frames that overlap less; each step about 31, and slower."),
              kCornerBudgetRange, standard.cornerBudget, tr("steps")));
  every_ = new QSpinBox;
  setRange(every_, kEveryRange, {});
  every_->setPrefix(tr("1 of "));
  every_->setSuffix(tr(" frames"));
  every_->setSpecialValueText(tr("every frame"));
  addRow(form, tr("Take"), every_,
         hint(tr("Leaves out the frames between."), kEveryRange, standard.every));
  maxCols_ = new QSpinBox;
  maxRows_ = new QSpinBox;
  setRange(maxCols_, kMosaicSideRange, "px");
  setRange(maxRows_, kMosaicSideRange, "px");
  maxCols_->setSingleStep(1000);
  maxRows_->setSingleStep(1000);
  const QString limit = hint(tr("The mosaic is full once it has columns x rows pixels."),
                             kMosaicSideRange, standard.maxCols, "px");
  addRow(form, tr("Mosaic, at most"), sideBySide(maxCols_, "x", maxRows_), limit);
  backend_ = new QComboBox;
  backend_->addItem(tr("GPU where it can be used"), "auto");
  backend_->addItem(tr("GPU (OpenCL)"), "opencl");
  backend_->addItem(tr("processor"), "host");
  addRow(form, tr("Work on"), backend_,
         tr("What does the work; the mosaic is the same.\nDefault: GPU where it can be used."));
}

void StartPage::addSimulation(QFormLayout& form) {
  const ViewerSettings standard;
  const tool::PathOptions& path = standard.simulation.path;
  camera_ = new QSpinBox;
  setRange(camera_, kCameraRange, {});
  addRow(form, tr("Camera number"), camera_,
         hint(tr("0 is the first one that is connected."), kCameraRange, standard.camera));
  frames_ = new QSpinBox;
  frames_->setObjectName("simulatedFrames");
  setRange(frames_, kSimulatedFramesRange, tr("frames"));
  addRow(form, tr("Simulate"), frames_,
         hint(tr("Length of the simulated capture."), kSimulatedFramesRange, path.frames));
  cols_ = new QSpinBox;
  rows_ = new QSpinBox;
  setRange(cols_, kSimulatedSideRange, "px");
  setRange(rows_, kSimulatedSideRange, "px");
  addRow(form, tr("Frame size"), sideBySide(cols_, "x", rows_),
         hint(tr("Columns and rows of a simulated frame."), kSimulatedSideRange, path.frame.width,
              "px"));
  lowestOverlap_ = new QDoubleSpinBox;
  highestOverlap_ = new QDoubleSpinBox;
  setRange(lowestOverlap_, kOverlapPercentRange, "%", 0);
  setRange(highestOverlap_, kOverlapPercentRange, "%", 0);
  addRow(form, tr("Overlap"), sideBySide(lowestOverlap_, tr("to"), highestOverlap_),
         tr("What a frame shares with the one before; below 15 % frames are refused.\n"
            "Default 50 to 80, from 0 to 95 %."));
  noise_ = new QDoubleSpinBox;
  setRange(noise_, kNoiseRange, tr("gray levels"), 1);
  addRow(form, tr("Noise"), noise_,
         hint(tr("Standard deviation of the noise."), kNoiseRange, 0.0, tr("gray levels")));
  blur_ = new QDoubleSpinBox;
  setRange(blur_, kBlurRange, "px", 1);
  blur_->setSingleStep(0.5);
  addRow(form, tr("Blur"), blur_,
         hint(tr("Standard deviation of the blur."), kBlurRange, 0.0, "px"));
  drift_ = new QDoubleSpinBox;
  setRange(drift_, kDriftPercentRange, "%", 0);
  addRow(form, tr("Brightness drift"), drift_,
         hint(tr("Brightness drifts by up to this share."), kDriftPercentRange, 0.0, "%"));
}

void StartPage::read(ViewerSettings& settings) const {
  tool::StitchOptions& stitching = settings.stitching;
  stitching.mode = mode_->currentData().toString().toStdString();
  stitching.dynamicScene = scene_->currentData().toBool();
  stitching.scale = scale_->currentData().toInt();
  stitching.backend = backend_->currentData().toString().toStdString();
  stitching.cornerBudget = cornerBudget_->value();
  stitching.every = every_->value();
  stitching.maxRows = maxRows_->value();
  stitching.maxCols = maxCols_->value();
  settings.camera = camera_->value();
  tool::SimulationOptions& simulation = settings.simulation;
  simulation.path.frames = frames_->value();
  simulation.path.frame = {cols_->value(), rows_->value()};
  simulation.path.lowestOverlap = std::min(lowestOverlap_->value(), highestOverlap_->value()) / 100;
  simulation.path.highestOverlap =
      std::max(lowestOverlap_->value(), highestOverlap_->value()) / 100;
  simulation.noise = noise_->value();
  simulation.blur = blur_->value();
  simulation.gain = drift_->value() / 100;
}

void StartPage::write(const ViewerSettings& settings) {
  const tool::StitchOptions& stitching = settings.stitching;
  choose(mode_, QString::fromStdString(stitching.mode));
  choose(scene_, stitching.dynamicScene);
  choose(scale_, stitching.scale);
  choose(backend_, QString::fromStdString(stitching.backend));
  cornerBudget_->setValue(stitching.cornerBudget);
  every_->setValue(stitching.every);
  maxRows_->setValue(stitching.maxRows);
  maxCols_->setValue(stitching.maxCols);
  camera_->setValue(settings.camera);
  const tool::SimulationOptions& simulation = settings.simulation;
  frames_->setValue(simulation.path.frames);
  cols_->setValue(simulation.path.frame.width);
  rows_->setValue(simulation.path.frame.height);
  lowestOverlap_->setValue(simulation.path.lowestOverlap * 100);
  highestOverlap_->setValue(simulation.path.highestOverlap * 100);
  noise_->setValue(simulation.noise);
  blur_->setValue(simulation.blur);
  drift_->setValue(simulation.gain * 100);
}

void StartPage::showError(const QString& title, const QString& text) {
  banner_->show(MessageBanner::Kind::kError, title, text);
}

}  // namespace framequilt::viewer
