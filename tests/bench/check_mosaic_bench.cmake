# SPDX-License-Identifier: Apache-2.0
# One frame over two mosaics: a line of the table for each.
execute_process(
  COMMAND ${PROGRAM} --size 320x240 --sides 6000 6400 --frames 4 --passes 1
  OUTPUT_VARIABLE table RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "status ${status}")
endif()
foreach(line "6000 x 6000 \\| 2" "6400 x 6400 \\| 2")
  if(NOT table MATCHES "\\| ${line} \\| [0-9.]+ \\| [0-9.]+ \\|")
    message(FATAL_ERROR "no line '${line}' in:\n${table}")
  endif()
endforeach()
