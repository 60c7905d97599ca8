# SPDX-License-Identifier: Apache-2.0
# What every target of this project is built with.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Flags that results depend on or that every compilation shares.
#
# Contraction joins a product and a sum into one rounding where the machine can, so the same
# source would give other bytes on other machines: it is off everywhere.
#
# GCC 12 warns of overlapping copies inside its own std::string, at any "literal" + string
# (https://gcc.gnu.org/PR105651).
function(framequilt_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_options(${target} PRIVATE
    -ffp-contract=off -Wall -Wextra -Wshadow -Wconversion
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<BOOL:${FRAMEQUILT_WERROR}>:-Werror>)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# What every program in C is built with: the language as it is defined, and nothing beside it.
function(framequilt_c_target_defaults target)
  target_compile_options(${target} PRIVATE
    -ffp-contract=off -pedantic -Wall -Wextra -Wshadow -Wconversion
    $<$<BOOL:${FRAMEQUILT_WERROR}>:-Werror>)
  set_target_properties(${target} PROPERTIES
    C_STANDARD 11 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF)
endfunction()

# Exports exactly the names in `list`: one a line, functions of C++ as they demangle.
# Templates of the standard library would be exported beside them otherwise.
function(framequilt_limit_exports target list)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} names REGEX "^[^#]")
  set(plain "")
  set(mangled "")
  foreach(name IN LISTS names)
    if(name MATCHES "[(]")
      string(APPEND mangled "    \"${name}\";\n")
    else()
      string(APPEND plain "    ${name};\n")
    endif()
  endforeach()
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${script} @ONLY CONTENT
"{\n  global:\n@plain@    extern \"C++\" {\n@mangled@    };\n  local: *;\n};\n")
  target_link_options(${target} PRIVATE LINKER:--version-script=${script})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
