// SPDX-License-Identifier: Apache-2.0
/// \file
/// What the library throws.
#pragma once

#include <stdexcept>
#include <string>

#include "export.h"

namespace framequilt {

/// What went wrong.
enum class ErrorCode {
  kInvalidOption,  ///< An option is out of its range; no session was opened.
  kSessionOpen,    ///< Another session of this process is open.
  kStartFailed,    ///< The worker threads could not be started.
  kNoOpencl,       ///< OpenCL alone was asked for and cannot be used; no session was opened.
  kInvalidFrame,   ///< A frame does not fit the session; the session goes on.
  kStopped,        ///< The session was stopped: it takes no more frames.
  kOutOfMemory,    ///< The frame could not be taken; the mosaic so far stays.
  kEngineFailed,   ///< Likewise, for another reason.
  kBusy,           ///< Called from a callback of the session; the session goes on.
};

/// What a session throws: one line that says what is wrong and what to do.
class FRAMEQUILT_EXPORT Error : public std::runtime_error {
 public:
  /// \param what  The line that `what()` gives.
  Error(ErrorCode code, const std::string& what) : std::runtime_error(what), code_(code) {}
  /// What went wrong, for a program to decide by.
  ErrorCode code() const noexcept { return code_; }

 private:
  ErrorCode code_;
};

}  // namespace framequilt
