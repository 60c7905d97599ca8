// SPDX-License-Identifier: Apache-2.0
/// \file
/// The kernels and buffers of a run as hosts know them.
#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <string>
#include <vector>

struct KernelOfRun {
  std::string name;  ///< In the kernel file.
  cl_kernel* global;
  std::string message;  ///< When it cannot be created; a line, or as by `debugText`.
};

enum class Extent { kPlane, kFloats, kTwoMore, kFourMore, kFrame };

struct BufferOfRun {
  cl_mem* global;
  Extent extent;
  std::vector<std::string> messages;  ///< When it cannot be created; none or one.

  std::size_t bytes(std::size_t rows, std::size_t cols, std::size_t channels) const;
};

/// In the order of creation.
const std::vector<KernelOfRun>& kernelsOfRun();
const std::vector<BufferOfRun>& buffersOfRun();

/// Rows of `buffersOfRun`: the one that outlives a stop, and the others in the order of release.
inline constexpr std::size_t kKeptBuffer = 14;
const std::vector<std::size_t>& buffersInOrderOfRelease();
