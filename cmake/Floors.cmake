# The floors of the house. src/floors.txt lists them from the ground up; a floor links, and may include from, floors
# with a smaller number only.

set(TESSARET_FLOOR_FILE "${PROJECT_SOURCE_DIR}/src/floors.txt")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${TESSARET_FLOOR_FILE}")
file(STRINGS "${TESSARET_FLOOR_FILE}" tessaret_floor_rows REGEX "^[0-9]+ [a-z]+$")

function(tessaret_floor_number name result)
  foreach(row IN LISTS tessaret_floor_rows)
    if(row MATCHES "^([0-9]+) ${name}$")
      set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "${TESSARET_FLOOR_FILE} has no floor named ${name}")
endfunction()

# tessaret_add_floor(name SOURCES file... [LIBRARIES target...] [ALONE file...])
# Makes the object library tessaret_<name> of exactly these files (headers listed too), which sees the floors above it.
# ALONE: sources that cannot be compiled with others, where the sanitizers watch and that is done.
function(tessaret_add_floor name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;ALONE")
  tessaret_floor_number(${name} number)
  if(NOT arg_SOURCES)
    return()
  endif()
  add_library(tessaret_${name} OBJECT ${arg_SOURCES})
  set_target_properties(tessaret_${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(tessaret_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}/include")
  target_link_libraries(tessaret_${name}
    PUBLIC Threads::Threads ${arg_LIBRARIES}
    PRIVATE tessaret_warnings tessaret_codegen)
  # The readers gain a fifth from inlining that -O2 does not do; programs and tests build faster without.
  target_compile_options(tessaret_${name} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O3>)
  # What is not watched is compiled as it is shipped: each source by itself.
  if(TESSARET_SANITIZE)
    tessaret_compile_together(tessaret_${name} ${arg_ALONE})
  endif()
  get_property(floors GLOBAL PROPERTY TESSARET_FLOORS)
  # All floors are compiled alike, so the lowest one's headers serve them all.
  if(NOT floors)
    tessaret_precompile(tessaret_${name})
  elseif(TESSARET_PCH)
    list(GET floors 0 lowest)
    target_precompile_headers(tessaret_${name} REUSE_FROM tessaret_${lowest})
  endif()
  foreach(other IN LISTS floors)
    tessaret_floor_number(${other} otherNumber)
    if(otherNumber LESS number)
      target_link_libraries(tessaret_${name} PUBLIC tessaret_${other})
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY TESSARET_FLOORS ${name})
  list(TRANSFORM arg_SOURCES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  set_property(GLOBAL APPEND PROPERTY TESSARET_FLOOR_SOURCES ${arg_SOURCES})
endfunction()
