// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace framequilt::tool {

/// The page of tools/framequilt/page, its parts joined. What differs from run to run is still to be
/// filled in, at "<title-of-page>", "<page-json>" and "<report-json>", each of which it has once.
std::string_view pageText();

}  // namespace framequilt::tool
