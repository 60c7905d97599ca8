// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QSpinBox>
#include <QWidget>

#include "tools/viewer/model/viewer_settings.h"
#include "tools/viewer/window/message_banner.h"

namespace framequilt::viewer {

/// What one sees first: the four kinds of captures, and the parameters they are stitched with.
class StartPage : public QWidget {
  Q_OBJECT

 public:
  explicit StartPage(const ViewerSettings& settings, QWidget* parent = nullptr);

  /// Takes the parameters over; the other settings stay as they are.
  void read(ViewerSettings& settings) const;
  /// Shows the parameters.
  void write(const ViewerSettings& settings);

  void showError(const QString& title, const QString& text);
  void hideError() { banner_->hide(); }
  const MessageBanner& banner() const { return *banner_; }

 Q_SIGNALS:
  void folderWanted();
  void videoWanted();
  void cameraWanted();
  void simulationWanted();

 private:
  QWidget* makeChoices();
  QWidget* makeParameters();
  void addStitching(QFormLayout& form);
  void addSimulation(QFormLayout& form);

  MessageBanner* banner_;
  QComboBox* mode_;
  QComboBox* scene_;
  QComboBox* scale_;
  QComboBox* backend_;
  QSpinBox* cornerBudget_;
  QSpinBox* maxRows_;
  QSpinBox* maxCols_;
  QSpinBox* every_;
  QSpinBox* camera_;
  QSpinBox* frames_;
  QSpinBox* cols_;
  QSpinBox* rows_;
  QDoubleSpinBox* lowestOverlap_;
  QDoubleSpinBox* highestOverlap_;
  QDoubleSpinBox* noise_;
  QDoubleSpinBox* blur_;
  QDoubleSpinBox* drift_;
};

}  // namespace framequilt::viewer
