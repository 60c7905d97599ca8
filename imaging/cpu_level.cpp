// SPDX-License-Identifier: Apache-2.0
#include "imaging/cpu_level.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace framequilt {
namespace {

constexpr CpuLevel kAll[] = {CpuLevel::kBaseline, CpuLevel::kAvx2, CpuLevel::kAvx512};

bool runs(CpuLevel level) {
  if (level == CpuLevel::kBaseline) return true;
#ifdef FRAMEQUILT_HAS_X86_LEVELS
  __builtin_cpu_init();
  const bool avx2 = __builtin_cpu_supports("avx2") != 0;
  if (level == CpuLevel::kAvx2) return avx2;
  return avx2 && __builtin_cpu_supports("avx512f") != 0 &&
         __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
         __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vbmi") != 0;
#else
  return false;
#endif
}

/// The highest that runs here and is not above `limit`.
CpuLevel highestUpTo(CpuLevel limit) {
  CpuLevel highest = CpuLevel::kBaseline;
  for (const CpuLevel level : kAll) {
    if (level <= limit && runs(level)) highest = level;
  }
  return highest;
}

CpuLevel levelAtFirst() {
  const char* const wanted = std::getenv("FRAMEQUILT_CPU_LEVEL");
  for (const CpuLevel level : kAll) {
    if (wanted != nullptr && std::string_view(wanted) == nameOf(level)) return highestUpTo(level);
  }
  return highestUpTo(CpuLevel::kAvx512);
}

std::atomic<CpuLevel>& inUse() {
  static std::atomic<CpuLevel> level{levelAtFirst()};
  return level;
}

}  // namespace

const char* nameOf(CpuLevel level) noexcept {
  switch (level) {
    case CpuLevel::kAvx2:
      return "avx2";
    case CpuLevel::kAvx512:
      return "avx512";
    default:
      return "baseline";
  }
}

std::vector<CpuLevel> cpuLevels() {
  std::vector<CpuLevel> levels;
  std::copy_if(std::begin(kAll), std::end(kAll), std::back_inserter(levels), runs);
  return levels;
}

CpuLevel cpuLevel() noexcept { return inUse().load(std::memory_order_relaxed); }

void setCpuLevel(CpuLevel level) noexcept {
  inUse().store(highestUpTo(level), std::memory_order_relaxed);
}

}  // namespace framequilt
