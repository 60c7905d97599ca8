// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/save_dialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_format.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::viewer {
namespace {

/// "mosaic-report.json" beside "mosaic.png".
QString beside(const QString& mosaic, const QString& ending) {
  const QFileInfo info(mosaic);
  return info.dir().filePath(info.completeBaseName() + ending);
}

QStringList filesOf(const tool::StitchOptions& options) {
  QStringList files(QString::fromStdString(options.output));
  if (options.outlines) {
    files << QString::fromStdString(tool::outlinedCopyOf(options.output).string());
  }
  if (!options.placements.empty()) files << QString::fromStdString(options.placements);
  if (!options.report.empty()) files << QString::fromStdString(options.report);
  return files;
}

}  // namespace

SaveDialog::SaveDialog(const ViewerSettings& settings, const QString& name, QWidget* parent)
    : QDialog(parent),
      file_(new QLineEdit),
      outlines_(new QCheckBox(tr("A copy with the &outlines of the frames"))),
      placements_(new QCheckBox(tr("&Placements of the frames (CSV)"))),
      report_(new QCheckBox(tr("&Report of what was measured and decided (JSON)"))),
      note_(new QLabel) {
  setWindowTitle(tr("Save the mosaic"));
  setMinimumWidth(560);
  const QString folder = settings.saveFolder.isEmpty() ? QDir::homePath() : settings.saveFolder;
  file_->setObjectName("file");
  file_->setText(QDir(folder).filePath(name));
  outlines_->setChecked(settings.savesOutlines);
  placements_->setChecked(settings.savesPlacements);
  report_->setChecked(settings.savesReport);
  note_->setWordWrap(true);
  note_->setMinimumHeight(3 * fontMetrics().lineSpacing());
  note_->setAlignment(Qt::AlignTop | Qt::AlignLeft);

  auto* choose = new QPushButton(tr("&Browse..."));
  choose->setAutoDefault(false);
  connect(choose, &QPushButton::clicked, this, &SaveDialog::browse);
  auto* line = new QHBoxLayout;
  line->addWidget(file_, 1);
  line->addWidget(choose);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
  save_ = buttons->button(QDialogButtonBox::Save);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(10);
  layout->setContentsMargins(18, 16, 18, 14);
  layout->addWidget(new QLabel(tr("Mosaic (.png, .jpg, .bmp or, of any size, .tif):")));
  layout->addLayout(line);
  layout->addWidget(outlines_);
  layout->addWidget(placements_);
  layout->addWidget(report_);
  layout->addWidget(note_);
  layout->addWidget(buttons);
  connect(file_, &QLineEdit::textChanged, this, &SaveDialog::changed);
  for (QCheckBox* box : {outlines_, placements_, report_}) {
    connect(box, &QCheckBox::toggled, this, &SaveDialog::changed);
  }
  changed();
}

void SaveDialog::browse() {
  const QString chosen = QFileDialog::getSaveFileName(
      this, windowTitle(), file_->text(), tr("Pictures (*.png *.jpg *.jpeg *.bmp *.tif *.tiff)"),
      nullptr, QFileDialog::DontConfirmOverwrite);
  if (!chosen.isEmpty()) file_->setText(chosen);
}

tool::StitchOptions SaveDialog::outputs() const {
  tool::StitchOptions options;
  const QString file = file_->text().trimmed();
  options.output = file.toStdString();
  options.outlines = outlines_->isChecked();
  if (placements_->isChecked()) options.placements = beside(file, "-placements.csv").toStdString();
  if (report_->isChecked()) options.report = beside(file, "-report.json").toStdString();
  return options;
}

/// Says beforehand what is wrong with the name, or which files will be replaced.
void SaveDialog::changed() {
  const tool::StitchOptions options = outputs();
  QString problem;
  try {
    tool::requireWritableFormat(options.output);
  } catch (const tool::ToolError& error) {
    problem = QString::fromStdString(error.what());
  }
  save_->setEnabled(problem.isEmpty());
  QStringList replaced;
  for (const QString& file : filesOf(options)) {
    if (QFileInfo::exists(file)) replaced << QFileInfo(file).fileName();
  }
  save_->setText(replaced.isEmpty() || !problem.isEmpty() ? tr("&Save") : tr("&Replace"));
  if (!problem.isEmpty()) return note_->setText(problem);
  note_->setText(replaced.isEmpty() ? QString()
                                    : tr("Files that will be replaced: ") + replaced.join(", "));
}

void SaveDialog::remember(ViewerSettings& settings) const {
  settings.saveFolder = QFileInfo(file_->text()).absolutePath();
  settings.savesOutlines = outlines_->isChecked();
  settings.savesPlacements = placements_->isChecked();
  settings.savesReport = report_->isChecked();
}

}  // namespace framequilt::viewer
