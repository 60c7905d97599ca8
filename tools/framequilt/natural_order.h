// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace framequilt::tool {

/// Orders names the way people count: runs of digits compare by their value, so that "f2" comes
/// before "f10". Names that differ only in leading zeros are ordered byte by byte.
bool naturalLess(std::string_view a, std::string_view b);

}  // namespace framequilt::tool
