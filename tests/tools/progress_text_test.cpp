// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/progress_text.h"

#include <gtest/gtest.h>

#include <optional>

using framequilt::tool::progressText;

TEST(ProgressText, TellsRateAndTimeLeft) {
  EXPECT_EQ(progressText({12, 40, 11, 1, 4.0}),
            "12 of 40 frames, 11 joined, 1 refused, 3.0 frames/s, 0:10 left");
  EXPECT_EQ(progressText({10, 1210, 10, 0, 10.0}),
            "10 of 1210 frames, 10 joined, 0 refused, 1.0 frames/s, 20:00 left");
  EXPECT_EQ(progressText({1, 7201, 1, 0, 1.0}),
            "1 of 7201 frames, 1 joined, 0 refused, 1.0 frames/s, 2:00:00 left");
}

TEST(ProgressText, TimeLeftIsRoundedUp) {
  EXPECT_EQ(progressText({10, 11, 10, 0, 1.0}),
            "10 of 11 frames, 10 joined, 0 refused, 10.0 frames/s, 0:01 left");
  EXPECT_EQ(progressText({11, 11, 10, 1, 1.1}),
            "11 of 11 frames, 10 joined, 1 refused, 10.0 frames/s, 0:00 left");
}

TEST(ProgressText, WithoutATotalNoTimeLeft) {
  EXPECT_EQ(progressText({30, std::nullopt, 29, 1, 10.0}),
            "30 frames, 29 joined, 1 refused, 3.0 frames/s");
  EXPECT_EQ(progressText({1, std::nullopt, 0, 1, 0.5}),
            "1 frame, 0 joined, 1 refused, 2.0 frames/s");
}

TEST(ProgressText, WithoutTimeSpentNoRate) {
  EXPECT_EQ(progressText({1, 5, 0, 1, 0}), "1 of 5 frames, 0 joined, 1 refused");
}

TEST(ProgressText, ATotalThatWasTooLowIsNoTimeLeft) {
  EXPECT_EQ(progressText({6, 5, 6, 0, 2}), "6 of 5 frames, 6 joined, 0 refused, 3.0 frames/s");
}
