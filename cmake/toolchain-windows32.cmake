# SPDX-License-Identifier: MIT
# Cross build for 32-bit Windows with the GNU toolchain of Debian's g++-mingw-w64-i686.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
find_program(KNOTWORK_WINDOWS_CXX NAMES i686-w64-mingw32-g++-posix i686-w64-mingw32-g++ REQUIRED)
set(CMAKE_CXX_COMPILER ${KNOTWORK_WINDOWS_CXX})
# GoogleTest's project asks for a C compiler too, and uses none.
string(REPLACE "g++" "gcc" CMAKE_C_COMPILER ${KNOTWORK_WINDOWS_CXX})
list(APPEND CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
find_program(KNOTWORK_WINE NAMES wine)
# Debian's wine64 package alone, without wine32, runs no 32-bit programs.
if(KNOTWORK_WINE AND (EXISTS /usr/lib/wine/wine OR NOT EXISTS /usr/lib/wine/wine64))
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KNOTWORK_WINE})
endif()
