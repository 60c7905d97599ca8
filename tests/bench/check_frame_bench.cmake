# SPDX-License-Identifier: Apache-2.0
# cmake -DPROGRAM=frame_bench -DWORK=FOLDER -P check_frame_bench.cmake
#
# A few small frames: every contender has to be there, and to stitch them as they belong.
set(frames 5)
set(contenders
  entry_points_1 entry_points_8 session orb phase_correlation scans)
# Pixels that a frame may lie beside its place. The library finds offsets in steps of 2 pixels, the
# stitcher works at a reduced size.
set(tolerance_entry_points_1 4)
set(tolerance_entry_points_8 4)
set(tolerance_session 4)
set(tolerance_orb 1)
set(tolerance_phase_correlation 1)
set(tolerance_scans 4)

execute_process(
  COMMAND ${PROGRAM} --sizes 320x240 --frames ${frames} --json ${WORK}/frames.json
  RESULT_VARIABLE status OUTPUT_VARIABLE table ERROR_VARIABLE progress)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "status ${status}\n${progress}")
endif()
if(NOT table MATCHES "### 320 x 240, ${frames} frames")
  message(FATAL_ERROR "no table:\n${table}")
endif()

file(READ ${WORK}/frames.json json)
string(JSON size GET "${json}" sizes 0)
string(JSON count LENGTH "${size}" contenders)
set(found "")
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
  string(JSON contender GET "${size}" contenders ${i})
  string(JSON key GET "${contender}" key)
  list(APPEND found ${key})
  string(JSON failure GET "${contender}" failure)
  string(JSON joined GET "${contender}" joined)
  if(NOT failure STREQUAL "" OR NOT joined EQUAL frames)
    message(FATAL_ERROR "${key}: ${joined} of ${frames} frames joined\n${contender}")
  endif()
  string(JSON error GET "${contender}" largest_error)
  if(NOT error LESS_EQUAL tolerance_${key})
    message(FATAL_ERROR "${key}: a frame is off by ${error} pixels\n${contender}")
  endif()
  foreach(figure ms_per_frame ratio first_ms)
    string(JSON value GET "${contender}" ${figure})
    if(NOT value GREATER 0)
      message(FATAL_ERROR "${key}: ${figure} is ${value}\n${contender}")
    endif()
  endforeach()
endforeach()
if(NOT found STREQUAL contenders)
  message(FATAL_ERROR "contenders ${found} instead of ${contenders}")
endif()
