// SPDX-License-Identifier: Apache-2.0
/// \file
/// Runs the tests of a program that needs OpenCL, and fails where they can't run: a test that is
/// left out looks like one that passes. With --serialise, one call at a time enters the runtime.
#include <CL/cl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string_view>

#include "tests/support/opencl_layer.h"

namespace {

bool openclIsReady() {
  namespace layer = framequilt::opencl_layer;
  cl_uint platforms = 0;
  const cl_int status = clGetPlatformIDs(0, nullptr, &platforms);
  const bool ready = status == CL_SUCCESS && layer::loaded() && layer::runtimeFound();
  layer::resetRecords();
  return ready;
}

}  // namespace

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  if (count > 1 && std::string_view(arguments[1]) == "--serialise") {
    framequilt::opencl_layer::serialise(true);
  }
  // The build lists the tests without any of what they need.
  if (!GTEST_FLAG_GET(list_tests) && !openclIsReady()) {
    std::fputs(
        "OpenCL tests need PoCL and the test layer: run scripts/setup, then ctest (not the program "
        "alone)\n",
        stderr);
    return 1;
  }
  return RUN_ALL_TESTS();
}
