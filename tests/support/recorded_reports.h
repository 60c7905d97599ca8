// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/report_sink.h>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using Lines = std::vector<std::string>;

/// Collects the engine's lines while it lives, those of the thread that made it apart from those of
/// other threads: the order of lines is only defined within one thread.
class RecordedReports {
 public:
  RecordedReports() { framequilt::setReportSink(&append, this); }
  ~RecordedReports() { framequilt::setReportSink(nullptr, nullptr); }
  RecordedReports(const RecordedReports&) = delete;
  RecordedReports& operator=(const RecordedReports&) = delete;

  /// In the order in which they came.
  Lines ofCaller() const {
    const std::lock_guard lock(mutex_);
    return ofCaller_;
  }

  /// Those since the last call.
  Lines takeOfCaller() {
    const std::lock_guard lock(mutex_);
    return std::exchange(ofCaller_, {});
  }

  /// Sorted by text.
  Lines ofWorkers() const {
    const std::lock_guard lock(mutex_);
    Lines lines = ofWorkers_;
    std::sort(lines.begin(), lines.end());
    return lines;
  }

 private:
  static void append(const char* line, std::size_t length, void* recorder) {
    auto& self = *static_cast<RecordedReports*>(recorder);
    const std::lock_guard lock(self.mutex_);
    const bool fromCaller = std::this_thread::get_id() == self.caller_;
    (fromCaller ? self.ofCaller_ : self.ofWorkers_).emplace_back(line, length);
  }

  const std::thread::id caller_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  Lines ofCaller_, ofWorkers_;
};
