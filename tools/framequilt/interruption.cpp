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
  // nohup lets a run outlive its terminal.
  sigaction(SIGHUP, nullptr, &formerHangUp_);
  if (formerHangUp_.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr);
}

Interruption::~Interruption() {
  sigaction(SIGINT, &formerInterrupt_, nullptr);
  sigaction(SIGTERM, &formerTerminate_, nullptr);
  sigaction(SIGHUP, &formerHangUp_, nullptr);
}

bool Interruption::wanted() { return wish; }

}  // namespace framequilt::tool
