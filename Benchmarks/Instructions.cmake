# A test that counts the instructions of the hot paths. Counts depend on the compiler and its flags: it is there for
# the builds that have a row in instructions.txt.
find_program(valgrind valgrind)
find_path(valgrind_headers valgrind/callgrind.h)
if(NOT valgrind OR NOT valgrind_headers)
  message(STATUS "No valgrind here: the instructions of the hot paths are not counted")
  return()
endif()

add_executable(krutein_hot_paths instructions.d/HotPaths.cpp)
krutein_target_defaults(krutein_hot_paths)
krutein_place_in_bundle(krutein_hot_paths "${bundle}")
target_include_directories(krutein_hot_paths SYSTEM PRIVATE ${valgrind_headers})
target_link_libraries(krutein_hot_paths PRIVATE krutein_bench_support OpenSSL::Crypto)

string(REGEX MATCH "^[0-9]+" compiler_major "${CMAKE_CXX_COMPILER_VERSION}")
set(build "${CMAKE_CXX_COMPILER_ID}-${compiler_major}-${CMAKE_SYSTEM_PROCESSOR}-${CMAKE_BUILD_TYPE}")
if(KRUTEIN_COVERAGE)
  string(APPEND build "-coverage")
endif()
file(STRINGS instructions.txt known REGEX "^${build} ")
if(KRUTEIN_BUILD_TESTS AND known AND NOT KRUTEIN_SANITIZE)
  add_test(NAME Instructions
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/instructions" $<TARGET_FILE:krutein_hot_paths> ${build})
  set_tests_properties(Instructions PROPERTIES RESOURCE_LOCK HandsetArchiver TIMEOUT 120)
elseif(KRUTEIN_BUILD_TESTS)
  message(STATUS "Benchmarks/instructions.txt knows nothing of ${build}: instructions are not compared")
endif()
