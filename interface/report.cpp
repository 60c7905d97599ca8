// SPDX-License-Identifier: Apache-2.0
#include "interface/report.h"

#include <cstdio>
#include <mutex>

namespace framequilt {
namespace {

struct Sink {
  std::mutex mutex;
  ReportSink write = nullptr;  // Null: standard output.
  void* context = nullptr;
};

// Never destroyed: a worker of a run that nobody stopped may still report while the process ends.
Sink& sink() {
  static Sink& instance = *new Sink;
  return instance;
}

void print(std::string_view text, bool endLine) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (endLine) std::fputc('\n', stdout);
  std::fflush(stdout);
}

void emit(std::string_view text, bool endLine) {
  Sink& target = sink();
  const std::lock_guard lock(target.mutex);
  if (target.write != nullptr) {
    target.write(text.data(), text.size(), target.context);
  } else {
    print(text, endLine);
  }
}

}  // namespace

void report(std::string_view line) { emit(line, true); }

void reportUnended(std::string_view text) { emit(text, false); }

void setReportSink(ReportSink write, void* context) {
  Sink& target = sink();
  const std::lock_guard lock(target.mutex);
  target.write = write;
  target.context = write != nullptr ? context : nullptr;
}

}  // namespace framequilt
