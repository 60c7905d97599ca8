// SPDX-License-Identifier: Apache-2.0
/// \file
/// What a test says to the OpenCL layer, and reads back from it.
///
/// The layer is a shared object that the OpenCL loader puts between a program and the runtime when
/// the environment variable OPENCL_LAYERS names it. It presents the one real device of the machine
/// as any platforms a test likes, makes calls fail, keeps books of the objects, and can behave as a
/// card with memory of its own. Programs that link it talk to that same instance.
///
/// Everything here may be called from any thread, and is valid for the whole process. The settings
/// (what is presented, faults, modes) are changed between runs, not while calls are under way.
#pragma once

#include <CL/cl.h>
#include <pthread.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#define FRAMEQUILT_OPENCL_LAYER_API __attribute__((visibility("default")))

namespace framequilt::opencl_layer {

/// The loader has taken the layer in; it does so at the first OpenCL call of the process.
FRAMEQUILT_OPENCL_LAYER_API bool loaded();
/// There is a real device for the presented ones to stand on.
FRAMEQUILT_OPENCL_LAYER_API bool runtimeFound();

// --- What is presented ---

inline constexpr cl_ulong kMegabyte = 1024 * 1024;

/// What is not listed is answered by the real device.
struct FakeDevice {
  std::string name = "Test GPU";
  cl_device_type type = CL_DEVICE_TYPE_GPU;
  cl_ulong globalMemoryBytes = 8192 * kMegabyte;
  std::string version = "OpenCL 1.2 test";
  cl_uint computeUnits = 16;
  cl_uint clockMHz = 1500;
  cl_uint cacheLineBytes = 128;
  cl_uint preferredFloatWidth = 1;
  std::map<cl_device_info, cl_int> failingInfos{};  ///< Query to what it returns.
};

struct FakePlatform {
  std::string name = "NVIDIA test platform";
  std::vector<FakeDevice> devices = {FakeDevice{}};
  std::optional<cl_int> infoError{};     ///< Of every query of the platform.
  std::optional<cl_int> devicesError{};  ///< Of every request for its devices.
};

/// From now on these are the platforms, in this order. None: as on a machine without any runtime.
/// Handles that were given out before stay good.
FRAMEQUILT_OPENCL_LAYER_API void present(std::vector<FakePlatform> platforms);
/// One default platform with one default device, as at the start of the process.
FRAMEQUILT_OPENCL_LAYER_API void presentDefault();

// --- Calls and faults ---

/// The `nth` call of `entryPoint` from now (1: the next one) answers `code` once. It is not passed
/// to the runtime; creators return null. But a release does release, so that nothing leaks there,
/// and a finish does wait, so that nothing works on in memory that the program then frees.
/// Faults add up; those of one entry point each have their own count.
FRAMEQUILT_OPENCL_LAYER_API void failCall(std::string_view entryPoint, int nth, cl_int code);
/// The same, counted over the calls of all entry points.
FRAMEQUILT_OPENCL_LAYER_API void failCall(int nthOfAll, cl_int code);
/// The same, counted over the calls of one thread.
FRAMEQUILT_OPENCL_LAYER_API void failCallOf(pthread_t thread, int nth, cl_int code);
/// As a device that is lost: from the `nth` call of all from now on, every call answers `code`.
FRAMEQUILT_OPENCL_LAYER_API void failEveryCallFrom(int nthOfAll, cl_int code);
FRAMEQUILT_OPENCL_LAYER_API void clearFaults();
/// Faults that no call has met yet.
FRAMEQUILT_OPENCL_LAYER_API int faultsWaiting();

/// Names of the entry points that were called since resetRecords(), in order; failed ones as well.
FRAMEQUILT_OPENCL_LAYER_API std::vector<std::string> callLog();
FRAMEQUILT_OPENCL_LAYER_API long callCount();
FRAMEQUILT_OPENCL_LAYER_API long callCount(std::string_view entryPoint);

/// Before every launch and map the calling thread pauses for a random time up to `longest`, so that
/// threads meet in other orders. Zero ends it.
FRAMEQUILT_OPENCL_LAYER_API void jitter(unsigned seed, std::chrono::microseconds longest);

// --- Modes ---

/// On: buffers that are made from now on live on a card.
/// - A buffer over a host pointer starts with the bytes found there; afterwards the host's bytes
///   change at a map only, and the card's at the unmap of a map for writing only. Maps return
///   places inside the host pointer.
/// - Maps of other buffers return memory that can't be touched any more once it is unmapped.
/// - A map that invalidates hands out bytes of 0xCD.
/// - Maps wait for their data, also those that were asked not to.
/// Off, as at the start: the runtime's own behaviour, where host and device share memory.
FRAMEQUILT_OPENCL_LAYER_API void discreteMemory(bool on);
/// One call at a time in the runtime, for those that can't stand two threads.
FRAMEQUILT_OPENCL_LAYER_API void serialise(bool on);

// --- Books ---

enum class ObjectKind { kContext, kQueue, kProgram, kKernel, kBuffer, kEvent };

struct LiveObject {
  ObjectKind kind;
  const void* handle;
  int number;  ///< As in the sentences of violations(): from 1, in the order of creation.
  int references;
  std::string name;   ///< The function of a kernel, else empty.
  std::size_t bytes;  ///< Of a buffer, else 0.
  int mappings;       ///< Of a buffer, else 0.
};

struct Ledger {
  std::vector<LiveObject> objects;  ///< In the order of creation.

