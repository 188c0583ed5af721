# SPDX-License-Identifier: MIT
# What the cross builds for Windows share; included with `windows_processor` set, and with `KNOTWORK_WINE` where there is
# a wine for it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${windows_processor})
set(windows_prefix ${windows_processor}-w64-mingw32)
find_program(KNOTWORK_WINDOWS_CXX NAMES ${windows_prefix}-g++-posix ${windows_prefix}-g++ REQUIRED)
set(CMAKE_CXX_COMPILER ${KNOTWORK_WINDOWS_CXX})
# GoogleTest's project asks for a C compiler too, and uses none.
string(REPLACE "g++" "gcc" CMAKE_C_COMPILER ${KNOTWORK_WINDOWS_CXX})
list(APPEND CMAKE_FIND_ROOT_PATH /usr/${windows_prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
if(KNOTWORK_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KNOTWORK_WINE})
endif()
