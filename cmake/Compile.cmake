# How everything of ours is compiled: language, warnings, code generation, sanitizers, places of the results.

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
  set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
endif()

# Compiled results are kept by ccache where it is installed. The sloppiness lets it keep units that use the tests'
# precompiled header; nothing here uses __DATE__ or __TIME__.
find_program(TESSARET_CCACHE ccache)
if(TESSARET_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(launcher env CCACHE_SLOPPINESS=pch_defines,time_macros "${TESSARET_CCACHE}")
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()

# The distribution's own Python: another one that comes first in PATH lacks the packages of the distribution.
if(NOT Python3_EXECUTABLE AND EXISTS /usr/bin/python3)
  set(Python3_EXECUTABLE /usr/bin/python3)
endif()
find_package(Python3 COMPONENTS Interpreter)
find_package(Threads REQUIRED)

option(TESSARET_PCH "Compile the headers that many files include once for a whole target" ON)

# tessaret_precompile(target): most of the time of a file of ours goes to these. A file still includes what it uses,
# which `./dev check` and a build of `clang` show.
function(tessaret_precompile target)
  if(TESSARET_PCH)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <atomic> <charconv> <cmath> <cstddef> <cstdint> <cstdio> <cstdlib> <cstring> <filesystem>
      <functional> <iterator> <limits> <map> <memory> <mutex> <new> <optional> <span> <stdexcept> <string> <string_view>
      <utility> <vector>)
  endif()
endfunction()

option(TESSARET_UNITY "Compile sources of the programs and the tests several at a time" ON)

# tessaret_compile_together(target [file...]): eight sources of a target are compiled as one, which takes a third of the
# time, for that goes to what they all include. The files named are compiled alone: they use names of their
# neighbours for something else, or GCC 12 warns of what it makes of them together.
function(tessaret_compile_together target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${TESSARET_UNITY} UNITY_BUILD_BATCH_SIZE 8)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

set(TESSARET_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize= (address,undefined or thread)")
option(TESSARET_COVERAGE "Count lines and branches (GCC)" OFF)
option(TESSARET_LIBFUZZER "Build fuzz targets for libFuzzer (Clang)" OFF)

add_library(tessaret_warnings INTERFACE)
target_compile_options(tessaret_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Werror
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety>)

add_library(tessaret_codegen INTERFACE)
target_compile_options(tessaret_codegen INTERFACE -fno-semantic-interposition -fno-plt)

set(TESSARET_INSTRUMENTED OFF)
if(TESSARET_SANITIZE OR TESSARET_LIBFUZZER OR TESSARET_COVERAGE)
  set(TESSARET_INSTRUMENTED ON)
endif()

if(TESSARET_SANITIZE)
  add_compile_options(-fsanitize=${TESSARET_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TESSARET_SANITIZE})
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()
if(TESSARET_LIBFUZZER)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "libFuzzer comes with Clang only")
  endif()
  # What the fuzzer is to find its way in; tests would take half as long again.
  target_compile_options(tessaret_codegen INTERFACE -fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
if(TESSARET_COVERAGE)
  # Threads count too, so the counters are atomic.
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
