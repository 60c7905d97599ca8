// SPDX-License-Identifier: Apache-2.0
#include "interface/report.h"

#include <cstdio>
#include <mutex>

namespace framequilt {
namespace {

void printLine(const char* line, std::size_t length, void* /*context*/) {
  std::fwrite(line, 1, length, stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

struct Sink {
  std::mutex mutex;
  ReportSink write = printLine;
  void* context = nullptr;
};

// Never destroyed: a worker of a run that nobody stopped may still report while the process ends.
Sink& sink() {
  static Sink& instance = *new Sink;
  return instance;
}

}  // namespace

void report(std::string_view line) {
  Sink& target = sink();
  const std::lock_guard lock(target.mutex);
  target.write(line.data(), line.size(), target.context);
}

void setReportSink(ReportSink write, void* context) {
  Sink& target = sink();
  const std::lock_guard lock(target.mutex);
  target.write = write != nullptr ? write : printLine;
  target.context = write != nullptr ? context : nullptr;
}

}  // namespace framequilt
