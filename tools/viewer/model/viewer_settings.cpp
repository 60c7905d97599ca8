// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/viewer_settings.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <cstdint>
#include <limits>

#include "tools/framequilt/simulated_source.h"

namespace framequilt::viewer {
namespace {

constexpr int kDemoFrames = 40;

template <class Number>
Number within(const QSettings& store, const char* key, Range<Number> range, Number standard) {
  bool isNumber = false;
  const double value = store.value(key).toDouble(&isNumber);
  const bool fits = isNumber && value >= range.low && value <= range.high;
  return fits ? static_cast<Number>(value) : standard;
}

std::string oneOf(const QSettings& store, const char* key, const QStringList& choices,
                  const std::string& standard) {
  const QString value = store.value(key).toString();
  return choices.contains(value) ? value.toStdString() : standard;
}

double share(const QSettings& store, const char* key, Range<double> percent, double standard) {
  return within(store, key, percent, standard * 100) / 100;
}

void loadStitching(const QSettings& store, tool::StitchOptions& options) {
  options.mode = oneOf(store, "stitching/mode", {"motion", "overlap"}, options.mode);
  options.dynamicScene = store.value("stitching/dynamic", options.dynamicScene).toBool();
  options.backend = oneOf(store, "stitching/backend", {"auto", "opencl", "host"}, options.backend);
  options.scale = within(store, "stitching/scale", Range<int>{kAutoScale, 2}, options.scale);
  options.cornerBudget =
      within(store, "stitching/cornerBudget", kCornerBudgetRange, options.cornerBudget);
  options.maxRows = within(store, "stitching/maxRows", kMosaicSideRange, options.maxRows);
  options.maxCols = within(store, "stitching/maxCols", kMosaicSideRange, options.maxCols);
  options.every = within(store, "stitching/every", kEveryRange, options.every);
}

void loadSimulation(const QSettings& store, tool::SimulationOptions& options) {
  tool::PathOptions& path = options.path;
  path.frames = within(store, "simulation/frames", kSimulatedFramesRange, path.frames);
  path.frame.width = within(store, "simulation/cols", kSimulatedSideRange, path.frame.width);
  path.frame.height = within(store, "simulation/rows", kSimulatedSideRange, path.frame.height);
  const double low =
      share(store, "simulation/lowestOverlap", kOverlapPercentRange, path.lowestOverlap);
  const double high =
      share(store, "simulation/highestOverlap", kOverlapPercentRange, path.highestOverlap);
  if (low <= high) {
    path.lowestOverlap = low;
    path.highestOverlap = high;
  }
  options.noise = within(store, "simulation/noise", kNoiseRange, options.noise);
  options.blur = within(store, "simulation/blur", kBlurRange, options.blur);
  options.gain = share(store, "simulation/gain", kDriftPercentRange, options.gain);
}

}  // namespace

/// The simulation is one that shows something: it winds, and its steps differ.
ViewerSettings::ViewerSettings() {
  simulation.path.shape = tool::PathShape::kDrift;
  simulation.path.frames = kDemoFrames;
  simulation.path.lowestOverlap = 0.5;
  simulation.path.highestOverlap = 0.8;
}

ViewerSettings loadSettings(const QSettings& store) {
  ViewerSettings settings;
  loadStitching(store, settings.stitching);
  loadSimulation(store, settings.simulation);
  settings.camera = within(store, "camera", kCameraRange, settings.camera);
  settings.folder = store.value("folder").toString();
  settings.video = store.value("video").toString();
  settings.saveFolder = store.value("save/folder").toString();
  settings.savesOutlines = store.value("save/outlines", settings.savesOutlines).toBool();
  settings.savesPlacements = store.value("save/placements", settings.savesPlacements).toBool();
  settings.savesReport = store.value("save/report", settings.savesReport).toBool();
  settings.showsPath = store.value("view/path", settings.showsPath).toBool();
  settings.showsOutlines = store.value("view/outlines", settings.showsOutlines).toBool();
  settings.showsOverview = store.value("view/overview", settings.showsOverview).toBool();
  settings.showsPanel = store.value("view/panel", settings.showsPanel).toBool();
  settings.appearance = QString::fromStdString(
      oneOf(store, "view/appearance", {"system", "light", "dark"}, "system"));
  return settings;
}

void saveSettings(const ViewerSettings& settings, QSettings& store) {
  const tool::StitchOptions& stitching = settings.stitching;
  store.setValue("stitching/mode", QString::fromStdString(stitching.mode));
  store.setValue("stitching/dynamic", stitching.dynamicScene);
  store.setValue("stitching/backend", QString::fromStdString(stitching.backend));
  store.setValue("stitching/scale", stitching.scale);
  store.setValue("stitching/cornerBudget", stitching.cornerBudget);
  store.setValue("stitching/maxRows", stitching.maxRows);
  store.setValue("stitching/maxCols", stitching.maxCols);
  store.setValue("stitching/every", stitching.every);
  const tool::PathOptions& path = settings.simulation.path;
  store.setValue("simulation/frames", path.frames);
  store.setValue("simulation/cols", path.frame.width);
  store.setValue("simulation/rows", path.frame.height);
  store.setValue("simulation/lowestOverlap", path.lowestOverlap * 100);
  store.setValue("simulation/highestOverlap", path.highestOverlap * 100);
  store.setValue("simulation/noise", settings.simulation.noise);
  store.setValue("simulation/blur", settings.simulation.blur);
  store.setValue("simulation/gain", settings.simulation.gain * 100);
  store.setValue("camera", settings.camera);
  store.setValue("folder", settings.folder);
  store.setValue("video", settings.video);
  store.setValue("save/folder", settings.saveFolder);
  store.setValue("save/outlines", settings.savesOutlines);
  store.setValue("save/placements", settings.savesPlacements);
  store.setValue("save/report", settings.savesReport);
  store.setValue("view/path", settings.showsPath);
  store.setValue("view/outlines", settings.showsOutlines);
  store.setValue("view/overview", settings.showsOverview);
  store.setValue("view/panel", settings.showsPanel);
  store.setValue("view/appearance", settings.appearance);
}

QString limitProblem(const tool::StitchOptions& options) {
  const std::int64_t pixels = std::int64_t{options.maxRows} * options.maxCols;
  if (pixels <= std::numeric_limits<std::int32_t>::max()) return {};
  return QCoreApplication::translate(
      "ViewerSettings", "rows x columns have to stay below 2147483648 pixels: lower one of them");
}

CaptureRequest requestForInput(const QString& path, const tool::StitchOptions& options) {
  CaptureRequest request{QFileInfo(path).fileName().toStdString(), {}, options};
  request.options.inputs = {path.toStdString()};
  if (request.name.empty()) request.name = path.toStdString();
  request.open = [inputs = request.options.inputs](const tool::InputSettings& settings) {
    return tool::openInputs(inputs, settings);
  };
  return request;
}

CaptureRequest requestForCamera(int camera, const tool::StitchOptions& options) {
  CaptureRequest request = requestForInput("camera:" + QString::number(camera), options);
  request.name = "camera " + std::to_string(camera);
  return request;
}

CaptureRequest requestForSimulation(const tool::SimulationOptions& simulation,
                                    const tool::StitchOptions& options) {
  return {"simulated capture",
          [simulation](const tool::InputSettings& settings) {
            return tool::openSimulation(simulation, settings);
          },
          options};
}

}  // namespace framequilt::viewer
