// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/kernel_arguments.h"

#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <set>
#include <unordered_map>
#include <utility>

#include "tests/support/opencl_layer/ledger.h"
#include "tests/support/opencl_layer/records.h"
#include "tests/support/opencl_layer/runtime.h"

namespace framequilt::opencl_layer {
namespace {

enum class Parameter { kBuffer, kOther, kUnknown };

struct BufferArgument {
  cl_mem handle = nullptr;
  int number = 0;  // The handle may be another buffer's by the time of the launch.
};

struct Kernel {
  std::string function;
  std::vector<Parameter> parameters;
  std::map<cl_uint, BufferArgument> buffers;  // By index; null ones too.
  int setter = 0;                             // Thread; 0: none yet.
  bool reported = false;
};

struct Kernels {
  std::mutex mutex;
  std::unordered_map<cl_kernel, Kernel> all;  // Addresses given out again overwrite.
  std::set<std::string, std::less<>> shareable;
};

Kernels& kernels() {
  static Kernels& all = *new Kernels;
  return all;
}

// Runtimes need not know; then arguments are judged by their looks.
Parameter parameter(cl_kernel kernel, cl_uint index) {
  cl_kernel_arg_address_qualifier space = 0;
  const cl_int status = callRuntime(runtime().clGetKernelArgInfo, kernel, index,
                                    cl_kernel_arg_info{CL_KERNEL_ARG_ADDRESS_QUALIFIER},
                                    sizeof space, static_cast<void*>(&space), nullptr);
  if (status != CL_SUCCESS) return Parameter::kUnknown;
  const bool isBuffer =
      space == CL_KERNEL_ARG_ADDRESS_GLOBAL || space == CL_KERNEL_ARG_ADDRESS_CONSTANT;
  return isBuffer ? Parameter::kBuffer : Parameter::kOther;
}

// The argument if it is a buffer, null ones included.
bool asBuffer(Parameter parameter, std::size_t bytes, const void* value, BufferArgument* buffer) {
  if (parameter == Parameter::kOther || bytes != sizeof(cl_mem)) return false;
  *buffer = {};
  if (value != nullptr) std::memcpy(&buffer->handle, value, sizeof(cl_mem));
  buffer->number = numberOf(buffer->handle);
  if (parameter == Parameter::kBuffer) return true;
  return stateOfBuffer(buffer->handle, buffer->number) != BufferState::kForeign;
}

// Null: nothing is wrong with it.
const char* complaint(const BufferArgument& buffer) {
  if (buffer.handle == nullptr) return "is a null buffer";
  switch (stateOfBuffer(buffer.handle, buffer.number)) {
    case BufferState::kForeign:
      return "is no buffer";
    case BufferState::kGone:
      return "is a buffer that was released before";
    case BufferState::kMapped:
      return "is a mapped buffer";
    case BufferState::kReady:
      return nullptr;
  }
  return nullptr;
}

std::string sentence(const Kernel& kernel, cl_uint index, const char* complaint) {
  return "kernel " + kernel.function + ": argument " + std::to_string(index) + " " + complaint;
}

// With the lock held.
void noteSetter(Kernel& kernel) {
  const int thread = threadNumber();
  if (kernel.setter == 0) kernel.setter = thread;
  if (kernel.setter == thread || kernel.reported || kernels().shareable.count(kernel.function) > 0)
    return;
  kernel.reported = true;
  recordViolation("clSetKernelArg: kernel " + kernel.function + ": arguments set by threads " +
                  std::to_string(kernel.setter) + " and " + std::to_string(thread));
}

}  // namespace

void allowSharedKernel(std::string_view kernelName) {
  const std::lock_guard lock(kernels().mutex);
  kernels().shareable.emplace(kernelName);
}

void rememberKernel(cl_kernel kernel) {
  char name[256] = "";
  callRuntime(runtime().clGetKernelInfo, kernel, cl_kernel_info{CL_KERNEL_FUNCTION_NAME},
              sizeof name, static_cast<void*>(name), nullptr);
  cl_uint count = 0;
  callRuntime(runtime().clGetKernelInfo, kernel, cl_kernel_info{CL_KERNEL_NUM_ARGS}, sizeof count,
              static_cast<void*>(&count), nullptr);
  Kernel made;
  made.function = name;
  for (cl_uint i = 0; i < count; ++i) made.parameters.push_back(parameter(kernel, i));

  const std::lock_guard lock(kernels().mutex);
  kernels().all.insert_or_assign(kernel, std::move(made));
}

std::string functionOf(cl_kernel kernel) {
  const std::lock_guard lock(kernels().mutex);
  return kernels().all[kernel].function;
}

void forgetGoneKernels() {
  const std::lock_guard lock(kernels().mutex);
  auto& all = kernels().all;
  for (auto one = all.begin(); one != all.end();) {
    one = numberOf(one->first) == 0 ? all.erase(one) : std::next(one);
  }
}

std::vector<unsigned char> argumentBytes(std::size_t bytes, const void* value) {
  if (value == nullptr) return {};
  const auto* const first = static_cast<const unsigned char*>(value);
  return {first, first + bytes};
}

bool noteArgument(cl_kernel handle, cl_uint index, std::size_t bytes, const void* value) {
  const std::lock_guard lock(kernels().mutex);
  Kernel& kernel = kernels().all[handle];
  noteSetter(kernel);

  if (index >= kernel.parameters.size()) return true;  // The runtime's to refuse.
  BufferArgument buffer;
  if (!asBuffer(kernel.parameters[index], bytes, value, &buffer)) {
    kernel.buffers.erase(index);
    return true;
  }
  kernel.buffers[index] = buffer;
  const BufferState state = stateOfBuffer(buffer.handle, buffer.number);
  const bool exists = state == BufferState::kReady || state == BufferState::kMapped;
  if (buffer.handle == nullptr || exists) return true;
  recordViolation("clSetKernelArg: " + sentence(kernel, index, complaint(buffer)));
  return false;
}

bool mayLaunch(const char* entryPoint, cl_kernel handle) {
  const std::lock_guard lock(kernels().mutex);
  const Kernel& kernel = kernels().all[handle];
  bool may = true;
  for (const auto& [index, buffer] : kernel.buffers) {
    const char* const wrong = complaint(buffer);
    if (wrong == nullptr) continue;
    recordViolation(std::string(entryPoint) + ": " + sentence(kernel, index, wrong));
    may = false;
  }
  return may;
}

std::vector<const void*> buffersOf(cl_kernel handle) {
  const std::lock_guard lock(kernels().mutex);
  std::vector<const void*> found;
  for (const auto& [index, buffer] : kernels().all[handle].buffers) {
    found.push_back(buffer.handle);
  }
  return found;
}

}  // namespace framequilt::opencl_layer
