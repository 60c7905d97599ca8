// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/viewer_settings.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace framequilt::viewer {
namespace {

class ViewerSettingsTest : public testing::Test {
 protected:
  QTemporaryDir folder_;
  QSettings store_{folder_.filePath("viewer.ini"), QSettings::IniFormat};
};

TEST_F(ViewerSettingsTest, DefaultsAreThoseOfTheLibrary) {
  const ViewerSettings settings = loadSettings(store_);
  EXPECT_EQ(settings.stitching.cornerBudget, SessionOptions().cornerBudget);
  EXPECT_EQ(settings.stitching.maxRows, SessionOptions().maxRows);
  EXPECT_EQ(settings.stitching.scale, kAutoScale);
  EXPECT_EQ(settings.stitching.mode, "motion");
}

TEST_F(ViewerSettingsTest, AreThereAgainAfterARestart) {
  ViewerSettings settings;
  settings.stitching.mode = "overlap";
  settings.stitching.dynamicScene = true;
  settings.stitching.cornerBudget = 30;
  settings.stitching.maxCols = 30000;
  settings.simulation.path.frames = 7;
  settings.simulation.path.lowestOverlap = 0.3;
  settings.camera = 2;
  settings.folder = "/some/where";
  settings.appearance = "dark";
  settings.showsOverview = false;
  saveSettings(settings, store_);
  store_.sync();
  const QSettings again(store_.fileName(), QSettings::IniFormat);
  const ViewerSettings loaded = loadSettings(again);
  EXPECT_EQ(loaded.stitching.mode, "overlap");
  EXPECT_TRUE(loaded.stitching.dynamicScene);
  EXPECT_EQ(loaded.stitching.cornerBudget, 30);
  EXPECT_EQ(loaded.stitching.maxCols, 30000);
  EXPECT_EQ(loaded.simulation.path.frames, 7);
  EXPECT_DOUBLE_EQ(loaded.simulation.path.lowestOverlap, 0.3);
  EXPECT_EQ(loaded.camera, 2);
  EXPECT_EQ(loaded.folder, "/some/where");
  EXPECT_EQ(loaded.appearance, "dark");
  EXPECT_FALSE(loaded.showsOverview);
}

TEST_F(ViewerSettingsTest, NonsenseBecomesTheDefault) {
  store_.setValue("stitching/mode", "guess");
  store_.setValue("stitching/cornerBudget", 5000);
  store_.setValue("simulation/frames", "many");
  store_.setValue("camera", -1);
  store_.setValue("view/appearance", "pink");
  const ViewerSettings settings = loadSettings(store_);
  EXPECT_EQ(settings.stitching.mode, "motion");
  EXPECT_EQ(settings.stitching.cornerBudget, SessionOptions().cornerBudget);
  EXPECT_EQ(settings.simulation.path.frames, ViewerSettings().simulation.path.frames);
  EXPECT_EQ(settings.camera, 0);
  EXPECT_EQ(settings.appearance, "system");
}

TEST_F(ViewerSettingsTest, AMosaicBeyondTheEngineIsToldBeforehand) {
  tool::StitchOptions options;
  EXPECT_EQ(limitProblem(options), "");
  options.maxRows = options.maxCols = 50000;
  EXPECT_TRUE(limitProblem(options).contains("2147483648"));
}

}  // namespace
}  // namespace framequilt::viewer
