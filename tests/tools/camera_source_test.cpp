// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/camera_source.h"

#include <gtest/gtest.h>

#include <atomic>
#include <opencv2/core/utils/logger.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "fake_camera.h"
#include "recorded_notes.h"
#include "tool_error_text.h"

using framequilt::tool::cameraNumber;
using framequilt::tool::InputSettings;
using framequilt::tool::namesCamera;
using framequilt::tool::openCamera;

namespace {

using Lines = std::vector<std::string>;

/// The text of the error that `action` ends with.
template <class Action>
std::string errorOf(Action action) {
  return toolErrorOf(action);
}

}  // namespace

TEST(CameraSource, ACameraIsNamedByItsNumber) {
  EXPECT_TRUE(namesCamera("camera:0"));
  EXPECT_TRUE(namesCamera("camera:x"));
  EXPECT_FALSE(namesCamera("camera"));
  EXPECT_FALSE(namesCamera("./camera:0"));
  EXPECT_EQ(cameraNumber("camera:0"), 0);
  EXPECT_EQ(cameraNumber("camera:12"), 12);
}

TEST(CameraSource, AnotherNumberIsRefusedWithTheRightForm) {
  for (const std::string input :
       {"camera:", "camera:x", "camera:-1", "camera:1x", "camera: 1", "camera:99999999999"}) {
    EXPECT_EQ(errorOf([&] { cameraNumber(input); }),
              "'" + input + "' names no camera: write camera:0 for the first one");
  }
}

TEST(CameraSource, ACameraThatIsNotThereIsNamed) {
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  EXPECT_EQ(errorOf([] { openCamera(97, {}); }),
            "camera 97 cannot be opened: check that it is connected and that no other program "
            "uses it");
}

TEST(CameraSource, TheNewestFrameIsGivenAndTheReplacedOnesCount) {
  FakeCamera camera;
  camera.give(FakeCamera::filled(1));
  const auto source = openCamera(0, camera.grabber(), {});
  EXPECT_EQ(source->shape().rows, 8);
  EXPECT_EQ(source->shape().cols, 10);
  EXPECT_EQ(source->shape().channels, 3);
  EXPECT_FALSE(source->count());
  for (int value : {2, 3, 4}) camera.give(FakeCamera::filled(value));
  camera.waitUntilAskedForMore();
  EXPECT_EQ(source->next()->name, "camera:0#1");
  const auto newest = source->next();
  ASSERT_TRUE(newest);
  EXPECT_EQ(newest->name, "camera:0#4");
  EXPECT_EQ(newest->path, "");
  EXPECT_EQ(newest->pixels.at<unsigned char>(0, 0), 4);
  EXPECT_EQ(source->dropped(), 2U);
  EXPECT_EQ(source->skipped(), 0U);
  camera.unplug();
}

TEST(CameraSource, EveryNthFrameIsTakenAndTheOthersAreNotDropped) {
  FakeCamera camera;
  for (int value : {1, 2, 3}) camera.give(FakeCamera::filled(value));
  InputSettings settings;
  settings.every = 3;
  const auto source = openCamera(0, camera.grabber(), settings);
  EXPECT_EQ(source->next()->name, "camera:0#1");
  for (int value : {4, 5, 6}) camera.give(FakeCamera::filled(value));
  EXPECT_EQ(source->next()->name, "camera:0#4");
  EXPECT_EQ(source->dropped(), 0U);
  camera.unplug();
}

TEST(CameraSource, ACameraThatIsUnpluggedEndsTheFramesWithANote) {
  FakeCamera camera;
  camera.give(FakeCamera::filled(1));
  RecordedNotes notes;
  const auto source = openCamera(3, camera.grabber(), notes.settings());
  camera.unplug();
  EXPECT_EQ(namesOfRest(*source), Lines{"camera:3#1"});
  EXPECT_FALSE(source->next());
  EXPECT_EQ(notes.lines, Lines{"camera 3 gives no more frames: the capture ends here"});
}

TEST(CameraSource, ACameraWithoutFramesIsNamed) {
  FakeCamera camera;
  camera.unplug();
  EXPECT_EQ(errorOf([&] { openCamera(3, camera.grabber(), {}); }),
            "camera 3 gives no frames: check that it is connected and that no other program uses "
            "it");
}

TEST(CameraSource, AnInterruptionEndsTheFramesOfAStalledCamera) {
  FakeCamera camera;
  camera.give(FakeCamera::filled(1));
  std::atomic<bool> stop = false;
  RecordedNotes notes;
  InputSettings settings = notes.settings();
  settings.interrupted = [&] { return stop.load(); };
  const auto source = openCamera(0, camera.grabber(), settings);
  EXPECT_TRUE(source->next());
  camera.waitUntilAskedForMore();  // It stalls from here on.
  stop = true;
  EXPECT_FALSE(source->next());
  EXPECT_EQ(notes.lines, Lines{});
  camera.unplug();
}

TEST(CameraSource, AnInterruptionWhileWaitingEndsTheWaiting) {
  FakeCamera camera;
  camera.give(FakeCamera::filled(1));
  int looks = 0;
  bool waiting = false;
  InputSettings settings;
  settings.interrupted = [&] { return waiting && ++looks > 3; };
  const auto source = openCamera(0, camera.grabber(), settings);
  EXPECT_TRUE(source->next());
  waiting = true;
  EXPECT_FALSE(source->next());
  camera.unplug();
}

TEST(CameraSource, AnInterruptionBeforeTheFirstFrameIsNoFailureOfTheCamera) {
  // Nothing wakes the camera: its thread is let go before the source waits for it.
  FakeCamera camera;
  int looks = 0;
  InputSettings settings;
  settings.interrupted = [&] {
    if (++looks == 2) camera.unplug();
    return looks >= 2;
  };
  EXPECT_EQ(errorOf([&] { openCamera(3, camera.grabber(), settings); }),
            "interrupted before camera 3 gave a frame");
}

TEST(CameraSource, AFailureOfTheGrabbingThreadIsThrownToTheTaker) {
  FakeCamera camera;
  camera.give(FakeCamera::filled(1));
  camera.give([]() -> cv::Mat { throw std::bad_alloc(); });
  const auto source = openCamera(0, camera.grabber(), {});
  EXPECT_TRUE(source->next());
  EXPECT_THROW(source->next(), std::bad_alloc);
}
