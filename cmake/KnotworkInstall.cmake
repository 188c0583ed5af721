# SPDX-License-Identifier: MIT
# What `cmake --install` puts where: libraries, headers, the CMake package, the pkg-config file, documentation.
include(CMakePackageConfigHelpers)

get_property(installed_targets GLOBAL PROPERTY KNOTWORK_INSTALLED)  # each installs itself and its headers
if(KNOTWORK_RUNTIME_DLLS)
  install(FILES ${KNOTWORK_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# As in the source tree, so that the links from one file to another hold.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")

# Compatible are the releases of one major number: the same as by the shared libraries' SOVERSION.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/knotwork)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/knotworkConfig.cmake.in
  ${PROJECT_BINARY_DIR}/knotworkConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/knotworkConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/knotworkConfig.cmake ${PROJECT_BINARY_DIR}/knotworkConfigVersion.cmake
  DESTINATION ${package_dir})
foreach(target IN LISTS installed_targets)
  install(EXPORT ${target}Targets NAMESPACE knotwork:: DESTINATION ${package_dir})
endforeach()

# A relative way up keeps the file right wherever the prefix is moved to.
file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
# The stand-ins' headers have folders of their own. What the host brought itself it names itself.
set(pc_cflags "-I\${includedir}")
set(pc_libs "-lknotwork")
foreach(stand_in IN LISTS installed_targets)
  if(NOT stand_in STREQUAL knotwork)
    string(APPEND pc_cflags " -I\${includedir}/${stand_in}")
    string(APPEND pc_libs " -l${stand_in}")
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/knotwork.pc.in ${PROJECT_BINARY_DIR}/knotwork.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/knotwork.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
