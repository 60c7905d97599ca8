// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/call.h"

#include "tests/support/opencl_layer/faults.h"
#include "tests/support/opencl_layer/ledger.h"
#include "tests/support/opencl_layer/presentation.h"

namespace framequilt::opencl_layer {

Call::Call(const char* entryPoint) : name_(entryPoint), fault_(countCall(entryPoint)) {}

bool Call::good(cl_platform_id platform) {
  if (fakePlatform(name_, platform) != nullptr) return true;
  error_ = CL_INVALID_PLATFORM;
  return false;
}

bool Call::good(cl_device_id device) {
  if (fakeDevice(name_, device) != nullptr) return true;
  error_ = CL_INVALID_DEVICE;
  return false;
}

bool Call::alive(ObjectKind kind, const void* handle, cl_int error) {
  if (isAlive(name_, kind, handle)) return true;
  error_ = error;
  return false;
}

cl_int answerInfo(const void* answer, std::size_t bytes, std::size_t room, void* value,
                  std::size_t* bytesOut) {
  if (value != nullptr) {
    if (room < bytes) return CL_INVALID_VALUE;
    if (bytes > 0) std::memcpy(value, answer, bytes);
  }
  if (bytesOut != nullptr) *bytesOut = bytes;
  return CL_SUCCESS;
}

cl_int answerInfo(const std::string& answer, std::size_t room, void* value, std::size_t* bytesOut) {
  return answerInfo(answer.c_str(), answer.size() + 1, room, value, bytesOut);
}

void noteEvent(const cl_event* event) {
  if (event != nullptr) noteCreated(ObjectKind::kEvent, *event);
}

}  // namespace framequilt::opencl_layer
