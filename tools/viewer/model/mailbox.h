// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace framequilt::viewer {

/// Messages from a thread that works to the one that owns the window.
///
/// `onFilled` is called, on the sender's thread, whenever a message comes into an empty box: it has
/// to see to it that the owner calls `take`.
template <class Message>
class Mailbox {
 public:
  explicit Mailbox(std::function<void()> onFilled) : onFilled_(std::move(onFilled)) {}

  /// Waits while `kMost` messages lie here, so that a fast sender cannot fill the memory. Once
  /// the box is closed the message is dropped.
  void post(Message message) {
    bool wasEmpty = false;
    {
      std::unique_lock lock(mutex_);
      roomMade_.wait(lock, [this] { return closed_ || messages_.size() < kMost; });
      if (closed_) return;
      wasEmpty = messages_.empty();
      messages_.push_back(std::move(message));
    }
    if (wasEmpty) onFilled_();
  }

  /// All messages, oldest first.
  std::vector<Message> take() {
    std::vector<Message> taken;
    {
      const std::lock_guard lock(mutex_);
      taken.swap(messages_);
    }
    roomMade_.notify_all();
    return taken;
  }

  /// The owner takes no more.
  void close() {
    {
      const std::lock_guard lock(mutex_);
      closed_ = true;
      messages_.clear();
    }
    roomMade_.notify_all();
  }

 private:
  static constexpr std::size_t kMost = 16;

  std::function<void()> onFilled_;
  std::mutex mutex_;
  std::condition_variable roomMade_;
  std::vector<Message> messages_;
  bool closed_ = false;
};

}  // namespace framequilt::viewer
