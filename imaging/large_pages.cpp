// SPDX-License-Identifier: Apache-2.0
#include "imaging/large_pages.h"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#endif

namespace framequilt {

#if defined(__linux__)

void adviseLargePages(void* memory, std::size_t bytes) noexcept {
  constexpr std::size_t kLargePage = std::size_t{2} << 20U;
  if (bytes < 2 * kLargePage) return;
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t start = (address + page - 1) / page * page;
  const std::uintptr_t end = (address + bytes) / page * page;
  // A system that does not take the advice works all the same.
  (void)madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

#else

void adviseLargePages(void* /*memory*/, std::size_t /*bytes*/) noexcept {}

#endif

}  // namespace framequilt
