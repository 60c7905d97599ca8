// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/recorded_messages.h"

#include <framequilt/report_sink.h>

#include <cstddef>
#include <mutex>
#include <thread>
#include <utility>

namespace {

struct Record {
  std::mutex mutex;
  bool on = false;
  std::thread::id caller;
  Messages messages;
};

// Never destroyed: threads of the library may still speak while the process ends.
Record& theRecord() {
  static Record& instance = *new Record;
  return instance;
}

void add(std::string message) {
  Record& record = theRecord();
  const std::lock_guard lock(record.mutex);
  if (!record.on || std::this_thread::get_id() != record.caller) return;
  record.messages.push_back(std::move(message));
}

void addLine(const char* text, std::size_t length, void* /*context*/) { add({text, length}); }

void listen(bool on) {
  {
    Record& record = theRecord();
    const std::lock_guard lock(record.mutex);
    record.on = on;
    record.caller = std::this_thread::get_id();
    record.messages.clear();
  }
  framequilt::setReportSink(on ? addLine : nullptr, nullptr);
}

}  // namespace

__attribute__((visibility("default"))) void CrossPlatformOutputDebugString(char* text) {
  add(debugText(text));
}

RecordedMessages::RecordedMessages() { listen(true); }
RecordedMessages::~RecordedMessages() { listen(false); }

Messages RecordedMessages::take() {
  Record& record = theRecord();
  const std::lock_guard lock(record.mutex);
  return std::exchange(record.messages, {});
}

void RecordedMessages::letThrough() { framequilt::setReportSink(nullptr, nullptr); }
