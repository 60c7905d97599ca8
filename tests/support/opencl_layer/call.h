// SPDX-License-Identifier: Apache-2.0
/// \file
/// One call of the program: counted, told to fail perhaps, its handles looked at.
#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

#include "tests/support/opencl_layer.h"
#include "tests/support/opencl_layer/runtime.h"

namespace framequilt::opencl_layer {

template <class Handle>
struct KindOf;
template <ObjectKind kKind, int kError>
struct KindAndError {
  static constexpr ObjectKind kind = kKind;
  static constexpr cl_int error = kError;  ///< For a handle that is no such object.
};
// clang-format off
template <> struct KindOf<cl_context> : KindAndError<ObjectKind::kContext, CL_INVALID_CONTEXT> {};
template <> struct KindOf<cl_command_queue> : KindAndError<ObjectKind::kQueue, CL_INVALID_COMMAND_QUEUE> {};
template <> struct KindOf<cl_program> : KindAndError<ObjectKind::kProgram, CL_INVALID_PROGRAM> {};
template <> struct KindOf<cl_kernel> : KindAndError<ObjectKind::kKernel, CL_INVALID_KERNEL> {};
template <> struct KindOf<cl_mem> : KindAndError<ObjectKind::kBuffer, CL_INVALID_MEM_OBJECT> {};
template <> struct KindOf<cl_event> : KindAndError<ObjectKind::kEvent, CL_INVALID_EVENT> {};
// clang-format on

/// A list as calls take them.
template <class Handle>
struct Handles {
  cl_uint count;
  const Handle* first;
};

class Call {
 public:
  /// `entryPoint` is a literal.
  explicit Call(const char* entryPoint);
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  const char* name() const { return name_; }
  /// What a test wants this call to answer; CL_SUCCESS: whatever comes.
  cl_int fault() const { return fault_; }

  /// All handles are good and the call shall not fail: it may be passed on. Else answer status().
  template <class... Checked>
  bool mayPass(const Checked&... handles) {
    bool allGood = true;
    ((allGood = good(handles) && allGood), ...);
    return allGood && fault_ == CL_SUCCESS;
  }
  cl_int status() const { return error_ != CL_SUCCESS ? error_ : fault_; }
  /// The same for a call that creates.
  std::nullptr_t noObject(cl_int* statusOut) const {
    if (statusOut != nullptr) *statusOut = status();
    return nullptr;
  }

 private:
  bool good(cl_platform_id platform);
  bool good(cl_device_id device);
  template <class Handle>
  bool good(Handle handle) {
    return alive(KindOf<Handle>::kind, handle, KindOf<Handle>::error);
  }
  template <class Handle>
  bool good(const Handles<Handle>& list) {
    bool allGood = true;
    for (cl_uint i = 0; list.first != nullptr && i < list.count; ++i) {
      allGood = good(list.first[i]) && allGood;
    }
    return allGood;
  }
  bool alive(ObjectKind kind, const void* handle, cl_int error);

  const char* name_;
  cl_int fault_;
  cl_int error_ = CL_SUCCESS;
};

/// What every clGet...Info does with the answer it has, which may be a handle.
// NOLINTBEGIN(bugprone-sizeof-expression): handles point to structures.
cl_int answerInfo(const void* answer, std::size_t bytes, std::size_t room, void* value,
                  std::size_t* bytesOut);
template <class T>
cl_int answerInfo(const T& answer, std::size_t room, void* value, std::size_t* bytesOut) {
  static_assert(std::is_trivially_copyable_v<T>);
  return answerInfo(&answer, sizeof(T), room, value, bytesOut);
}
template <class T>
cl_int answerInfo(const std::vector<T>& answer, std::size_t room, void* value,
                  std::size_t* bytesOut) {
  return answerInfo(answer.data(), answer.size() * sizeof(T), room, value, bytesOut);
}
// NOLINTEND(bugprone-sizeof-expression)
cl_int answerInfo(const std::string& answer, std::size_t room, void* value, std::size_t* bytesOut);

/// The event of a call that succeeded, if one was asked for.
void noteEvent(const cl_event* event);

}  // namespace framequilt::opencl_layer
