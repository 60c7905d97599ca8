// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/engine_lines.h"

#include <framequilt/report_sink.h>

#include <cstddef>
#include <cstdio>

namespace framequilt::tool {
namespace {

void drop(const char* /*line*/, std::size_t /*length*/, void* /*context*/) {}

// Bytes as they are: some lines are not UTF-8.
void show(const char* line, std::size_t length, void* /*context*/) {
  std::fwrite(line, 1, length, stderr);
  std::fputc('\n', stderr);
}

}  // namespace

EngineLines::EngineLines(bool shown) { setReportSink(shown ? show : drop, nullptr); }

EngineLines::~EngineLines() { setReportSink(nullptr, nullptr); }

}  // namespace framequilt::tool
