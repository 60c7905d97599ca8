# SPDX-License-Identifier: Apache-2.0
# Joins kernel sources into one program: cmake -DOUTPUT=FILE -P join_kernels.cmake SOURCE...
#
# Contraction is off as in the C++ code: the device would round a product and a sum once, and give
# other floats than the host.
set(program "#pragma OPENCL FP_CONTRACT OFF\n")

set(past_script FALSE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE ${last})
  set(argument "${CMAKE_ARGV${i}}")
  if(past_script)
    get_filename_component(name "${argument}" NAME)
    file(READ "${argument}" text)
    string(APPEND program "#line 1 \"${name}\"\n" "${text}")
  elseif(argument MATCHES "join_kernels[.]cmake$")
    set(past_script TRUE)
  endif()
endforeach()

file(WRITE "${OUTPUT}" "${program}")
