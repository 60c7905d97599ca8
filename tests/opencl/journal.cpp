// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/journal.h"

#include <framequilt/framequilt.h>
#include <framequilt/report_sink.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <thread>
#include <utility>

namespace {

struct Pages {
  std::mutex mutex;
  bool open = false;
  std::thread::id caller;
  Entries ofCaller, ofWorkers;
};

// Never destroyed: threads of the library may still speak while the process ends.
Pages& thePages() {
  static Pages& instance = *new Pages;
  return instance;
}

void add(std::string entry) {
  Pages& pages = thePages();
  const std::lock_guard lock(pages.mutex);
  if (!pages.open) return;
  const bool byCaller = std::this_thread::get_id() == pages.caller;
  (byCaller ? pages.ofCaller : pages.ofWorkers).push_back(std::move(entry));
}

void addLine(const char* line, std::size_t length, void* /*context*/) { add({line, length}); }

void turnTheLeaf(bool open) {
  Pages& pages = thePages();
  const std::lock_guard lock(pages.mutex);
  pages.open = open;
  pages.caller = std::this_thread::get_id();
  pages.ofCaller.clear();
  pages.ofWorkers.clear();
}

}  // namespace

// Takes the place of the library's empty one.
__attribute__((visibility("default"))) void CrossPlatformOutputDebugString(char* text) {
  add(Journal::debug(text));
}

Journal::Journal() {
  turnTheLeaf(true);
  framequilt::setReportSink(&addLine, nullptr);
}

Journal::~Journal() {
  framequilt::setReportSink(nullptr, nullptr);
  turnTheLeaf(false);
}

std::string Journal::debug(std::string_view text) { return std::string("debug: ").append(text); }

Entries Journal::take() {
  Pages& pages = thePages();
  const std::lock_guard lock(pages.mutex);
  return std::exchange(pages.ofCaller, {});
}

Entries Journal::takeOfWorkers() {
  Pages& pages = thePages();
  const std::lock_guard lock(pages.mutex);
  std::sort(pages.ofWorkers.begin(), pages.ofWorkers.end());
  return std::exchange(pages.ofWorkers, {});
}

void Journal::letThrough() { framequilt::setReportSink(nullptr, nullptr); }
