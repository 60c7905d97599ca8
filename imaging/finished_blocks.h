// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <vector>

namespace framequilt {

/// A block whose distances are finished.
struct FinishedBlock {
  int block;
  const float* ground;  ///< Null where all are 0, and where the ground is full.
  const float* frame;   ///< The same.
  std::size_t slot;     ///< Which of the maps they lie in.
};

/// Blocks on their way from the thread that spreads distances, which no other can do, to any that
/// weighs and mixes.
class FinishedBlocks {
 public:
  static constexpr std::size_t kSlots = 4;

  FinishedBlocks() {
    // Nothing is allocated once pixels are written.
    ready_.reserve(kSlots);
    for (std::size_t slot = 0; slot < kSlots; ++slot) free_.push_back(slot);
  }

  void add(const FinishedBlock& block) {
    const std::lock_guard lock(mutex_);
    ready_.push_back(block);
    changed_.notify_one();
  }
  void close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
  }

  /// Waits for a block, until the last is taken.
  std::optional<FinishedBlock> take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !ready_.empty() || closed_; });
    return takeReady();
  }
  /// Does not wait.
  std::optional<FinishedBlock> takeIfAny() {
    const std::lock_guard lock(mutex_);
    return takeReady();
  }

  void giveBack(std::size_t slot) {
    const std::lock_guard lock(mutex_);
    free_.push_back(slot);
    slotFree_.notify_one();
  }
  /// A free slot, or none while there is a block to be mixed instead.
  std::optional<std::size_t> slotOrWork() {
    std::unique_lock lock(mutex_);
    slotFree_.wait(lock, [this] { return !free_.empty() || !ready_.empty(); });
    if (free_.empty()) return std::nullopt;
    const std::size_t slot = free_.back();
    free_.pop_back();
    return slot;
  }

 private:
  std::optional<FinishedBlock> takeReady() {
    if (ready_.empty()) return std::nullopt;
    const FinishedBlock block = ready_.front();
    ready_.erase(ready_.begin());
    return block;
  }

  std::mutex mutex_;
  std::condition_variable changed_, slotFree_;
  std::vector<FinishedBlock> ready_;
  std::vector<std::size_t> free_;
  bool closed_ = false;
};

}  // namespace framequilt
