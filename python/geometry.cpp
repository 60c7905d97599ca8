// SPDX-License-Identifier: Apache-2.0
#include "python/geometry.h"

#include <string>

namespace py = pybind11;

namespace framequilt::python {
namespace {

const char* const kValues = "framequilt._values";

bool readNumber(py::handle source, int& number) {
  py::detail::make_caster<int> caster;
  if (!caster.load(source, false)) return false;
  number = py::detail::cast_op<int>(caster);
  return true;
}

bool readAll(py::handle source, int* numbers, std::size_t count) {
  if (!py::isinstance<py::sequence>(source) || py::isinstance<py::str>(source)) return false;
  const auto sequence = py::reinterpret_borrow<py::sequence>(source);
  if (sequence.size() != count) return false;
  for (std::size_t i = 0; i < count; ++i) {
    if (!readNumber(py::object(sequence[i]), numbers[i])) return false;
  }
  return true;
}

}  // namespace

void readNumbers(py::handle source, int* numbers, std::size_t count, const char* what) {
  if (readAll(source, numbers, count)) return;
  throw py::type_error(py::repr(source).cast<std::string>() + " is not " + what +
                       " of whole numbers below 2147483648: give " + std::to_string(count) +
                       " of them");
}

py::object pointTuple(cv::Point point) {
  return py::module_::import(kValues).attr("Point")(point.x, point.y);
}

py::object boxTuple(const cv::Rect& box) {
  return py::module_::import(kValues).attr("Box")(box.x, box.y, box.width, box.height);
}

}  // namespace framequilt::python
