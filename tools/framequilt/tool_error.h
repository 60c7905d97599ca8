// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

namespace framequilt::tool {

/// Something the user has to change: one line that names what is wrong and the remedy.
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What the program returns to its caller.
enum ExitStatus : int {
  kDone = 0,
  kMosaicWritten = kDone,
  kNothingJoined = 1,
  kReplayDiffers = 1,
  kBadInput = 2
};

}  // namespace framequilt::tool
