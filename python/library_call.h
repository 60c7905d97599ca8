// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace framequilt::python {

/// Whether this thread is inside a report sink, which must not call the library: it would wait for
/// itself.
bool isInReportSink();

/// Runs a call of the library while other threads of Python go on. Every call that may wait for
/// another thread is made this way: that thread may need the interpreter for a callback.
template <class Action>
auto libraryCall(Action action) {
  if (isInReportSink()) {
    PyErr_SetString(PyExc_RuntimeError,
                    "a report sink must not call framequilt: keep the line and return");
    throw pybind11::error_already_set();
  }
  const pybind11::gil_scoped_release others;
  return action();
}

}  // namespace framequilt::python
