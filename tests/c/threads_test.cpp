// SPDX-License-Identifier: Apache-2.0
// What may be called from any thread, while another one stitches.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

#include "framequilt/framequilt_c.h"
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

}  // namespace

TEST(CThreads, MosaicsAreCopiedWhileFramesJoin) {
  const Scene scene(400, 760, 1, 12);
  framequilt_options options;
  ASSERT_EQ(framequilt_init_options(&options, sizeof options), FRAMEQUILT_OK);
  options.rows = kRows;
  options.cols = kCols;
  options.channels = 1;
  framequilt_session* session = nullptr;
  ASSERT_EQ(framequilt_open(&options, &session), FRAMEQUILT_OK);

  std::atomic<bool> end{false};
  int copies = 0;
  std::thread viewer([&] { copies = copyUntil(end, session); });
  int joined = 0;
  for (int i = 0; i < 6; ++i) {
    const Frame pixels = scene.cut(20 + 80 * i, 20 + 20 * i, kRows, kCols);
    framequilt_frame frame{};
    frame.size = sizeof frame;
    frame.pixels = pixels.bytes.data();
    frame.rows = kRows;
    frame.cols = kCols;
    frame.channels = 1;
    frame.order = FRAMEQUILT_GRAY;
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
