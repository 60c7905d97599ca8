// SPDX-License-Identifier: Apache-2.0
/// \file
/// Launching kernels and sharing memory with the device, on `context` and `commandQueue`. A corner
/// thread and the caller's may use different kernels at the same time, never the same one.
///
/// Every status is an OpenCL one. Null handles are noticed here and never reach the runtime.
#pragma once

#include <CL/cl.h>

#include <array>
#include <concepts>
#include <cstddef>

namespace framequilt {

/// Device memory as a kernel sees it: a plane of bytes, a plane of floats.
struct Bytes {
  cl_mem memory;
};
struct Floats {
  cl_mem memory;
};

/// Work items across (columns) and down (rows).
struct Grid {
  std::array<std::size_t, 2> global;
  std::array<std::size_t, 2> local;
};

/// One item a pixel in groups of 16 x 16. Always at least one item more than there are pixels, so
/// that kernels have to look where they are.
Grid pixelGrid(int rows, int cols);
/// One item for each row and for each of the `border` columns that are filled on either side.
Grid borderGrid(int paddedRows, int border);

/// Pixels that the 5-tap smoothing needs on each side: half of `filter2DKerSizeCL`, held to the
/// 0..2 that the kernels have taps for.
int smoothingBorderCL() noexcept;

/// The arguments of a kernel as the runtime takes them.
cl_int setArgument(cl_kernel kernel, cl_uint index, int value);
cl_int setArgument(cl_kernel kernel, cl_uint index, Bytes plane);
cl_int setArgument(cl_kernel kernel, cl_uint index, Floats plane);
cl_int enqueue(cl_kernel kernel, const Grid& grid);

/// A kernel and the types of its parameters. A call with others does not compile.
template <class... Parameters>
class Kernel {
 public:
  explicit constexpr Kernel(cl_kernel& kernel) : kernel_(kernel) {}

  /// Sets the arguments and enqueues. Without every argument nothing is enqueued.
  template <class... Arguments>
  requires(std::same_as<Arguments, Parameters>&&...) cl_int operator()(
      const Grid& grid, Arguments... arguments) const {
    cl_uint index = 0;
    cl_int status = CL_SUCCESS;
    ((status |= setArgument(kernel_, index++, arguments)), ...);
    return status != CL_SUCCESS ? status : enqueue(kernel_, grid);
  }

 private:
  cl_kernel& kernel_;
};

/// Waits until the device has done all that was asked of it.
void finishQueue();

/// Host memory that is a device buffer while this lives.
class HostBuffer {
 public:
  enum class Mode {
    kShared,  ///< The device works in it; the host sees its results once it maps them.
    kCopied,  ///< The device works in a copy.
  };

  HostBuffer(unsigned char* host, std::size_t bytes, Mode mode = Mode::kShared);
  ~HostBuffer();
  HostBuffer(const HostBuffer&) = delete;
  HostBuffer& operator=(const HostBuffer&) = delete;

  cl_int status() const { return status_; }
  Bytes bytes() const { return {buffer_}; }
  /// The device is done with it, or the caller will wait for that before the memory goes: a release
  /// need not.
  void settle() { settled_ = true; }
  /// Releases it before its end. Waits for the device unless `settle` was called: it may still read
  /// or write the memory. A release that fails counts as one.
  cl_int release();

 private:
  cl_mem buffer_ = nullptr;
  cl_int status_ = CL_SUCCESS;
  bool settled_ = false;
};

/// Device memory that the host can read (and write) while this lives.
class Mapping {
 public:
  enum class Wait { kNot, kForAll };

  Mapping() = default;
  /// Without waiting the data is there once a later mapping has waited.
  Mapping(cl_mem buffer, std::size_t bytes, cl_map_flags access, Wait wait);
  ~Mapping();
  Mapping(Mapping&& other) noexcept;
  Mapping& operator=(Mapping&& other) noexcept;

  /// Null when the memory could not be mapped.
  unsigned char* bytes() const { return static_cast<unsigned char*>(data_); }
  float* floats() const { return static_cast<float*>(data_); }
  cl_int status() const { return status_; }
  /// The status of the first attempt; one that fails is followed by a second.
  cl_int unmap();

 private:
  cl_mem buffer_ = nullptr;
  void* data_ = nullptr;
  cl_int status_ = CL_SUCCESS;
};

}  // namespace framequilt
