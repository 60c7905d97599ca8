// SPDX-License-Identifier: Apache-2.0
#include "tests/support/fault_points.h"

#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unwind.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string_view>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define FRAMEQUILT_OWN_MALLOC 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define FRAMEQUILT_OWN_MALLOC 0
#endif
#endif
#ifndef FRAMEQUILT_OWN_MALLOC
#define FRAMEQUILT_OWN_MALLOC 1
#endif

namespace {

// Nothing in this file may allocate while a call is looked at.

std::atomic<bool> armed{false};
std::atomic<long> points{0};
std::atomic<long> failingPoint{0};
std::atomic<const char*> failedCall{nullptr};
std::atomic<long> objects{0};
std::atomic<long> unjoined{0};
std::atomic<bool> countsProgram{false};

/// Whose code lies at an address.
enum class Owner { kLibrary, kOpencv, kSystem, kProgram, kOther };

struct Module {
  std::uintptr_t begin, end;
  Owner owner;
};

std::array<Module, 64> modules;
std::size_t moduleCount = 0;

Owner ownerOf(std::string_view path) {
  if (path.empty()) return Owner::kProgram;
  const std::string_view name = path.substr(path.rfind('/') + 1);
  if (name.starts_with("libframequilt.so")) return Owner::kLibrary;
  if (name.starts_with("libopencv_core.so")) return Owner::kOpencv;
  for (const char* const system :
       {"libstdc++", "libc.", "libgcc_s", "ld-linux", "libasan", "libtsan", "libubsan"}) {
    if (name.starts_with(system)) return Owner::kSystem;
  }
  return Owner::kOther;
}

int addModule(dl_phdr_info* info, std::size_t /*size*/, void* /*unused*/) {
  const Owner owner = ownerOf(info->dlpi_name);
  if (owner == Owner::kOther) return 0;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& segment = info->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0 ||
        moduleCount == modules.size()) {
      continue;
    }
    const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
    modules.at(moduleCount++) = {begin, begin + segment.p_memsz, owner};
  }
  return 0;
}

Owner ownerAt(std::uintptr_t address) {
  for (std::size_t i = 0; i < moduleCount; ++i) {
    const Module& module = modules[i];
    if (address >= module.begin && address < module.end) return module.owner;
  }
  return Owner::kOther;
}

/// From a call outwards: this file, perhaps system libraries, and who made it.
struct Walk {
  bool leftThisFile = false;
  Owner caller = Owner::kOther;
};

_Unwind_Reason_Code visit(_Unwind_Context* context, void* argument) {
  auto& walk = *static_cast<Walk*>(argument);
  const Owner owner = ownerAt(_Unwind_GetIP(context) - 1);
  if (!walk.leftThisFile && owner == Owner::kProgram) return _URC_NO_REASON;
  walk.leftThisFile = true;
  if (owner == Owner::kSystem) return _URC_NO_REASON;
  walk.caller = owner;
  return _URC_NORMAL_STOP;
}

enum class Kind { kObject, kOther };

bool counts(Kind kind, const void* returnAddress) {
  if (countsProgram) return true;
  // One less: a call that ends a function returns behind it.
  Walk walk;
  walk.caller = ownerAt(reinterpret_cast<std::uintptr_t>(returnAddress) - 1);
  if (walk.caller == Owner::kSystem) _Unwind_Backtrace(visit, &walk);
  return walk.caller == Owner::kLibrary || (walk.caller == Owner::kOpencv && kind == Kind::kOther);
}

/// Looking for the caller may itself call what is looked at.
thread_local bool looking = false;

/// Whether this call of `name` is the one that fails.
bool fails(const char* name, const void* returnAddress, Kind kind = Kind::kOther) {
  if (!armed || looking) return false;
  looking = true;
  const bool counted = counts(kind, returnAddress);
  looking = false;
  if (!counted || ++points != failingPoint) return false;
  failedCall = name;
  return true;
}

#if FRAMEQUILT_OWN_MALLOC
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}
void* plainMalloc(std::size_t size) { return __libc_malloc(size); }
void* alignedMalloc(std::size_t alignment, std::size_t size) {
  return __libc_memalign(alignment, size);
}
#else
void* plainMalloc(std::size_t size) { return std::malloc(size); }
void* alignedMalloc(std::size_t alignment, std::size_t size) {
  return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}
#endif

void* object(std::size_t size, std::size_t alignment, const void* returnAddress) {
  if (fails("operator new", returnAddress, Kind::kObject)) return nullptr;
  const std::size_t bytes = size == 0 ? 1 : size;
  void* const memory = alignment == 0 ? plainMalloc(bytes) : alignedMalloc(alignment, bytes);
  if (memory != nullptr) ++objects;
  return memory;
}

