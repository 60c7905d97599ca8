# SPDX-License-Identifier: Apache-2.0
# The page that `framequilt stitch --pyramid` writes, as C++ source: framequilt_page_source.
# It works from disk, so that everything it needs is inside it.

set(page_folder ${PROJECT_SOURCE_DIR}/tools/framequilt/page)
set(framequilt_page_source ${CMAKE_CURRENT_BINARY_DIR}/page_text.cpp)
file(GLOB_RECURSE page_parts CONFIGURE_DEPENDS ${page_folder}/*)
set(page_script ${PROJECT_SOURCE_DIR}/cmake/inline_page.cmake)
add_custom_command(OUTPUT ${framequilt_page_source}
  COMMAND ${CMAKE_COMMAND} -DFOLDER=${page_folder} -DOUTPUT=${framequilt_page_source}
          -P ${page_script}
  DEPENDS ${page_script} ${page_parts} VERBATIM
  COMMENT "Joining the parts of the page")
