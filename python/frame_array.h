// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/numpy.h>

#include <cstdint>
#include <optional>

#include "framequilt/session.h"

namespace framequilt::python {

/// A frame of Python for `Session::add`.
struct FrameArray {
  pybind11::array pixels;  ///< Keeps them; the caller's own array where its layout allows.
  FrameView view;          ///< Of `pixels`.
};

/// An array of uint8 with the shape (rows, cols) or (rows, cols, 1), gray, (rows, cols, 3) or
/// (rows, cols, 4), or what numpy makes one of. Its pixels are read where they lie when the bytes
/// of a row are packed and rows follow each other in memory, at any distance; else they are copied.
/// \param order   Absent: gray, BGR or BGRA, as the shape says.
/// \param number  Of the frame, for messages.
/// \throws pybind11::type_error for elements of another type, Error for another shape.
FrameArray frameArray(const pybind11::object& frame, std::optional<PixelOrder> order,
                      std::int64_t number);

}  // namespace framequilt::python
