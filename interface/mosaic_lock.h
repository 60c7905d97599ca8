// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>

namespace framequilt {

/// Held by a backend while it writes pixels of the mosaic or replaces it, and by whoever copies
/// pixels on another thread. One for the process, as there is one mosaic.
std::mutex& mosaicMutex();

}  // namespace framequilt
