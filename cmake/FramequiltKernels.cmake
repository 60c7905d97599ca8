# SPDX-License-Identifier: Apache-2.0
# The program that the OpenCL backend builds on the device at run time: the sources in
# opencl/kernels, joined. Where clang is found, they are checked as OpenCL C 1.2 at build time, with
# and without double precision.

set(framequilt_kernels ${CMAKE_BINARY_DIR}/share/framequilt/cl.bin)

# What the others use comes first.
set(kernel_sources prelude border filter gradient gray motion region resize fusion)
list(TRANSFORM kernel_sources PREPEND ${PROJECT_SOURCE_DIR}/opencl/kernels/)
list(TRANSFORM kernel_sources APPEND .cl)

set(join_script ${PROJECT_SOURCE_DIR}/cmake/join_kernels.cmake)
add_custom_command(OUTPUT ${framequilt_kernels}
  COMMAND ${CMAKE_COMMAND} -DOUTPUT=${framequilt_kernels} -P ${join_script} ${kernel_sources}
  DEPENDS ${join_script} ${kernel_sources} VERBATIM
  COMMENT "Joining the OpenCL kernels")
set(kernel_outputs ${framequilt_kernels})

find_program(FRAMEQUILT_CLANG NAMES clang clang-19 clang-18 clang-17 clang-16 clang-15 clang-14
             DOC "Checks the OpenCL kernels at build time")
set(kernel_check ${FRAMEQUILT_CLANG} -x cl -cl-std=CL1.2 -target spir64-unknown-unknown
    -Xclang -finclude-default-header -fsyntax-only -Wall -Wextra -Werror)
set(kernel_check_status 1)
if(FRAMEQUILT_CLANG)
  # A clang without its OpenCL headers cannot check anything.
  execute_process(COMMAND ${kernel_check} /dev/null
                  RESULT_VARIABLE kernel_check_status OUTPUT_QUIET ERROR_QUIET)
endif()
if(kernel_check_status EQUAL 0)
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/kernels_checked)
  add_custom_command(OUTPUT ${stamp}
    COMMAND ${kernel_check} ${framequilt_kernels}
    COMMAND ${kernel_check} -DFRAMEQUILT_WITHOUT_FP64 ${framequilt_kernels}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${framequilt_kernels} VERBATIM
    COMMENT "Checking the OpenCL kernels")
  list(APPEND kernel_outputs ${stamp})
else()
  message(STATUS "No clang for OpenCL C: the kernels are not checked at build time")
endif()

add_custom_target(framequilt_kernels ALL DEPENDS ${kernel_outputs})
