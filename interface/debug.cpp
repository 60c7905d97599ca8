// SPDX-License-Identifier: Apache-2.0
#include "interface/debug.h"

#include <algorithm>
#include <array>

#include "framequilt/framequilt.h"

namespace framequilt {

void debug(std::string_view text) {
  std::array<char, 256> copy{};
  std::copy_n(text.data(), std::min(text.size(), copy.size() - 1), copy.data());
  CrossPlatformOutputDebugString(copy.data());
}

}  // namespace framequilt
