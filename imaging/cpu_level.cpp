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

CpuLevel levelOfMachine() {
#ifdef FRAMEQUILT_HAS_X86_LEVELS
  __builtin_cpu_init();
  return highestLevel(
      {__builtin_cpu_supports("avx2") != 0, __builtin_cpu_supports("avx512f") != 0,
       __builtin_cpu_supports("avx512bw") != 0, __builtin_cpu_supports("avx512dq") != 0,
       __builtin_cpu_supports("avx512vl") != 0, __builtin_cpu_supports("avx512vbmi") != 0});
#else
  return CpuLevel::kBaseline;
#endif
}

CpuLevel highestUpTo(CpuLevel limit) { return std::min(limit, levelOfMachine()); }

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

CpuLevel highestLevel(const CpuFeatures& has) noexcept {
  if (!has.avx2) return CpuLevel::kBaseline;
  const bool avx512 = has.avx512f && has.avx512bw && has.avx512dq && has.avx512vl && has.avx512vbmi;
  return avx512 ? CpuLevel::kAvx512 : CpuLevel::kAvx2;
}

std::vector<CpuLevel> cpuLevels() {
  return {std::begin(kAll), std::upper_bound(std::begin(kAll), std::end(kAll), levelOfMachine())};
}

CpuLevel cpuLevel() noexcept { return inUse().load(std::memory_order_relaxed); }

void setCpuLevel(CpuLevel level) noexcept {
  inUse().store(highestUpTo(level), std::memory_order_relaxed);
}

}  // namespace framequilt
