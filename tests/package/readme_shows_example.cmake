# SPDX-License-Identifier: Apache-2.0
# The C++ example of the README is the program that the tests compile and run.
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(REGEX REPLACE "^// SPDX[^\n]*\n" "" example "${example}")
string(FIND "${readme}" "```cpp\n${example}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "README.md does not show ${EXAMPLE} as it is: copy it into the cpp block")
endif()
