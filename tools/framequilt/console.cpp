// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/console.h"

namespace framequilt::tool {
namespace {

/// Back to the start of the line, and clears it.
constexpr const char* kClearLine = "\r\x1b[K";

}  // namespace

Console::Console(std::ostream& stream, bool isTerminal, Amount amount)
    : stream_(stream), isTerminal_(isTerminal), amount_(amount) {}

void Console::remark(const std::string& text) {
  if (!open_.empty()) stream_ << kClearLine;
  stream_ << "framequilt: " << text << "\n" << open_ << std::flush;
}

void Console::detail(const std::string& text) {
  if (amount_ == Amount::kVerbose) remark(text);
}

void Console::progress(const std::string& text) {
  if (!showsProgress()) return;
  if (!isTerminal_) {
    stream_ << "framequilt: " << text << "\n" << std::flush;
    return;
  }
  open_ = text;
  stream_ << kClearLine << open_ << std::flush;
}

void Console::endProgress() {
  if (!open_.empty()) stream_ << kClearLine << std::flush;
  open_.clear();
}

}  // namespace framequilt::tool
