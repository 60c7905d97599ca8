// SPDX-License-Identifier: Apache-2.0
/// \file
/// What a fuzz target is made of. Each source file of this folder is one program: libFuzzer calls
/// it again and again with bytes of its own making, `replay.cpp` once for each file it is given.
/// Bytes decide the whole course of a call, so that a finding is a file.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "framequilt/report_sink.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace framequilt::fuzz {

/// What a message names beside the condition: the level of the processor that is checked.
inline const char*& placeOfCheck() {
  static const char* place = "";
  return place;
}

/// Says what does not hold, and ends the process: that is a finding.
[[noreturn]] inline void fail(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: does not hold: %s %s\n", file, line, condition, placeOfCheck());
  std::abort();
}

#define FRAMEQUILT_HOLDS(condition) \
  ((condition) ? static_cast<void>(0) : framequilt::fuzz::fail(#condition, __FILE__, __LINE__))

/// The engine's lines go nowhere while there is one.
inline void silenceReports() {
  static const bool once = [] {
    setReportSink([](const char*, std::size_t, void*) {}, nullptr);
    return true;
  }();
  static_cast<void>(once);
}

/// The same numbers, bit for bit; every NaN counts as the same.
inline bool same(float a, float b) {
  if (a != a || b != b) return a != a && b != b;
  return std::equal(reinterpret_cast<const unsigned char*>(&a),
                    reinterpret_cast<const unsigned char*>(&a) + sizeof(a),
                    reinterpret_cast<const unsigned char*>(&b));
}
inline bool same(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](float x, float y) { return same(x, y); });
}

}  // namespace framequilt::fuzz
