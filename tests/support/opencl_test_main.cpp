// SPDX-License-Identifier: Apache-2.0
/// \file
/// Runs the tests of a program that needs OpenCL, and fails where they can't run: a test that is
/// left out looks like one that passes. With --serialise, one call at a time enters the runtime.
#include <CL/cl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tests/support/opencl_layer.h"

namespace {

/// What is missing; null when nothing is.
const char* missing() {
  namespace layer = framequilt::opencl_layer;
  cl_uint platforms = 0;
  const cl_int status = clGetPlatformIDs(0, nullptr, &platforms);
  layer::resetRecords();
  if (std::getenv("FRAMEQUILT_TEST_ON_CARD") != nullptr) {
    if (status == CL_SUCCESS && !layer::loaded()) return nullptr;
    return "Tests on a card need its driver, and no OPENCL_LAYERS in front of it\n";
  }
  if (status == CL_SUCCESS && layer::loaded() && layer::runtimeFound()) return nullptr;
  return "OpenCL tests need PoCL and the test layer: run scripts/setup, then ctest (not the "
         "program "
         "alone)\n";
}

}  // namespace

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  if (count > 1 && std::string_view(arguments[1]) == "--serialise") {
    framequilt::opencl_layer::serialise(true);
  }
  // The build lists the tests without any of what they need.
  const char* const lack = GTEST_FLAG_GET(list_tests) ? nullptr : missing();
  if (lack != nullptr) {
    std::fputs(lack, stderr);
    return 1;
  }
  return RUN_ALL_TESTS();
}
