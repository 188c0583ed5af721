# SPDX-License-Identifier: MIT
# Level-1 BLAS for the factorisations: the built-in routines, and the system's where there are any.
find_package(BLAS QUIET)
if(BLAS_FOUND AND NOT WIN32)
  set(knotwork_has_blas ON)
else()
  set(knotwork_has_blas OFF)
endif()
option(KNOTWORK_SYSTEM_BLAS "Take level-1 routines from the system's BLAS where their bits are right"
       ${knotwork_has_blas})

set(KNOTWORK_BLAS1_SOURCES ${CMAKE_CURRENT_LIST_DIR}/blas1.cpp
                           ${CMAKE_CURRENT_LIST_DIR}/blas1_builtin.cpp
                           ${CMAKE_CURRENT_LIST_DIR}/blas1_check.cpp
                           ${CMAKE_CURRENT_LIST_DIR}/blas1_system.cpp)
target_sources(knotwork PRIVATE ${KNOTWORK_BLAS1_SOURCES})
if(KNOTWORK_SYSTEM_BLAS)
  find_package(BLAS REQUIRED)
  target_compile_definitions(knotwork PRIVATE KNOTWORK_SYSTEM_BLAS)
  target_link_libraries(knotwork PRIVATE BLAS::BLAS)
endif()
