// SPDX-License-Identifier: Apache-2.0
#include "interface/debug.h"

#include <string>

#include "framequilt/framequilt.h"

namespace framequilt {

void debug(std::string_view text) {
  std::string copy(text);
  CrossPlatformOutputDebugString(copy.data());
}

}  // namespace framequilt
