// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace framequilt {

/// Hands a copy of `text`, at most 255 bytes of it, to `CrossPlatformOutputDebugString`, which
/// takes text that it may write to. Takes no memory: a stop says things, and a call that found
/// none.
void debug(std::string_view text);

}  // namespace framequilt
