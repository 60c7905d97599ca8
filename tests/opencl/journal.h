// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// What the library says while this lives: the lines it reports and the texts for the debug hook,
/// in one order. One journal at a time; it takes the place of other recorders of lines. Programs
/// that link journal.cpp have their debug hook there.
class Journal {
 public:
  using Entries = std::vector<std::string>;

  Journal();
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  /// How a line and a text stand in the journal.
  static std::string line(std::string_view text);
  static std::string debug(std::string_view text);

  /// Those of the thread that made the journal, since the last call.
  Entries take();
  /// Those of other threads since the last call, sorted: their order is not defined.
  Entries takeOfWorkers();

  /// Called from any thread.
  void add(std::string entry);

 private:
  const std::thread::id caller_ = std::this_thread::get_id();
  std::mutex mutex_;
  Entries ofCaller_, ofWorkers_;
};
