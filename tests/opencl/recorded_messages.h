// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

using Messages = std::vector<std::string>;

/// A debug text among messages.
inline std::string debugText(const std::string& text) { return "debug: " + text; }

/// Collects what the library says on the thread that made this, in order: the texts for standard
/// output as they are, without line ends, and debug texts as by `debugText`. The program that links
/// recorded_messages.cpp has its own debug hook in front of the library's. One at a time.
class RecordedMessages {
 public:
  RecordedMessages();
  ~RecordedMessages();
  RecordedMessages(const RecordedMessages&) = delete;
  RecordedMessages& operator=(const RecordedMessages&) = delete;

  /// Those since the last call.
  Messages take();

  /// From now on texts go to standard output again; debug texts are still collected.
  void letThrough();
};
