// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Gives a global of the library another value for one scope.
template <class T>
class ScopedValue {
 public:
  ScopedValue(T& global, T value) : global_(global), former_(global) { global_ = value; }
  ~ScopedValue() { global_ = former_; }
  ScopedValue(const ScopedValue&) = delete;
  ScopedValue& operator=(const ScopedValue&) = delete;

 private:
  T& global_;
  T former_;
};
