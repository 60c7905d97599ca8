// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/card_memory.h"

#include <sys/mman.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <unordered_map>

#include "tests/support/opencl_layer/runtime.h"

namespace framequilt::opencl_layer {
namespace {

constexpr unsigned char kUndefinedByte = 0xCD;

struct CardBuffer {
  cl_mem_flags flags;
  std::size_t bytes;
  unsigned char* host;             // The program's own memory, or null.
  unsigned char* pages = nullptr;  // The layer's, for maps; since the first one.
  int mappings = 0;
};

struct Card {
  std::mutex mutex;
  std::unordered_map<cl_mem, CardBuffer> buffers;
};

Card& card() {
  static Card& all = *new Card;
  return all;
}

std::atomic<bool> isOn{false};

// Memory in which the buffer can be seen; null when there is none left. With the card locked.
unsigned char* window(CardBuffer& buffer) {
  if (buffer.host != nullptr) return buffer.host;
  if (buffer.pages == nullptr) {
    void* const pages =
        ::mmap(nullptr, buffer.bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) return nullptr;
    buffer.pages = static_cast<unsigned char*>(pages);
  }
  return buffer.pages;
}

unsigned char* openWindow(cl_mem handle) {
  const std::lock_guard lock(card().mutex);
  CardBuffer& buffer = card().buffers.at(handle);
  unsigned char* const first = window(buffer);
  if (first == nullptr) return nullptr;
  ++buffer.mappings;
  if (buffer.pages != nullptr) ::mprotect(buffer.pages, buffer.bytes, PROT_READ | PROT_WRITE);
  return first;
}

void closeWindow(cl_mem handle) {
  const std::lock_guard lock(card().mutex);
  CardBuffer& buffer = card().buffers.at(handle);
  --buffer.mappings;
  if (buffer.pages != nullptr && buffer.mappings == 0) {
    ::mprotect(buffer.pages, buffer.bytes, PROT_NONE);
  }
}

CardBuffer bufferOnCard(cl_mem handle) {
  const std::lock_guard lock(card().mutex);
  return card().buffers.at(handle);
}

bool writes(cl_map_flags flags) {
  return (flags & (CL_MAP_WRITE | CL_MAP_WRITE_INVALIDATE_REGION)) != 0;
}

}  // namespace

void discreteMemory(bool on) { isOn = on; }
bool cardIsOn() { return isOn; }

cl_mem createOnCard(cl_context context, cl_mem_flags flags, std::size_t bytes, void* host,
                    cl_int* status) {
  const bool overHost = (flags & CL_MEM_USE_HOST_PTR) != 0;
  // Maps are reads and writes of the runtime's here, which these flags would forbid.
  const cl_mem_flags forbidding =
      CL_MEM_HOST_READ_ONLY | CL_MEM_HOST_WRITE_ONLY | CL_MEM_HOST_NO_ACCESS;
  cl_mem_flags below = flags & ~forbidding;
  if (overHost) below = (below & ~cl_mem_flags{CL_MEM_USE_HOST_PTR}) | CL_MEM_COPY_HOST_PTR;
  const cl_mem handle = callRuntime(runtime().clCreateBuffer, context, below, bytes, host, status);
  if (handle == nullptr) return nullptr;
  const std::lock_guard lock(card().mutex);
  card().buffers.insert_or_assign(
      handle, CardBuffer{flags, bytes, overHost ? static_cast<unsigned char*>(host) : nullptr});
  return handle;
}

bool isOnCard(cl_mem buffer) {
  const std::lock_guard lock(card().mutex);
  return card().buffers.count(buffer) > 0;
}

void takeOffCard(cl_mem handle) {
  const std::lock_guard lock(card().mutex);
  const auto found = card().buffers.find(handle);
  if (found == card().buffers.end()) return;
  if (found->second.pages != nullptr) ::munmap(found->second.pages, found->second.bytes);
  card().buffers.erase(found);
}

cl_mem_flags flagsOnCard(cl_mem buffer) { return bufferOnCard(buffer).flags; }
void* hostPointerOnCard(cl_mem buffer) { return bufferOnCard(buffer).host; }

void* mapFromCard(cl_command_queue queue, cl_mem buffer, cl_map_flags flags, std::size_t offset,
                  std::size_t bytes, WaitList wait, cl_event* event, cl_int* status) {
  *status = CL_INVALID_VALUE;
  const std::size_t all = bufferOnCard(buffer).bytes;
  if (bytes == 0 || offset > all || bytes > all - offset) return nullptr;
  unsigned char* const first = openWindow(buffer);
  *status = CL_MAP_FAILURE;
  if (first == nullptr) return nullptr;
  // A map for writing shows what is there, too.
  *status = callRuntime(runtime().clEnqueueReadBuffer, queue, buffer, cl_bool{CL_TRUE}, offset,
                        bytes, static_cast<void*>(first + offset), wait.count, wait.events, event);
  if (*status != CL_SUCCESS) {
    closeWindow(buffer);
    return nullptr;
  }
  if ((flags & CL_MAP_WRITE_INVALIDATE_REGION) != 0) {
    std::memset(first + offset, kUndefinedByte, bytes);
  }
  return first + offset;
}

cl_int unmapToCard(cl_command_queue queue, cl_mem buffer, const Mapping& mapping, WaitList wait,
                   cl_event* event) {
  cl_int status = CL_SUCCESS;
  if (writes(mapping.flags)) {
    status = callRuntime(runtime().clEnqueueWriteBuffer, queue, buffer, cl_bool{CL_TRUE},
                         mapping.offset, mapping.bytes, static_cast<const void*>(mapping.pointer),
                         wait.count, wait.events, event);
  } else if (wait.count > 0 || event != nullptr) {
    status =
        callRuntime(runtime().clEnqueueMarkerWithWaitList, queue, wait.count, wait.events, event);
  }
  if (status == CL_SUCCESS) closeWindow(buffer);
  return status;
}

}  // namespace framequilt::opencl_layer
