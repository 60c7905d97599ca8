# SPDX-License-Identifier: Apache-2.0
# Debian packages, one for each component. scripts/packages makes them.
#
# Licences and changes lie in a folder of each package. The manuals are compressed. The kernels lie in
# a folder named after the library's package, so that libraries with other names of their own (SONAME)
# can be installed beside this one.

find_program(FRAMEQUILT_GZIP gzip REQUIRED)
set(debian_folder ${PROJECT_SOURCE_DIR}/packaging/debian)

# framequilt_compress(SOURCE OUTPUT): without name and time, so that the same source makes the same bytes.
function(framequilt_compress source output)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
  execute_process(COMMAND ${FRAMEQUILT_GZIP} -9nc ${source}
                  OUTPUT_FILE ${output} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Version and maintainer are those of the newest entry.
file(STRINGS ${debian_folder}/changelog.Debian changelog_lines)
list(GET changelog_lines 0 newest_entry)
if(NOT newest_entry MATCHES "^framequilt \\(${PROJECT_VERSION}-([0-9.]+)\\)")
  message(FATAL_ERROR "The newest entry of ${debian_folder}/changelog.Debian is not of version "
                      "${PROJECT_VERSION}: add one")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})
set(version ${PROJECT_VERSION}-${CMAKE_MATCH_1})
list(FILTER changelog_lines INCLUDE REGEX "^ -- ")
list(GET changelog_lines 0 signature)
string(REGEX REPLACE "^ -- (.*>)  .*" "\\1" CPACK_PACKAGE_CONTACT ${signature})

set(packages libframequilt1 libframequilt-dev framequilt framequilt-viewer python3-framequilt)
get_cmake_property(components COMPONENTS)
list(REMOVE_ITEM components ${packages} Unspecified)
if(components OR NOT TARGET framequilt_tool OR NOT TARGET framequilt_viewer
   OR NOT TARGET framequilt_python)
  message(FATAL_ERROR "The packages are ${packages}: each needs its component, and no other one may "
                      "be installed (${components})")
endif()

framequilt_compress(${debian_folder}/changelog.Debian ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz)
framequilt_compress(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
foreach(package IN LISTS packages)
  install(FILES ${debian_folder}/copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz
                ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${package})
endforeach()
function(framequilt_install_manual manual package)
  cmake_path(GET manual FILENAME name)
  framequilt_compress(${PROJECT_SOURCE_DIR}/${manual} ${CMAKE_CURRENT_BINARY_DIR}/${name}.gz)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.gz
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${package})
endfunction()
framequilt_install_manual(tools/framequilt/framequilt.1 framequilt)
framequilt_install_manual(workflow/framequilt-captures.1 framequilt)
framequilt_install_manual(tools/viewer/desktop/framequilt-viewer.1 framequilt-viewer)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME framequilt)
# Each description begins with a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_COMPONENTS_ALL ${packages})
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE framequilt)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Where dpkg-shlibdeps finds the library itself. It does not know its package, which is named below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

# A program needs a library that is as new as the one that it was built with.
set(library "libframequilt1 (>= ${PROJECT_VERSION})")
set(about "Framequilt stitches the frames of a camera that moves over a scene (a
microscope stage, a circuit board, a document, the ground below) into one
mosaic. After every frame it tells where the frame lies, what was measured
and decided, and shows the mosaic so far. A GPU is used through OpenCL where
one is at hand.
")

