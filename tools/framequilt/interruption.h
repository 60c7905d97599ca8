// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csignal>

namespace framequilt::tool {

/// While it lives, the first SIGINT (Ctrl-C), SIGTERM or SIGHUP (its terminal was closed) is a wish
/// to finish early; a second one of its kind ends the program at once. One at a time.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /// From any thread.
  static bool wanted();

 private:
  struct sigaction formerInterrupt_ {};
  struct sigaction formerTerminate_ {};
  struct sigaction formerHangUp_ {};
};

}  // namespace framequilt::tool
