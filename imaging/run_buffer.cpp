// SPDX-License-Identifier: Apache-2.0
#include "imaging/run_buffer.h"

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "imaging/large_pages.h"
#include "interface/never_destroyed.h"

namespace framequilt {
namespace {

/// What the library put into an exported pointer last.
struct Allocation {
  void* memory = nullptr;
  std::size_t bytes = 0;
  void (*release)(void*) = nullptr;
  bool kept = false;  ///< The pointer has been set to null since, the memory waits for it.
};

/// By the address of the exported pointer.
struct Ledger {
  std::mutex mutex;
  std::map<const void*, Allocation> own;
  bool keeps = false;
};

// Never destroyed: a worker of a run that nobody stopped may still allocate while the process ends.
Ledger& ledger() {
  static const NeverDestroyed<Ledger> instance;
  return *instance;
}

void releaseKept(Allocation& allocation) noexcept {
  if (!allocation.kept) return;
  allocation.release(allocation.memory);
  allocation = {};
}

bool tooSmall(const void* slot, const void* memory, std::size_t bytes) {
  const std::lock_guard lock(ledger().mutex);
  const auto entry = ledger().own.find(slot);
  return entry != ledger().own.end() && entry->second.memory == memory &&
         entry->second.bytes < bytes;
}

/// The memory that waits for a buffer, if there is enough of it; null otherwise. Less than is
/// wanted is released.
void* takeKept(const void* slot, std::size_t bytes) {
  const std::lock_guard lock(ledger().mutex);
  const auto entry = ledger().own.find(slot);
  if (entry == ledger().own.end()) return nullptr;
  Allocation& allocation = entry->second;
  if (allocation.bytes < bytes) releaseKept(allocation);
  if (!allocation.kept) return nullptr;
  allocation.kept = false;
  return allocation.memory;
}

/// Whether the memory is the library's, and is kept from now on.
bool keep(const void* slot, const void* memory) noexcept {
  const std::lock_guard lock(ledger().mutex);
  const auto entry = ledger().own.find(slot);
  if (entry == ledger().own.end() || entry->second.memory != memory) return false;
  if (ledger().keeps) {
    entry->second.kept = true;
    return true;
  }
  entry->second = {};
  return false;
}

}  // namespace

template <class T>
void ensureRoom(T*& buffer, std::size_t elements) {
  if (elements > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
  const std::size_t bytes = elements * sizeof(T);
  if (buffer != nullptr && tooSmall(&buffer, buffer, bytes)) drop(buffer);
  if (buffer != nullptr) return;
  buffer = static_cast<T*>(takeKept(&buffer, bytes));
  if (buffer != nullptr) return;

  std::unique_ptr<T[]> fresh(new T[elements]);
  adviseLargePages(fresh.get(), bytes);
  {
    const std::lock_guard lock(ledger().mutex);
    ledger().own[&buffer] = {fresh.get(), bytes,
                             [](void* memory) { delete[] static_cast<T*>(memory); }};
  }
  buffer = fresh.release();
}

template <class T>
void ensure(T*& buffer, std::size_t elements) {
  const bool stays = buffer != nullptr && !tooSmall(&buffer, buffer, elements * sizeof(T));
  ensureRoom(buffer, elements);
  if (!stays) std::fill_n(buffer, elements, T{0});
}

template <class T>
void drop(T*& buffer) noexcept {
  if (buffer == nullptr) return;
  T* const memory = std::exchange(buffer, nullptr);
  if (!keep(&buffer, memory)) delete[] memory;
}

template <class T>
void exchange(T*& one, T*& two) noexcept {
  std::swap(one, two);
  const std::lock_guard lock(ledger().mutex);
  const auto ofOne = ledger().own.find(&one);
  const auto ofTwo = ledger().own.find(&two);
  if (ofOne != ledger().own.end() && ofTwo != ledger().own.end()) {
    std::swap(ofOne->second, ofTwo->second);
  } else {
    // One is the host's: from now on both are taken at their word.
    if (ofOne != ledger().own.end()) ofOne->second = {};
    if (ofTwo != ledger().own.end()) ofTwo->second = {};
  }
}

void keepDropped(bool keep) noexcept {
  const std::lock_guard lock(ledger().mutex);
  ledger().keeps = keep;
  if (keep) return;
  for (auto& [slot, allocation] : ledger().own) releaseKept(allocation);
}

template void ensure<unsigned char>(unsigned char*&, std::size_t);
template void ensure<unsigned short>(unsigned short*&, std::size_t);
template void ensure<float>(float*&, std::size_t);
template void ensureRoom<unsigned char>(unsigned char*&, std::size_t);
template void ensureRoom<unsigned short>(unsigned short*&, std::size_t);
template void ensureRoom<float>(float*&, std::size_t);
template void exchange<unsigned char>(unsigned char*&, unsigned char*&) noexcept;
template void drop<unsigned char>(unsigned char*&) noexcept;
template void drop<unsigned short>(unsigned short*&) noexcept;
template void drop<float>(float*&) noexcept;

}  // namespace framequilt
