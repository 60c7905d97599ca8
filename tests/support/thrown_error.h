// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>
#include <string>

#include "framequilt/error.h"

/// What a call threw, to be compared as a whole.
struct ThrownError {
  framequilt::ErrorCode code;
  std::string text;
};

inline bool operator==(const ThrownError& a, const ThrownError& b) {
  return a.code == b.code && a.text == b.text;
}

inline void PrintTo(const ThrownError& error, std::ostream* out) {
  *out << "code " << static_cast<int>(error.code) << ": " << error.text;
}

/// The `Error` that `action` throws; the text "nothing" when it throws none.
template <class Action>
ThrownError errorOf(Action action) {
  try {
    action();
  } catch (const framequilt::Error& error) {
    return {error.code(), error.what()};
  }
  return {framequilt::ErrorCode::kInvalidOption, "nothing"};
}
