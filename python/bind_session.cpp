// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>

#include "python/bindings.h"
#include "python/enumerations.h"
#include "python/geometry.h"
#include "python/python_session.h"

namespace py = pybind11;

namespace framequilt::python {
namespace {

const char* const kOpen = R"(Opens a session.

rows, cols     Size of every frame, in pixels.
channels       Of the mosaic: 3 (blue, green, red) or 1 (gray).
criterion      By what frames are judged: "motion" or "overlap".
dynamic_scene  Narrow limits, for a scene that moves by itself.
scale          Frame pixels per mosaic pixel: 1, 2 or AUTO_SCALE, the largest that keeps every pixel.
corner_budget  0 to 1000. More corners join frames that overlap less, and take longer.
max_rows, max_cols
               The mosaic is full once it has max_rows * max_cols pixels, below 2**31.
backend        What does the work: "auto", "opencl" or "host".
kernel_file    Source of the OpenCL kernels; empty: the file that lies beside the library.
on_progress    Called with a Progress on the thread of add(); False cancels the frame. An exception
               cancels it too, where it is not decided yet, and leaves through add(). It must not
               call add() or stop().

Raises InputError for options out of range, and Error while another session is open and when the
engine cannot start.)";

const char* const kAdd = R"(Takes the next frame.

frame        Array of uint8: (rows, cols) gray, (rows, cols, 3) colour or (rows, cols, 4) BGRA. It is
             read where it lies if the bytes of each row are packed and rows lie at any distance one
             after the other; else it is copied first. It is not changed.
pixel_order  "bgr", "rgb", "bgra" or "gray"; None: gray, BGR or BGRA, as the shape says.
hint         How far the camera moved since the frame handed over before, (x, y) in frame pixels in
             the sense of the placements. Corners are looked for in that overlap first.

In the mosaic bytes of value 0 become 1: 0 marks pixels where no frame lies. A frame that cannot be
joined is no error. Raises TypeError for elements of another type, InputError for a frame of another
size, and Error when the session was stopped or memory runs out. Threads take turns.)";

const char* const kMosaic =
    R"(The box that frames fill, empty before two have joined; 0 where no frame lies.

A read-only view of (rows, cols) or (rows, cols, 3), blue first, without a copy. The next frame
changes its pixels; when the mosaic grows beyond its memory, the view keeps what it showed. It stays
valid for as long as it is kept, after stop() and without the session, too, and keeps that memory.
Call again after each frame, or copy() a state that is to stay.)";

const char* const kCopyRegion = R"(A copy of a part of the mosaic; 0 where no frame lies.

region  (x, y, width, height) in steady mosaic pixels, as in steady_box.

From any thread: waits while a frame is being blended, not for the rest of its way.)";

/// The session behind an object of Python; none before __init__ has ended.
PythonSession* sessionBehind(PyObject* object) {
  auto* const instance = reinterpret_cast<py::detail::instance*>(object);
  const py::detail::value_and_holder value = instance->get_value_and_holder();
  return value.holder_constructed() ? value.value_ptr<PythonSession>() : nullptr;
}

/// Lets the garbage collector see the callback.
void supportCollection(PyHeapTypeObject* heapType) {
  PyTypeObject& type = heapType->ht_type;
  type.tp_flags |= Py_TPFLAGS_HAVE_GC;
  type.tp_traverse = [](PyObject* object, visitproc visit, void* arg) {
    Py_VISIT(Py_TYPE(object));
    const PythonSession* const session = sessionBehind(object);
    return session != nullptr ? session->traverse(visit, arg) : 0;
  };
  type.tp_clear = [](PyObject* object) {
    PythonSession* const session = sessionBehind(object);
    if (session != nullptr) session->forgetCallback();
    return 0;
  };
}

std::unique_ptr<PythonSession> open(int rows, int cols, int channels, Criterion criterion,
                                    bool dynamicScene, int scale, int cornerBudget, int maxRows,
                                    int maxCols, Backend backend, const std::string& kernelFile,
                                    py::object onProgress) {
  SessionOptions options;
  options.rows = rows;
  options.cols = cols;
  options.channels = channels;
  options.criterion = criterion;
  options.dynamicScene = dynamicScene;
  options.scale = scale;
  options.cornerBudget = cornerBudget;
  options.maxRows = maxRows;
  options.maxCols = maxCols;
  options.backend = backend;
  options.kernelFile = kernelFile;
  return std::make_unique<PythonSession>(std::move(options), std::move(onProgress));
}

std::string textOf(const PythonSession& session) {
  const cv::Rect box = session.steadyBox();
  return "<Session: frames of " + std::to_string(session.options().rows) + " rows x " +
         std::to_string(session.options().cols) + " cols, " + session.backend() + ", mosaic of " +
         std::to_string(box.height) + " rows x " + std::to_string(box.width) + " cols" +
         (session.stopped() ? ", stopped" : "") + ">";
}

}  // namespace

void bindSession(py::module_& module) {
  const SessionOptions defaults;
  py::class_<PythonSession>(
      module, "Session",
      "A capture that is stitched frame by frame. Use it in a with statement, which stops it.\n\n"
      "One at a time in a process. Any thread may use it; frames are taken one after the other.",
      py::custom_type_setup(&supportCollection))
      .def(py::init(&open), py::kw_only(), py::arg("rows"), py::arg("cols"),
           py::arg("channels") = defaults.channels,
           py::arg_v("criterion", defaults.criterion, "Criterion.MOTION"),
           py::arg("dynamic_scene") = defaults.dynamicScene, py::arg("scale") = defaults.scale,
           py::arg("corner_budget") = defaults.cornerBudget, py::arg("max_rows") = defaults.maxRows,
           py::arg("max_cols") = defaults.maxCols,
           py::arg_v("backend", defaults.backend, "Backend.AUTO"),
           py::arg("kernel_file") = defaults.kernelFile, py::arg("on_progress") = py::none(), kOpen)
      .def("add", &PythonSession::add, py::arg("frame"), py::kw_only(),
           py::arg("pixel_order") = py::none(), py::arg("hint") = py::none(), kAdd)
      .def("mosaic", &PythonSession::mosaic, kMosaic)
      .def("copy_region", &PythonSession::copyRegion, py::arg("region"), kCopyRegion)
      .def("stop", &PythonSession::stop,
           "Ends the run and its threads; the mosaic stays. Without effect after the first time.")
      .def_property_readonly("steady_box", &PythonSession::steadyBox,
                             "Where mosaic() lies, a Box in steady mosaic pixels.")
      .def_property_readonly("scale", &PythonSession::scale,
                             "Frame pixels per mosaic pixel: 1 or 2.")
      .def_property_readonly("first_frame", &PythonSession::firstFrame,
                             "The frame that lies, or is to lie, at placement (0, 0).")
      .def_property_readonly("backend", &PythonSession::backend,
                             "What does the work: \"opencl\" or \"host\".")
      .def_property_readonly("stopped", &PythonSession::stopped, "Whether stop() was called.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__",
           [](PythonSession& session, const py::args& /*exception*/) { session.stop(); })
      .def("__repr__", &textOf);

  py::module_::import("atexit").attr("register")(py::cpp_function(&stopAtExit));
}

}  // namespace framequilt::python
