# SPDX-License-Identifier: Apache-2.0
# cmake -DPROGRAM=soak -DBACKEND=host|opencl -P check_soak.cmake
#
# Short runs, too short to judge the memory closely: frames come out as they are meant to, for every
# reason, and what grows is noticed.
cmake_policy(VERSION 3.25)
set(common --backend ${BACKEND} --samples 12)
set(reasons "brightness differs" cancelled error joined "moved too far" "moved too little"
  "moving scene" "no overlap found" "too few matches" "sharpness differs")
# Frames of one criterion cannot be refused for the measures of the other; a card does not take
# the criterion of a dynamic scene, which alone limits the sharpness.
set(lacking_motion "brightness differs" "sharpness differs")
set(lacking_overlap "moving scene")
if(BACKEND STREQUAL opencl)
  list(APPEND lacking_overlap "sharpness differs")
endif()

foreach(criterion motion overlap)
  execute_process(
    COMMAND ${PROGRAM} ${common} --criterion ${criterion} --frames 300 --cycles 12 --allowed-mib 16
    RESULT_VARIABLE status OUTPUT_VARIABLE lines ERROR_VARIABLE complaints)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${criterion}: status ${status}\n${complaints}\n${lines}")
  endif()
  string(REGEX MATCH "{\"counts\"[^\n]*" outcomes "${lines}")
  foreach(reason IN LISTS reasons)
    string(JSON count ERROR_VARIABLE absent GET "${outcomes}" counts "${reason}")
    if(reason IN_LIST lacking_${criterion})
      continue()
    endif()
    if(absent OR count LESS 1)
      message(FATAL_ERROR "${criterion}: no frame for '${reason}'\n${outcomes}")
    endif()
  endforeach()
  string(JSON joined GET "${outcomes}" counts joined)
  if(joined LESS 180)
    message(FATAL_ERROR "${criterion}: ${joined} of 300 frames joined\n${outcomes}")
  endif()
  foreach(kind frames cycles)
    string(REGEX MATCHALL "\"kind\":\"${kind}\"" samples "${lines}")
    list(LENGTH samples count)
    if(NOT count EQUAL 12)
      message(FATAL_ERROR "${criterion}: ${count} samples of ${kind} instead of 12\n${lines}")
    endif()
  endforeach()
endforeach()

# Whatever the backend.
if(BACKEND STREQUAL opencl)
  return()
endif()
set(name_memory "resident memory")
set(name_threads "threads")
set(name_files "file descriptors")
foreach(leak memory threads files)
  execute_process(
    COMMAND ${PROGRAM} ${common} --frames 100 --cycles 0 --leak ${leak}
    RESULT_VARIABLE status OUTPUT_VARIABLE lines ERROR_VARIABLE complaints)
  if(NOT status EQUAL 1 OR NOT complaints MATCHES "^soak: frames grew: ${name_${leak}} [^\n]+\n$")
    message(FATAL_ERROR "${leak} lost: status ${status}\n${complaints}\n${lines}")
  endif()
endforeach()
