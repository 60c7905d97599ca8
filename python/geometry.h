// SPDX-License-Identifier: Apache-2.0
/// \file
/// Points and rectangles of OpenCV as the named tuples Point and Box. Any sequence of as many whole
/// numbers is taken for one.
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <opencv2/core/types.hpp>

namespace framequilt::python {

/// Reads `count` whole numbers. \throws pybind11::type_error that calls them `what`.
void readNumbers(pybind11::handle source, int* numbers, std::size_t count, const char* what);

/// Makes the tuple of that name.
pybind11::object pointTuple(cv::Point point);
pybind11::object boxTuple(const cv::Rect& box);

}  // namespace framequilt::python

namespace pybind11::detail {

template <>
struct type_caster<cv::Point> {
  PYBIND11_TYPE_CASTER(cv::Point, const_name("framequilt.Point"));
  bool load(handle source, bool /*convert*/) {
    int numbers[2] = {};
    framequilt::python::readNumbers(source, numbers, 2, "a point (x, y)");
    value = {numbers[0], numbers[1]};
    return true;
  }
  static handle cast(const cv::Point& point, return_value_policy /*policy*/, handle /*parent*/) {
    return framequilt::python::pointTuple(point).release();
  }
};

template <>
struct type_caster<cv::Rect> {
  PYBIND11_TYPE_CASTER(cv::Rect, const_name("framequilt.Box"));
  bool load(handle source, bool /*convert*/) {
    int numbers[4] = {};
    framequilt::python::readNumbers(source, numbers, 4, "a box (x, y, width, height)");
    value = {numbers[0], numbers[1], numbers[2], numbers[3]};
    return true;
  }
  static handle cast(const cv::Rect& box, return_value_policy /*policy*/, handle /*parent*/) {
    return framequilt::python::boxTuple(box).release();
  }
};

}  // namespace pybind11::detail
