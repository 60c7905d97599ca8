// SPDX-License-Identifier: Apache-2.0
// What may be called from any thread, while another one stitches.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

#include "framequilt/framequilt_c.h"
#include "tests/support/random_images.h"
#include "tests/support/scene.h"

namespace {

constexpr int kRows = 240;
constexpr int kCols = 320;

/// Copies the whole box again and again until told to end; how often it had pixels in it.
int copyUntil(const std::atomic<bool>& end, const framequilt_session* session) {
  int copies = 0;
  // Once more after the end: the mosaic is there then, however slow this thread was.
  for (bool last = false; !last;) {
    last = end;
    framequilt_rect box{};
    EXPECT_EQ(framequilt_steady_box(session, &box), FRAMEQUILT_OK);
    const std::size_t bytes =
        static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height);
    std::vector<unsigned char> pixels(bytes + 1);
    EXPECT_EQ(framequilt_copy_region(session, &box, pixels.data(), 0, bytes), FRAMEQUILT_OK);
    copies += std::any_of(pixels.begin(), pixels.end(), [](auto byte) { return byte != 0; });
  }
  return copies;
}

framequilt_frame grayFrame(const Frame& pixels) {
  framequilt_frame frame{};
  frame.size = sizeof frame;
  frame.pixels = pixels.bytes.data();
  frame.rows = kRows;
  frame.cols = kCols;
  frame.channels = 1;
  frame.order = FRAMEQUILT_GRAY;
  return frame;
}

framequilt_session* openedSession() {
  framequilt_options options;
  EXPECT_EQ(framequilt_init_options(&options, sizeof options), FRAMEQUILT_OK);
  options.rows = kRows;
  options.cols = kCols;
  options.channels = 1;
  framequilt_session* session = nullptr;
  EXPECT_EQ(framequilt_open(&options, &session), FRAMEQUILT_OK);
  return session;
}

/// Calls of one thread on a session that others use, too. A stop is not among them.
void callAnything(framequilt_session* session, const Scene& scene, std::uint64_t seed) {
  Random random(seed);
  for (int i = 0; i < 150; ++i) {
    framequilt_code code = FRAMEQUILT_OK;
    bool mayBeEmpty = false;
    switch (random.between(0, 5)) {
      case 0: {
        framequilt_state state{};
        state.size = sizeof state;
        code = framequilt_get_state(session, &state);
        break;
      }
      case 1: {
        framequilt_view view{};
        view.size = sizeof view;
        mayBeEmpty = true;
        code = framequilt_view_mosaic(session, &view);
        break;
      }
      case 2: {
        framequilt_rect box{};
        EXPECT_EQ(framequilt_steady_box(session, &box), FRAMEQUILT_OK);
        unsigned char pixel = 0;
        const framequilt_rect corner{0, 0, 1, 1};
        EXPECT_EQ(framequilt_copy_region(session, &corner, &pixel, 0, 1), FRAMEQUILT_OK);
        EXPECT_TRUE(box.width == 0 || pixel != 0);
        break;
      }
      case 3: {
        framequilt_session* second = nullptr;
        framequilt_options options;
        EXPECT_EQ(framequilt_init_options(&options, sizeof options), FRAMEQUILT_OK);
        options.rows = kRows;
        options.cols = kCols;
        EXPECT_EQ(framequilt_open(&options, &second), FRAMEQUILT_E_SESSION_OPEN);
        break;
      }
      default: {
        const Frame pixels = scene.cut(20 + 80 * random.between(0, 5), 20, kRows, kCols);
        const framequilt_frame frame = grayFrame(pixels);
        framequilt_result result{};
        result.size = sizeof result;
        code = framequilt_add(session, &frame, &result);
      }
    }
    if (code == FRAMEQUILT_OK || (mayBeEmpty && code == FRAMEQUILT_E_EMPTY)) continue;
    EXPECT_EQ(code, FRAMEQUILT_E_BUSY);
    EXPECT_STREQ(framequilt_last_error(nullptr),
                 "another call on the session is under way: wait until it returns");
  }
}

/// The box of a session that nobody disturbs, with all frames.
std::vector<unsigned char> undisturbedMosaic(const Scene& scene) {
  framequilt_session* session = openedSession();
  for (int i = 0; i < 6; ++i) {
    const Frame pixels = scene.cut(20 + 80 * i, 20, kRows, kCols);
    const framequilt_frame frame = grayFrame(pixels);
    framequilt_result result{};
    result.size = sizeof result;
    EXPECT_EQ(framequilt_add(session, &frame, &result), FRAMEQUILT_OK);
  }
  const framequilt_rect box{0, 0, kCols + 400, kRows};
  std::vector<unsigned char> pixels(static_cast<std::size_t>(box.width) *
                                    static_cast<std::size_t>(box.height));
  EXPECT_EQ(framequilt_copy_region(session, &box, pixels.data(), 0, pixels.size()), FRAMEQUILT_OK);
  EXPECT_EQ(framequilt_close(session), FRAMEQUILT_OK);
  return pixels;
}

}  // namespace

TEST(CThreads, CallsThatMeetAreBusyAndHarmNothing) {
  const Scene scene(280, 760, 1, 12);
  const std::vector<unsigned char> expected = undisturbedMosaic(scene);
  EXPECT_EQ(std::count(expected.begin(), expected.end(), 0), 0);
  for (std::uint64_t round = 0; round < 2; ++round) {
    framequilt_session* session = openedSession();
    std::vector<std::thread> threads;
    for (std::uint64_t i = 0; i < 4; ++i) {
      threads.emplace_back([&, seed = 4 * round + i] { callAnything(session, scene, seed); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(framequilt_stop(session), FRAMEQUILT_OK);
    EXPECT_EQ(framequilt_close(session), FRAMEQUILT_OK);
    EXPECT_EQ(undisturbedMosaic(scene), expected) << round;
  }
}

TEST(CThreads, MosaicsAreCopiedWhileFramesJoin) {
  const Scene scene(400, 760, 1, 12);
  framequilt_session* session = openedSession();
  ASSERT_NE(session, nullptr);

  std::atomic<bool> end{false};
  int copies = 0;
  std::thread viewer([&] { copies = copyUntil(end, session); });
  int joined = 0;
  for (int i = 0; i < 6; ++i) {
    const Frame pixels = scene.cut(20 + 80 * i, 20 + 20 * i, kRows, kCols);
    const framequilt_frame frame = grayFrame(pixels);
    framequilt_result result{};
    result.size = sizeof result;
    EXPECT_EQ(framequilt_add(session, &frame, &result), FRAMEQUILT_OK);
    joined += result.verdict == FRAMEQUILT_JOINED ? 1 : 0;
  }
  end = true;
  viewer.join();
  EXPECT_EQ(joined, 5);
  EXPECT_GT(copies, 0);
  EXPECT_EQ(framequilt_close(session), FRAMEQUILT_OK);
}
