// SPDX-License-Identifier: Apache-2.0
#include "python/python_session.h"

#include <pybind11/pybind11.h>

#include <utility>

#include "python/enumerations.h"
#include "python/frame_array.h"
#include "python/library_call.h"
#include "python/mosaic_array.h"

namespace py = pybind11;

namespace framequilt::python {
namespace {

/// The session to be stopped at exit. Read and written with the interpreter's lock held.
PythonSession*& openSession() {
  static PythonSession* session = nullptr;
  return session;
}

}  // namespace

/// Waits until no other thread uses the session. Taken and left without the interpreter.
class PythonSession::Turn {
 public:
  explicit Turn(PythonSession& session) : session_(session), lock_(session.mutex_) {
    session_.holder_ = std::this_thread::get_id();
  }
  ~Turn() { session_.holder_ = std::thread::id(); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  static void requireOutsideOfCallback(const PythonSession& session, const char* call) {
    if (session.holder_ != std::this_thread::get_id()) return;
    PyErr_Format(PyExc_RuntimeError,
                 "%s was called from on_progress: call it when the frame is done", call);
    throw py::error_already_set();
  }

 private:
  PythonSession& session_;
  std::lock_guard<std::mutex> lock_;
};

PythonSession::PythonSession(SessionOptions options, py::object onProgress)
    : options_(std::move(options)), onProgress_(std::move(onProgress)) {
  if (!onProgress_.is_none()) {
    if (PyCallable_Check(onProgress_.ptr()) == 0) {
      throw py::type_error("on_progress has to be a function of one Progress, or None: not " +
                           py::repr(onProgress_).cast<std::string>());
    }
    options_.onProgress = [this](const Progress& progress) { return report(progress); };
  }
  libraryCall([&] { session_.emplace(options_); });
  openSession() = this;
}

PythonSession::~PythonSession() {
  if (openSession() == this) openSession() = nullptr;
  // The engine's threads may wait for the interpreter while they end.
  const OthersRun othersRun;
  session_.reset();
}

FrameResult PythonSession::add(const py::object& frame, std::optional<PixelOrder> order,
                               std::optional<cv::Point> hint) {
  Turn::requireOutsideOfCallback(*this, "add()");
  const FrameArray array = frameArray(frame, order, nextFrame_);
  std::exception_ptr failure;
  FrameResult result = libraryCall([&] {
    const Turn turn(*this);
    FrameResult added = session_->add(array.view, hint);
    firstFrame_ = session_->firstFrame();
    if (added.verdict != Verdict::kCancelled) nextFrame_ = added.frame + 1;
    failure = std::exchange(callbackFailure_, nullptr);
    return added;
  });
  if (failure) std::rethrow_exception(failure);
  return result;
}

void PythonSession::stop() {
  Turn::requireOutsideOfCallback(*this, "stop()");
  libraryCall([&] {
    const Turn turn(*this);
    session_->stop();
    stopped_ = true;
  });
  if (openSession() == this) openSession() = nullptr;
}

py::array PythonSession::mosaic() const {
  const cv::Mat view = libraryCall([&] { return session_->mosaic(); });
  return arrayOf(view, options_.channels, false);
}

cv::Rect PythonSession::steadyBox() const {
  return libraryCall([&] { return session_->steadyBox(); });
}

py::array PythonSession::copyRegion(const cv::Rect& region) const {
  const cv::Mat copy = libraryCall([&] { return session_->copyRegion(region); });
  return arrayOf(copy, options_.channels, true);
}

/// What the callback raises ends the frame where that is still possible, and leaves through `add`.
bool PythonSession::report(const Progress& progress) {
  const py::gil_scoped_acquire interpreter;
  try {
    const py::object answer = onProgress_(progress);
    if (answer.is_none()) return true;
    const int isTrue = PyObject_IsTrue(answer.ptr());
    if (isTrue < 0) throw py::error_already_set();
    return isTrue == 1;
  } catch (...) {
    if (!callbackFailure_) callbackFailure_ = std::current_exception();
    return false;
  }
}

int PythonSession::traverse(visitproc visit, void* argument) const {
  PyObject* const callback = onProgress_.ptr();
  return callback != nullptr ? visit(callback, argument) : 0;
}

void PythonSession::forgetCallback() { onProgress_ = py::none(); }

void stopAtExit() {
  if (openSession() != nullptr) openSession()->stop();
}

}  // namespace framequilt::python
