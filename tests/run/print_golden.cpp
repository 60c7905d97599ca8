// SPDX-License-Identifier: Apache-2.0
// Prints the lines of golden.txt as this build makes them.
#include <cstdio>

#include "tests/run/golden_captures.h"

int main() {
  for (const GoldenCapture& capture : goldenCaptures()) {
    std::printf("%s %s\n", capture.name.c_str(), digestOf(capture).c_str());
  }
}
