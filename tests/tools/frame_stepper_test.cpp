// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_stepper.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "fake_camera.h"

using framequilt::tool::FrameStepper;

namespace {

std::vector<std::size_t> numbersOf(FrameStepper& frames) {
  std::vector<std::size_t> numbers;
  while (const auto frame = frames.next()) numbers.push_back(frame->number);
  return numbers;
}

}  // namespace

TEST(FrameStepper, GivesEveryFrameWithItsNumber) {
  FakeCamera camera;
  camera.give(FakeCamera::filled(1));
  camera.give(FakeCamera::filled(2));
  camera.unplug();
  FrameStepper frames(camera.grabber(), 1);
  const auto first = frames.next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->number, 1U);
  EXPECT_EQ(first->pixels.at<unsigned char>(0, 0), 1);
  EXPECT_EQ(frames.next()->number, 2U);
  EXPECT_FALSE(frames.next());
}

TEST(FrameStepper, PassesOverTheFramesBetweenWithoutDecodingThem) {
  FakeCamera camera;
  for (int i = 1; i <= 8; ++i) camera.give(FakeCamera::filled(i));
  camera.unplug();
  FrameStepper frames(camera.grabber(), 3);
  EXPECT_EQ(numbersOf(frames), (std::vector<std::size_t>{1, 4, 7}));
  EXPECT_EQ(camera.decoded(), 3U);
}

TEST(FrameStepper, ADamagedFrameIsEmptyAndKeepsItsNumber) {
  FakeCamera camera;
  camera.give(FakeCamera::filled(1));
  camera.give([] { return cv::Mat(); });
  camera.give(FakeCamera::filled(3));
  camera.unplug();
  FrameStepper frames(camera.grabber(), 1);
  EXPECT_FALSE(frames.next()->pixels.empty());
  const auto damaged = frames.next();
  EXPECT_TRUE(damaged->pixels.empty());
  EXPECT_EQ(damaged->number, 2U);
  EXPECT_EQ(frames.next()->number, 3U);
}
