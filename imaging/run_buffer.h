// SPDX-License-Identifier: Apache-2.0
/// \file
/// Ownership of the run's buffers. The exported pointer is the only truth: a buffer exists while
/// its pointer is not null, and a host may have set the pointer itself, to memory from `new[]`.
/// Beside it the library only remembers how much it allocated itself, to notice a buffer that has
/// become too small. While a run is open it also keeps the memory that a pointer held before it
/// became null: a buffer that lives for one step of a frame gets the same memory again in the next
/// frame, since touching new pages costs more than most steps. Each buffer is handled by one thread
/// at a time; different ones may be handled at the same time.
#pragma once

#include <cstddef>
#include <utility>

namespace framequilt {

/// Fills `buffer` with at least `elements` zeros when it is null, or when it is the library's own
/// and known to be smaller; keeps it with its contents otherwise.
/// \throws std::bad_alloc; `buffer` is then unchanged or null.
template <class T>
void ensure(T*& buffer, std::size_t elements);

/// The same without zeros: a new buffer holds anything, for those that are written before they are
/// read.
template <class T>
void ensureRoom(T*& buffer, std::size_t elements);

/// Releases `buffer` with `delete[]` and sets it to null. Between `keepDropped(true)` and
/// `keepDropped(false)` memory of the library waits for the next `ensure` of this buffer instead.
template <class T>
void drop(T*& buffer) noexcept;

/// Exchanges the memory of two buffers, and what is remembered of it.
template <class T>
void exchange(T*& one, T*& two) noexcept;

/// At the start of a run, and at its end: then what was kept is released.
void keepDropped(bool keep) noexcept;

extern template void ensure<unsigned char>(unsigned char*&, std::size_t);
extern template void ensure<unsigned short>(unsigned short*&, std::size_t);
extern template void ensure<float>(float*&, std::size_t);
extern template void ensureRoom<unsigned char>(unsigned char*&, std::size_t);
extern template void ensureRoom<unsigned short>(unsigned short*&, std::size_t);
extern template void ensureRoom<float>(float*&, std::size_t);
extern template void exchange<unsigned char>(unsigned char*&, unsigned char*&) noexcept;
extern template void drop<unsigned char>(unsigned char*&) noexcept;
extern template void drop<unsigned short>(unsigned short*&) noexcept;
extern template void drop<float>(float*&) noexcept;

/// Calls its function when it goes out of scope, also on an exception.
template <class Function>
class AtScopeEnd {
 public:
  explicit AtScopeEnd(Function function) : function_(std::move(function)) {}
  ~AtScopeEnd() { function_(); }
  AtScopeEnd(const AtScopeEnd&) = delete;
  AtScopeEnd& operator=(const AtScopeEnd&) = delete;

 private:
  Function function_;
};

}  // namespace framequilt
