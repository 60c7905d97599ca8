// SPDX-License-Identifier: Apache-2.0
/// \file
/// A machine for a test: a card that the library accepts, in either way of sharing memory with it,
/// and a working folder with the kernel file.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/opencl_layer.h"
#include "tests/support/scoped_folder.h"

/// How host and device share memory.
enum class Memory { kUnified, kDiscrete };

inline const char* nameOf(Memory memory) {
  return memory == Memory::kUnified ? "unified" : "discrete";
}
inline void PrintTo(Memory memory, std::ostream* out) { *out << nameOf(memory); }

/// At its end nothing wrong may stand in the layer's books.
class DeviceFixture : public testing::Test {
 protected:
  explicit DeviceFixture(Memory memory = Memory::kUnified);
  ~DeviceFixture() override;

  /// From now on the machine has the default card, or no OpenCL at all.
  static void withCard();
  static void withoutCard();

  ScopedFolder folder_;
};

/// What outlives a stop by design: one buffer, which holds its context.
void expectOnlyKeptBuffer();
/// Releases that, too.
void releaseKeptBuffer();

/// For tests that hold in both memories.
class EitherMemory : public DeviceFixture, public testing::WithParamInterface<Memory> {
 protected:
  EitherMemory() : DeviceFixture(GetParam()) {}
};

inline std::string memoryName(const testing::TestParamInfo<Memory>& memory) {
  return nameOf(memory.param);
}

#define FRAMEQUILT_IN_EITHER_MEMORY(Suite)                                                      \
  INSTANTIATE_TEST_SUITE_P(Memory, Suite, testing::Values(Memory::kUnified, Memory::kDiscrete), \
                           memoryName)
