// SPDX-License-Identifier: Apache-2.0
/// \file
/// Makes one call of the system fail: the program that links fault_points.cpp has its own operator
/// new, malloc and its kin, mmap, pthread_create and pthread_join in front of the system's. Each
/// call of one of them that the library makes while faults are armed is a point, on whatever
/// thread.
///
/// A call counts that comes from the library itself, or from OpenCV, the C++ or the C library on
/// its behalf. What the test, an OpenCL driver or its compiler ask for does not, nor do OpenCV's
/// own objects: without memory for the record of a matrix it loses the pixels that it has just
/// taken.
///
/// With sanitizers malloc, its kin and mmap are the sanitizer's own and never fail; operator new,
/// whose memory comes from there, and the threads do.
#pragma once

#include <string>

/// False with sanitizers.
bool mallocIsAPoint();

/// What happened while faults were armed.
struct PassedPoints {
  long count = 0;      ///< Calls that could have failed.
  std::string failed;  ///< The one that failed; empty when none did.
};

/// From here on the `failing`th point fails, once; with 0 all are only counted. Not while armed.
void armFaults(long failing);
PassedPoints disarmFaults();

/// Calls of the test program count, too, while it lives: for parts of the library that are linked
/// into it.
class FaultsOfProgram {
 public:
  FaultsOfProgram();
  ~FaultsOfProgram();
  FaultsOfProgram(const FaultsOfProgram&) = delete;
  FaultsOfProgram& operator=(const FaultsOfProgram&) = delete;
};

/// Objects of operator new that were not deleted, in the whole process.
long liveObjects();

/// Threads that were created and that nobody joined or detached.
long unjoinedThreads();
