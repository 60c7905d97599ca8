// SPDX-License-Identifier: Apache-2.0
// Compiled and linked without any protection, with a section that can be written and executed.
#include <cstring>

asm(".section .soft,\"awx\",@progbits\n.byte 0\n.text");

int main(int count, char** words) {
  char text[64];
  std::strncpy(text, words[count - 1], sizeof text - 1);
  text[sizeof text - 1] = '\0';
  return static_cast<int>(std::strlen(text)) == count ? 1 : 0;
}
