// SPDX-License-Identifier: Apache-2.0
#include "interface/report.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <mutex>

#include "interface/never_destroyed.h"

namespace framequilt {
namespace {

struct Sink {
  ReportSink write = nullptr;
  void* context = nullptr;
};

struct Sinks {
  std::mutex mutex;
  Sink ofProcess;  // Null: standard output.
  Sink ofSession;  // Null: that of the process.
};

// Never destroyed: a worker of a run that nobody stopped may still report while the process ends.
Sinks& sinks() {
  static const NeverDestroyed<Sinks> instance;
  return *instance;
}

void set(Sink& sink, ReportSink write, void* context) {
  const std::lock_guard lock(sinks().mutex);
  sink = {write, write != nullptr ? context : nullptr};
}

void print(std::string_view text, bool endLine) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (endLine) std::fputc('\n', stdout);
  std::fflush(stdout);
}

void emit(std::string_view text, bool endLine) {
  Sinks& all = sinks();
  const std::lock_guard lock(all.mutex);
  const Sink& sink = all.ofSession.write != nullptr ? all.ofSession : all.ofProcess;
  if (sink.write != nullptr) {
    sink.write(text.data(), text.size(), sink.context);
  } else {
    print(text, endLine);
  }
}

}  // namespace

void report(std::string_view line) { emit(line, true); }

void report(std::string_view text, std::int64_t number) {
  std::array<char, 96> line{};
  constexpr std::size_t kDigits = 20;
  char* const digits =
      std::copy_n(text.data(), std::min(text.size(), line.size() - kDigits), line.data());
  const char* const end = std::to_chars(digits, line.data() + line.size(), number).ptr;
  report(std::string_view(line.data(), static_cast<std::size_t>(end - line.data())));
}

void reportUnended(std::string_view text) { emit(text, false); }

void setReportSink(ReportSink write, void* context) { set(sinks().ofProcess, write, context); }

SessionReports::SessionReports(ReportSink sink, void* context) {
  set(sinks().ofSession, sink, context);
}

SessionReports::~SessionReports() { set(sinks().ofSession, nullptr, nullptr); }

}  // namespace framequilt
