// SPDX-License-Identifier: Apache-2.0
// Checks for programs of tests in C. They print what does not hold and go on.
#pragma once

#include <stdio.h>
#include <string.h>

static int failedChecks = 0;

static inline void checkHolds(int holds, const char* text, int line) {
  if (holds) return;
  ++failedChecks;
  printf("line %d: does not hold: %s\n", line, text);
}

static inline void checkNumbers(long long found, long long wanted, const char* text, int line) {
  if (found == wanted) return;
  ++failedChecks;
  printf("line %d: %s is %lld, not %lld\n", line, text, found, wanted);
}

static inline void checkTexts(const char* found, const char* wanted, const char* text, int line) {
  if (strcmp(found, wanted) == 0) return;
  ++failedChecks;
  printf("line %d: %s is\n  \"%s\", not\n  \"%s\"\n", line, text, found, wanted);
}

#define CHECK(condition) checkHolds((condition) != 0, #condition, __LINE__)
#define CHECK_NUMBER(found, wanted) checkNumbers((found), (wanted), #found, __LINE__)
#define CHECK_TEXT(found, wanted) checkTexts((found), (wanted), #found, __LINE__)

typedef struct TestCase {
  const char* name;
  void (*run)(void);
} TestCase;

// Runs the case that the program was asked for, or all; its exit status.
static inline int runCases(const TestCase* cases, size_t count, const char* wanted) {
  size_t ran = 0;
  for (size_t i = 0; i < count; ++i) {
    if (wanted != NULL && strcmp(cases[i].name, wanted) != 0) continue;
    cases[i].run();
    ++ran;
  }
  if (ran == 0) printf("no such case\n");
  return ran == 0 || failedChecks != 0;
}
