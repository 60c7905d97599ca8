// SPDX-License-Identifier: Apache-2.0
/// \file
/// A second thread for the length of a call, for pixel work that two can do.
#pragma once

#include <atomic>
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

/// A thread that is there anyway and works for others while it has nothing to do: it begins sooner
/// than a new one.
class Lender {
 public:
  /// Has it do `work`, which does not throw and stays until `awaitLent` returns. False when it is
  /// not there or busy.
  virtual bool lend(const std::function<void()>& work) = 0;
  virtual void awaitLent() = 0;

 protected:
  ~Lender() = default;
};

/// Null: there is none. Not while there is an `Assistant`.
void setLender(Lender* lender) noexcept;

/// Runs `work`, which does not throw, beside the caller, if that is wanted and a thread can be had.
/// Without one `works` is false, and the caller does all of it.
class Assistant {
 public:
  Assistant(bool wanted, std::function<void()> work);
  ~Assistant() { join(); }
  Assistant(const Assistant&) = delete;
  Assistant& operator=(const Assistant&) = delete;

  bool works() const { return lender_ != nullptr || thread_.joinable(); }
  /// Waits until the work is done.
  void join();

 private:
  void joinThread();

  std::function<void()> work_;
  Lender* lender_ = nullptr;
  std::thread thread_;
  std::atomic<bool> done_{false};  // The last that the thread touches here.
};

}  // namespace framequilt
