// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>
#include <string>

namespace framequilt::tool {

/// What the program tells while it works, on a stream of its own beside the results.
///
/// On a terminal the progress is one line that is written over again and again; remarks come above
/// it. Elsewhere it is a plain line now and then.
class Console {
 public:
  enum class Amount { kQuiet, kNormal, kVerbose };

  Console(std::ostream& stream, bool isTerminal, Amount amount);
  ~Console() { endProgress(); }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// Something the user has to know, in every amount: "framequilt: TEXT".
  void remark(const std::string& text);
  /// Only when verbose.
  void detail(const std::string& text);
  /// Where the work stands. Not when quiet, and not when verbose, where each frame has its line.
  void progress(const std::string& text);
  /// Takes the progress off the terminal, for whatever is written there next.
  void endProgress();

  bool isTerminal() const { return isTerminal_; }
  bool showsProgress() const { return amount_ == Amount::kNormal; }

 private:
  std::ostream& stream_;
  bool isTerminal_;
  Amount amount_;
  std::string open_;  // The progress that stands on the terminal.
};

}  // namespace framequilt::tool