  int count() const { return static_cast<int>(objects.size()); }
  int count(ObjectKind kind) const {
    int found = 0;
    for (const LiveObject& object : objects) found += object.kind == kind ? 1 : 0;
    return found;
  }
  int mappings() const {
    int found = 0;
    for (const LiveObject& object : objects) found += object.mappings;
    return found;
  }
};

/// Objects that were made and not released as often as they were retained.
FRAMEQUILT_OPENCL_LAYER_API Ledger live();

/// What the program did wrong since resetRecords(), a sentence each:
/// - a null, released or foreign handle given to any call (which is answered with the error for
///   such handles and not passed on), hence also a double release; but one whose address the
///   runtime has given to a new object of the same kind passes for that;
/// - a launch of a kernel with a null, released or mapped buffer (answered CL_INVALID_KERNEL_ARGS);
/// - an unmap of what is not mapped (answered CL_INVALID_VALUE);
/// - a kernel object whose arguments are set by two threads (passed on);
/// - a call that the layer does not know how to translate (answered CL_INVALID_OPERATION).
FRAMEQUILT_OPENCL_LAYER_API std::vector<std::string> violations();
/// Two threads may set arguments of kernels of this name, one after the other.
FRAMEQUILT_OPENCL_LAYER_API void allowSharedKernel(std::string_view kernelName);

enum class TraceKind {
  kCreate,
  kRetain,
  kRelease,
  kBuild,
  kSetArgument,
  kLaunch,
  kMap,
  kUnmap,
  kRead,
  kWrite,
  kCopy,
  kFill,
  kFlush,
  kFinish
};

/// A call that succeeded. What does not apply to it is empty or 0.
struct TraceEvent {
  TraceKind kind{};
  ObjectKind object{};           ///< What kind of object `handle` is.
  const void* handle = nullptr;  ///< Created, released, built, launched, mapped, ...
  int number = 0;                ///< Of that object; handles are given out again, numbers are not.
  std::string kernel{};          ///< Function, of creations, arguments and launches of kernels.
  const void* queue = nullptr;   ///< Of what is enqueued.

  std::size_t bytes = 0;               ///< Of a buffer, a mapped or copied region, an argument.
  std::size_t offset = 0;              ///< Of that region.
  cl_mem_flags flags = 0;              ///< Of a new buffer, as asked for.
  cl_map_flags mapFlags = 0;           ///< Of maps, and of unmaps: those of the map.
  bool blocking = false;               ///< As asked for.
  void* pointer = nullptr;             ///< The host's: of a new buffer, a mapped or copied region.
  cl_uint argument = 0;                ///< Index.
  std::vector<unsigned char> value{};  ///< Of an argument; empty for local memory.

  std::vector<std::size_t> globalOffset{}, globalSize{}, localSize{};  ///< Empty: left to it.
  std::vector<const void*> buffers{};  ///< A launch's arguments that are buffers, by index.

  int thread = 0;  ///< As threadNumber() there.
};

/// In the order in which the calls returned. Since resetRecords().
FRAMEQUILT_OPENCL_LAYER_API std::vector<TraceEvent> trace();
/// Of the calling thread: 1, 2, ... by first use, never given to another one.
FRAMEQUILT_OPENCL_LAYER_API int threadNumber();

/// Forgets the log of calls, violations and the trace; what lives is still known.
FRAMEQUILT_OPENCL_LAYER_API void resetRecords();
/// Forgets released objects, so that the books of a long run stay small. Whoever uses one
/// afterwards uses an unknown one.
FRAMEQUILT_OPENCL_LAYER_API void forgetReleased();

}  // namespace framequilt::opencl_layer
