// SPDX-License-Identifier: Apache-2.0
// The part of the Python package that is made of C++.
#include <pybind11/pybind11.h>

#include "framequilt/session.h"
#include "python/bindings.h"
#include "python/enumerations.h"
#include "python/report_lines.h"

// NOLINTNEXTLINE: a macro of pybind11.
PYBIND11_MODULE(_framequilt, module) {
  using namespace framequilt::python;
  // Types say where users find them.
  module.attr("__module__") = "framequilt";
  module.attr("__version__") = FRAMEQUILT_VERSION;
  module.attr("AUTO_SCALE") = framequilt::kAutoScale;
  bindEnumerations(module);
  bindErrors(module);
  bindResults(module);
  bindReportSink(module);
  bindSession(module);
  bindOpenclDevices(module);
}
