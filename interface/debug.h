// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace framequilt {

/// Hands a copy of `text` to `CrossPlatformOutputDebugString`, which takes text that it may write
/// to.
void debug(std::string_view text);

}  // namespace framequilt
