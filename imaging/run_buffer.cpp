// SPDX-License-Identifier: Apache-2.0
#include "imaging/run_buffer.h"

#include <map>
#include <memory>
#include <mutex>

namespace framequilt {
namespace {

struct Allocation {
  void* memory;
  std::size_t elements;
};

/// What the library put into each exported pointer last, by the pointer's address.
struct Ledger {
  std::mutex mutex;
  std::map<const void*, Allocation> own;
};

// Never destroyed: a worker of a run that nobody stopped may still allocate while the process ends.
Ledger& ledger() {
  static Ledger& instance = *new Ledger;
  return instance;
}

bool tooSmall(const void* slot, const void* memory, std::size_t elements) {
  const std::lock_guard lock(ledger().mutex);
  const auto entry = ledger().own.find(slot);
  return entry != ledger().own.end() && entry->second.memory == memory &&
         entry->second.elements < elements;
}

void forget(const void* slot) noexcept {
  const std::lock_guard lock(ledger().mutex);
  const auto entry = ledger().own.find(slot);
  if (entry != ledger().own.end()) entry->second.memory = nullptr;
}

}  // namespace

template <class T>
void ensure(T*& buffer, std::size_t elements) {
  if (buffer != nullptr && tooSmall(&buffer, buffer, elements)) drop(buffer);
  if (buffer != nullptr) return;

  auto fresh = std::make_unique<T[]>(elements);
  {
    const std::lock_guard lock(ledger().mutex);
    ledger().own[&buffer] = {fresh.get(), elements};
  }
  buffer = fresh.release();
}

template <class T>
void drop(T*& buffer) noexcept {
  if (buffer == nullptr) return;
  forget(&buffer);
  delete[] buffer;
  buffer = nullptr;
}

template void ensure<unsigned char>(unsigned char*&, std::size_t);
template void ensure<unsigned short>(unsigned short*&, std::size_t);
template void ensure<float>(float*&, std::size_t);
template void drop<unsigned char>(unsigned char*&) noexcept;
template void drop<unsigned short>(unsigned short*&) noexcept;
template void drop<float>(float*&) noexcept;

}  // namespace framequilt
