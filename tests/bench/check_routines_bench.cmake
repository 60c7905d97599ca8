# SPDX-License-Identifier: Apache-2.0
# cmake -DPROGRAM=routines_bench -DWORK=FOLDER -P check_routines_bench.cmake
#
# One call of each routine, at the smaller size and every level.
set(routines
  gray gray_float mask conditioning halving
  pad_bytes pad_floats vertical_pass_bytes vertical_pass_floats horizontal_pass_bytes
  horizontal_pass_floats binomial_pass unpad_bytes unpad_floats edge_response
  gradients response suppression selection_strongest selection_spread
  descriptors matching consensus
  motion brightness brightness_and_sharpness
  weights fusion region_cut region_paste growth)

# (Debian's library, built for debugging, says so on standard error.)
execute_process(
  COMMAND ${PROGRAM} --benchmark_min_time=0 --benchmark_filter=-/1920x1080/
          --benchmark_out=${WORK}/routines.json --benchmark_out_format=json
  RESULT_VARIABLE status OUTPUT_VARIABLE table ERROR_VARIABLE complaints)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "status ${status}\n${table}${complaints}")
endif()

file(READ ${WORK}/routines.json json)
string(JSON count LENGTH "${json}" benchmarks)
set(found "")
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
  string(JSON name GET "${json}" benchmarks ${i} name)
  string(JSON speed GET "${json}" benchmarks ${i} bytes_per_second)
  if(NOT speed GREATER 0)
    message(FATAL_ERROR "${name} handles ${speed} bytes per second")
  endif()
  string(REGEX MATCH "^[^/]+" routine ${name})
  list(APPEND found ${routine})
endforeach()
list(REMOVE_DUPLICATES found)
list(SORT found)
list(SORT routines)
if(NOT found STREQUAL routines)
  message(FATAL_ERROR "routines ${found} instead of ${routines}")
endif()
