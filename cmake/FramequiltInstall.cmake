# SPDX-License-Identifier: Apache-2.0
# Installation: library, headers, package files for CMake and pkg-config, the program with its manual.
# Everything is found relative to where it lies, so that the tree can be moved. Components are named
# after the Debian packages that they become (FramequiltPackages.cmake).
include(CMakePackageConfigHelpers)

set(framequilt_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/framequilt)

install(TARGETS framequilt EXPORT framequiltTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT libframequilt1 NAMELINK_COMPONENT libframequilt-dev)
install(DIRECTORY interface/framequilt DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT libframequilt-dev FILES_MATCHING PATTERN "*.h")
install(EXPORT framequiltTargets NAMESPACE framequilt::
        DESTINATION ${framequilt_package_dir} COMPONENT libframequilt-dev)

configure_package_config_file(cmake/framequiltConfig.cmake.in framequiltConfig.cmake
  INSTALL_DESTINATION ${framequilt_package_dir})
write_basic_package_version_file(framequiltConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/framequiltConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/framequiltConfigVersion.cmake
        DESTINATION ${framequilt_package_dir} COMPONENT libframequilt-dev)

# From lib/pkgconfig (or lib/TRIPLET/pkgconfig) up to the prefix.
set(framequilt_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH framequilt_prefix_from_pc /${framequilt_pc_dir} /)
# Debian's opencv4.pc names every module; only its include folder is wanted here.
list(TRANSFORM OpenCV_INCLUDE_DIRS PREPEND -I OUTPUT_VARIABLE framequilt_pc_opencv_cflags)
list(JOIN framequilt_pc_opencv_cflags " " framequilt_pc_opencv_cflags)
configure_file(cmake/framequilt.pc.in framequilt.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/framequilt.pc
        DESTINATION ${framequilt_pc_dir} COMPONENT libframequilt-dev)

install(FILES ${framequilt_kernels} DESTINATION ${FRAMEQUILT_KERNEL_DIR}
        COMPONENT libframequilt1)

if(NOT FRAMEQUILT_DEBIAN_PACKAGES)
  # Each package has its licences and changes in a folder of its own name.
  install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR}
          COMPONENT libframequilt1)
endif()

if(TARGET framequilt_tool)
  file(RELATIVE_PATH framequilt_lib_from_bin
       /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(framequilt_tool PROPERTIES
    INSTALL_RPATH "$ORIGIN/${framequilt_lib_from_bin}")
  install(TARGETS framequilt_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT framequilt)
  install(FILES tools/framequilt/completion.bash RENAME framequilt
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT framequilt)

  # The workflow finds its parts beside where the link leads.
  set(framequilt_workflow_dir ${CMAKE_INSTALL_DATADIR}/framequilt/workflow)
  file(RELATIVE_PATH framequilt_workflow_from_bin
       /${CMAKE_INSTALL_BINDIR} /${framequilt_workflow_dir})
  file(CREATE_LINK ${framequilt_workflow_from_bin}/framequilt-captures
       ${CMAKE_CURRENT_BINARY_DIR}/framequilt-captures SYMBOLIC)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/framequilt-captures
          DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT framequilt)
  install(DIRECTORY workflow/ DESTINATION ${framequilt_workflow_dir} COMPONENT framequilt
          USE_SOURCE_PERMISSIONS FILES_MATCHING PATTERN "*.py" PATTERN "Snakefile"
          PATTERN "framequilt-captures" PATTERN "slurm_status" PATTERN "__pycache__" EXCLUDE)

  if(NOT FRAMEQUILT_DEBIAN_PACKAGES)
    install(FILES tools/framequilt/framequilt.1 workflow/framequilt-captures.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT framequilt)
    # Pages that the program writes carry this viewer.
    install(FILES tools/framequilt/page/openseadragon/LICENSE.txt
            DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME LICENSE.openseadragon COMPONENT framequilt)
  endif()
endif()
if(TARGET framequilt_viewer)
  set_target_properties(framequilt_viewer PROPERTIES
    INSTALL_RPATH "$ORIGIN/${framequilt_lib_from_bin}")
  install(TARGETS framequilt_viewer RUNTIME
          DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT framequilt-viewer)
  install(FILES tools/viewer/desktop/framequilt-viewer.desktop
          DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT framequilt-viewer)
  install(FILES tools/viewer/desktop/framequilt-viewer.svg
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT framequilt-viewer)
  if(NOT FRAMEQUILT_DEBIAN_PACKAGES)
    install(FILES tools/viewer/desktop/framequilt-viewer.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT framequilt-viewer)
  endif()
endif()
