// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/numpy.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "framequilt/session.h"

namespace framequilt::python {

/// A session that threads of Python share.
///
/// The interpreter serves other threads while the library works. Frames of several threads are
/// taken one after the other. Members are called with the interpreter's lock held.
class PythonSession {
 public:
  /// \param onProgress  Called with a Progress; None for nothing.
  PythonSession(SessionOptions options, pybind11::object onProgress);
  ~PythonSession();
  PythonSession(const PythonSession&) = delete;
  PythonSession& operator=(const PythonSession&) = delete;

  FrameResult add(const pybind11::object& frame, std::optional<PixelOrder> order,
                  std::optional<cv::Point> hint);
  void stop();

  pybind11::array mosaic() const;
  cv::Rect steadyBox() const;
  pybind11::array copyRegion(const cv::Rect& region) const;
  std::int64_t firstFrame() const { return firstFrame_; }
  bool stopped() const { return stopped_; }
  const SessionOptions& options() const { return options_; }
  int scale() const { return session_->scale(); }
  std::string backend() const { return std::string(session_->backend()); }

  /// For the garbage collector: the callback may lead back to the session.
  int traverse(visitproc visit, void* argument) const;
  void forgetCallback();

 private:
  class Turn;
  bool report(const Progress& progress);

  SessionOptions options_;
  pybind11::object onProgress_;
  std::exception_ptr callbackFailure_;  // Of the frame at hand.
  std::optional<Session> session_;
  std::mutex mutex_;                     // One frame, or the stop, at a time.
  std::atomic<std::thread::id> holder_;  // Of the mutex.
  std::atomic<std::int64_t> nextFrame_{0};
  std::atomic<std::int64_t> firstFrame_{0};
  std::atomic<bool> stopped_{false};
};

/// Stops the open session, if there is one, when the interpreter ends.
void stopAtExit();

}  // namespace framequilt::python
