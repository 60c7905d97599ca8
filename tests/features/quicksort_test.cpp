// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "features/selection.h"
#include "tests/features/counted.h"
#include "tests/features/plain_sort.h"
#include "tests/support/random_images.h"

namespace {

using Keys = std::vector<float>;
using Indices = std::vector<int>;

void expectLikePlainSort(const Keys& keys) {
  Keys sorted = keys;
  Indices order = counted(keys.size());
  Keys plain = keys;
  Indices plainOrder = order;
  const int last = static_cast<int>(keys.size()) - 1;
  qsort(sorted, order, 0, last);
  plainSort(plain, plainOrder, 0, last);
  EXPECT_EQ(sorted, plain);
  EXPECT_EQ(order, plainOrder);
}

TEST(Quicksort, OrderOfEqualKeysIsPinned) {
  Keys keys = {3, 1, 3, 2};
  Indices index = {0, 1, 2, 3};
  qsort(keys, index, 0, 3);
  EXPECT_EQ(keys, (Keys{3, 3, 2, 1}));
  EXPECT_EQ(index, (Indices{0, 2, 3, 1}));
}

TEST(Quicksort, EqualKeysStayWhereTheyAre) {
  Keys keys(9, 5.0F);
  Indices index = counted(9);
  qsort(keys, index, 0, 8);
  EXPECT_EQ(index, counted(9));
}

TEST(Quicksort, SortsOnlyTheRangeGiven) {
  Keys keys = {1, 2, 3, 4, 5};
  Indices index = counted(5);
  qsort(keys, index, 1, 3);
  EXPECT_EQ(keys, (Keys{1, 4, 3, 2, 5}));
  EXPECT_EQ(index, (Indices{0, 3, 2, 1, 4}));
}

TEST(Quicksort, EveryShortListIsLikeThePlainSort) {
  // All lists of up to seven keys from {0, 1, 2, 3}: 4^7 of the longest.
  for (int length = 0; length <= 7; ++length) {
    for (int code = 0; code < 1 << (2 * length); ++code) {
      Keys keys;
      for (int k = 0; k < length; ++k) keys.push_back(static_cast<float>((code >> (2 * k)) & 3));
      expectLikePlainSort(keys);
      if (HasFailure()) FAIL() << "length " << length << ", code " << code;
    }
  }
}

TEST(Quicksort, RandomListsWithManyTiesAreLikeThePlainSort) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int distinct = random.between(1, 40);
    Keys keys(static_cast<std::size_t>(random.between(1, 400)));
    for (auto& key : keys) key = static_cast<float>(random.between(0, distinct));
    expectLikePlainSort(keys);
  }
}

TEST(Quicksort, OrderedShapesAreLikeThePlainSort) {
  constexpr int kCount = 500;
  Keys ascending;
  for (int k = 0; k < kCount; ++k) {
    const int each = k / 3;
    ascending.push_back(static_cast<float>(each));
  }
  Keys descending(ascending.rbegin(), ascending.rend());
  Keys organPipe = ascending;
  organPipe.insert(organPipe.end(), descending.begin(), descending.end());
  Keys valley = descending;
  valley.insert(valley.end(), ascending.begin(), ascending.end());
  for (const Keys& keys : {ascending, descending, organPipe, valley}) {
    expectLikePlainSort(keys);
    for (unsigned seed = 1; seed <= 10; ++seed) {
      SCOPED_TRACE(seed);
      Random random(seed);
      Keys disturbed = keys;
      const int last = static_cast<int>(keys.size()) - 1;
      for (int swaps = 0; swaps < 3; ++swaps) {
        std::swap(disturbed[static_cast<std::size_t>(random.between(0, last))],
                  disturbed[static_cast<std::size_t>(random.between(0, last))]);
      }
      expectLikePlainSort(disturbed);
    }
  }
}

/// Runs `action` on a thread with a stack of 256 KiB.
template <class Action>
void onSmallStack(Action action) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{256} * 1024), 0);
  pthread_t thread{};
  const auto body = [](void* context) -> void* {
    (*static_cast<Action*>(context))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, body, &action), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

constexpr int kMillion = 1000000;

TEST(Quicksort, MillionAscendingKeysNeedNeitherStackNorTime) {
  Keys keys(kMillion);
  std::iota(keys.begin(), keys.end(), 0.0F);
  Indices index = counted(keys.size());
  onSmallStack([&] { qsort(keys, index, 0, kMillion - 1); });
  EXPECT_TRUE(std::is_sorted(keys.rbegin(), keys.rend()));
  Indices reversed = counted(keys.size());
  std::reverse(reversed.begin(), reversed.end());
  EXPECT_EQ(index, reversed);
}

TEST(Quicksort, MillionEqualKeysNeedNeitherStackNorTime) {
  Keys keys(kMillion, 65535.0F);
  Indices index = counted(keys.size());
  onSmallStack([&] { qsort(keys, index, 0, kMillion - 1); });
  EXPECT_EQ(index, counted(keys.size()));
}

TEST(Quicksort, MillionDescendingKeysStay) {
  Keys keys(kMillion);
  std::iota(keys.rbegin(), keys.rend(), 0.0F);
  Indices index = counted(keys.size());
  onSmallStack([&] { qsort(keys, index, 0, kMillion - 1); });
  EXPECT_EQ(index, counted(keys.size()));
}

TEST(Quicksort, RangeOutsideTheListsIsLeftAlone) {
  const std::pair<int, int> ranges[] = {{-1, 2}, {0, 3}, {0, 100}, {2, 1}, {2, 2}};
  for (const auto& [low, high] : ranges) {
    Keys keys = {1, 2, 3};
    Indices index = {0, 1, 2};
    qsort(keys, index, low, high);
    EXPECT_EQ(keys, (Keys{1, 2, 3})) << low << ".." << high;
  }
  Keys keys = {1, 2, 3};
  Indices shortIndex = {0, 1};
  qsort(keys, shortIndex, 0, 2);
  EXPECT_EQ(keys, (Keys{1, 2, 3}));
}

TEST(Quicksort, RangeWithANotANumberIsLeftAlone) {
  Keys keys = {1, std::numeric_limits<float>::quiet_NaN(), 3};
  Indices index = {0, 1, 2};
  qsort(keys, index, 0, 2);
  EXPECT_EQ(index, (Indices{0, 1, 2}));
}

}  // namespace
