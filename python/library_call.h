// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace framequilt::python {

/// Lets other threads of Python run until it goes out of scope. Where the interpreter has ended by
/// then, this thread never goes on: unwinding it would touch objects of Python.
class OthersRun {
 public:
  OthersRun() : thread_(PyEval_SaveThread()) {}
  ~OthersRun();
  OthersRun(const OthersRun&) = delete;
  OthersRun& operator=(const OthersRun&) = delete;

 private:
  PyThreadState* thread_;
};

/// Marks the calling thread as being inside a report sink, which must not call the library: it
/// would wait for itself.
class InReportSink {
 public:
  InReportSink() { inside() = true; }
  ~InReportSink() { inside() = false; }
  InReportSink(const InReportSink&) = delete;
  InReportSink& operator=(const InReportSink&) = delete;

  static bool& inside();
};

/// \throws pybind11::error_already_set with a RuntimeError inside a report sink.
void requireOutsideOfReportSink();

/// Runs a call of the library while other threads of Python go on. Every call that may wait for
/// another thread is made this way: that thread may need the interpreter for a callback.
template <class Action>
auto libraryCall(Action action) {
  requireOutsideOfReportSink();
  const OthersRun othersRun;
  return action();
}

}  // namespace framequilt::python
