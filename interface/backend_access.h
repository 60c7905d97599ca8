// SPDX-License-Identifier: Apache-2.0
/// \file
/// How a run is read while it is open; each backend keeps its record and its limits to itself.
#pragma once

#include <optional>

namespace framequilt {

/// By what a backend decided about the last frame.
struct Limits {
  float leastOverlap = 0;  ///< Parts of the frame, both exclusive.
  float mostOverlap = 0;
  float brightness = 0;
  float sharpness = 0;
  int change = 0;
};

/// The functions of cpu/call_record.h and opencl/OpenclJointCallRecord.h, and the limits.
struct BackendAccess {
  void (*forgetMeasures)();
  void (*restoreReference)();
  std::optional<int> (*motionOfCall)();
  bool (*lackedMemoryInCall)();
  Limits (*limits)();
  /// A frame that fails the overlap criterion takes the reference with it.
  bool refusalTakesReference;
};

const BackendAccess& hostAccess();
const BackendAccess& openclAccess();

}  // namespace framequilt
