// SPDX-License-Identifier: Apache-2.0
#include "interface/mosaic_lock.h"

namespace framequilt {

std::mutex& mosaicMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace framequilt
