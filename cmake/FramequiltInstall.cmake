# SPDX-License-Identifier: Apache-2.0
# Installation: library, headers, package files for CMake and pkg-config, the program.
# Everything is found relative to where it lies, so that the tree can be moved.
include(CMakePackageConfigHelpers)

set(framequilt_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/framequilt)

install(TARGETS framequilt EXPORT framequiltTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY interface/framequilt DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development FILES_MATCHING PATTERN "*.h")
install(EXPORT framequiltTargets NAMESPACE framequilt::
        DESTINATION ${framequilt_package_dir} COMPONENT development)

configure_package_config_file(cmake/framequiltConfig.cmake.in framequiltConfig.cmake
  INSTALL_DESTINATION ${framequilt_package_dir})
write_basic_package_version_file(framequiltConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/framequiltConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/framequiltConfigVersion.cmake
        DESTINATION ${framequilt_package_dir} COMPONENT development)

# From lib/pkgconfig (or lib/TRIPLET/pkgconfig) up to the prefix.
set(framequilt_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH framequilt_prefix_from_pc /${framequilt_pc_dir} /)
# Debian's opencv4.pc names every module; only its include folder is wanted here.
list(TRANSFORM OpenCV_INCLUDE_DIRS PREPEND -I OUTPUT_VARIABLE framequilt_pc_opencv_cflags)
list(JOIN framequilt_pc_opencv_cflags " " framequilt_pc_opencv_cflags)
configure_file(cmake/framequilt.pc.in framequilt.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/framequilt.pc
        DESTINATION ${framequilt_pc_dir} COMPONENT development)

install(FILES ${framequilt_kernels} DESTINATION ${CMAKE_INSTALL_DATADIR}/framequilt
        COMPONENT runtime)

install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR}
        COMPONENT runtime)

if(TARGET framequilt_tool)
  # Pages that the program writes carry this viewer.
  install(FILES tools/framequilt/page/openseadragon/LICENSE.txt
          DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME LICENSE.openseadragon COMPONENT runtime)
  file(RELATIVE_PATH framequilt_lib_from_bin
       /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(framequilt_tool PROPERTIES
    INSTALL_RPATH "$ORIGIN/${framequilt_lib_from_bin}")
  install(TARGETS framequilt_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()
