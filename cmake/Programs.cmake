# Programs of the tree: the tool, the measuring program, test programs and fuzz targets.

# tessaret_add_program(target OUTPUT name SOURCES file... [LIBRARIES target...])
# A program that stands on the library and may reach below its public interface.
function(tessaret_add_program target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT" "SOURCES;LIBRARIES")
  add_executable(${target} ${arg_SOURCES})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${arg_OUTPUT})
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE tessaret_static ${arg_LIBRARIES} tessaret_warnings)
endfunction()

# tessaret_add_host(target OUTPUT name SOURCES file... [LIBRARIES target...])
# A program that meets the library as any host does. What knows nothing of DICOM it may have from the lowest floors. Installed, it
# finds the library by the way from its own folder.
function(tessaret_add_host target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT" "SOURCES;LIBRARIES")
  add_executable(${target} ${arg_SOURCES})
  file(RELATIVE_PATH way "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${arg_OUTPUT} INSTALL_RPATH "$ORIGIN/${way}")
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE Tessaret::tessaret tessaret_ground ${arg_LIBRARIES} tessaret_warnings)
endfunction()

# tessaret_add_test_program(name SOURCES file... [LABELS label...] [LIBRARIES target...] [TIMEOUT seconds] [LOCK name] [SHARDS n]
#   [OPTIMISED] [ALONE file...])
# A GoogleTest program with one entry in ctest (n entries, each with its share of the tests, where SHARDS says so).
# It carries the label of its area, the folder below tests/. Label `threads` has it run under the thread sanitizer.
# OPTIMISED is for tests that go through many bytes themselves, ALONE for sources that cannot be compiled with others.
function(tessaret_add_test_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OPTIMISED" "TIMEOUT;LOCK;SHARDS" "SOURCES;LABELS;LIBRARIES;ALONE")
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_BINARY_DIR}/tests/include")
  target_link_libraries(${name} PRIVATE
    tessaret_testing tessaret_test_support ${arg_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main
    tessaret_warnings)
  if(arg_OPTIMISED)
    set_property(TARGET ${name} PROPERTY COMPILE_OPTIONS)
  elseif(TESSARET_PCH)
    target_precompile_headers(${name} REUSE_FROM tessaret_test_pch)
  endif()
  tessaret_compile_together(${name} ${arg_ALONE})
  add_dependencies(${name} tessaret_data)
  if("threads" IN_LIST arg_LABELS)
    add_dependencies(threads_tests ${name})
  endif()
  if(NOT arg_SHARDS)
    set(arg_SHARDS 1)
  endif()
  foreach(shard RANGE 1 ${arg_SHARDS})
    if(arg_SHARDS EQUAL 1)
      set(entry ${name})
      set(environment)
    else()
      set(entry ${name}_${shard}_of_${arg_SHARDS})
      math(EXPR index "${shard} - 1")
      set(environment GTEST_TOTAL_SHARDS=${arg_SHARDS} GTEST_SHARD_INDEX=${index})
    endif()
    add_test(NAME ${entry} COMMAND ${name} --gtest_brief=1)
    tessaret_describe_test(${entry} TIMEOUT "${arg_TIMEOUT}" LOCK "${arg_LOCK}" LABELS ${arg_LABELS} ENVIRONMENT ${environment})
  endforeach()
endfunction()

# tessaret_add_python_test(name file.py [LABELS label...] [TIMEOUT seconds] [LOCK name])
# A unittest file run by the distribution's Python. It finds the build in TESSARET_BINARY_DIR, the sources in
# TESSARET_SOURCE_DIR and the tool in TESSARET_TOOL.
function(tessaret_add_python_test name file)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "TIMEOUT;LOCK" "LABELS")
  get_filename_component(module "${file}" NAME_WE)
  add_test(NAME ${name}
    COMMAND "${Python3_EXECUTABLE}" -B -m unittest ${module}
    WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
  tessaret_describe_test(${name} TIMEOUT "${arg_TIMEOUT}" LOCK "${arg_LOCK}" LABELS ${arg_LABELS})
endfunction()

# tessaret_add_script_test(name script [LABELS label...] [TIMEOUT seconds] [ARGUMENTS argument...])
# A bash script, with the same environment as a Python test.
function(tessaret_add_script_test name script)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "TIMEOUT" "LABELS;ARGUMENTS")
  add_test(NAME ${name} COMMAND bash "${CMAKE_CURRENT_SOURCE_DIR}/${script}" ${arg_ARGUMENTS})
  tessaret_describe_test(${name} TIMEOUT "${arg_TIMEOUT}" LABELS ${arg_LABELS})
endfunction()

# Gives a ctest entry its area, its time limit (longer where code is instrumented) and its environment. The address
# sanitizer keeps four calls of the stack of an allocation, and as few frames of calls that are over as it can: each throw
# goes through all that it keeps of these. For whole stacks run the program itself. Calls for the thread's own data are not
# watched: where such data of a codecs' library begin 16 bytes behind a page, the leak check takes what stands before them
# for a header of glibc 2.19, reads at an address that was never one, and ends. It knows these data without.
#
# Tests with the same LOCK do not run at the same time. `gigabytes` is for those that take about one of memory or more;
# instrumented, they make do with a share of that.
function(tessaret_describe_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT;LOCK" "LABELS;ENVIRONMENT")
  get_filename_component(area "${CMAKE_CURRENT_SOURCE_DIR}" NAME)
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(TESSARET_INSTRUMENTED)
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 5")
  elseif(arg_LOCK)
    set_property(TEST ${name} PROPERTY RESOURCE_LOCK ${arg_LOCK})
  endif()
  set_tests_properties(${name} PROPERTIES
    LABELS "${area};${arg_LABELS}"
    TIMEOUT ${arg_TIMEOUT}
    SKIP_RETURN_CODE 77
    ENVIRONMENT "LC_ALL=C.UTF-8;TESSARET_SOURCE_DIR=${PROJECT_SOURCE_DIR};TESSARET_BINARY_DIR=${PROJECT_BINARY_DIR};\
TESSARET_TOOL=${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/tessaret;TESSARET_CMAKE=${CMAKE_COMMAND};\
TESSARET_SANITIZE=${TESSARET_SANITIZE};\
ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1:allocator_may_return_null=1:\
malloc_context_size=4:max_uar_stack_size_log=16:intercept_tls_get_addr=0;\
UBSAN_OPTIONS=print_stacktrace=1;TSAN_OPTIONS=halt_on_error=1;${arg_ENVIRONMENT}")
endfunction()

# The library as fuzz targets stand on it: each is a program of its own under libFuzzer and a quick test elsewhere.
function(tessaret_link_fuzzed_library target)
  if(TESSARET_LIBFUZZER)
    target_link_libraries(${target} PRIVATE tessaret_static tessaret_warnings tessaret_codegen)
  else()
    target_link_libraries(${target} PRIVATE tessaret_testing tessaret_warnings)
  endif()
endfunction()

# tessaret_add_fuzzer(name SOURCES file... [DICTIONARY file])
# Under libFuzzer the target bin/<name>. Elsewhere bin/replay_<name>, which takes every file of corpus/<name> through
# the same entry, as an ordinary test with the label `fuzz`.
function(tessaret_add_fuzzer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DICTIONARY" "SOURCES")
  set(seeds "${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name}")
  if(TESSARET_LIBFUZZER)
    set(target ${name})
  else()
    set(target replay_${name})
  endif()
  add_executable(${target} ${arg_SOURCES})
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE tessaret_fuzz_support)
  tessaret_link_fuzzed_library(${target})
  if(TESSARET_LIBFUZZER)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
    add_dependencies(${name} tessaret_data)
    add_dependencies(fuzzers ${name})
    if(arg_DICTIONARY)
      set(dictionary "${CMAKE_CURRENT_SOURCE_DIR}/${arg_DICTIONARY}")
    endif()
    set_property(GLOBAL APPEND_STRING PROPERTY TESSARET_FUZZERS "${name}\t${seeds}\t${dictionary}\n")
  else()
    target_link_libraries(${target} PRIVATE tessaret_replay)
    add_test(NAME replay_${name} COMMAND replay_${name} "${seeds}")
    tessaret_describe_test(replay_${name})
  endif()
endfunction()
