# SPDX-License-Identifier: Apache-2.0
# Makes one HTML text of the page's parts, and C++ source that holds it:
# cmake -DFOLDER=PAGE -DOUTPUT=FILE -P inline_page.cmake
#
# index.html names each part as @part@ in a line of its own; what it names in angle brackets is left
# to the program, which fills it in when it writes a page.
cmake_minimum_required(VERSION 3.25)

file(READ "${FOLDER}/index.html" page)

function(inline_part name)
  set(text "")
  foreach(file IN LISTS ARGN)
    file(READ "${FOLDER}/${file}" part)
    string(APPEND text "${part}")
  endforeach()
  if(text MATCHES "</(script|style)")
    message(FATAL_ERROR "${ARGN}: would end the element that holds it")
  endif()
  string(FIND "${page}" "@${name}@" begin)
  if(begin EQUAL -1)
    message(FATAL_ERROR "${FOLDER}/index.html names no @${name}@")
  endif()
  string(REPLACE "@${name}@" "${text}" page "${page}")
  set(page "${page}" PARENT_SCOPE)
endfunction()

inline_part(style style.css)
inline_part(licence openseadragon/LICENSE.txt)
inline_part(openseadragon openseadragon/openseadragon.min.js)
inline_part(scripts
  capture.js text.js viewer.js layers.js plot.js timeline.js record.js frame_list.js link.js main.js)

file(WRITE "${OUTPUT}"
"// Made by cmake/inline_page.cmake.
#include \"tools/framequilt/page_text.h\"

namespace framequilt::tool {

std::string_view pageText() {
  static constexpr char kText[] = R\"framequilt(${page})framequilt\";
  return {kText, sizeof kText - 1};
}

}  // namespace framequilt::tool
")
