// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/simulated_source.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

namespace framequilt::tool {
namespace {

SimulationOptions smallOptions() {
  SimulationOptions options;
  options.path.frames = 3;
  options.path.frame = {64, 48};
  return options;
}

TEST(SimulatedSource, GivesTheFramesOfTheCapture) {
  const auto source = openSimulation(smallOptions(), {});
  EXPECT_EQ(source->count(), std::size_t{3});
  EXPECT_EQ(source->shape().cols, 64);
  EXPECT_EQ(source->shape().channels, 3);
  const auto first = source->next();
  const auto second = source->next();
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->number, 1U);
  EXPECT_EQ(second->name, "simulated#2");
  EXPECT_EQ(second->pixels.size(), cv::Size(64, 48));
  EXPECT_NE(cv::norm(first->pixels, second->pixels), 0);
  EXPECT_TRUE(source->next());
  EXPECT_FALSE(source->next());
}

TEST(SimulatedSource, GrayFramesHaveOneChannel) {
  SimulationOptions options = smallOptions();
  options.gray = true;
  const auto source = openSimulation(options, {});
  EXPECT_EQ(source->shape().channels, 1);
  EXPECT_EQ(source->next()->pixels.channels(), 1);
}

TEST(SimulatedSource, EndsWhenItIsInterrupted) {
  bool stopped = false;
  InputSettings settings;
  settings.interrupted = [&stopped] { return stopped; };
  const auto source = openSimulation(smallOptions(), settings);
  EXPECT_TRUE(source->next());
  stopped = true;
  EXPECT_FALSE(source->next());
}

}  // namespace
}  // namespace framequilt::tool
