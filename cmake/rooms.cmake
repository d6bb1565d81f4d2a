# A room is a target with one purpose. Its public headers are in include/<room>/, and other rooms include them as
# "<room>/x.h". Its other headers are beside its sources, and only these sources can include them. A room sees the public
# headers of the rooms that it names under USES or PRIVATE_USES. Any other include doesn't compile.

add_library(quillbox_flags INTERFACE)
target_compile_options(quillbox_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
# If sources are compiled together, a generated source includes them. Then g++ takes them for headers, and warns of types
# that it would accept in a source.
if(CMAKE_UNITY_BUILD)
  target_compile_options(quillbox_flags INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endif()
# Clang checks the annotations of kernel/thread_safety.h. An access without the mutex is an error, whatever the value of
# QUILLBOX_WERROR is.
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
# The linker leaves out functions that no code calls. Nearly all of a program's code is in memory while the program runs.
if(NOT QUILLBOX_SANITIZE)
  target_compile_options(quillbox_flags INTERFACE -ffunction-sections -fdata-sections)
  target_link_options(quillbox_flags INTERFACE LINKER:--gc-sections)
endif()
# Only with these options can ccache keep the results of compilations that use a precompiled header.
target_compile_options(quillbox_flags INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>
                                                "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")

# The headers of the platform interface (ce/*.h).
add_library(ce_api INTERFACE)
target_include_directories(ce_api INTERFACE ${PROJECT_SOURCE_DIR}/platform/include)

# The headers of the standard library that most rooms include are compiled once for all rooms. This is done only in builds
# that compile sources together, because the other builds are to find missing includes.
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

# A precompiled header must have been compiled with the same options, so these targets use none.
function(quillbox_compile_differently options)
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:${options}>)
    set_target_properties(${target} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
  endforeach()
endfunction()

# quillbox_compile_quickly(TARGET...): a sanitized build doesn't optimise these targets. They read options and print. Most
# of their code comes from header-only libraries, and optimising this code takes longer than running it.
function(quillbox_compile_quickly)
  if(QUILLBOX_SANITIZE)
    quillbox_compile_differently(-O0 ${ARGN})
  endif()
endfunction()

# quillbox_compile_small(TARGET...): a build without sanitizers optimises these targets for size, because nearly all of their
# code is in memory during a backup, and their speed makes no measurable difference to a run.
function(quillbox_compile_small)
  if(NOT QUILLBOX_SANITIZE)
    quillbox_compile_differently(-Os ${ARGN})
  endif()
endfunction()

if(NOT BUILD_TESTING)
  return()
endif()

# The code of a test need not be fast.
set(quillbox_test_options $<$<CONFIG:RelWithDebInfo>:-O0>)

# The headers that nearly every test includes are compiled once for all tests that can use the result (see quillbox_test).
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/test_headers.cpp CONTENT "")
add_library(quillbox_test_headers STATIC EXCLUDE_FROM_ALL ${PROJECT_BINARY_DIR}/test_headers.cpp)
target_link_libraries(quillbox_test_headers PRIVATE quillbox_flags GTest::gtest GTest::gmock)
target_compile_options(quillbox_test_headers PRIVATE ${quillbox_test_options})
target_precompile_headers(quillbox_test_headers PRIVATE
  <gtest/gtest.h> <gmock/gmock.h> <algorithm> <atomic> <chrono> <filesystem> <fstream> <functional> <map> <optional> <random>
  <set> <sstream> <string> <thread> <vector>)

# quillbox_test(NAME SOURCES file... USES target... [INSIDE folder...])
# INSIDE names the folders whose headers the test may include besides the public ones, such as the folder of a room whose
# parts it tests.
function(quillbox_test name)
  cmake_parse_arguments(test "" "" "SOURCES;USES;INSIDE" ${ARGN})
  add_executable(${name} ${test_SOURCES})
  target_link_libraries(${name} PRIVATE quillbox_flags ${test_USES} GTest::gtest GTest::gmock GTest::gtest_main)
  list(TRANSFORM test_INSIDE PREPEND ${PROJECT_SOURCE_DIR}/)
  target_include_directories(${name} PRIVATE ${test_INSIDE})
  target_compile_options(${name} PRIVATE ${quillbox_test_options})
  # Tests that use Qt can't use the precompiled headers: they are compiled with -fPIC, and the headers aren't.
  if(CMAKE_UNITY_BUILD AND NOT test_USES MATCHES "qt")
    target_precompile_headers(${name} REUSE_FROM quillbox_test_headers)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
endfunction()

# quillbox_one_thread(SUITE...): ThreadSanitizer can't find anything in these suites that it doesn't find in others. They
# start no thread, or only the threads of a backup, which other suites start, too. The build with ThreadSanitizer leaves
# their programs out.
function(quillbox_one_thread)
  set_property(TEST ${ARGN} APPEND PROPERTY LABELS one_thread)
  foreach(suite ${ARGN})
    if(QUILLBOX_SANITIZE STREQUAL "thread" AND TARGET ${suite})
      set_target_properties(${suite} PROPERTIES EXCLUDE_FROM_ALL ON)
    endif()
  endforeach()
endfunction()
