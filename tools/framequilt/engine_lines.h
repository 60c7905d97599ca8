// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace framequilt::tool {

/// While it lives, the engine's fixed lines stay off standard output: they are dropped, or shown on
/// standard error.
class EngineLines {
 public:
  explicit EngineLines(bool shown);
  ~EngineLines();
  EngineLines(const EngineLines&) = delete;
  EngineLines& operator=(const EngineLines&) = delete;
};

}  // namespace framequilt::tool
