// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace framequilt {

/// Holds an object for as long as the process lives and longer than everything that is destroyed at
/// its end. Unlike one from `new` it cannot be refused: it lies in the memory of its holder, a
/// static variable.
template <class T>
class NeverDestroyed {
 public:
  template <class... Arguments>
  explicit NeverDestroyed(Arguments&&... arguments)
      : object_(new (memory_) T(std::forward<Arguments>(arguments)...)) {}
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  T& operator*() const { return *object_; }

 private:
  alignas(T) std::byte memory_[sizeof(T)];
  T* object_;
};

}  // namespace framequilt
