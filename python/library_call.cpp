// SPDX-License-Identifier: Apache-2.0
#include "python/library_call.h"

#include <cxxabi.h>
#include <unistd.h>

namespace py = pybind11;

namespace framequilt::python {

OthersRun::~OthersRun() {
#ifdef __GLIBCXX__
  try {
    PyEval_RestoreThread(thread_);
  } catch (const abi::__forced_unwind&) {
    // The interpreter has ended and wants to end this thread.
    for (;;) pause();
  }
#else
  PyEval_RestoreThread(thread_);
#endif
}

bool& InReportSink::inside() {
  static thread_local bool flag = false;
  return flag;
}

void requireOutsideOfReportSink() {
  if (!InReportSink::inside()) return;
  PyErr_SetString(PyExc_RuntimeError,
                  "a report sink must not call framequilt: keep the line and return");
  throw py::error_already_set();
}

}  // namespace framequilt::python
