// SPDX-License-Identifier: Apache-2.0
#include "python/mosaic_array.h"

#include <memory>
#include <vector>

namespace py = pybind11;

namespace framequilt::python {

py::array arrayOf(const cv::Mat& matrix, int channels, bool writable) {
  std::vector<py::ssize_t> shape = {matrix.rows, matrix.cols};
  std::vector<py::ssize_t> strides = {static_cast<py::ssize_t>(matrix.step[0]), channels};
  if (channels > 1) {
    shape.push_back(channels);
    strides.push_back(1);
  }
  // A header of our own counts as one more owner of the pixels.
  auto kept = std::make_unique<cv::Mat>(matrix);
  const py::capsule owner(kept.get(), [](void* header) { delete static_cast<cv::Mat*>(header); });
  const unsigned char* const pixels = kept.release()->data;
  py::array array = matrix.empty()
                        ? py::array(py::dtype::of<unsigned char>(), shape)
                        : py::array(py::dtype::of<unsigned char>(), shape, strides, pixels, owner);
  if (!writable) array.attr("setflags")(py::arg("write") = false);
  return array;
}

}  // namespace framequilt::python
