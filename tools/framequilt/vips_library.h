// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vips/vips.h>

#include <memory>

namespace framequilt::tool {

/// Gives one reference back.
struct GObjectRelease {
  void operator()(void* object) const { g_object_unref(object); }
};

template <class Object>
using GObjectPtr = std::unique_ptr<Object, GObjectRelease>;

/// Starts libvips at the first call, so that a run that needs no picture does not load its parts.
/// libvips then keeps no results and prints nothing. \throws ToolError.
void startVips();

}  // namespace framequilt::tool
