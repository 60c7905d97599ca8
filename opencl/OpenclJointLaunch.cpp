// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointLaunch.h"

#include <algorithm>
#include <utility>

#include "framequilt/tuning.h"
#include "opencl/OpenclJointState.h"

namespace framequilt {
namespace {

constexpr int kGroupSide = 16;

std::size_t overshooting(int side) {
  return static_cast<std::size_t>(std::max(side, 0) / kGroupSide * kGroupSide + kGroupSide);
}

template <class T>
cl_int setValue(cl_kernel kernel, cl_uint index, const T& value) {
  if (kernel == nullptr) return CL_INVALID_KERNEL;
  // NOLINTNEXTLINE(bugprone-sizeof-expression): a handle is a pointer, and that is what is passed.
  return clSetKernelArg(kernel, index, sizeof(T), &value);
}

cl_int setMemory(cl_kernel kernel, cl_uint index, cl_mem memory) {
  return memory == nullptr ? CL_INVALID_MEM_OBJECT : setValue(kernel, index, memory);
}

}  // namespace

Grid pixelGrid(int rows, int cols) {
  return {{overshooting(cols), overshooting(rows)}, {kGroupSide, kGroupSide}};
}

Grid borderGrid(int paddedRows, int border) {
  return {{static_cast<std::size_t>(std::max(border, 1)), overshooting(paddedRows)}, {1, 1}};
}

int smoothingBorderCL() noexcept { return std::clamp(filter2DKerSizeCL / 2, 0, 2); }

cl_int setArgument(cl_kernel kernel, cl_uint index, int value) {
  return setValue(kernel, index, cl_int{value});
}
cl_int setArgument(cl_kernel kernel, cl_uint index, Bytes plane) {
  return setMemory(kernel, index, plane.memory);
}
cl_int setArgument(cl_kernel kernel, cl_uint index, Floats plane) {
  return setMemory(kernel, index, plane.memory);
}

cl_int enqueue(cl_kernel kernel, const Grid& grid) {
  if (commandQueue == nullptr) return CL_INVALID_COMMAND_QUEUE;
  return clEnqueueNDRangeKernel(commandQueue, kernel, 2, nullptr, grid.global.data(),
                                grid.local.data(), 0, nullptr, nullptr);
}

void finishQueue() {
  if (commandQueue != nullptr) clFinish(commandQueue);
}

HostBuffer::HostBuffer(unsigned char* host, std::size_t bytes, Mode mode) {
  if (context == nullptr) {
    status_ = CL_INVALID_CONTEXT;
    return;
  }
  const cl_mem_flags use = mode == Mode::kShared ? CL_MEM_USE_HOST_PTR : CL_MEM_COPY_HOST_PTR;
  buffer_ = clCreateBuffer(context, CL_MEM_READ_WRITE | use, bytes, host, &status_);
  if (buffer_ == nullptr && status_ == CL_SUCCESS) status_ = CL_INVALID_MEM_OBJECT;
}

HostBuffer::~HostBuffer() { release(); }

cl_int HostBuffer::release() {
  if (buffer_ == nullptr) return CL_SUCCESS;
  if (!settled_) finishQueue();
  return clReleaseMemObject(std::exchange(buffer_, nullptr));
}

Mapping::Mapping(cl_mem buffer, std::size_t bytes, cl_map_flags access, Wait wait) {
  if (buffer == nullptr || commandQueue == nullptr) {
    status_ = buffer == nullptr ? CL_INVALID_MEM_OBJECT : CL_INVALID_COMMAND_QUEUE;
    return;
  }
  data_ = clEnqueueMapBuffer(commandQueue, buffer, wait == Wait::kForAll ? CL_TRUE : CL_FALSE,
                             access, 0, bytes, 0, nullptr, nullptr, &status_);
  if (data_ != nullptr) buffer_ = buffer;
}

Mapping::~Mapping() { unmap(); }

Mapping::Mapping(Mapping&& other) noexcept
    : buffer_(std::exchange(other.buffer_, nullptr)),
      data_(std::exchange(other.data_, nullptr)),
      status_(other.status_) {}

Mapping& Mapping::operator=(Mapping&& other) noexcept {
  if (this == &other) return *this;
  unmap();
  buffer_ = std::exchange(other.buffer_, nullptr);
  data_ = std::exchange(other.data_, nullptr);
  status_ = other.status_;
  return *this;
}

cl_int Mapping::unmap() {
  void* const data = std::exchange(data_, nullptr);
  const cl_mem buffer = std::exchange(buffer_, nullptr);
  if (data == nullptr) return CL_SUCCESS;
  const auto unmapOnce = [&] {
    return clEnqueueUnmapMemObject(commandQueue, buffer, data, 0, nullptr, nullptr);
  };
  const cl_int status = unmapOnce();
  // A plane that stays mapped is lost to every later launch.
  if (status != CL_SUCCESS) unmapOnce();
  return status;
}

}  // namespace framequilt
