// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace framequilt::python {

/// Each makes a part of the module. Enumerations come first: defaults are members of them.
void bindErrors(pybind11::module_& module);
void bindResults(pybind11::module_& module);
void bindSession(pybind11::module_& module);
void bindOpenclDevices(pybind11::module_& module);

}  // namespace framequilt::python
