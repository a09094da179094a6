# Compiler settings shared by every target, and the few functions that declare targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH "$ORIGIN/../lib;$ORIGIN")

find_program(ORLIX_CCACHE ccache)
if(ORLIX_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ORLIX_CCACHE})
endif()

file(RELATIVE_PATH orlix_up ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
add_library(orlix_build INTERFACE)
target_compile_options(orlix_build INTERFACE
  # Source paths in exceptions and log lines read src/..., wherever the tree lies.
  # The second form is for a ccache that shares results between checkouts (base_dir).
  -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${orlix_up}=
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough
  -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(orlix_build INTERFACE -Wduplicated-cond -Wlogical-op)
endif()
if(ORLIX_SANITIZE)
  target_compile_options(orlix_build INTERFACE
    -fsanitize=${ORLIX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(orlix_build INTERFACE -fsanitize=${ORLIX_SANITIZE})
endif()

# A shared library with hidden symbols: orlix_library(name SOURCES... [PUBLIC libs] [PRIVATE libs])
# Headers under include/<name>/ are public; <NAME>_EXPORTS is defined while it is built.
function(orlix_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} SHARED ${arg_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR}/src/libs)
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE orlix_build ${arg_PRIVATE})
  target_link_options(${name} PRIVATE -Wl,--no-undefined)
  if(ORLIX_SANITIZE)
    # The sanitizer run time is found when the program is loaded.
    target_link_options(${name} PRIVATE -Wl,--warn-unresolved-symbols -Wl,-z,undefs)
  endif()
endfunction()

# Lets a test program count its allocations and make them fail: support/allocations.h
function(orlix_count_allocations name)
  set(source ${CMAKE_SOURCE_DIR}/tests/support/allocations.cpp)
  target_sources(${name} PRIVATE ${source})
  if(ORLIX_SANITIZE)
    # With the sanitizer's code in between, g++ 12 loses sight of the operators' being a pair.
    set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -Wno-mismatched-new-delete)
  endif()
endfunction()

# A test program with every *_test.cpp of the current folder: orlix_test(name LIBS...)
function(orlix_test name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE orlix_build ${ARGN} GTest::gtest GTest::gmock GTest::gtest_main)
  set(properties TIMEOUT 300)
  if(ORLIX_SANITIZE)
    list(APPEND properties ENVIRONMENT_MODIFICATION
      # With a long history, since a report whose other stack is lost can't be told by its library.
      "TSAN_OPTIONS=string_append: suppressions=${CMAKE_SOURCE_DIR}/cmake/thread-sanitizer.supp history_size=7")
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 120 PROPERTIES ${properties})
endfunction()
