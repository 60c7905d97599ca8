# SPDX-License-Identifier: Apache-2.0
# Runs tests of kernels on Oclgrind, an emulator that watches every access, and fails when it has
# something to report: an access outside a buffer, a value that was never written, a data race, a
# wrong call.
#
#   cmake -DPROGRAM=TESTS -DRUNTIME=OCLGRIND_ICD -DLOG=FILE [-DLAYER=FILE] [-DCHECKS=LIST]
#         -P check_kernel_accesses.cmake
if(NOT EXISTS "${RUNTIME}")
  message(FATAL_ERROR "OpenCL tests need Oclgrind: run scripts/setup")
endif()

file(REMOVE ${LOG})
set(ENV{OCL_ICD_VENDORS} ${RUNTIME})
set(ENV{OCLGRIND_LOG} ${LOG})
if(LAYER)
  set(ENV{OPENCL_LAYERS} ${LAYER})
endif()
if(NOT CHECKS)
  set(CHECKS CHECK_API DATA_RACES UNINITIALIZED)
endif()
foreach(check IN LISTS CHECKS)
  set(ENV{OCLGRIND_${check}} 1)
endforeach()
set(ENV{FRAMEQUILT_KERNELS_EMULATED} 1)

execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE status)
if(NOT EXISTS ${LOG})
  message(FATAL_ERROR "The tests did not run on Oclgrind")
endif()
file(READ ${LOG} reports LIMIT 8000)
if(NOT reports STREQUAL "")
  message("${reports}")
  message(FATAL_ERROR "Oclgrind has reports; all of them are in ${LOG}")
endif()
if(NOT status EQUAL 0)
  message(FATAL_ERROR "The tests failed on Oclgrind: ${status}")
endif()
