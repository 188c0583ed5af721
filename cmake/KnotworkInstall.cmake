# SPDX-License-Identifier: MIT
# What `cmake --install` puts where: libraries, headers, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

# The stand-ins for the host's own libraries go along, unless the host's build brought the real ones.
set(installed_targets knotwork)
foreach(stand_in knotwork_foundation knotwork_kernel)
  if(TARGET ${stand_in})
    get_target_property(stand_in_is_imported ${stand_in} IMPORTED)
    if(NOT stand_in_is_imported)
      list(APPEND installed_targets ${stand_in})
    endif()
  endif()
endforeach()

install(TARGETS ${installed_targets} EXPORT knotworkTargets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/knotwork DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
if(KNOTWORK_RUNTIME_DLLS)
  install(FILES ${KNOTWORK_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/knotwork)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/knotworkConfig.cmake.in
  ${PROJECT_BINARY_DIR}/knotworkConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/knotworkConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/knotworkConfig.cmake ${PROJECT_BINARY_DIR}/knotworkConfigVersion.cmake
  DESTINATION ${package_dir})
install(EXPORT knotworkTargets NAMESPACE knotwork:: DESTINATION ${package_dir})

# A relative way up keeps the file right wherever the prefix is moved to.
file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
list(TRANSFORM installed_targets PREPEND "-l" OUTPUT_VARIABLE pc_libs)
list(JOIN pc_libs " " pc_libs)
configure_file(${PROJECT_SOURCE_DIR}/cmake/knotwork.pc.in ${PROJECT_BINARY_DIR}/knotwork.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/knotwork.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
