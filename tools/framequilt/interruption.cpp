// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/interruption.h"

#include <atomic>

namespace framequilt::tool {
namespace {

std::atomic<bool> wish{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may write it");

void remember(int /*signal*/) { wish = true; }

}  // namespace

Interruption::Interruption() {
  wish = false;
  struct sigaction action {};
  action.sa_handler = remember;
  sigemptyset(&action.sa_mask);
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  sigaction(SIGINT, &action, &formerInterrupt_);
  sigaction(SIGTERM, &action, &formerTerminate_);
}

Interruption::~Interruption() {
  sigaction(SIGINT, &formerInterrupt_, nullptr);
  sigaction(SIGTERM, &formerTerminate_, nullptr);
}

bool Interruption::wanted() { return wish; }

}  // namespace framequilt::tool
