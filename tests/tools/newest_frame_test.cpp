// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/newest_frame.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

using framequilt::tool::NewestFrame;
using framequilt::tool::NumberedFrame;

namespace {

NumberedFrame numbered(std::size_t number) { return {cv::Mat(), number}; }

}  // namespace

TEST(NewestFrame, ANewerFrameReplacesOneThatNobodyCameFor) {
  NewestFrame place;
  EXPECT_TRUE(place.put(numbered(1)));
  EXPECT_TRUE(place.put(numbered(2)));
  EXPECT_TRUE(place.put(numbered(3)));
  EXPECT_EQ(place.take({})->number, 3U);
  EXPECT_EQ(place.dropped(), 2U);
}

TEST(NewestFrame, AFrameThatWasTakenIsNotDropped) {
  NewestFrame place;
  place.put(numbered(1));
  EXPECT_EQ(place.take({})->number, 1U);
  place.put(numbered(2));
  EXPECT_EQ(place.take({})->number, 2U);
  EXPECT_EQ(place.dropped(), 0U);
}

TEST(NewestFrame, TakingWaitsForAFrame) {
  NewestFrame place;
  std::thread bringer([&] { place.put(numbered(7)); });
  EXPECT_EQ(place.take({})->number, 7U);
  bringer.join();
}

TEST(NewestFrame, ClosingEndsTheWaiting) {
  NewestFrame place;
  std::thread closer([&] { place.close(); });
  EXPECT_FALSE(place.take({}));
  closer.join();
}

TEST(NewestFrame, TheLastFrameOutlivesTheClosing) {
  NewestFrame place;
  place.put(numbered(1));
  place.close();
  EXPECT_FALSE(place.put(numbered(2)));
  EXPECT_EQ(place.take({})->number, 1U);
  EXPECT_FALSE(place.take({}));
  EXPECT_EQ(place.dropped(), 0U);
}

TEST(NewestFrame, AFailureIsThrownAfterTheLastFrame) {
  NewestFrame place;
  place.put(numbered(1));
  place.close(std::make_exception_ptr(std::runtime_error("unplugged")));
  EXPECT_EQ(place.take({})->number, 1U);
  EXPECT_THROW(place.take({}), std::runtime_error);
  EXPECT_THROW(place.take({}), std::runtime_error);
}

TEST(NewestFrame, AnInterruptionEndsTheWaitingThoughNothingWakesIt) {
  NewestFrame place;
  int looks = 0;
  EXPECT_FALSE(place.take([&] { return ++looks == 3; }));
  EXPECT_EQ(looks, 3);
}

TEST(NewestFrame, AnInterruptionCountsMoreThanAFrame) {
  NewestFrame place;
  place.put(numbered(1));
  EXPECT_FALSE(place.take([] { return true; }));
}
