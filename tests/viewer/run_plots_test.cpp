// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/run_plots.h"

#include <gtest/gtest.h>

#include <cmath>

namespace framequilt::viewer {
namespace {

FrameResult joined() {
  FrameResult result;
  result.verdict = Verdict::kJoined;
  result.measures.matches = {40, 11};
  result.measures.offset = cv::Point(30, -4);
  result.measures.moved = Measure{25, 10};
  result.measures.overlap = Measure{75, 15};
  return result;
}

std::vector<QString> titlesOf(const RunPlots& plots) {
  std::vector<QString> titles;
  for (const Plot& plot : plots.plots()) titles.push_back(plot.title);
  return titles;
}

TEST(RunPlots, WhichOnesDependsOnTheCriterion) {
  RunPlots plots;
  plots.begin(Criterion::kMotion, false);
  EXPECT_EQ(titlesOf(plots), (std::vector<QString>{"Matches", "Offset", "Moved"}));
  plots.begin(Criterion::kMotion, true);
  EXPECT_EQ(titlesOf(plots).back(), "Change of the view");
  plots.begin(Criterion::kOverlap, false);
  EXPECT_EQ(titlesOf(plots).size(), 5U);
  EXPECT_EQ(titlesOf(plots)[3], "Brightness difference");
}

TEST(RunPlots, ValuesComeWithTheirLimits) {
  RunPlots plots;
  plots.begin(Criterion::kMotion, false);
  plots.add(1, joined());
  EXPECT_EQ(plots.plots()[0].series[0].values, std::vector<double>{40});
  ASSERT_EQ(plots.plots()[0].limits.size(), 1U);
  EXPECT_EQ(plots.plots()[0].limits[0].value, 11);
  EXPECT_TRUE(plots.plots()[0].limits[0].atLeast);
  EXPECT_EQ(plots.plots()[1].series[0].values, std::vector<double>{30});
  EXPECT_EQ(plots.plots()[1].series[1].values, std::vector<double>{-4});
  // Whoever has to overlap by 15 % may move by 85 %.
  ASSERT_EQ(plots.plots()[2].limits.size(), 2U);
  EXPECT_EQ(plots.plots()[2].limits[0].value, 10);
  EXPECT_EQ(plots.plots()[2].limits[1].value, 85);
  EXPECT_FALSE(plots.plots()[2].limits[1].atLeast);
}

TEST(RunPlots, WhatWasNotMeasuredIsMissing) {
  RunPlots plots;
  plots.begin(Criterion::kOverlap, false);
  plots.add(1, {});  // A first frame.
  for (const Plot& plot : plots.plots()) {
    for (const PlotSeries& series : plot.series) {
      ASSERT_EQ(series.values.size(), 1U) << plot.title.toStdString();
      EXPECT_TRUE(std::isnan(series.values[0])) << plot.title.toStdString();
    }
  }
}

TEST(RunPlots, AxisHasRoundMarksAndHoldsEverything) {
  Plot plot;
  EXPECT_EQ(axisOf(plot).low, 0);
  EXPECT_EQ(axisOf(plot).high, 1);
  plot.series = {{"", {-13, std::nan(""), 70}}};
  plot.limits = {{91, false}};
  const PlotAxis axis = axisOf(plot);
  EXPECT_EQ(axis.step, 50);
  EXPECT_EQ(axis.low, -50);
  EXPECT_EQ(axis.high, 100);
}

}  // namespace
}  // namespace framequilt::viewer
