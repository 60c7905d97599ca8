// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

#include "framequilt/report_sink.h"

namespace framequilt {

/// Hands one fixed line to the sink, by default standard output (text, line end, flush). Lines of
/// different threads never mix.
void report(std::string_view line);

/// The same for the texts that have no line end on standard output: whatever follows them there
/// stands on the same line. A sink receives them as it does lines.
void reportUnended(std::string_view text);

/// While it lives, `sink` receives the lines in place of the process's own sink. One at a time.
class SessionReports {
 public:
  /// Without effect where `sink` is null.
  SessionReports(ReportSink sink, void* context);
  ~SessionReports();
  SessionReports(const SessionReports&) = delete;
  SessionReports& operator=(const SessionReports&) = delete;
};

}  // namespace framequilt
