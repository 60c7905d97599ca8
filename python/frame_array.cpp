// SPDX-License-Identifier: Apache-2.0
#include "python/frame_array.h"

#include <array>
#include <limits>
#include <string>

#include "python/enumerations.h"

namespace py = pybind11;

namespace framequilt::python {
namespace {

py::ssize_t channelsOf(PixelOrder order) {
  switch (order) {
    case PixelOrder::kBgr:
    case PixelOrder::kRgb:
      return 3;
    case PixelOrder::kBgra:
      return 4;
    case PixelOrder::kGray:
      break;
  }
  return 1;
}

PixelOrder usualOrder(py::ssize_t channels) {
  if (channels == 1) return PixelOrder::kGray;
  return channels == 3 ? PixelOrder::kBgr : PixelOrder::kBgra;
}

std::string textOf(const py::object& object) { return py::str(object).cast<std::string>(); }

py::array bytesOf(const py::object& frame, const std::string& name) {
  py::array array = py::array::ensure(frame);
  if (!array || array.dtype().kind() == 'O') {
    throw py::type_error(name + " is of type '" + Py_TYPE(frame.ptr())->tp_name +
                         "': give a numpy array of uint8");
  }
  if (array.dtype().kind() != 'u' || array.itemsize() != 1) {
    throw py::type_error(name + " is an array of " + textOf(array.dtype()) +
                         ": give uint8, frame.astype(numpy.uint8) where all values are 0 to 255");
  }
  return array;
}

/// Rows one after the other, each of packed bytes.
bool canBeViewed(const py::array& array, py::ssize_t channels) {
  if (array.ndim() == 3 && channels > 1 && array.strides(2) != 1) return false;
  if (array.shape(1) > 1 && array.strides(1) != channels) return false;
  return array.shape(0) <= 1 || array.strides(0) >= array.shape(1) * channels;
}

}  // namespace

FrameArray frameArray(const py::object& frame, std::optional<PixelOrder> order,
                      std::int64_t number) {
  const std::string name = "frame " + std::to_string(number);
  py::array array = bytesOf(frame, name);
  const std::string shape = textOf(array.attr("shape"));
  const auto refuse = [&](const std::string& what) {
    throw Error(ErrorCode::kInvalidFrame, name + " has the shape " + shape + what);
  };

  const py::ssize_t channels = array.ndim() == 3 ? array.shape(2) : 1;
  if (array.ndim() < 2 || array.ndim() > 3 || channels == 2 || channels < 1 || channels > 4) {
    refuse(": give (rows, cols) for gray or (rows, cols, 3) for colour");
  }
  if (order && channelsOf(*order) != channels) {
    refuse(", pixel order '" + textOf(memberFor(*order).attr("value")) + "' has " +
           std::to_string(channelsOf(*order)) + (channelsOf(*order) == 1 ? " value" : " values") +
           " a pixel: give another order or convert the frame");
  }
  constexpr py::ssize_t kMost = std::numeric_limits<int>::max();
  if (array.shape(0) > kMost || array.shape(1) > kMost) refuse(": give smaller frames");

  if (!canBeViewed(array, channels)) {
    array = py::array_t<unsigned char, py::array::c_style | py::array::forcecast>::ensure(array);
    if (!array) throw py::error_already_set();
  }
  const bool oneRow = array.shape(0) <= 1;
  FrameView view;
  view.pixels = static_cast<const unsigned char*>(array.data());
  view.rows = static_cast<int>(array.shape(0));
  view.cols = static_cast<int>(array.shape(1));
  view.strideBytes = oneRow ? 0 : static_cast<std::size_t>(array.strides(0));
  view.order = order.value_or(usualOrder(channels));
  return {std::move(array), view};
}

}  // namespace framequilt::python
