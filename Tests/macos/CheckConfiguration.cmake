# Fails when CMake, told that this is macOS, would build the library's files other than for the oldest macOS, or leave
# the macOS sources out. Run with cmake -P, with
#   ROOT    the project's folder
#   OUTPUT  a folder to write to
#   SPDLOG, FMT, SQLITE, SQLITE_INCLUDES  where this system has them
file(REMOVE_RECURSE "${OUTPUT}")
execute_process(RESULT_VARIABLE failed OUTPUT_VARIABLE said ERROR_VARIABLE said COMMAND
  ${CMAKE_COMMAND} -G Ninja -S ${ROOT} -B ${OUTPUT} --toolchain ${CMAKE_CURRENT_LIST_DIR}/darwin.cmake
  -DKRUTEIN_BUILD_HOST=OFF -DKRUTEIN_BUILD_TESTS=OFF -DKRUTEIN_BUILD_BENCHMARKS=OFF -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
  -Dspdlog_DIR=${SPDLOG} -Dfmt_DIR=${FMT} -DSQLite3_LIBRARY=${SQLITE} -DSQLite3_INCLUDE_DIR=${SQLITE_INCLUDES})
if(failed)
  message(FATAL_ERROR "${said}")
endif()

file(STRINGS "${OUTPUT}/compile_commands.json" commands REGEX "\"command\"")
set(rest ${commands})
list(FILTER rest EXCLUDE REGEX "-fvisibility=hidden.*-mmacosx-version-min=10\\.9 .*-std=c\\+\\+17")
if(rest)
  message(SEND_ERROR "not for the oldest macOS: ${rest}")
endif()
foreach(source std_objc_mac.mm sha1_mac.cpp std_file.cpp BackupMgr.cpp LogHandler.cpp)
  if(NOT commands MATCHES "${source}\"")
    message(SEND_ERROR "${source} is not built")
  endif()
endforeach()
if(commands MATCHES "std_objc_linux|sha1_openssl")
  message(SEND_ERROR "a source of another platform is built")
endif()
file(READ "${OUTPUT}/build.ninja" build)
foreach(library krutein krutein_log)
  if(NOT build MATCHES "build lib/lib${library}\\.[0-9.]+dylib:[^\n]*\n[^\n]*\n?[^#]*LINK_FLAGS = [^\n]*-mmacosx-version-min=10\\.9")
    message(SEND_ERROR "lib${library}.dylib is not linked for the oldest macOS")
  endif()
endforeach()
