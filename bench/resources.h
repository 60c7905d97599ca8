// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace framequilt::bench {

/// Wall time and processor time of all threads, in milliseconds.
struct Spent {
  double wall = 0;
  double cpu = 0;
};

/// Spent since it was made.
class Stopwatch {
 public:
  Stopwatch() : start_(now()) {}
  Spent spent() const;

 private:
  static Spent now();
  Spent start_;
};

/// The most memory that the process had resident since this was made, above what it had then.
class PeakMemory {
 public:
  PeakMemory();
  /// Bytes; none where the system does not tell.
  std::optional<std::int64_t> bytes() const;

 private:
  std::optional<std::int64_t> atStart_;
};

/// What the process holds right now.
struct Holdings {
  std::int64_t residentBytes = 0;
  int threads = 0;
  int files = 0;  ///< Open file descriptors.
};

/// \throws std::runtime_error where the system does not tell.
Holdings holdings();

/// Everything runs on the processor, on every machine. Before the first call of OpenCL.
void useHostAlone();

/// The processor's name, as the system gives it.
std::string processorName();

}  // namespace framequilt::bench
