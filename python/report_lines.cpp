// SPDX-License-Identifier: Apache-2.0
#include "python/report_lines.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <utility>

#include "framequilt/report_sink.h"
#include "python/library_call.h"

namespace py = pybind11;

namespace framequilt::python {
namespace {

void drop(const char* /*line*/, std::size_t /*length*/, void* /*context*/) {}

/// Gives a line to the callable that is the context. Comes from any thread.
void handOver(const char* line, std::size_t length, void* context) {
  const py::gil_scoped_acquire interpreter;
  const InReportSink inSink;
  try {
    const auto text = py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(line, static_cast<py::ssize_t>(length), "replace"));
    py::handle(static_cast<PyObject*>(context))(text);
  } catch (py::error_already_set& failure) {
    // Nobody above could take it.
    failure.discard_as_unraisable("a report sink of framequilt");
  }
}

/// Whom the library has; changed without the interpreter, as the former may be waiting for it.
struct Current {
  std::mutex mutex;
  PyObject* callable = nullptr;
};

Current& current() {
  static auto& instance = *new Current;  // Outlives the interpreter.
  return instance;
}

void setSink(const py::object& sink) {
  if (!sink.is_none() && PyCallable_Check(sink.ptr()) == 0) {
    throw py::type_error("a report sink has to be a function of one line, or None: not " +
                         py::repr(sink).cast<std::string>());
  }
  PyObject* const callable = sink.is_none() ? nullptr : sink.inc_ref().ptr();
  PyObject* const former = libraryCall([&] {
    const std::lock_guard lock(current().mutex);
    setReportSink(callable != nullptr ? handOver : drop, callable);
    return std::exchange(current().callable, callable);
  });
  py::handle(former).dec_ref();
}

}  // namespace

void bindReportSink(py::module_& module) {
  setReportSink(drop, nullptr);
  module.def("set_report_sink", &setSink, py::arg("sink"),
             "Gives the engine's lines, which nobody sees otherwise, to a function of one str.\n\n"
             "None drops them again. Calls come from any thread, one at a time, and cost time in\n"
             "each frame. The function must not call framequilt; what it raises goes to\n"
             "sys.unraisablehook.");
  // Threads of a session that nobody stopped would look for the interpreter when it is gone.
  py::module_::import("atexit").attr("register")(py::cpp_function([] { setSink(py::none()); }));
}

}  // namespace framequilt::python
