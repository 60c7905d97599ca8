// SPDX-License-Identifier: Apache-2.0
/// \file
/// A second thread for the length of a call, for pixel work that two can do.
#pragma once

#include <cstddef>
#include <functional>
#include <thread>

namespace framequilt {

/// Whether work on so many pixels is done by two threads: where there are two processors and enough
/// pixels. Results do not depend on it.
bool paysForTwo(std::size_t pixels) noexcept;

/// For tests and benchmarks: one or two threads, however few the pixels and processors are; 0
/// decides as above again.
void setThreads(int threads) noexcept;

/// Runs `work` on a thread of its own, if that is wanted and can be had.
class Assistant {
 public:
  Assistant(bool wanted, const std::function<void()>& work);
  ~Assistant() { join(); }
  Assistant(const Assistant&) = delete;
  Assistant& operator=(const Assistant&) = delete;

  bool works() const { return thread_.joinable(); }
  /// Waits until the work is done.
  void join();

 private:
  std::thread thread_;
};

}  // namespace framequilt
