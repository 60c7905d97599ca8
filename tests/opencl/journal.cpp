// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/journal.h"

#include <framequilt/framequilt.h>
#include <framequilt/report_sink.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <utility>

namespace {

std::atomic<Journal*> open = nullptr;

void addLine(const char* line, std::size_t length, void* journal) {
  static_cast<Journal*>(journal)->add(Journal::line({line, length}));
}

}  // namespace

// Takes the place of the library's empty one.
void CrossPlatformOutputDebugString(char* text) {
  Journal* const journal = open;
  if (journal != nullptr) journal->add(Journal::debug(text));
}

Journal::Journal() {
  framequilt::setReportSink(&addLine, this);
  open = this;
}

Journal::~Journal() {
  open = nullptr;
  framequilt::setReportSink(nullptr, nullptr);
}

std::string Journal::line(std::string_view text) { return std::string("line: ").append(text); }
std::string Journal::debug(std::string_view text) { return std::string("debug: ").append(text); }

void Journal::add(std::string entry) {
  const std::lock_guard lock(mutex_);
  (std::this_thread::get_id() == caller_ ? ofCaller_ : ofWorkers_).push_back(std::move(entry));
}

Journal::Entries Journal::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(ofCaller_, {});
}

Journal::Entries Journal::takeOfWorkers() {
  const std::lock_guard lock(mutex_);
  std::sort(ofWorkers_.begin(), ofWorkers_.end());
  return std::exchange(ofWorkers_, {});
}
