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

#include "framequilt/records.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"
#include "tests/support/guarded.h"
#include "tests/support/scene.h"

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

/// Calls `check(size, channels, first, second)` for every size, channel count and pair of images of
/// several natures.
template <class Check>
void forEveryPair(Check check) {
  for (const PlaneSize size : kPlaneSizes) {
    for (const int channels : {1, 3}) {
      SCOPED_TRACE(size.name() + " x " + std::to_string(channels));
      const std::size_t bytes = size.bytes(channels);
      const std::vector<Bytes> first = contents(bytes, 3);
      const std::vector<Bytes> second = contents(bytes, 4);
      for (std::size_t i = 0; i < first.size(); ++i) {
        // Each nature beside itself and beside another one.
        for (const std::size_t k : {i, (i + 1) % first.size()}) {
          SCOPED_TRACE("natures " + std::to_string(i) + " and " + std::to_string(k));
          check(size, channels, first[i], second[k]);
        }
      }
    }
  }
}

/// A cut of a scene with its top-left pixel at `corner`, the same scene for every channel count.
Frame cutOf(PlaneSize size, int channels, SPoint corner = {40, 50});

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
