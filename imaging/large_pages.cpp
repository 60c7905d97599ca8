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
  const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
  const std::size_t whole = (bytes - before) / page * page;
  // A system that does not take the advice works all the same.
  (void)madvise(static_cast<unsigned char*>(memory) + before, whole, MADV_HUGEPAGE);
}

#else

void adviseLargePages(void* /*memory*/, std::size_t /*bytes*/) noexcept {}

#endif

}  // namespace framequilt
