# SPDX-License-Identifier: Apache-2.0
# What makes the exploitation of a memory error harder; tests/abi/check_hardening looks at the result.
#
# Not with sanitizers, which find the errors themselves and replace the functions that are checked.
option(FRAMEQUILT_HARDENING "Checked library calls, protected stacks, read-only tables" ON)

include(CheckCXXCompilerFlag)
include(CheckPIESupported)

set(FRAMEQUILT_HARDENED FALSE)
if(FRAMEQUILT_HARDENING AND NOT "${CMAKE_CXX_FLAGS}" MATCHES "-fsanitize|--coverage")
  set(FRAMEQUILT_HARDENED TRUE)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  check_pie_supported()
  # Branch targets and return addresses are checked by processors that can.
  check_cxx_compiler_flag(-fcf-protection=full FRAMEQUILT_COMPILER_HAS_CET)
  check_cxx_compiler_flag(-fstack-clash-protection FRAMEQUILT_COMPILER_HAS_STACK_CLASH)
  add_compile_options(
    -fstack-protector-strong
    $<$<BOOL:${FRAMEQUILT_COMPILER_HAS_CET}>:-fcf-protection=full>
    $<$<BOOL:${FRAMEQUILT_COMPILER_HAS_STACK_CLASH}>:-fstack-clash-protection>
    # It needs optimisation. A distribution's own level gives way.
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=3>)
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
