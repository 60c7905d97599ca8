// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <QString>
#include <cstddef>
#include <vector>

namespace framequilt::viewer {

/// One line of a plot: a value for each frame, NaN where none was measured.
struct PlotSeries {
  QString name;
  std::vector<double> values;
};

/// A line that values have to stay on one side of.
struct PlotLimit {
  double value = 0;
  bool atLeast = false;  ///< Values have to lie above it, else below.
};

struct Plot {
  QString title;
  QString unit;  ///< Empty for a count.
  std::vector<PlotSeries> series;
  std::vector<PlotLimit> limits;  ///< Empty until a frame has been held against them.
};

/// Lowest and highest value of an axis, and the distance of its marks.
struct PlotAxis {
  double low = 0;
  double high = 1;
  double step = 1;
};

/// What was measured of each frame, for plots: which ones depends on the criterion.
class RunPlots {
 public:
  void begin(Criterion criterion, bool dynamicScene);
  /// \param number  Of the frame in the capture, from 1.
  void add(std::size_t number, const FrameResult& result);

  const std::vector<Plot>& plots() const { return plots_; }
  /// A frame a value.
  const std::vector<Verdict>& verdicts() const { return verdicts_; }
  const std::vector<std::size_t>& numbers() const { return numbers_; }

 private:
  void addMoved(const Measures& measures);

  Criterion criterion_ = Criterion::kMotion;
  bool dynamicScene_ = false;
  std::vector<Plot> plots_;
  std::vector<Verdict> verdicts_;
  std::vector<std::size_t> numbers_;
};

/// An axis with round marks for all values and limits; 0 is on it.
PlotAxis axisOf(const Plot& plot);

}  // namespace framequilt::viewer
