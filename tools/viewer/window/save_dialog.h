// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "tools/viewer/model/viewer_settings.h"

namespace framequilt::viewer {

/// Asks for the file of the mosaic and for what else is to be written beside it.
class SaveDialog : public QDialog {
  Q_OBJECT

 public:
  /// \param name  Of the file that is proposed, without folder.
  SaveDialog(const ViewerSettings& settings, const QString& name, QWidget* parent = nullptr);

  /// Names of the files to write.
  tool::StitchOptions outputs() const;
  void remember(ViewerSettings& settings) const;

 private:
  void browse();
  void changed();

  QLineEdit* file_;
  QCheckBox* outlines_;
  QCheckBox* placements_;
  QCheckBox* report_;
  QLabel* note_;
  QPushButton* save_;
};

}  // namespace framequilt::viewer
