# One way to declare a library, a test and a benchmark, so that every folder states its edges the same way.
#
# A library publishes exactly one folder of headers. It is reached through an include root of its own, made of
# one symbolic link, so that  #include "platform/registry.h"  compiles only for targets that link platform:
# a forbidden include is a build error, not a matter of review.

include(GNUInstallDirs)

function(_sq_include_root target folder)
  set(root "${CMAKE_BINARY_DIR}/include/${target}")
  get_filename_component(parent "${root}/${folder}" DIRECTORY)
  file(MAKE_DIRECTORY "${parent}")
  if(NOT EXISTS "${root}/${folder}")
    file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${folder}" "${root}/${folder}" SYMBOLIC)
  endif()
  set_property(TARGET ${target} PROPERTY SQ_PUBLIC_FOLDER "${folder}")
endfunction()

# sq_library(<name> [SHARED|STATIC|INTERFACE] [OUTPUT_NAME <name>]
#            PUBLIC <header folder, from the repository root>
#            [SOURCES ...] [LINKS public dependencies] [PRIVATE_LINKS ...])
# Declares target sq_<name> with the alias sqstorage::<name>.
function(sq_library name)
  cmake_parse_arguments(arg "SHARED;STATIC;INTERFACE" "OUTPUT_NAME;PUBLIC" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  set(target sq_${name})
  if(arg_INTERFACE)
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  elseif(arg_SHARED)
    add_library(${target} SHARED ${arg_SOURCES})
    set(scope PUBLIC)
    # A user may name none of a module's symbols and only create its classes; it must be there all the same.
    target_link_options(${target} INTERFACE "LINKER:--no-as-needed")
  else()
    add_library(${target} STATIC ${arg_SOURCES})
    set(scope PUBLIC)
  endif()
  add_library(sqstorage::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  if(arg_OUTPUT_NAME)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${arg_OUTPUT_NAME})
  endif()
  if(arg_PUBLIC)
    _sq_include_root(${target} "${arg_PUBLIC}")
    target_include_directories(${target} ${scope}
      "$<BUILD_INTERFACE:${CMAKE_BINARY_DIR}/include/${target}>"
      "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/sqstorage>")
  endif()
  target_link_libraries(${target} ${scope} ${arg_LINKS})
  if(arg_PRIVATE_LINKS)
    target_link_libraries(${target} PRIVATE ${arg_PRIVATE_LINKS})
  endif()
  if(NOT arg_INTERFACE)
    # Not for those who link the installed library.
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:sq_warnings>)
  endif()
endfunction()

# sq_program(<name> SOURCES ... LINKS ...): an executable of that very name.
function(sq_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  if(SQ_SANITIZE)
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/SanitizerOptions.cpp")
  endif()
  target_link_libraries(${name} PRIVATE sq_warnings ${arg_LINKS})
endfunction()

# What all tests are compiled with and linked to.
function(_sq_test_settings name)
  target_link_libraries(${name} PRIVATE sq_warnings GTest::gmock GTest::gtest GTest::gtest_main)
  # What is tested is optimised; to optimise the tests as well costs a third of their compilation and gains nothing.
  # To look at each pointer that they follow costs as much again, and a bad one shows all the same.
  target_compile_options(${name} PRIVATE -O0
    "$<$<STREQUAL:${SQ_SANITIZE},address>:-fno-sanitize=null,alignment,vptr,object-size>")
endfunction()

# Makes the precompiled header of the tests. Before the first sq_test.
function(sq_test_prelude)
  add_executable(sq_test_prelude "${PROJECT_SOURCE_DIR}/cmake/TestPrelude.cpp")
  _sq_test_settings(sq_test_prelude)
  target_precompile_headers(sq_test_prelude PRIVATE "${PROJECT_SOURCE_DIR}/cmake/TestPrelude.h")
endfunction()

# sq_test(<name> [ISOLATED] [SHARDS <count>] SOURCES ... LINKS ...)
# One GoogleTest program. ISOLATED runs every test in a process of its own, for what is once per process; SHARDS
# deals the tests of a long program out to so many runs, which come first and side by side.
function(sq_test name)
  cmake_parse_arguments(arg "ISOLATED" "SHARDS" "SOURCES;LINKS" ${ARGN})
  if(NOT SQ_BUILD_TESTS)
    return()
  endif()
  add_executable(${name} ${arg_SOURCES})
  if(SQ_SANITIZE)
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/SanitizerOptions.cpp")
  endif()
  target_link_libraries(${name} PRIVATE ${arg_LINKS})
  _sq_test_settings(${name})
  target_precompile_headers(${name} REUSE_FROM sq_test_prelude)
  if(arg_ISOLATED)
    gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
  elseif(arg_SHARDS)
    foreach(shard RANGE 1 ${arg_SHARDS})
      math(EXPR index "${shard} - 1")
      add_test(NAME ${name}_${shard} COMMAND ${name})
      set_tests_properties(${name}_${shard} PROPERTIES TIMEOUT 600 COST 1000
        ENVIRONMENT "GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${index}")
    endforeach()
  else()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 600)
  endif()
endfunction()

# sq_benchmark(<name> SOURCES ... LINKS ...): a Google Benchmark program, built with the rest and never run by ctest.
function(sq_benchmark name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
  if(NOT SQ_BUILD_BENCHMARKS)
    return()
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE sq_warnings ${arg_LINKS} benchmark::benchmark)
endfunction()

# sq_fuzz(<name> [CORPUS <folder>] SOURCES ... LINKS ...)
# A fuzz target: the sources define LLVMFuzzerTestOneInput. With Clang it is a libFuzzer program, to be run for as long
# as one likes (configure with -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link so that coverage leads it); otherwise a
# driver runs a fixed number of inputs, the same ones each time, made from the files of the corpus. Either way ctest
# runs it for a few seconds.
function(sq_fuzz name)
  cmake_parse_arguments(arg "" "CORPUS" "SOURCES;LINKS" ${ARGN})
  if(NOT SQ_BUILD_TESTS)
    return()
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE sq_warnings ${arg_LINKS})
  set(corpus)
  if(arg_CORPUS)
    get_filename_component(corpus "${arg_CORPUS}" ABSOLUTE)
  endif()
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    # What it finds goes to the first folder; the corpus stays as it is.
    set(found "${CMAKE_CURRENT_BINARY_DIR}/${name}_found")
    file(MAKE_DIRECTORY "${found}")
    add_test(NAME ${name} COMMAND ${name} -runs=100000 "${found}" ${corpus})
  else()
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/FuzzDriver.cpp")
    add_test(NAME ${name} COMMAND ${name} ${corpus})
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()
