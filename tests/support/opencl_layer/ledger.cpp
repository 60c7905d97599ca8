// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/ledger.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "tests/support/opencl_layer/records.h"

namespace framequilt::opencl_layer {
namespace {

struct Object {
  ObjectKind kind;
  int number;  // Of all objects, from 1: addresses differ from run to run.
  int references = 1;
  std::string name;
  std::size_t bytes = 0;
  std::vector<Mapping> mappings;
};

struct Books {
  std::mutex mutex;
  int created = 0;
  std::unordered_map<const void*, Object> alive;
  std::unordered_map<const void*, Object> gone;  // Until the address is given out again.
};

Books& books() {
  static Books& all = *new Books;
  return all;
}

const char* word(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::kContext:
      return "context";
    case ObjectKind::kQueue:
      return "queue";
    case ObjectKind::kProgram:
      return "program";
    case ObjectKind::kKernel:
      return "kernel";
    case ObjectKind::kBuffer:
      return "buffer";
    case ObjectKind::kEvent:
      return "event";
  }
  return "object";
}

std::string description(const Object& object) {
  std::string text = std::string(word(object.kind)) + " #" + std::to_string(object.number);
  if (!object.name.empty()) text += " " + object.name;
  if (object.kind == ObjectKind::kBuffer) text += " of " + std::to_string(object.bytes) + " bytes";
  return text;
}

// With the books locked. Null, and a violation, when there is no such object.
Object* find(const char* entryPoint, ObjectKind kind, const void* handle) {
  const auto alive = books().alive.find(handle);
  if (alive != books().alive.end() && alive->second.kind == kind) return &alive->second;

  std::string sentence = std::string(entryPoint) + ": ";
  const auto gone = books().gone.find(handle);
  if (handle == nullptr) {
    sentence += std::string("null ") + word(kind);
  } else if (alive != books().alive.end()) {
    sentence += description(alive->second) + " is no " + word(kind);
  } else if (gone != books().gone.end()) {
    sentence += description(gone->second) + " was released before";
  } else {
    sentence += std::string("unknown ") + word(kind);
  }
  recordViolation(std::move(sentence));
  return nullptr;
}

}  // namespace

void noteCreated(ObjectKind kind, const void* handle, std::string name, std::size_t bytes) {
  const std::lock_guard lock(books().mutex);
  books().gone.erase(handle);
  Object object{kind, ++books().created, 1, std::move(name), bytes, {}};
  books().alive.insert_or_assign(handle, std::move(object));
}

bool isAlive(const char* entryPoint, ObjectKind kind, const void* handle) {
  const std::lock_guard lock(books().mutex);
  return find(entryPoint, kind, handle) != nullptr;
}

bool noteRetained(const char* entryPoint, ObjectKind kind, const void* handle) {
  const std::lock_guard lock(books().mutex);
  Object* const object = find(entryPoint, kind, handle);
  if (object == nullptr) return false;
  ++object->references;
  return true;
}

Released noteReleased(const char* entryPoint, ObjectKind kind, const void* handle) {
  const std::lock_guard lock(books().mutex);
  Object* const object = find(entryPoint, kind, handle);
  if (object == nullptr) return Released::kRefused;
  if (--object->references > 0) return Released::kStillHeld;
  books().gone.insert_or_assign(handle, std::move(*object));
  books().alive.erase(handle);
  return Released::kGone;
}

void noteMapped(cl_mem buffer, const Mapping& mapping) {
  const std::lock_guard lock(books().mutex);
  const auto alive = books().alive.find(buffer);
  if (alive != books().alive.end()) alive->second.mappings.push_back(mapping);
}

bool noteUnmapped(const char* entryPoint, cl_mem buffer, const void* pointer, Mapping* found) {
  const std::lock_guard lock(books().mutex);
  Object* const object = find(entryPoint, ObjectKind::kBuffer, buffer);
  if (object == nullptr) return false;
  const auto mapping =
      std::find_if(object->mappings.begin(), object->mappings.end(),
                   [pointer](const Mapping& one) { return one.pointer == pointer; });
  if (mapping == object->mappings.end()) {
    recordViolation(std::string(entryPoint) + ": pointer that is not mapped from " +
                    description(*object));
    return false;
  }
  *found = *mapping;
  object->mappings.erase(mapping);
  return true;
}

void forgetGoneObjects() {
  const std::lock_guard lock(books().mutex);
  books().gone.clear();
}

int numberOf(const void* handle) {
  const std::lock_guard lock(books().mutex);
  for (const auto* const objects : {&books().alive, &books().gone}) {
    const auto found = objects->find(handle);
    if (found != objects->end()) return found->second.number;
  }
  return 0;
}

BufferState stateOfBuffer(cl_mem buffer, int number) {
  const std::lock_guard lock(books().mutex);
  const auto alive = books().alive.find(buffer);
  const bool isBuffer = alive != books().alive.end() && alive->second.kind == ObjectKind::kBuffer;
  if (isBuffer && alive->second.number == number) {
    return alive->second.mappings.empty() ? BufferState::kReady : BufferState::kMapped;
  }
  const auto gone = books().gone.find(buffer);
  const bool wasBuffer = gone != books().gone.end() && gone->second.kind == ObjectKind::kBuffer;
  // Another buffer at the same address: that of this number is gone.
  return isBuffer || wasBuffer ? BufferState::kGone : BufferState::kForeign;
}

Ledger live() {
  const std::lock_guard lock(books().mutex);
  std::vector<std::pair<int, LiveObject>> numbered;
  for (const auto& [handle, object] : books().alive) {
    numbered.push_back({object.number,
                        {object.kind, handle, object.number, object.references, object.name,
                         object.bytes, static_cast<int>(object.mappings.size())}});
  }
  std::sort(numbered.begin(), numbered.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  Ledger ledger;
  for (auto& [number, object] : numbered) ledger.objects.push_back(std::move(object));
  return ledger;
}

}  // namespace framequilt::opencl_layer
