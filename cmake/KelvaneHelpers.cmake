# SPDX-License-Identifier: GPL-2.0-or-later
# How a room's libraries, programs and tests are declared.

# Programs lie in the build tree as they lie when installed, so that each finds the others from there.
set(KELVANE_BIN_DIR ${CMAKE_BINARY_DIR}/bin)
set(KELVANE_LIBEXEC_DIR ${CMAKE_BINARY_DIR}/libexec/kelvanefs)

add_library(kv_options INTERFACE)
target_compile_options(kv_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror
  -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wcast-align -Wcast-qual -Wformat=2
  -Wimplicit-fallthrough -Wextra-semi
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op>)
target_compile_definitions(kv_options INTERFACE _FILE_OFFSET_BITS=64 QT_NO_KEYWORDS)
target_include_directories(kv_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
if(KELVANE_SANITIZE)
  target_compile_options(kv_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kv_options INTERFACE -fsanitize=address,undefined)
elseif(KELVANE_SANITIZE_THREADS)
  target_compile_options(kv_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(kv_options INTERFACE -fsanitize=thread)
endif()

# kv_add_rooms(DIR room…): adds the rooms below DIR.
function(kv_add_rooms directory)
  foreach(room IN LISTS ARGN)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${directory}/${room}/CMakeLists.txt)
      add_subdirectory(${directory}/${room})
    endif()
  endforeach()
endfunction()

# kv_add_library(NAME SOURCES … [LINK public libraries…] [LINK_PRIVATE private libraries…])
function(kv_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LINK_PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC kv_options ${ARG_LINK} PRIVATE ${ARG_LINK_PRIVATE})
endfunction()

# kv_add_program(NAME BIN|LIBEXEC SOURCES … [LINK …] [TARGET target]): NAME is the file's name; the target's name where
# that is taken (mkisofs, df …) or would clash is given by TARGET.
function(kv_add_program name place)
  cmake_parse_arguments(ARG "" "TARGET" "SOURCES;LINK" ${ARGN})
  set(target ${name})
  if(ARG_TARGET)
    set(target ${ARG_TARGET})
  endif()
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE kv_options ${ARG_LINK})
  if(place STREQUAL BIN)
    set(output ${KELVANE_BIN_DIR})
    set(destination ${CMAKE_INSTALL_BINDIR})
  else()
    set(output ${KELVANE_LIBEXEC_DIR})
    set(destination ${CMAKE_INSTALL_LIBEXECDIR}/kelvanefs)
  endif()
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} RUNTIME_OUTPUT_DIRECTORY ${output})
  install(TARGETS ${target} RUNTIME DESTINATION ${destination})
endfunction()

# kv_add_test(NAME SOURCES … [LINK …] [DEPENDS programs it runs…] [TIMEOUT seconds] [SERIAL])
# Each TEST of the program becomes a test of ctest. Tests find the built programs through KELVANE_BIN_DIR and
# KELVANE_LIBEXEC_DIR (compile definitions). The desktop of whoever runs them is out of their reach.
#
# Two seconds or more of each test's file would go into the headers that all of them share, so these are compiled once. What shares them has to be compiled the same way, with or without Qt: as position-independent code.
function(kv_add_test name)
  cmake_parse_arguments(ARG "SERIAL" "TIMEOUT" "SOURCES;LINK;DEPENDS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE kv_options ${ARG_LINK} GTest::gmock GTest::gtest_main)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  if(NOT TARGET kv_test_headers)
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/test_headers.cpp CONTENT "")
    add_library(kv_test_headers OBJECT ${CMAKE_BINARY_DIR}/test_headers.cpp)
    target_link_libraries(kv_test_headers PRIVATE kv_options GTest::gmock)
    target_compile_options(kv_test_headers PRIVATE -fPIC)
    target_precompile_headers(kv_test_headers PRIVATE <filesystem> <functional> <gmock/gmock.h> <gtest/gtest.h>)
  endif()
  target_compile_options(${name} PRIVATE -fPIC)
  target_precompile_headers(${name} REUSE_FROM kv_test_headers)
  target_compile_definitions(${name} PRIVATE
    KELVANE_BIN_DIR="${KELVANE_BIN_DIR}" KELVANE_LIBEXEC_DIR="${KELVANE_LIBEXEC_DIR}"
    KELVANE_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
  if(ARG_DEPENDS)
    add_dependencies(${name} ${ARG_DEPENDS})
  endif()
  # Two properties, since the discovery of tests takes a list apart.
  set(properties TIMEOUT ${ARG_TIMEOUT}
    ENVIRONMENT DBUS_SESSION_BUS_ADDRESS=disabled:
    ENVIRONMENT_MODIFICATION DBUS_SYSTEM_BUS_ADDRESS=set:disabled:)
  if(ARG_SERIAL)
    list(APPEND properties RUN_SERIAL ON)
  endif()
  gtest_discover_tests(${name} PROPERTIES ${properties} DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60)
endfunction()
