// SPDX-License-Identifier: Apache-2.0
#pragma once

int threadsOfProcess();

/// The same with a sanitizer's own thread, which comes along with the first of the process. For
/// when no other thread runs.
int threadsAtRest();

/// Waits until there are no more threads than that: the system lists one for a moment after it was
/// joined.
void waitForThreads(int count);
