# What all targets of the project have in common, and the bundle that every program which uses the library
# lives in.
include_guard(GLOBAL)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
include(KruteinHardening)

# The oldest macOS that the library runs on, and what is linked into a host with it. All else uses the whole
# standard library, which came with 10.15.
set(KRUTEIN_LIBRARY_MACOS 10.9)
set(KRUTEIN_PROGRAM_MACOS 10.15)

# Language, warnings, hardening, sanitizers and the include root. Log lines and messages carry source files as paths from
# the project's root, whatever folder the project was built in.
#   LIBRARY  for what must run on the library's oldest macOS
function(krutein_target_defaults target)
  cmake_parse_arguments(arg "LIBRARY" "" "" ${ARGN})
  foreach(language CXX OBJCXX)
    set_target_properties(${target} PROPERTIES
      ${language}_STANDARD 17
      ${language}_STANDARD_REQUIRED ON
      ${language}_EXTENSIONS OFF
      ${language}_VISIBILITY_PRESET hidden)
  endforeach()
  set_target_properties(${target} PROPERTIES
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(APPLE)
    set(oldest ${KRUTEIN_PROGRAM_MACOS})
    if(arg_LIBRARY)
      set(oldest ${KRUTEIN_LIBRARY_MACOS})
    endif()
    target_compile_options(${target} PRIVATE -mmacosx-version-min=${oldest})
    target_link_options(${target} PRIVATE -mmacosx-version-min=${oldest})
  endif()
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wshadow -Wconversion
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
    $<$<BOOL:${KRUTEIN_WARNINGS_AS_ERRORS}>:-Werror>)
  krutein_harden(${target})
  if(KRUTEIN_SANITIZE)
    set(sanitize -fsanitize=${KRUTEIN_SANITIZE} -fno-omit-frame-pointer)
    if(KRUTEIN_SANITIZE MATCHES undefined)
      list(APPEND sanitize -fno-sanitize-recover=undefined)
    endif()
    # With sanitizers GCC sees uninitialized memory inside of its own <regex>.
    target_compile_options(${target} PRIVATE ${sanitize} $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PRIVATE ${sanitize})
  endif()
endfunction()

# Counts the lines of a library of ours as they are run, from all threads of all processes. What is linked with
# its object files needs the counting's own library too.
function(krutein_count_lines target)
  if(KRUTEIN_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    # What counts is hidden: a library of such a build exports what any other exports.
    target_link_options(${target} PUBLIC --coverage LINKER:--exclude-libs,libgcov.a)
  endif()
endfunction()

# Builds a program into <folder>/Contents/MacOS. The library finds the backup tool in Contents/Frameworks and
# its configuration in Resources/Config, both from the path of the running program.
function(krutein_place_in_bundle target folder)
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${folder}/Contents/MacOS")
endfunction()

# Builds the backup tool of a bundle. It always bears the one name that the library looks for and kills.
function(krutein_place_tool_in_bundle target folder)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME HandsetArchiver
    RUNTIME_OUTPUT_DIRECTORY "${folder}/Contents/Frameworks")
endfunction()

# What every library for the logging contract has in common: libraries of this name can stand in for each other
# when a program is loaded.
function(krutein_log_properties target)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME krutein_log VERSION 1.0.0 SOVERSION 1)
endfunction()
