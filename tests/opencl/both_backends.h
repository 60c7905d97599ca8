// SPDX-License-Identifier: Apache-2.0
/// \file
/// An open run of each backend at the same time, for tests that call the functions behind the
/// entry points.
#pragma once

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"
#include "tests/support/guarded.h"

struct PlaneSize {
  int rows, cols;

  std::size_t bytes(int channels = 1) const {
    return static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols) *
           static_cast<std::size_t>(channels);
  }
  std::string name() const { return std::to_string(rows) + " x " + std::to_string(cols); }
};

/// Sizes that end within, at and behind a group of 16 x 16 items, the smallest and a usual one.
inline const std::vector<PlaneSize> kPlaneSizes = {
    {1, 1},   {1, 9},   {9, 1},   {2, 3},   {4, 4},   {5, 5},    {15, 17},
    {16, 16}, {32, 48}, {33, 31}, {50, 64}, {64, 51}, {97, 131}, {240, 320}};

/// `count` bytes of several natures: noise, one value, extremes side by side, little beside black.
std::vector<Bytes> contents(std::size_t count, std::uint64_t seed);

/// A run of the card for frames of up to 240 x 320 pixels of 3 channels, and one of the host with
/// every plane that its functions work in.
class BothBackends : public EitherMemory {
 protected:
  static constexpr PlaneSize kLargest = {240, 320};

  void SetUp() override;
  void TearDown() override;

  Journal journal_;
};

/// A buffer of the card with these bytes, until the end of the scope.
class CardPlane {
 public:
  explicit CardPlane(const Bytes& bytes);
  ~CardPlane();
  CardPlane(const CardPlane&) = delete;
  CardPlane& operator=(const CardPlane&) = delete;

  cl_mem memory() const { return memory_; }

 private:
  cl_mem memory_;
};

/// The first `count` bytes of a buffer of the card.
Bytes readBack(cl_mem memory, std::size_t count);

/// The same number, or neither is one.
testing::AssertionResult sameNumber(float one, float two);
