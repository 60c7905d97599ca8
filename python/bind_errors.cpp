// SPDX-License-Identifier: Apache-2.0
#include <exception>

#include "framequilt/error.h"
#include "python/bindings.h"
#include "python/enumerations.h"

namespace py = pybind11;

namespace framequilt::python {
namespace {

const char* classFor(ErrorCode code) {
  const bool ofInput = code == ErrorCode::kInvalidOption || code == ErrorCode::kInvalidFrame;
  return ofInput ? "InputError" : "Error";
}

void translate(std::exception_ptr thrown) {
  try {
    if (thrown) std::rethrow_exception(thrown);
  } catch (const Error& failure) {
    const py::object type =
        py::module_::import("framequilt._values").attr(classFor(failure.code()));
    const py::object error = type(failure.what());
    error.attr("code") = failure.code();
    PyErr_SetObject(type.ptr(), error.ptr());
  }
}

}  // namespace

void bindErrors(py::module_& /*module*/) { py::register_local_exception_translator(&translate); }

}  // namespace framequilt::python
