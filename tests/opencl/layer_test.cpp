// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer.h"

#include <CL/cl.h>
#include <gtest/gtest.h>

namespace layer = framequilt::opencl_layer;

TEST(OpenclLayer, PresentsOnePlatform) {
  cl_uint n = 0;
  ASSERT_EQ(clGetPlatformIDs(0, nullptr, &n), CL_SUCCESS);
  EXPECT_EQ(n, 1u);
}
