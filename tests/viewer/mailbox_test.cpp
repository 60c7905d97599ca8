// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/mailbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace framequilt::viewer {
namespace {

TEST(Mailbox, RingsOnceForMessagesThatLieTogether) {
  int rings = 0;
  Mailbox<int> box([&rings] { ++rings; });
  box.post(1);
  box.post(2);
  EXPECT_EQ(rings, 1);
  EXPECT_EQ(box.take(), (std::vector<int>{1, 2}));
  box.post(3);
  EXPECT_EQ(rings, 2);
}

TEST(Mailbox, AFullBoxHoldsUpTheSenderAndNothingIsLost) {
  constexpr int kMany = 1000;
  Mailbox<int> box([] {});
  std::thread sender([&box] {
    for (int i = 0; i < kMany; ++i) box.post(i);
  });
  std::vector<int> all;
  while (all.size() < kMany) {
    const std::vector<int> some = box.take();
    EXPECT_LE(some.size(), 16U);
    all.insert(all.end(), some.begin(), some.end());
    std::this_thread::yield();
  }
  sender.join();
  for (int i = 0; i < kMany; ++i) EXPECT_EQ(all[static_cast<std::size_t>(i)], i);
}

TEST(Mailbox, AClosedBoxHoldsUpNobody) {
  Mailbox<int> box([] {});
  std::thread sender([&box] {
    for (int i = 0; i < 100; ++i) box.post(i);
  });
  box.close();
  sender.join();
  EXPECT_TRUE(box.take().empty());
}

}  // namespace
}  // namespace framequilt::viewer
