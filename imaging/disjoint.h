// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>

namespace framequilt {

/// Whether two stretches of memory share no byte.
inline bool disjoint(const unsigned char* a, std::size_t aBytes, const unsigned char* b,
                     std::size_t bBytes) noexcept {
  const std::less_equal<> before;
  return before(a + aBytes, b) || before(b + bBytes, a);
}

}  // namespace framequilt
