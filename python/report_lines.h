// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace framequilt::python {

/// Drops the engine's lines until Python sets a sink, and makes `set_report_sink`.
void bindReportSink(pybind11::module_& module);

}  // namespace framequilt::python
