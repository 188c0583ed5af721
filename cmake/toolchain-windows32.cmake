# SPDX-License-Identifier: MIT
# Cross build for 32-bit Windows with the GNU toolchain of Debian's g++-mingw-w64-i686. Its programs run under Debian's
# wine32, else under the wine that scripts/check-windows keeps in a folder of its own (wine64 runs none of them).
set(windows_processor i686)
find_program(KNOTWORK_WINE NAMES wine)
if(EXISTS /usr/lib/wine/wine64 AND NOT EXISTS /usr/lib/wine/wine)
  set(KNOTWORK_WINE "")
endif()
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../tools/wine32 --find RESULT_VARIABLE missing)
if(NOT KNOTWORK_WINE AND NOT missing)
  cmake_path(SET KNOTWORK_WINE NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../tools/wine32)
endif()
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-windows.cmake)
