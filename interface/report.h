// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

#include "framequilt/report_sink.h"

namespace framequilt {

/// Hands one fixed line to the sink, by default standard output (text, line end, flush). Lines of
/// different threads never mix.
void report(std::string_view line);

/// A line that ends with a number. Takes no memory: what a frame says of itself when it lies in the
/// mosaic may not fail any more. Of a text beyond 76 bytes the rest is left out.
void report(std::string_view text, std::int64_t number);

/// The same as `report(line)` for the texts that have no line end on standard output: whatever
/// follows them there stands on the same line. A sink receives them as it does lines.
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
