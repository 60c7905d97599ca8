// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSettings>
#include <QString>

#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/simulation.h"
#include "tools/viewer/model/stitch_worker.h"

namespace framequilt::viewer {

/// Lowest and highest value that is offered, both included.
template <class Number>
struct Range {
  Number low;
  Number high;
};

constexpr Range<int> kCornerBudgetRange{0, kLargestCornerBudget};
/// Sides of the mosaic; their product has to stay below 2^31 (`limitProblem`).
constexpr Range<int> kMosaicSideRange{1000, 200000};
constexpr Range<int> kEveryRange{1, 1000};
constexpr Range<int> kCameraRange{0, 63};
constexpr Range<int> kSimulatedFramesRange{2, 2000};
constexpr Range<int> kSimulatedSideRange{64, 4096};
constexpr Range<double> kOverlapPercentRange{0, 95};
constexpr Range<double> kNoiseRange{0, 100};
constexpr Range<double> kBlurRange{0, 20};
constexpr Range<double> kDriftPercentRange{0, 95};

/// What is remembered from one start to the next.
struct ViewerSettings {
  ViewerSettings();

  tool::StitchOptions stitching;  ///< Of the outputs nothing.
  tool::SimulationOptions simulation;
  int camera = 0;
  QString folder;  ///< Opened last; so with `video`.
  QString video;
  QString saveFolder;
  bool savesOutlines = false;
  bool savesPlacements = true;
  bool savesReport = true;
  bool showsPath = true;
  bool showsOutlines = false;
  bool showsOverview = true;
  bool showsPanel = true;
  QString appearance = "system";  ///< "system", "light" or "dark".
};

/// Values that are missing or out of range become the defaults.
ViewerSettings loadSettings(const QSettings& store);
void saveSettings(const ViewerSettings& settings, QSettings& store);

/// What is wrong with the limit of the mosaic, and what to do; empty: nothing.
QString limitProblem(const tool::StitchOptions& options);

CaptureRequest requestForInput(const QString& path, const tool::StitchOptions& options);
CaptureRequest requestForCamera(int camera, const tool::StitchOptions& options);
CaptureRequest requestForSimulation(const tool::SimulationOptions& simulation,
                                    const tool::StitchOptions& options);

}  // namespace framequilt::viewer
