// SPDX-License-Identifier: Apache-2.0
#include "cpu/corner_lane.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <functional>
#include <optional>

namespace {

using framequilt::CornerLane;

std::atomic<bool> run, request;
pthread_t id;

CornerLane& lane() {
  static CornerLane instance(run, request, id, /*lends=*/true);
  return instance;
}

TEST(CornerLane, WorkerThatRefusesLeavesWithTheRequestRaised) {
  run = true;
  request = false;
  ASSERT_TRUE(lane().start([](void* /*unused*/) -> void* {
    EXPECT_FALSE(lane().serveUntilRefusal([]() -> std::optional<bool> { return {}; }));
    return nullptr;
  }));
  lane().request();
  EXPECT_FALSE(lane().await(CornerLane::Abandoned::kLeftRaised));
  EXPECT_TRUE(request);
  const std::function<void()> work = [] { ADD_FAILURE() << "nobody is there"; };
  EXPECT_FALSE(lane().lend(work));
  EXPECT_FALSE(lane().await());
  EXPECT_FALSE(request) << "withdrawn";
  lane().dismiss();
  EXPECT_TRUE(lane().join());
  EXPECT_FALSE(lane().join()) << "there is no thread any more";
}

}  // namespace
