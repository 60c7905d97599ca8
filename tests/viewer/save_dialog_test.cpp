// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/save_dialog.h"

#include <gtest/gtest.h>

#include <QDialogButtonBox>
#include <QFile>
#include <QTemporaryDir>

namespace framequilt::viewer {
namespace {

TEST(SaveDialog, NamesTheOutputsBesideTheMosaic) {
  ViewerSettings settings;
  settings.saveFolder = "/data";
  settings.savesOutlines = true;
  settings.savesReport = false;
  const SaveDialog dialog(settings, "shots-mosaic.png");
  const tool::StitchOptions outputs = dialog.outputs();
  EXPECT_EQ(outputs.output, "/data/shots-mosaic.png");
  EXPECT_TRUE(outputs.outlines);
  EXPECT_EQ(outputs.placements, "/data/shots-mosaic-placements.csv");
  EXPECT_EQ(outputs.report, "");
}

TEST(SaveDialog, AnUnknownFormatCannotBeSaved) {
  const SaveDialog dialog(ViewerSettings(), "mosaic.png");
  auto* save = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save);
  EXPECT_TRUE(save->isEnabled());
  dialog.findChild<QLineEdit*>("file")->setText("/data/mosaic.xyz");
  EXPECT_FALSE(save->isEnabled());
}

TEST(SaveDialog, SaysThatAFileWillBeReplaced) {
  QTemporaryDir folder;
  QFile file(folder.filePath("mosaic.png"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ViewerSettings settings;
  settings.saveFolder = folder.path();
  const SaveDialog dialog(settings, "mosaic.png");
  auto* save = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save);
  EXPECT_EQ(save->text(), "&Replace");
}

}  // namespace
}  // namespace framequilt::viewer
