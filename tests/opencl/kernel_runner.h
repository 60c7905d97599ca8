// SPDX-License-Identifier: Apache-2.0
/// \file
/// Runs kernels of the built program on the first OpenCL device. Everything throws
/// std::runtime_error where OpenCL refuses; without a platform it says what is missing.
#pragma once

#define CL_TARGET_OPENCL_VERSION 120
#include <CL/cl.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

/// Owns one OpenCL object.
template <class Handle, cl_int(CL_API_CALL* release)(Handle)>
struct ReleaseHandle {
  void operator()(Handle handle) const { release(handle); }
};
template <class Handle, cl_int(CL_API_CALL* release)(Handle)>
using OwnedHandle = std::unique_ptr<std::remove_pointer_t<Handle>, ReleaseHandle<Handle, release>>;

void requireSuccess(cl_int status, const std::string& call);

/// Whether the tests run on an emulator that watches every access. Inputs are few and small then,
/// and a buffer is exactly as long as its contents.
bool isEmulated();

/// The device of this process, its context and its queue.
class Device {
 public:
  static const Device& get();

  cl_device_id id() const { return id_; }
  cl_context context() const { return context_.get(); }
  cl_command_queue queue() const { return queue_.get(); }

 private:
  Device();

  cl_device_id id_ = nullptr;
  OwnedHandle<cl_context, clReleaseContext> context_;
  OwnedHandle<cl_command_queue, clReleaseCommandQueue> queue_;
};

/// Bytes on the device between two margins that nobody may write.
class DeviceMemory {
 public:
  /// Starts as `contents`; where that is null, unwritten.
  DeviceMemory(const void* contents, std::size_t bytes);
  ~DeviceMemory();
  DeviceMemory(const DeviceMemory&) = delete;
  DeviceMemory& operator=(const DeviceMemory&) = delete;

  cl_mem handle() const { return inner_ != nullptr ? inner_.get() : whole_.get(); }

  /// Expects both margins as they were.
  void read(void* contents) const;

 private:
  using Memory = OwnedHandle<cl_mem, clReleaseMemObject>;

  std::size_t bytes_, margin_;
  Memory whole_, inner_;
};

template <class T>
class DeviceBuffer {
 public:
  explicit DeviceBuffer(const std::vector<T>& contents)
      : count_(contents.size()), memory_(contents.data(), contents.size() * sizeof(T)) {}

  /// For what a kernel has to write as a whole.
  explicit DeviceBuffer(std::size_t count) : count_(count), memory_(nullptr, count * sizeof(T)) {}

  std::vector<T> values() const {
    std::vector<T> contents(count_);
    memory_.read(contents.data());
    return contents;
  }

  cl_mem handle() const { return memory_.handle(); }

 private:
  std::size_t count_;
  DeviceMemory memory_;
};

using DeviceBytes = DeviceBuffer<unsigned char>;
using DeviceFloats = DeviceBuffer<float>;

/// Global and local size; columns come first.
struct Grid {
  std::array<std::size_t, 2> global, local;
};

/// Work-groups of 16 x 16 that cover a plane; at least one more than needed on an exact multiple.
Grid gridOver(int rows, int cols);

/// The items of a column-border launch.
Grid borderGrid(int paddedRows, int border);

/// The kernels' source as it was built.
std::string kernelSource();

class KernelProgram {
 public:
  explicit KernelProgram(const std::string& source);

  /// The program as it is, built once.
  static const KernelProgram& get();

  /// Runs a kernel to its end. Arguments are ints and device buffers.
  template <class... Arguments>
  void run(const std::string& name, const Grid& grid, const Arguments&... arguments) const {
    cl_int status = CL_SUCCESS;
    const OwnedHandle<cl_kernel, clReleaseKernel> kernel(
        clCreateKernel(program_.get(), name.c_str(), &status));
    requireSuccess(status, name);
    cl_uint index = 0;
    (setArgument(kernel.get(), index++, arguments), ...);
    launch(kernel.get(), grid);
  }

 private:
  static void setArgument(cl_kernel kernel, cl_uint index, int value) {
    requireSuccess(clSetKernelArg(kernel, index, sizeof value, &value), "clSetKernelArg");
  }
  template <class T>
  static void setArgument(cl_kernel kernel, cl_uint index, const DeviceBuffer<T>& buffer) {
    const cl_mem memory = buffer.handle();
    requireSuccess(clSetKernelArg(kernel, index, sizeof(cl_mem), &memory), "clSetKernelArg");
  }
  static void launch(cl_kernel kernel, const Grid& grid);

  OwnedHandle<cl_program, clReleaseProgram> program_;
};

/// Runs a kernel of the program as it is.
template <class... Arguments>
void runKernel(const std::string& name, const Grid& grid, const Arguments&... arguments) {
  KernelProgram::get().run(name, grid, arguments...);
}

/// Bit for bit: the two zeros differ.
template <class T>
testing::AssertionResult sameBits(const std::vector<T>& expected, const std::vector<T>& actual) {
  const auto differ = [](const void* one, const void* other, std::size_t elements) {
    return std::memcmp(one, other, elements * sizeof(T)) != 0;
  };
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure() << actual.size() << " elements, not " << expected.size();
  }
  if (!differ(expected.data(), actual.data(), expected.size())) return testing::AssertionSuccess();

  std::size_t i = 0;
  while (!differ(&expected[i], &actual[i], 1)) ++i;
  return testing::AssertionFailure() << "element " << i << " of " << expected.size() << " is "
                                     << +actual[i] << ", not " << +expected[i];
}
