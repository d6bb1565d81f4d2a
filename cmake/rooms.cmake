# A room is a target with one purpose. Its public headers lie in include/<room>/, and others include them as
# "<room>/x.h". Its other headers lie beside the sources and can be included only from there. A room sees the public
# headers of the rooms that it names under USES or PRIVATE_USES. Any other include doesn't compile.

add_library(quillbox_flags INTERFACE)
target_compile_options(quillbox_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
# Sources that are compiled together are included by a generated one. g++ takes them for headers then, and warns of types
# that it would accept in a source.
if(CMAKE_UNITY_BUILD)
  target_compile_options(quillbox_flags INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endif()
# Clang proves the annotations of kernel/thread_safety.h; a mutex that isn't held is an error whatever QUILLBOX_WERROR says.
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  target_compile_options(quillbox_flags INTERFACE -Wthread-safety -Werror=thread-safety)
endif()
if(QUILLBOX_WERROR)
  target_compile_options(quillbox_flags INTERFACE -Werror)
endif()
if(QUILLBOX_SANITIZE)
  target_compile_options(quillbox_flags INTERFACE -fsanitize=${QUILLBOX_SANITIZE} -fno-omit-frame-pointer
                                                  -fno-sanitize-recover=all)
  target_link_options(quillbox_flags INTERFACE -fsanitize=${QUILLBOX_SANITIZE})
endif()
# ccache can keep what was compiled with a precompiled header only with these.
target_compile_options(quillbox_flags INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>
                                                "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")

# The headers of the platform interface (ce/*.h).
add_library(ce_api INTERFACE)
target_include_directories(ce_api INTERFACE ${PROJECT_SOURCE_DIR}/platform/include)

# The headers of the standard library that most rooms include, compiled once for all of them. Only where sources are
# compiled together: other builds find an include that is missing.
if(CMAKE_UNITY_BUILD)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/room_headers.cpp CONTENT "")
  add_library(quillbox_room_headers STATIC EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/room_headers.cpp)
  target_link_libraries(quillbox_room_headers PRIVATE quillbox_flags)
  target_precompile_headers(quillbox_room_headers PRIVATE
    <algorithm> <array> <atomic> <chrono> <cstring> <functional> <map> <memory> <mutex> <optional> <span> <sstream>
    <string> <thread> <unordered_map> <vector>)
endif()

# quillbox_room(NAME [OBJECT] SOURCES file... [USES target...] [PRIVATE_USES target...])
# Sources are relative to the room's folder. Rooms of one folder share its include folder.
function(quillbox_room name)
  cmake_parse_arguments(room "OBJECT" "" "SOURCES;USES;PRIVATE_USES" ${ARGN})
  if(room_OBJECT)
    add_library(${name} OBJECT ${room_SOURCES})
  else()
    add_library(${name} STATIC ${room_SOURCES})
  endif()
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
  target_link_libraries(${name} PUBLIC ce_api ${room_USES} PRIVATE quillbox_flags ${room_PRIVATE_USES})
  if(TARGET quillbox_room_headers)
    target_precompile_headers(${name} REUSE_FROM quillbox_room_headers)
  endif()
endfunction()

# quillbox_compile_quickly(TARGET...): a sanitized build doesn't optimise these. They read options and print. Most of their
# code comes from header-only libraries, and optimising it takes longer than running it.
function(quillbox_compile_quickly)
  if(QUILLBOX_SANITIZE)
    foreach(target ${ARGN})
      target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O0>)
      set_target_properties(${target} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
    endforeach()
  endif()
endfunction()

if(NOT BUILD_TESTING)
  return()
endif()

# The code of a test need not be fast.
set(quillbox_test_options $<$<CONFIG:RelWithDebInfo>:-O0>)

# What nearly every test includes, compiled once for all of them where that works (see quillbox_test).
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/test_headers.cpp CONTENT "")
add_library(quillbox_test_headers STATIC EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/test_headers.cpp)
target_link_libraries(quillbox_test_headers PRIVATE quillbox_flags GTest::gtest GTest::gmock)
target_compile_options(quillbox_test_headers PRIVATE ${quillbox_test_options})
target_precompile_headers(quillbox_test_headers PRIVATE
  <gtest/gtest.h> <gmock/gmock.h> <algorithm> <atomic> <chrono> <filesystem> <fstream> <functional> <map> <optional> <random>
  <set> <sstream> <string> <thread> <vector>)

# quillbox_test(NAME SOURCES file... USES target... [INSIDE folder...])
# A test of a room's parts sees its private headers: INSIDE names the room's folder.
function(quillbox_test name)
  cmake_parse_arguments(test "" "" "SOURCES;USES;INSIDE" ${ARGN})
  add_executable(${name} ${test_SOURCES})
  target_link_libraries(${name} PRIVATE quillbox_flags ${test_USES} GTest::gtest GTest::gmock GTest::gtest_main)
  list(TRANSFORM test_INSIDE PREPEND ${PROJECT_SOURCE_DIR}/)
  target_include_directories(${name} PRIVATE ${test_INSIDE})
  target_compile_options(${name} PRIVATE ${quillbox_test_options})
  # Not for tests that use the toolkit: they are compiled with -fPIC, and the precompiled headers aren't.
  if(CMAKE_UNITY_BUILD AND NOT test_USES MATCHES "qt")
    target_precompile_headers(${name} REUSE_FROM quillbox_test_headers)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
endfunction()

# quillbox_one_thread(SUITE...): ThreadSanitizer can find nothing in these suites. They start no thread, or only those of a
# backup, which other suites make, too. Its build leaves their programs out.
function(quillbox_one_thread)
  set_property(TEST ${ARGN} APPEND PROPERTY LABELS one_thread)
  foreach(suite ${ARGN})
    if(QUILLBOX_SANITIZE STREQUAL "thread" AND TARGET ${suite})
      set_target_properties(${suite} PROPERTIES EXCLUDE_FROM_ALL ON)
    endif()
  endforeach()
endfunction()
