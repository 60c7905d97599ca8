// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// Elements between two zones that nobody may write.
template <class T>
class Guarded {
 public:
  static constexpr T kUntouched = T{171};

  explicit Guarded(std::size_t count) : all_(count + 2 * kZone, kUntouched) {}
  explicit Guarded(const std::vector<T>& contents) : Guarded(contents.size()) {
    std::copy(contents.begin(), contents.end(), data());
  }

  T* data() { return all_.data() + kZone; }
  std::size_t size() const { return all_.size() - 2 * kZone; }
  std::vector<T> values() const { return {all_.begin() + kZone, all_.end() - kZone}; }

  /// Nothing was written in front of the elements nor behind them.
  bool intact() const {
    const auto isUntouched = [](T value) { return value == kUntouched; };
    return std::all_of(all_.begin(), all_.begin() + kZone, isUntouched) &&
           std::all_of(all_.end() - kZone, all_.end(), isUntouched);
  }

 private:
  static constexpr int kZone = 64;
  std::vector<T> all_;
};

using Bytes = std::vector<unsigned char>;
using Floats = std::vector<float>;
using GuardedBytes = Guarded<unsigned char>;
using GuardedFloats = Guarded<float>;
