// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/run_plots.h"

#include <QCoreApplication>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace framequilt::viewer {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// Marks along an axis, at most.
constexpr int kMostSteps = 4;

QString tr(const char* text) { return QCoreApplication::translate("RunPlots", text); }

void add(Plot& plot, const std::optional<Measure>& measure, bool atLeast) {
  plot.series.front().values.push_back(measure ? measure->value : kNone);
  if (measure) plot.limits = {{measure->limit, atLeast}};
}

/// 1, 2 or 5 times a power of ten, not below `least`.
double roundStep(double least) {
  const double power = std::pow(10, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= least * (1 - 1e-9)) return factor * power;
  }
  return 10 * power;
}

}  // namespace

void RunPlots::begin(Criterion criterion, bool dynamicScene) {
  criterion_ = criterion;
  dynamicScene_ = dynamicScene;
  verdicts_.clear();
  numbers_.clear();
  plots_ = {
      {tr("Matches"), "", {{tr("matches"), {}}}, {}},
      {tr("Offset"), tr("px"), {{tr("right"), {}}, {tr("down"), {}}}, {}},
      {tr("Moved"), tr("% of the side"), {{tr("moved"), {}}}, {}},
  };
  if (criterion == Criterion::kOverlap) {
    plots_.push_back(
        {tr("Brightness difference"), tr("gray levels"), {{tr("difference"), {}}}, {}});
    plots_.push_back({tr("Sharpness difference"), tr("levels"), {{tr("difference"), {}}}, {}});
  } else if (dynamicScene) {
    plots_.push_back({tr("Change of the view"), tr("gray levels"), {{tr("change"), {}}}, {}});
  }
}

void RunPlots::add(std::size_t number, const FrameResult& result) {
  numbers_.push_back(number);
  verdicts_.push_back(result.verdict);
  const Measures& measures = result.measures;
  const bool matched = result.verdict != Verdict::kWaiting && result.reason != Refusal::kMosaicFull;
  viewer::add(plots_[0], matched ? std::optional(measures.matches) : std::nullopt, true);
  const bool offset = measures.offset.has_value();
  plots_[1].series[0].values.push_back(offset ? measures.offset->x : kNone);
  plots_[1].series[1].values.push_back(offset ? measures.offset->y : kNone);
  addMoved(measures);
  if (criterion_ == Criterion::kOverlap) {
    viewer::add(plots_[3], measures.brightness, false);
    viewer::add(plots_[4], measures.sharpness, false);
  } else if (dynamicScene_) {
    viewer::add(plots_[3], measures.change, false);
  }
}

/// What is not moved overlaps, so the limit of the overlap is an upper one.
void RunPlots::addMoved(const Measures& measures) {
  Plot& plot = plots_[2];
  viewer::add(plot, measures.moved, true);
  if (measures.moved && measures.overlap)
    plot.limits.push_back({100 - measures.overlap->limit, false});
}

PlotAxis axisOf(const Plot& plot) {
  double low = 0;
  double high = 0;
  const auto include = [&](double value) {
    if (std::isnan(value)) return;
    low = std::min(low, value);
    high = std::max(high, value);
  };
  for (const PlotSeries& series : plot.series) {
    for (const double value : series.values) include(value);
  }
  for (const PlotLimit& limit : plot.limits) include(limit.value);
  if (high == low) return {};
  const double step = roundStep((high - low) / kMostSteps);
  return {std::floor(low / step) * step, std::ceil(high / step) * step, step};
}

}  // namespace framequilt::viewer
