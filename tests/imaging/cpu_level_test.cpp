// SPDX-License-Identifier: Apache-2.0
#include "imaging/cpu_level.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "tests/support/each_level.h"

using framequilt::CpuFeatures;
using framequilt::CpuLevel;
using framequilt::cpuLevel;
using framequilt::cpuLevels;
using framequilt::highestLevel;
using framequilt::nameOf;
using framequilt::setCpuLevel;

namespace {

struct Squares {
  FRAMEQUILT_ROUTINE int run(const int* values, int count) {
    int sum = 0;
    for (int i = 0; i < count; ++i) sum += values[i] * values[i];
    return sum;
  }
};

TEST(CpuLevel, BaselineIsEverywhereAndLevelsAscend) {
  const std::vector<CpuLevel> levels = cpuLevels();
  ASSERT_FALSE(levels.empty());
  EXPECT_EQ(levels.front(), CpuLevel::kBaseline);
  EXPECT_TRUE(std::is_sorted(levels.begin(), levels.end()));
}

TEST(CpuLevel, AtFirstIsTheOneThatTheEnvironmentNames) {
  const char* const wanted = std::getenv("FRAMEQUILT_CPU_LEVEL");
  CpuLevel expected = cpuLevels().back();
  for (const CpuLevel level : cpuLevels()) {
    if (wanted != nullptr && std::string_view(wanted) == nameOf(level)) expected = level;
  }
  EXPECT_EQ(cpuLevel(), expected);
}

TEST(CpuLevel, TakesAllOfItsFeaturesAndThoseBelow) {
  const CpuFeatures all{true, true, true, true, true, true};
  EXPECT_EQ(highestLevel(all), CpuLevel::kAvx512);
  for (bool CpuFeatures::*feature :
       {&CpuFeatures::avx512f, &CpuFeatures::avx512bw, &CpuFeatures::avx512dq,
        &CpuFeatures::avx512vl, &CpuFeatures::avx512vbmi}) {
    CpuFeatures lacking = all;
    lacking.*feature = false;
    EXPECT_EQ(highestLevel(lacking), CpuLevel::kAvx2);
  }
  EXPECT_EQ(highestLevel({false, true, true, true, true, true}), CpuLevel::kBaseline);
  EXPECT_EQ(highestLevel({}), CpuLevel::kBaseline);
}

TEST(CpuLevel, ChosenOneIsInUse) {
  int visited = 0;
  atEachLevel([&] { EXPECT_EQ(cpuLevel(), cpuLevels()[static_cast<std::size_t>(visited++)]); });
  EXPECT_EQ(visited, static_cast<int>(cpuLevels().size()));
}

TEST(CpuLevel, OneThatTheMachineLacksBecomesTheHighestBelow) {
  const CpuLevel before = cpuLevel();
  setCpuLevel(CpuLevel::kAvx512);
  EXPECT_EQ(cpuLevel(), cpuLevels().back());
  setCpuLevel(before);
}

TEST(CpuLevel, EachHasAName) {
  EXPECT_STREQ(nameOf(CpuLevel::kBaseline), "baseline");
  EXPECT_STREQ(nameOf(CpuLevel::kAvx2), "avx2");
  EXPECT_STREQ(nameOf(CpuLevel::kAvx512), "avx512");
}

TEST(CpuLevel, RoutineRunsAtEachLevel) {
  std::vector<int> values(67);
  int expected = 0;
  for (int i = 0; i < 67; ++i) {
    values[static_cast<std::size_t>(i)] = i;
    expected += i * i;
  }
  atEachLevel([&] { EXPECT_EQ(framequilt::Leveled<Squares>::call(values.data(), 67), expected); });
}

}  // namespace
