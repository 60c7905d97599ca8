// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

/// Puts memory of the test's own into one of the library's planes and releases what the plane
/// holds at the end of the scope.
template <class T>
class HostPlane {
 public:
  HostPlane(T*& plane, const std::vector<T>& contents) : plane_(plane), size_(contents.size()) {
    EXPECT_EQ(plane_, nullptr) << "left over from an earlier test";
    plane_ = new T[size_];
    std::copy(contents.begin(), contents.end(), plane_);
  }
  ~HostPlane() {
    delete[] plane_;
    plane_ = nullptr;
  }
  HostPlane(const HostPlane&) = delete;
  HostPlane& operator=(const HostPlane&) = delete;

  std::vector<T> values() const { return {plane_, plane_ + size_}; }

 private:
  T*& plane_;
  std::size_t size_;
};
