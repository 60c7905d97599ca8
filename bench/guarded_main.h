// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <exception>

/// What `program` returns; 2, after one line, when it throws.
inline int guardedMain(const char* name, int (*program)(int, char**), int argc, char** argv) {
  try {
    return program(argc, argv);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s: %s\n", name, failure.what());
    return 2;
  }
}
