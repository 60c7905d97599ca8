// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What a journal holds.
using Entries = std::vector<std::string>;

/// What the library says while this lives, in one order: the lines it reports, as they are and
/// without line ends, and the texts for the debug hook as by `debug`. One journal at a time; it
/// takes the place of other recorders of lines. A program that links journal.cpp has its debug hook
/// there.
class Journal {
 public:
  Journal();
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  /// How a debug text stands in the journal.
  static std::string debug(std::string_view text);

  /// Those of the thread that made the journal, since the last call.
  static Entries take();
  /// Those of other threads since the last call, sorted: their order is not defined.
  static Entries takeOfWorkers();

  /// From now on lines go to standard output again; debug texts are still collected.
  static void letThrough();
};
