// SPDX-License-Identifier: Apache-2.0
/// \file
/// How functions of framequilt_c.h fail: inside by an exception, outside by a code and a text.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "framequilt/framequilt_c.h"

namespace framequilt {

/// Leaves a function with that code and that text.
class CallFailure : public std::runtime_error {
 public:
  CallFailure(framequilt_code code, const std::string& what)
      : std::runtime_error(what), code_(code) {}
  framequilt_code code() const noexcept { return code_; }

 private:
  framequilt_code code_;
};

/// A text that can be kept when memory has run out.
class ErrorText {
 public:
  /// Cut where it does not fit.
  void set(std::string_view text) noexcept;
  const char* get() const noexcept { return text_; }

 private:
  char text_[1024] = "";
};

/// Of the last call of this thread that failed.
ErrorText& errorOfThread() noexcept;

/// The code of the exception that is being handled, whose text goes to this thread's and, unless
/// null, to `session`.
framequilt_code codeOfException(ErrorText* session) noexcept;

/// \throws CallFailure for a null pointer. \param name  What the caller knows it by.
void requireGiven(const void* pointer, const char* name);

/// Runs `action`; the code for what it throws.
template <class Action>
framequilt_code codeOf(Action action, ErrorText* session = nullptr) noexcept {
  try {
    action();
    return FRAMEQUILT_OK;
  } catch (...) {
    return codeOfException(session);
  }
}

}  // namespace framequilt