set(CPACK_DEBIAN_LIBFRAMEQUILT1_PACKAGE_NAME libframequilt1)
set(CPACK_DEBIAN_LIBFRAMEQUILT1_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBFRAMEQUILT1_PACKAGE_SUGGESTS opencl-icd)
set(CPACK_DEBIAN_LIBFRAMEQUILT1_DESCRIPTION "stitching of camera frames into one mosaic - shared library
${about}
This package contains the shared library and its OpenCL kernels.")

set(CPACK_DEBIAN_LIBFRAMEQUILT-DEV_PACKAGE_NAME libframequilt-dev)
set(CPACK_DEBIAN_LIBFRAMEQUILT-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBFRAMEQUILT-DEV_PACKAGE_DEPENDS "libframequilt1 (= ${version}), libopencv-dev")
set(CPACK_DEBIAN_LIBFRAMEQUILT-DEV_DESCRIPTION "stitching of camera frames into one mosaic - development files
${about}
This package contains the headers for C++ and C, and what CMake and
pkg-config need to build against the library.")

set(CPACK_DEBIAN_FRAMEQUILT_PACKAGE_NAME framequilt)
set(CPACK_DEBIAN_FRAMEQUILT_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_FRAMEQUILT_PACKAGE_DEPENDS "${library}")
# The workflow for many captures; Snakemake brings a few hundred megabytes.
set(CPACK_DEBIAN_FRAMEQUILT_PACKAGE_RECOMMENDS "python3:any")
set(CPACK_DEBIAN_FRAMEQUILT_PACKAGE_SUGGESTS "snakemake, slurm-client")
set(CPACK_DEBIAN_FRAMEQUILT_DESCRIPTION "stitching of camera frames into one mosaic - command line
${about}
This package contains the program. It takes pictures, a video or a camera,
and writes mosaics as PNG, JPEG, TIFF, OME-TIFF and Deep Zoom, reports, and
pages to look at in a browser. It simulates captures, too, and evaluates
what was stitched against the truth. framequilt-captures stitches a tree of
captures, with Snakemake, on one machine or on a Slurm cluster.")

set(CPACK_DEBIAN_FRAMEQUILT-VIEWER_PACKAGE_NAME framequilt-viewer)
set(CPACK_DEBIAN_FRAMEQUILT-VIEWER_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_FRAMEQUILT-VIEWER_PACKAGE_DEPENDS "${library}")
set(CPACK_DEBIAN_FRAMEQUILT-VIEWER_DESCRIPTION "stitching of camera frames into one mosaic - desktop viewer
${about}
This package contains the desktop viewer. The mosaic grows on the screen
while frames come in, and of every frame it shows what was measured, and why
it was refused.")

set(CPACK_DEBIAN_PYTHON3-FRAMEQUILT_PACKAGE_NAME python3-framequilt)
set(CPACK_DEBIAN_PYTHON3-FRAMEQUILT_PACKAGE_SECTION python)
# The module is made for one minor version of the interpreter.
get_directory_property(python DIRECTORY python DEFINITION Python3_VERSION_MINOR)
math(EXPR next_python "${python} + 1")
set(CPACK_DEBIAN_PYTHON3-FRAMEQUILT_PACKAGE_DEPENDS
    "${library}, python3 (>= 3.${python}~), python3 (<< 3.${next_python}~), python3-numpy")
set(CPACK_DEBIAN_PYTHON3-FRAMEQUILT_DESCRIPTION "stitching of camera frames into one mosaic - Python package
${about}
This package contains the module for Python 3. Frames are numpy arrays, and
the mosaic is a view of the library's own memory.")

# What dpkg runs, under the names that it wants.
foreach(package IN LISTS packages)
  file(GLOB scripts CONFIGURE_DEPENDS ${debian_folder}/${package}.*)
  string(TOUPPER ${package} PACKAGE)
  foreach(script IN LISTS scripts)
    cmake_path(GET script EXTENSION LAST_ONLY name)
    string(SUBSTRING ${name} 1 -1 name)
    configure_file(${script} ${CMAKE_CURRENT_BINARY_DIR}/debian/${package}/${name} @ONLY)
    list(APPEND CPACK_DEBIAN_${PACKAGE}_PACKAGE_CONTROL_EXTRA
         ${CMAKE_CURRENT_BINARY_DIR}/debian/${package}/${name})
  endforeach()
endforeach()

include(CPack)
