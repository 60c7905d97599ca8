// SPDX-License-Identifier: Apache-2.0
/// \file
/// The structs of framequilt_c.h on their way in and out. A struct of the caller may be larger than
/// the library's, where the caller was compiled with a later header; the additional members come in
/// as zero and go out as zero. So far no version of the header has had smaller structs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

#include "interface/c_failure.h"

namespace framequilt {

/// No struct ever becomes larger: such a size is one that was not set.
constexpr std::size_t kLargestStruct = 4096;

/// \throws CallFailure for a size that no version of the header has.
template <class Struct>
void requireSize(std::size_t size, const char* name) {
  static_assert(std::is_trivially_copyable_v<Struct> && offsetof(Struct, size) == 0);
  if (size >= sizeof(Struct) && size <= kLargestStruct) return;
  throw CallFailure(FRAMEQUILT_E_SIZE,
                    std::string(name) + " has a size of " + std::to_string(size) + " bytes, not " +
                        std::to_string(sizeof(Struct)) + ": set size to the sizeof of the struct");
}

/// \throws CallFailure for a null pointer and for a size that no version of the header has.
template <class Struct>
void requireStruct(const Struct* given, const char* name) {
  requireGiven(given, name);
  requireSize<Struct>(given->size, name);
}

/// What the caller gave, with the library's size. \throws CallFailure as `requireStruct`, and for
/// members that the library does not know and that are not zero.
template <class Struct>
Struct received(const Struct* given, const char* name) {
  requireStruct(given, name);
  const auto* bytes = reinterpret_cast<const unsigned char*>(given);
  if (std::any_of(bytes + sizeof(Struct), bytes + given->size,
                  [](unsigned char byte) { return byte != 0; })) {
    throw CallFailure(
        FRAMEQUILT_E_SIZE,
        std::string(name) + " uses members that this library does not have: take a newer one");
  }
  Struct known = *given;
  known.size = sizeof(Struct);
  return known;
}

/// Copies `filled` to the caller, who keeps the size that was set. \param size  At least the
/// struct's.
template <class Struct>
void give(Struct filled, Struct* taken, std::size_t size) {
  filled.size = size;
  *taken = filled;
  std::memset(reinterpret_cast<unsigned char*>(taken) + sizeof(Struct), 0, size - sizeof(Struct));
}

template <class Struct>
void give(const Struct& filled, Struct* taken) {
  give(filled, taken, taken->size);
}

}  // namespace framequilt
