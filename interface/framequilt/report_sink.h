// SPDX-License-Identifier: Apache-2.0
/// \file
/// Where the fixed lines of the engine go.
#pragma once

#include <cstddef>

#include "export.h"

namespace framequilt {

/// Receives one fixed line of the engine: `length` bytes without the line end, not terminated,
/// not always UTF-8. Calls come from the caller's and from both worker threads, never two at
/// once. The sink must not throw and must not call the library.
using ReportSink = void (*)(const char* line, std::size_t length, void* context);

/// Sends the engine's lines to `sink` instead of standard output; a null `sink` restores standard
/// output. A session may have a sink of its own (`SessionOptions::reportSink`), which then gets all
/// of them while it is open. May be called at any time, from any thread; when it returns the former
/// sink is no longer in use.
FRAMEQUILT_EXPORT void setReportSink(ReportSink sink, void* context);

}  // namespace framequilt
