// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>

#include <string>

#include "framequilt/opencl_devices.h"
#include "python/bindings.h"
#include "python/library_call.h"

namespace py = pybind11;

namespace framequilt::python {
namespace {

std::string textOf(const OpenclDevice& device) {
  const std::string name = device.name.empty() ? "no device" : device.name;
  const std::string use = device.used ? "used" : "not used: " + device.reason;
  return "<OpenclDevice " + device.platform + ", " + name + ", " + use + ">";
}

}  // namespace

void bindOpenclDevices(py::module_& module) {
  py::class_<OpenclDevice>(module, "OpenclDevice", "A device of one of the OpenCL platforms.")
      .def_readonly("platform", &OpenclDevice::platform, "The platform's name.")
      .def_readonly("name", &OpenclDevice::name,
                    "Empty: the platform has no device, the rest is empty too.")
      .def_readonly("kind", &OpenclDevice::kind, "\"GPU\", \"CPU\", \"accelerator\" or \"other\".")
      .def_readonly("version", &OpenclDevice::version,
                    "As the device tells it: \"OpenCL 2.0 ...\".")
      .def_readonly("memory_megabytes", &OpenclDevice::memoryMegabytes, "Of 1048576 bytes.")
      .def_readonly("used", &OpenclDevice::used, "A session takes this one; at most one of all.")
      .def_readonly("reason", &OpenclDevice::reason, "Why it is not used; empty where it is.")
      .def("__repr__", &textOf);

  module.def(
      "opencl_devices", [] { return libraryCall([] { return openclDevices(); }); },
      "Every device of every OpenCL platform, and the platforms without one. Nothing is started.");
  module.def(
      "opencl_kernel_file", [] { return libraryCall([] { return openclKernelFile(); }); },
      "Path of the kernel file that lies beside the library; empty where it is missing.");
  module.def(
      "opencl_obstacle",
      [](const std::string& kernelFile) {
        return libraryCall([&] { return openclObstacle(kernelFile); });
      },
      py::arg("kernel_file") = std::string(),
      "Why no session can use OpenCL, and what to do, in one line; empty where it can be tried.");
}

}  // namespace framequilt::python