void* required(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void release(void* memory) noexcept {
  if (memory == nullptr) return;
  --objects;
  std::free(memory);
}

/// The next definition in the search order: a sanitizer's where there is one.
template <class Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

bool mallocIsAPoint() { return FRAMEQUILT_OWN_MALLOC != 0; }

void armFaults(long failing) {
  moduleCount = 0;
  dl_iterate_phdr(addModule, nullptr);
  points = 0;
  failedCall = nullptr;
  failingPoint = failing;
  armed = true;
}

PassedPoints disarmFaults() {
  armed = false;
  const char* const failed = failedCall;
  return {points, failed != nullptr ? failed : ""};
}

FaultsOfProgram::FaultsOfProgram() { countsProgram = true; }
FaultsOfProgram::~FaultsOfProgram() { countsProgram = false; }

long liveObjects() { return objects; }

long unjoinedThreads() { return unjoined; }

#define FRAMEQUILT_IN_FRONT __attribute__((visibility("default"), noinline))
#define FRAMEQUILT_CALLER __builtin_return_address(0)

FRAMEQUILT_IN_FRONT void* operator new(std::size_t size) {
  return required(object(size, 0, FRAMEQUILT_CALLER));
}
FRAMEQUILT_IN_FRONT void* operator new[](std::size_t size) {
  return required(object(size, 0, FRAMEQUILT_CALLER));
}
FRAMEQUILT_IN_FRONT void* operator new(std::size_t size, std::align_val_t alignment) {
  return required(object(size, static_cast<std::size_t>(alignment), FRAMEQUILT_CALLER));
}
FRAMEQUILT_IN_FRONT void* operator new[](std::size_t size, std::align_val_t alignment) {
  return required(object(size, static_cast<std::size_t>(alignment), FRAMEQUILT_CALLER));
}
FRAMEQUILT_IN_FRONT void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return object(size, 0, FRAMEQUILT_CALLER);
}
FRAMEQUILT_IN_FRONT void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return object(size, 0, FRAMEQUILT_CALLER);
}
FRAMEQUILT_IN_FRONT void operator delete(void* memory) noexcept { release(memory); }
FRAMEQUILT_IN_FRONT void operator delete[](void* memory) noexcept { release(memory); }
FRAMEQUILT_IN_FRONT void operator delete(void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}
FRAMEQUILT_IN_FRONT void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  release(memory);
}
FRAMEQUILT_IN_FRONT void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
  release(memory);
}
FRAMEQUILT_IN_FRONT void operator delete[](void* memory, std::align_val_t /*alignment*/) noexcept {
  release(memory);
}
FRAMEQUILT_IN_FRONT void operator delete(void* memory, std::size_t /*size*/,
                                         std::align_val_t /*alignment*/) noexcept {
  release(memory);
}
FRAMEQUILT_IN_FRONT void operator delete[](void* memory, std::size_t /*size*/,
                                           std::align_val_t /*alignment*/) noexcept {
  release(memory);
}
FRAMEQUILT_IN_FRONT void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  release(memory);
}
FRAMEQUILT_IN_FRONT void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
  release(memory);
}

extern "C" {

#if FRAMEQUILT_OWN_MALLOC
FRAMEQUILT_IN_FRONT void* malloc(std::size_t size) {
  if (!fails("malloc", FRAMEQUILT_CALLER)) return __libc_malloc(size);
  errno = ENOMEM;
  return nullptr;
}
FRAMEQUILT_IN_FRONT void* calloc(std::size_t count, std::size_t size) {
  if (!fails("calloc", FRAMEQUILT_CALLER)) return __libc_calloc(count, size);
  errno = ENOMEM;
  return nullptr;
}
FRAMEQUILT_IN_FRONT void* aligned_alloc(std::size_t alignment, std::size_t size) {
  if (!fails("aligned_alloc", FRAMEQUILT_CALLER)) return __libc_memalign(alignment, size);
  errno = ENOMEM;
  return nullptr;
}
FRAMEQUILT_IN_FRONT int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  if (fails("posix_memalign", FRAMEQUILT_CALLER)) return ENOMEM;
  void* const block = __libc_memalign(alignment, size);
  if (block == nullptr) return ENOMEM;
  *memory = block;
  return 0;
}
FRAMEQUILT_IN_FRONT void* mmap(void* address, std::size_t length, int protection, int flags,
                               int file, off_t offset) {
  static const auto map = next<decltype(&mmap)>("mmap");
  if (!fails("mmap", FRAMEQUILT_CALLER)) {
    return map(address, length, protection, flags, file, offset);
  }
  errno = ENOMEM;
  return MAP_FAILED;
}
#endif

FRAMEQUILT_IN_FRONT int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                       void* (*body)(void*), void* argument) {
  static const auto create = next<decltype(&pthread_create)>("pthread_create");
  if (fails("pthread_create", FRAMEQUILT_CALLER)) return EAGAIN;
  const int result = create(thread, attributes, body, argument);
  if (result == 0) ++unjoined;
  return result;
}
FRAMEQUILT_IN_FRONT int pthread_join(pthread_t thread, void** value) {
  static const auto join = next<decltype(&pthread_join)>("pthread_join");
  if (fails("pthread_join", FRAMEQUILT_CALLER)) return EINVAL;
  const int result = join(thread, value);
  if (result == 0) --unjoined;
  return result;
}
FRAMEQUILT_IN_FRONT int pthread_detach(pthread_t thread) {
  static const auto detach = next<decltype(&pthread_detach)>("pthread_detach");
  const int result = detach(thread);
  if (result == 0) --unjoined;
  return result;
}

}  // extern "C"
