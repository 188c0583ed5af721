# SPDX-License-Identifier: MIT
# What every target of the project shares: the language, the rule of bits, warnings, visibility.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
if(NOT WIN32)  # where it would drop the exported copies of inline members
  set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# One folder for programs and shared libraries, a host's own where it has one: Windows programs find their DLLs
# beside them.
if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endif()
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

add_library(knotwork_build_options INTERFACE)
# Bits: no contraction, no reassociation, and doubles are never kept in wider registers.
target_compile_options(knotwork_build_options INTERFACE -ffp-contract=off)
# Without errno to set, mathematical functions become instructions where there are some. (The library's own square
# roots do not depend on that: src/kernels/square_root.h.)
target_compile_options(knotwork_build_options INTERFACE -fno-math-errno)
# GCC 12 fuses the multiplications and additions of a rotation even so, in its pass over straight-line code, where a
# builder's flags (-mfma, -march=native, -march=x86-64-v3) allow the instructions: it must not find any. AVX-512 has
# its own. These come after the builder's flags; a kernel set's own flags come after these.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(i.86|x86|x86_64|AMD64)$")
  target_compile_options(knotwork_build_options INTERFACE -mno-fma -mno-fma4 -mno-avx512f)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(i.86|x86|x86_64|AMD64)$")
  target_compile_options(knotwork_build_options INTERFACE -msse2 -mfpmath=sse)
endif()
target_compile_options(knotwork_build_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>
  # GCC 12 takes the tail of "text" + std::string for an overlapping copy (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${KNOTWORK_WARNINGS_AS_ERRORS}>:-Werror>)

# knotwork_add_library(NAME INCLUDE INSTALLED): a shared library of the project, versioned, with the shared
# options. Its headers lie below the folder INCLUDE, and are installed below INSTALLED in the include folder.
function(knotwork_add_library name include installed)
  add_library(${name} SHARED)
  add_library(knotwork::${name} ALIAS ${name})
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:knotwork_build_options>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  set(installed ${CMAKE_INSTALL_INCLUDEDIR}/${installed})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${include}> $<INSTALL_INTERFACE:${installed}>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
  if(KNOTWORK_INSTALL)
    install(TARGETS ${name} EXPORT ${name}Targets)
    install(DIRECTORY ${include}/ DESTINATION ${installed} FILES_MATCHING PATTERN "*.h")
    set_property(GLOBAL APPEND PROPERTY KNOTWORK_INSTALLED ${name})
  endif()
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH $ORIGIN)
  if(WIN32)
    # knotwork.dll and its import library libknotwork.dll.a
    set_target_properties(${name} PROPERTIES PREFIX "" IMPORT_PREFIX "lib")
  else()
    # Calls within the library are direct and may be inlined, exported or not.
    target_compile_options(${name} PRIVATE -fno-semantic-interposition)
    target_link_options(${name} PRIVATE -Wl,--no-undefined -Wl,-Bsymbolic-functions
      -Wl,--version-script=${PROJECT_SOURCE_DIR}/src/exports.map)
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/src/exports.map)
  endif()
endfunction()

# Exceptions and streams cross the borders of our DLLs, so all of them share the compiler's run-time DLLs;
# these lie beside the programs, and are installed along.
if(WIN32)
  foreach(dll libstdc++-6.dll libgcc_s_dw2-1.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(IS_ABSOLUTE ${path})
      list(APPEND KNOTWORK_RUNTIME_DLLS ${path})
    endif()
  endforeach()
  file(COPY ${KNOTWORK_RUNTIME_DLLS} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
endif()
