# How every target of this project is made: one warning level, one set of sanitizers, one include root.

option(VX_BENCHMARKS "Build the benchmarks" OFF)
option(VX_FUZZ "Build the fuzzers; needs clang" OFF)
set(VX_SANITIZE "" CACHE STRING "Sanitizers for every target, for instance address,undefined")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(vx_options INTERFACE)
target_compile_options(vx_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Wcast-align -Woverloaded-virtual -Werror
  # GCC 12 at -O3 sees an overlap that is none in "literal" + std::string (PR 105651).
  $<$<CONFIG:Release>:-Wno-restrict>)
target_include_directories(vx_options INTERFACE "${CMAKE_SOURCE_DIR}/Libraries")
if(WIN32)
  # Windows 10 is the oldest system that is supported; wide API throughout.
  target_compile_definitions(vx_options INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 NO_DSHOW_STRSAFE)
  target_link_options(vx_options INTERFACE -static)
else()
  target_compile_options(vx_options INTERFACE -Wnon-virtual-dtor)
  find_package(Threads REQUIRED)
  target_link_libraries(vx_options INTERFACE Threads::Threads)
endif()
if(VX_SANITIZE)
  target_compile_options(vx_options INTERFACE
    -fsanitize=${VX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vx_options INTERFACE -fsanitize=${VX_SANITIZE})
endif()
if(VX_FUZZ)
  # Another compiler has other warnings; those that count are GCC's.
  target_compile_options(vx_options INTERFACE -fsanitize=fuzzer-no-link -Wno-error)
endif()

# Adds each folder that has a CMakeLists.txt.
function(vx_add_folders)
  foreach(folder IN LISTS ARGN)
    if(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt")
      add_subdirectory(${folder})
    endif()
  endforeach()
endfunction()

# vx_library(NAME SOURCES a.cpp ... LINK other targets ...)
# A static library; with no SOURCES a library of headers only.
function(vx_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  if(arg_SOURCES)
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC vx_options ${arg_LINK})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE vx_options ${arg_LINK})
  endif()
endfunction()

# vx_program(NAME SOURCES ... LINK ...)
function(vx_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE vx_options ${arg_LINK})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
endfunction()

# vx_test(NAME SOURCES ... LINK ... [LABELS unit|system ...] [RESOURCE_LOCK name ...] [TIMEOUT seconds])
# A GoogleTest program (with GoogleMock's main) and its CTest entry; the results of each case go to
# test-results/NAME.xml in the build folder. Windows programs run under Wine (scripts/run-windows).
function(vx_test name)
  cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LINK;LABELS;RESOURCE_LOCK;ENVIRONMENT" ${ARGN})
  if(NOT arg_LABELS)
    set(arg_LABELS unit)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/Tests")
  target_link_libraries(${name} PRIVATE vx_options ${arg_LINK} GTest::gmock_main)
  if(VX_SANITIZE)
    # Half of the time that a sanitized build takes is spent on making fast what tests do once. Measured: a test of
    # 250 lines compiles in 8 s instead of 29 s.
    target_compile_options(${name} PRIVATE -O0)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY "${CMAKE_BINARY_DIR}")
  set_tests_properties(${name} PROPERTIES
    LABELS "${arg_LABELS}" TIMEOUT ${arg_TIMEOUT} RESOURCE_LOCK "${arg_RESOURCE_LOCK}"
    ENVIRONMENT "GTEST_OUTPUT=xml:test-results/${name}.xml;${arg_ENVIRONMENT}")
endfunction()

# vx_benchmark(NAME SOURCES ... LINK ...): a Google Benchmark program in bench/ of the build folder.
# The target "benchmarks" builds them all.
add_custom_target(benchmarks)
function(vx_benchmark name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/Tests")
  target_link_libraries(${name} PRIVATE vx_options ${arg_LINK} benchmark::benchmark)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bench")
  add_dependencies(benchmarks ${name})
endfunction()
