// SPDX-License-Identifier: Apache-2.0
// Skips all tests of a program on machines without fused multiply-add.
#include <gtest/gtest.h>

namespace {

class NeedsFma : public testing::Environment {
  void SetUp() override {
    if (!__builtin_cpu_supports("fma")) GTEST_SKIP() << "this machine has no fused multiply-add";
  }
};

[[maybe_unused]] const auto* const environment =
    testing::AddGlobalTestEnvironment(new NeedsFma);  // owned by the framework

}  // namespace
