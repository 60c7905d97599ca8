# SPDX-License-Identifier: Apache-2.0
# Fails unless every command in COMMANDS (compile_commands.json) compiles without contraction and
# without any flag that lets the compiler change floating-point results.
file(READ ${COMMANDS} database)
string(JSON count LENGTH "${database}")
set(checked 0)
set(bad "")
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
  string(JSON command GET "${database}" ${i} command)
  string(JSON file GET "${database}" ${i} file)
  math(EXPR checked "${checked} + 1")
  if(NOT command MATCHES " -ffp-contract=off " OR
     command MATCHES "-ffp-contract=(fast|on)|-Ofast|-ffast-math|-funsafe-math|-fassociative-math|-freciprocal-math|-march=native")
    string(APPEND bad "\n  ${file}")
  endif()
endforeach()
if(bad)
  message(FATAL_ERROR "compiled with other floating-point flags:${bad}")
endif()
if(checked LESS 30)
  message(FATAL_ERROR "only ${checked} commands in ${COMMANDS}: not the project's database")
endif()
message(STATUS "${checked} compile commands checked")
