// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tools/framequilt/frame_source.h"

/// Settings that keep the remarks of a source.
struct RecordedNotes {
  std::vector<std::string> lines;

  framequilt::tool::InputSettings settings() {
    framequilt::tool::InputSettings settings;
    settings.note = [this](const std::string& line) { lines.push_back(line); };
    return settings;
  }
};

/// The names of all frames that are left in a source.
inline std::vector<std::string> namesOfRest(framequilt::tool::FrameSource& source) {
  std::vector<std::string> names;
  while (const auto frame = source.next()) names.push_back(frame->name);
  return names;
}
