// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "framequilt/session.h"

namespace framequilt {

/// A parameter of the library that has another value while this lives.
class ParameterScope {
 public:
  ParameterScope(int& parameter, int value) : parameter_(parameter), former_(parameter) {
    parameter_ = value;
  }
  ~ParameterScope() { parameter_ = former_; }
  ParameterScope(const ParameterScope&) = delete;
  ParameterScope& operator=(const ParameterScope&) = delete;

 private:
  int& parameter_;
  int former_;
};

/// The engine from its start to its stop, on the backend that the options and the machine allow.
class StartedEngine {
 public:
  /// The kernel file is read from its absolute path: whatever lies in the current folder is left
  /// alone. \param options  Checked. \throws Error, std::bad_alloc; nothing is started then.
  explicit StartedEngine(const SessionOptions& options);
  ~StartedEngine() = default;
  StartedEngine(const StartedEngine&) = delete;
  StartedEngine& operator=(const StartedEngine&) = delete;

  bool usesOpencl() const { return usesOpencl_; }

 private:
  struct Stop {
    Stop() = default;
    ~Stop();
    Stop(const Stop&) = delete;
    Stop& operator=(const Stop&) = delete;
  };

  // Before the stop in this order, so that they are the session's until it is done.
  ParameterScope scale_, scaleCL_, maxRowsCL_, maxColsCL_;
  std::optional<Stop> stop_;
  bool usesOpencl_ = false;
};

}  // namespace framequilt
