// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/numpy.h>

#include <opencv2/core/mat.hpp>

namespace framequilt::python {

/// The pixels of a matrix of bytes as an array, without a copy: (rows, cols) for one channel, else
/// (rows, cols, channels). The array keeps the memory of the matrix, whatever becomes of the
/// session.
/// \param channels  Of a matrix that is empty.
pybind11::array arrayOf(const cv::Mat& matrix, int channels, bool writable);

}  // namespace framequilt::python
