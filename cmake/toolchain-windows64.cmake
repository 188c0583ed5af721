# SPDX-License-Identifier: MIT
# Cross build for 64-bit Windows with the GNU toolchain of Debian's g++-mingw-w64-x86-64.
set(windows_processor x86_64)
find_program(KNOTWORK_WINE NAMES wine64 wine PATHS /usr/lib/wine)
include(${CMAKE_CURRENT_LIST_DIR}/toolchain-windows.cmake)
